// Hosts that call back, let go or end at the wrong moment, two engines at a time, and threads.
#include <atomic>
#include <barrier>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/Simulators.h"
#include "tests/support/EngineBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(EngineTest, CallsIntoTheWaitTouchNoWire) {
  std::int32_t count = 0;
  std::string text;
  dispatch->onRead = [&](clsTeskReader& r) {
    const auto before = dispatch->calls;
    EXPECT_FALSE(r.StartReader());
    EXPECT_FALSE(r.ReadPage());
    EXPECT_FALSE(r.ReadBatch(false, 1, count));
    EXPECT_FALSE(r.Locate());
    EXPECT_FALSE(r.Firmware(text));
    r.RejectPage();
    r.EjectPage();
    EXPECT_FALSE(r.CancelScan());
    EXPECT_FALSE(r.EndReader());
    EXPECT_TRUE(r.CancelScan());
    EXPECT_EQ(dispatch->calls, before);
  };
  ASSERT_TRUE(reader->StartReader());
  EXPECT_TRUE(reader->ReadPage());
  EXPECT_EQ(count, 0);
  EXPECT_THAT(events.names, ElementsAre("BeforeSheet", "PreprocessSheet", "ReadSheet", "AfterSheet"));
}

TEST_F(EngineTest, LastReferenceMayBeReleasedInsideAnEventOrAWait) {
  const std::weak_ptr<clsTeskReader> watch = reader;
  ASSERT_TRUE(reader->StartReader());
  dispatch->onRead = [&](clsTeskReader&) { reader.reset(); };
  EXPECT_TRUE(reader->ReadPage());
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(events.names.back(), "AfterSheet");
}

TEST_F(EngineTest, SinkMayRemoveAnotherOneInsideAnEvent) {
  RecordingEvents second;
  reader->AddEvents(second);
  events.onBeforeSheet = [&](bool&) { reader->RemoveEvents(second); };
  ASSERT_TRUE(reader->StartReader());
  EXPECT_TRUE(reader->ReadPage());
  EXPECT_THAT(second.names, IsEmpty());
}

// ---- Sheets within sheets

// Notes every event with its sheet's number, and whether the reader shows that sheet too.
class Diary : public ReaderEvents {
 public:
  explicit Diary(clsTeskReader& reader) : reader_(reader) {}

  void BeforeSheet(bool&) override { Note("Before", 0); }
  void PreprocessSheet(SideArray& side1, SideArray&, BarcodeArray& texts, bool&) override {
    Note("Preprocess", side1.At(1, 1), texts[0]);
  }
  void ReadSheet(SideArray& side1, SideArray&, BarcodeArray& texts, const std::string&, const std::string&,
                 const std::string&, const std::string&) override {
    Note("Read", side1.At(1, 1), texts[0]);
  }
  void BeforePrint(bool&) override { Note("BeforePrint", reader_.Side1TimingMarks()); }
  void AfterSheet(bool&) override { Note("After", reader_.Side1TimingMarks()); }

  std::vector<std::string> entries;
  std::map<std::string, std::function<void()>> once;  // by entry: what the host does there the first time

 private:
  void Note(const std::string& event, std::int16_t sheet, const std::optional<std::string>& text = {}) {
    const std::string entry = sheet == 0 ? event : event + std::to_string(sheet);
    entries.push_back(entry);
    if (sheet != 0) {
      EXPECT_EQ(text.value_or(std::to_string(sheet)), std::to_string(sheet)) << entry;
      EXPECT_EQ(reader_.Side1Array().At(1, 1), sheet) << entry;
      EXPECT_EQ(reader_.Side1TimingMarks(), sheet) << entry;
      EXPECT_EQ(reader_.BarcodeTexts(), BarcodeArray{std::to_string(sheet)}) << entry;
    }
    if (const auto act = once.extract(entry)) act.mapped()();
  }

  clsTeskReader& reader_;
};

class Nested : public EngineTest {
 protected:
  Nested() {
    reader->RemoveEvents(events);
    reader->AddEvents(diary);
    ActivatePrinter();
    dispatch->calls.clear();
  }
  ~Nested() override { reader->RemoveEvents(diary); }

  Diary diary{*reader};
};

// The inner sheet is read without its imprint; the outer one is out of the imprinter's reach.
TEST_F(Nested, ReadGivesEachSheetOnceWithItsOwnResults) {
  const struct {
    const char *at, *entries, *calls;
  } kCases[] = {
      {"Before", "Before Before Preprocess1 Read1 After1 Preprocess2 Read2 BeforePrint2 After2",
       "Init Read Read Print"},
      {"Preprocess1", "Before Preprocess1 Before Preprocess2 Read2 After2 Read1 After1", "Init Read Read"},
      {"Read1", "Before Preprocess1 Read1 Before Preprocess2 Read2 After2 After1", "Init Read Read"},
      {"BeforePrint1", "Before Preprocess1 Read1 BeforePrint1 Before Preprocess2 Read2 After2 After1",
       "Init Read Read"},
      {"After1", "Before Preprocess1 Read1 BeforePrint1 After1 Before Preprocess2 Read2 After2",
       "Init Read Print Read"}};
  for (const auto& [at, entries, calls] : kCases) {
    dispatch->calls.clear();
    dispatch->fed = 0;
    diary.entries.clear();
    ASSERT_TRUE(reader->StartReader());
    diary.once[at] = [&] { EXPECT_TRUE(reader->ReadPage(false)); };
    EXPECT_TRUE(reader->ReadPage(true));
    EXPECT_EQ(Joined(diary.entries), entries);
    EXPECT_EQ(Joined(dispatch->calls), calls);
    EXPECT_TRUE(reader->EndReader());
  }
}

TEST_F(Nested, ReadThatFailsLeavesTheOuterSheetAndItsImprintAlone) {
  dispatch->sheets = 1;
  ASSERT_TRUE(reader->StartReader());
  dispatch->onRead = [](clsTeskReader& r) { r.SetSide1TimingMarks(-1); };
  diary.once["Preprocess1"] = [&] {
    EXPECT_FALSE(reader->ReadPage(false));
    EXPECT_EQ(reader->Side1TimingMarks(), 1) << "the marks are the outer sheet's, and so is their count";
    reader->RejectPage();
  };
  diary.once["After1"] = [&] { reader->EjectPage(); };
  EXPECT_TRUE(reader->ReadPage(true));
  EXPECT_EQ(Joined(diary.entries), "Before Preprocess1 Before Read1 BeforePrint1 After1");
  EXPECT_EQ(Joined(dispatch->calls), "Init Read Read Reject Print");
  EXPECT_TRUE(reader->CancelScan());
}

TEST_F(Nested, SheetIsDisposedOfByItsOwnFlagAlone) {
  reader->AddEvents(events);
  for (const bool hostEjects : {false, true}) {
    dispatch->calls.clear();
    dispatch->fed = 0;
    int ended = 0;
    diary.once["Read1"] = [&] {
      EXPECT_TRUE(reader->ReadPage());
      if (hostEjects) reader->EjectPage();
    };
    // The outer sheet's, which is out of reach: the scanner would reject the inner one instead.
    events.onAfterSheet = [&](bool&) {
      if (++ended == 2) reader->RejectPage();
    };
    std::int32_t count = 0;
    EXPECT_TRUE(reader->ReadBatch(false, 1, count));
    EXPECT_EQ(Joined(dispatch->calls), "Init Read Read Eject Close") << hostEjects;
  }
}

TEST_F(Nested, CancelThatAfterSheetDoesNotTakeBackStands) {
  ASSERT_TRUE(reader->StartReader());
  diary.once["After1"] = [&] { reader->SetCancelScan(true); };
  EXPECT_TRUE(reader->ReadPage());
  EXPECT_TRUE(reader->CancelScan());
}

// ---- Ending in the middle of a batch

TEST_F(Nested, EndReaderInAnyEventEndsTheBatchAndTouchesTheWireNoMore) {
  const std::pair<const char*, const char*> cases[] = {{"Before", "Init Close"},
                                                       {"Preprocess1", "Init Read Close"},
                                                       {"Read1", "Init Read Close"},
                                                       {"BeforePrint1", "Init Read Close"},
                                                       {"After1", "Init Read Print Close"}};
  for (const auto& [at, calls] : cases) {
    dispatch->calls.clear();
    dispatch->fed = 0;
    dispatch->sheets = 4;
    diary.once[at] = [&] { EXPECT_TRUE(reader->EndReader()); };
    std::int32_t count = 0;
    EXPECT_TRUE(reader->ReadBatch(true, -1, count)) << at;
    EXPECT_EQ(Joined(dispatch->calls), calls) << at;
    EXPECT_EQ(count, 1) << at;
    EXPECT_TRUE(reader->CancelScan()) << at;
  }
  EXPECT_THAT(host.errors, IsEmpty());
}

TEST_F(Nested, BatchGoesOnWithAReaderThatWasStartedAgain) {
  diary.once["After1"] = [&] {
    EXPECT_TRUE(reader->EndReader());
    EXPECT_TRUE(reader->StartReader());
  };
  std::int32_t count = 0;
  EXPECT_TRUE(reader->ReadBatch(false, 2, count));
  EXPECT_EQ(Joined(dispatch->calls), "Init Read Close Init Read Eject Close");
}

TEST_F(EngineTest, CountIsTheHostsOwnWhileTheBatchRuns) {
  std::int32_t count = 10;
  std::vector<std::int32_t> before;
  std::vector<std::int32_t> after;
  events.onBeforeSheet = [&](bool&) { before.push_back(count); };
  events.onAfterSheet = [&](bool&) {
    after.push_back(count);
    if (count == 12) count = 14;
  };
  EXPECT_TRUE(reader->ReadBatch(false, 16, count));
  EXPECT_THAT(before, ElementsAre(10, 11, 14, 15));
  EXPECT_THAT(after, ElementsAre(11, 12, 15, 16));
  EXPECT_EQ(count, 16);
}

// ---- Letting go

TEST_F(EngineTest, LastReferenceMayBeReleasedWhereverAHostIsCalled) {
  const std::pair<const char*, void (*)(clsTeskReader&)> calls[] = {
      {"LoadDefaults", [](clsTeskReader& r) { r.LoadDefaults(teskReaderTypeDatawinHemeraC); }},
      {"LoadSettings", [](clsTeskReader& r) { r.LoadSettings(teskReaderRegistryKeyCurrentUser, "A"); }},
      {"SaveSettings", [](clsTeskReader& r) { r.SaveSettings(teskReaderRegistryKeyCurrentUser, "A"); }},
      {"ReaderType", [](clsTeskReader& r) { r.SetPrinter(nullptr), r.SetReaderType(teskReaderTypeNone); }},
      {"HelpID", [](clsTeskReader& r) { r.HelpID(static_cast<teskReaderHelpID>(7)); }},
      {"SetHelpID", [](clsTeskReader& r) { r.SetHelpID(static_cast<teskReaderHelpID>(7), 1); }},
      {"ShowOptions", [](clsTeskReader& r) { r.ShowOptions(); }}};
  for (const auto& [name, call] : calls) {
    auto only = NewReader();
    const std::weak_ptr<clsTeskReader> watch = only;
    int reports = 0;
    host.onError = [&] {
      ++reports;
      only.reset();
      EXPECT_FALSE(watch.expired()) << name << " goes on with a reader that is gone";
    };
    call(*only);
    EXPECT_GT(reports, 0) << name;
    EXPECT_TRUE(watch.expired()) << name;
  }
  host.onError = nullptr;
}

// ---- Two engines, several threads

// Marks of all sheets that a reader of `type` gives, alone or with another one's calls in its waits.
std::vector<SideArray> SheetsOf(teskReaderType type, const std::function<void()>& meanwhile = {}) {
  Bench bench(type, simulator::CreateScanner(
                        type, {.count = 3, .seed = 5, .geometry = simulator::Geometry{50, 48, true}}));
  bench.time->onMessages = [&](int) {
    if (meanwhile) meanwhile();
  };
  bench.events.onReadSheet = [&] {
    if (meanwhile) meanwhile();
    bench.reader->EjectPage();
  };
  std::int32_t count = 0;
  EXPECT_TRUE(bench.reader->ReadBatch(false, 3, count));
  EXPECT_EQ(count, 3);
  EXPECT_THAT(bench.host.errors, IsEmpty());
  return bench.events.side1;
}

TEST(TwoEngines, OfDifferentFamiliesReadInEachOthersWaitsAndEvents) {
  const teskReaderType types[] = {teskReaderTypeScantronScanMark2500, teskReaderTypeNCSOpScan4,
                                  teskReaderTypePDIVMR138, teskReaderTypeSekonicSR430};
  for (const auto outer : types) {
    const auto alone = SheetsOf(outer);
    ASSERT_EQ(alone.size(), 3U);
    for (const auto inner : types) {
      const auto innerAlone = SheetsOf(inner);
      int inside = 0;
      EXPECT_EQ(SheetsOf(outer,
                         [&] {
                           if (++inside <= 4) {
                             EXPECT_EQ(SheetsOf(inner), innerAlone);
                           }
                         }),
                alone)
          << outer << " around " << inner;
    }
  }
}

class ShortLivedHost : public HostServices {
 public:
  explicit ShortLivedHost(std::atomic<int>& reports) : reports_(reports) {}
  ~ShortLivedHost() override { alive_ = 0; }
  std::string LoadString(const std::string& text) override { return alive_ == kAlive ? text : "gone"; }
  bool MsgBoxEx(const std::string&, const std::string& text) override { return text == "text"; }
  void RaiseError(const ErrorReport&) override { reports_ += alive_ == kAlive ? 1 : 1'000'000; }
  bool Silent() const override { return false; }
  void SetSilent(bool) override {}

 private:
  static constexpr int kAlive = 4711;
  volatile int alive_ = kAlive;
  std::atomic<int>& reports_;
};

TEST(HostServicesThreads, MayInstallAndReportAtOnce) {
  constexpr int kThreads = 4;
  constexpr int kTurns = 20'000;
  std::atomic<int> reports = 0;
  std::atomic<int> garbled = 0;
  SetError(std::make_shared<ShortLivedHost>(reports));
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int turn = 0; turn < kTurns; ++turn) {
        SetError(std::make_shared<ShortLivedHost>(reports));
        if (LoadString("text") != "text") ++garbled;
        ReportError(ErrorReport{.number = 5, .source = "a.b", .message = "c"});
        ShowMessage("title", "text");
        SetMessageBox(nullptr);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  SetError(nullptr);
  EXPECT_EQ(reports, kThreads * kTurns);
  EXPECT_EQ(garbled, 0);
}

}  // namespace
}  // namespace tesk::test
