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

using ::testing::IsEmpty;

TEST(Engine, CallsIntoTheWaitTouchNoWire) {
  Play(
      {{"sr", "feed1:srpb1ejlfx",
        "init s+ Before feed1 s- r--1 p--1 b-0 l- f- x- Pre1 Read1 After1 r+1 cancelled"},
       {"s", "init:sx", "init s- x- s+ cancelled"},
       {"sp", "print:sb1ejrx",
        "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print s- b-0 r-1 x- AfterPrint1 After1 p+1 cancelled"},
       {"sre", "eject:srejx", "init s+ Before feed1 Pre1 Read1 After1 r+1 eject s- r-1 x- cancelled"},
       {"srj", "reject:srejx", "init s+ Before feed1 Pre1 Read1 After1 r+1 reject s- r-1 x- cancelled"},
       {"srx", "close:srejx", "init s+ Before feed1 Pre1 Read1 After1 r+1 close s- r-1 x- x+ cancelled"},
       {"lf", "locate:slf firmware:rlf", "locate s- l- f- l+ firmware r--1 l- f- f+ cancelled"}});
}

TEST(Engine, LastReferenceMayBeReleasedInsideAnEventOrAWait) {
  for (const char* at :
       {"init", "Before+", "feed1", "Pre1", "Read1", "BeforePrint1", "print", "After1", "close", "eject"}) {
    EngineBench bench;
    bench.does = {{at, "o"}};
    EXPECT_EQ(bench.Do("B1"),
              "init Before+ feed1 Pre1 Read1 BeforePrint1 print AfterPrint1 After1 eject close B+1 gone")
        << at;
  }
}

// The inner sheet is read without its imprint; the outer one is out of the imprinter's reach.
TEST(Engine, NestedReadsGiveEachSheetOnceWithItsOwnResults) {
  Play({{"sp", "Before+:r",
         "init s+ Before+ Before feed1 Pre1 Read1 After1 r+1 feed2 Pre2 Read2 BeforePrint2 print AfterPrint2 "
         "After2 p+2"},
        {"sp", "Pre1:r", "init s+ Before+ feed1 Pre1 Before feed2 Pre2 Read2 After2 r+2 Read1 After1 p+1"},
        {"sp", "Read1:r", "init s+ Before+ feed1 Pre1 Read1 Before feed2 Pre2 Read2 After2 r+2 After1 p+1"},
        {"sp", "BeforePrint1:r",
         "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 Before feed2 Pre2 Read2 After2 r+2 After1 p+1"},
        {"sp", "After1:r",
         "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print AfterPrint1 After1 Before feed2 Pre2 Read2 "
         "After2 r+2 p+1"},
        {"sr", "After1:rc",
         "init s+ Before feed1 Pre1 Read1 After1 Before feed2 Pre2 Read2 After2 r+2 r+1 cancelled"},
        {"sp", "Pre1:rj feed2:! After1:e",
         "init s+ Before+ feed1 Pre1 Before feed2 r-1 reject Read1 BeforePrint1 print AfterPrint1 After1 p+1 "
         "cancelled"}});
}

// The outer sheet is out of reach: the scanner would reject the inner one instead.
TEST(Engine, NestedSheetsAreDisposedOfByTheirOwnFlagAlone) {
  Play(
      {{"b1", "Read1:r After1:j",
        "init Before feed1 Pre1 Read1 Before feed2 Pre2 Read2 After2 r+2 After1 eject close b+1 cancelled"},
       {"b1", "Read1:re After1:j",
        "init Before feed1 Pre1 Read1 Before feed2 Pre2 Read2 After2 r+2 eject After1 close b+1 cancelled"}});
}

TEST(Engine, EndReaderInAnyEventEndsTheBatchAndTouchesTheWireNoMore) {
  Play({{"B", "Before+:x", "init Before+ close x+ B+1 cancelled"},
        {"B", "Pre1:x", "init Before+ feed1 Pre1 close x+ Read1 After1 B+1 cancelled"},
        {"B", "Read1:x", "init Before+ feed1 Pre1 Read1 close x+ After1 B+1 cancelled"},
        {"B", "BeforePrint1:x", "init Before+ feed1 Pre1 Read1 BeforePrint1 close x+ After1 B+1 cancelled"},
        {"B", "After1:x",
         "init Before+ feed1 Pre1 Read1 BeforePrint1 print AfterPrint1 After1 close x+ B+1 cancelled"},
        {"b2", "After1:xs",
         "init Before feed1 Pre1 Read1 After1 close x+ init s+ Before feed2 Pre2 Read2 After2 eject close "
         "b+2 cancelled"}});
}

TEST(Engine, SinkMayRemoveAnotherOneInsideAnEvent) {
  EngineBench bench;
  RecordingEvents second;
  RecordingEvents third;
  for (RecordingEvents* sink : {&second, &third}) bench.reader->AddEvents(*sink);
  second.onBeforeSheet = [&](bool&) { bench.reader->RemoveEvents(third); };
  bench.Do("sr");
  EXPECT_EQ(second.names.size(), 4U);
  EXPECT_THAT(third.names, IsEmpty());
}

TEST(Engine, LastReferenceMayBeReleasedWhereverAHostIsCalled) {
  void (*const calls[])(clsTeskReader&) = {
      [](clsTeskReader& r) { r.LoadDefaults(teskReaderTypeDatawinHemeraC); },
      [](clsTeskReader& r) { r.LoadSettings(teskReaderRegistryKeyCurrentUser, "A"); },
      [](clsTeskReader& r) { r.SaveSettings(teskReaderRegistryKeyCurrentUser, "A"); },
      [](clsTeskReader& r) { r.SetPrinter(nullptr), r.SetReaderType(teskReaderTypeNone); },
      [](clsTeskReader& r) { r.HelpID(static_cast<teskReaderHelpID>(7)); },
      [](clsTeskReader& r) { r.SetHelpID(static_cast<teskReaderHelpID>(7), 1); },
      [](clsTeskReader& r) { r.ShowOptions(); }};
  for (const auto& call : calls) {
    EngineBench bench;
    auto only = bench.NewReader();
    const std::weak_ptr<clsTeskReader> watch = only;
    bench.host.onError = [&] {
      only.reset();
      EXPECT_FALSE(watch.expired()) << &call - calls << " goes on with a reader that is gone";
    };
    call(*only);
    EXPECT_TRUE(watch.expired()) << &call - calls;
  }
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
      const auto around =
          SheetsOf(outer, [&] { EXPECT_TRUE(++inside > 4 || SheetsOf(inner) == innerAlone); });
      EXPECT_EQ(around, alone) << outer << " around " << inner;
    }
  }
}

// Notices when it is called after its end.
struct ShortLivedHost : HostServices {
  ~ShortLivedHost() override { alive = 0; }
  std::string LoadString(const std::string& text) override { return alive == kAlive ? text : "gone"; }
  bool MsgBoxEx(const std::string&, const std::string& text) override { return text == "text"; }
  void RaiseError(const ErrorReport&) override { reports += alive == kAlive ? 1 : 1'000'000; }
  bool Silent() const override { return false; }
  void SetSilent(bool) override {}

  static constexpr int kAlive = 4711;
  static inline std::atomic<int> reports = 0;
  volatile int alive = kAlive;
};

TEST(HostServicesThreads, MayInstallAndReportAtOnce) {
  constexpr int kThreads = 4;
  constexpr int kTurns = 20'000;
  std::atomic<int> garbled = 0;
  SetError(std::make_shared<ShortLivedHost>());
  std::barrier start(kThreads);
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        for (int turn = 0; turn < kTurns; ++turn) {
          SetError(std::make_shared<ShortLivedHost>());
          if (LoadString("text") != "text") ++garbled;
          ReportError(ErrorReport{.number = 5, .source = "a.b", .message = "c"});
          ShowMessage("title", "text");
          SetMessageBox(nullptr);
        }
      });
    }
  }
  SetError(nullptr);
  EXPECT_EQ(std::pair(ShortLivedHost::reports.load(), garbled.load()), std::pair(kThreads * kTurns, 0));
}

}  // namespace
}  // namespace tesk::test
