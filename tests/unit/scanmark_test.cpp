// The ScanMark driver against its simulated scanner: the bytes that it sends, the marks that it stores, and
// what it tells the operator.
#include <algorithm>
#include <functional>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/conversions.h"
#include "drivers/basScantron.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using simulator::Exit;
using simulator::Fault;
using simulator::FaultKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Messages = std::vector<RecordingHost::Message>;

simulator::Options Stock(std::vector<Fault> faults = {}, std::int32_t count = 3, bool twoSided = true) {
  return {.count = count,
          .seed = 7,
          .geometry = simulator::Geometry{50, 48, twoSided},
          .faults = std::move(faults)};
}

// A bench whose scanner can be asked what became of its sheets.
struct ScanMarkBench {
  ScanMarkBench(teskReaderType type, simulator::Options options)
      : scanner(simulator::CreateScanner(type, std::move(options))), bench(type, scanner) {}

  // The commands since the last call, each as its text.
  std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    std::string text;
    for (const char c : std::exchange(bench.serial->sent, {})) {
      if (c == '\x1b') {
        text.clear();
      } else if (c == '\r') {
        commands.push_back(text);
      } else {
        text += c;
      }
    }
    return commands;
  }

  std::shared_ptr<simulator::SheetScanner> scanner;
  Bench bench;
};

// ---- Form download

struct DownloadCase {
  const char* name;
  teskReaderType type;
  void (*setUp)(clsTeskReader&);
  std::vector<std::string> commands;
};

void AddWindow(clsTeskReader& reader, std::array<std::int16_t, 8> v) {
  auto window = std::make_shared<clsTeskReaderWindow>();
  window->SetStartRow(v[0]);
  window->SetNumRows(v[1]);
  window->SetRowGap(v[2]);
  window->SetStartCol(v[3]);
  window->SetNumCols(v[4]);
  window->SetColGap(v[5]);
  window->SetPage(v[6]);
  window->SetOrientation(v[7]);
  reader.Windows()->Add(window);
  reader.SetRecognitionMode(teskRecognitionTypeWindow);
}

void TwoSided(clsTeskReader& reader) {
  reader.SetDuplex(true);
  reader.SetDuplexForm(true);
}

const DownloadCase kDownloads[] = {
    {"OneSide",
     teskReaderTypeScantronScanMark2500,
     [](clsTeskReader&) {},
     {"SRST", "FRM=FS 50 0 48 N N N", "FRM=DK 1 1 1 50 48 L 50 48", "FRM=LS", "PRN$ 1 N"}},
    {"TwoSides",
     teskReaderTypeScantronScanMark2500,
     [](clsTeskReader& r) {
       TwoSided(r);
       r.SetSide2Rows(From1({40}));
     },
     {"SRST", "FRM=FS 50 40 48 N N N", "FRM=DK 1 1 1 50 48 L 50 48", "FRM=DK 2 1 1 40 48 L 40 48", "FRM=LS",
      "PRN$ 1 N"}},
    {"TwoSidedFormWithoutDuplex",
     teskReaderTypeScantronScanMark2500,
     [](clsTeskReader& r) {
       r.SetDuplex(false);
       r.SetDuplexForm(true);
     },
     {"SRST", "FRM=FS 50 0 48 N N N", "FRM=DK 1 1 1 50 48 L 50 48", "FRM=LS", "PRN$ 1 N"}},
    {"RawModel",
     teskReaderTypeScantron8400,
     [](clsTeskReader& r) {
       TwoSided(r);
       r.SetSide1Rows(From1({3}));
       r.SetSide1Cols(From1({5}));
       r.SetSide2Rows(From1({2}));
       r.SetSide2Cols(From1({5}));
     },
     {"SRST", "THR= 35", "FRM=FS 3 2 5 N N N", "FRM=MC Y N 1 1 1 1 3 5 L 3 5 11111",
      "FRM=MC Y N 1 2 1 1 2 5 L 2 5 11111", "FRM=LS", "PRN$ 1 N"}},
    {"SheetsFromElementOneAndAnEmptySide",
     teskReaderTypeScantronScanMark4000,
     [](clsTeskReader& r) {
       r.SetSide1Rows(Int16Array({99, 0, 30}, 0));
       r.SetSide1Cols(Int16Array({99, 48, 40}, 0));
     },
     {"SRST", "FRM=FS 0 0 48 N N N", "FRM=FS 30 0 40 N N N", "FRM=DK 1 1 1 30 40 L 30 40", "FRM=LS",
      "PRN$ 1 N"}},
    {"ActiveImprinter",
     teskReaderTypeScantronScanMark2500,
     [](clsTeskReader& r) {
       r.Printer()->SetEnabled(true);
       r.Printer()->SetActive(true);
     },
     {"SRST", "FRM=FS 50 0 48 N N N", "FRM=DK 1 1 1 50 48 L 50 48", "FRM=LS", "PRN$ 1 Y"}},
    {"Windows",
     teskReaderTypeScantronScanMark2500,
     [](clsTeskReader& r) {
       TwoSided(r);
       AddWindow(r, {10, 3, 2, 5, 4, 1, 1, 1});     // by line
       AddWindow(r, {20, 5, -2, 40, 4, -3, 0, 0});  // right to left, bottom to top, by column
       AddWindow(r, {1, 2, 1, 1, 2, 1, 2, 2});      // any other orientation goes by column
       AddWindow(r, {1, 2, 1, 1, 2, 1, 3, 1});      // a third page is on neither side
     },
     {"SRST", "FRM=FS 50 50 48 N N N", "FRM=DK 1 10 5 14 8 L 3 4", "FRM=DK 1 12 31 20 40 C 4 5",
      "FRM=DK 2 1 1 2 2 C 2 2", "FRM=LS", "PRN$ 1 N"}},
};

class FormDownload : public ::testing::TestWithParam<DownloadCase> {};

TEST_P(FormDownload, SendsExactlyTheseCommands) {
  ScanMarkBench b(GetParam().type, Stock());
  GetParam().setUp(*b.bench.reader);
  EXPECT_TRUE(b.bench.reader->StartReader());
  EXPECT_EQ(b.Commands(), GetParam().commands);
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Forms, FormDownload, ::testing::ValuesIn(kDownloads),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ScanMark, GeometryThatDoesNotFitTogetherIsReportedNotSent) {
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock());
  b.bench.reader->SetSide1Rows(From1({50, 40}));  // columns for one sheet only
  EXPECT_FALSE(b.bench.reader->StartReader());
  EXPECT_THAT(b.bench.host.Sources(), ElementsAre("basScantron.DownloadFormST"));
  EXPECT_EQ(b.bench.host.errors[0].number, 9);
}

// ---- Reading

std::vector<SideArray> Fronts(const ScanMarkBench&, const simulator::Options& options, std::int16_t darkest) {
  std::vector<SideArray> fronts;
  for (const auto& sheet :
       simulator::GenerateSheets(options.count, options.seed, *options.geometry, darkest)) {
    fronts.push_back(sheet.side1);
  }
  return fronts;
}

struct ReadCase {
  const char* name;
  teskReaderType type;
  std::int16_t darkest;
  bool twoSided;
  bool rejecter;
};

class PageRead : public ::testing::TestWithParam<ReadCase> {};

TEST_P(PageRead, StoresEverySheetAsItIs) {
  const ReadCase& c = GetParam();
  const auto options = Stock({}, 3, c.twoSided);
  ScanMarkBench b(c.type, options);
  if (c.twoSided) TwoSided(*b.bench.reader);
  b.bench.reader->SetRejecter(c.rejecter);
  b.bench.events.onAfterSheet = [&](bool&) { b.bench.reader->EjectPage(); };
  std::int32_t count = 0;
  EXPECT_TRUE(b.bench.reader->ReadBatch(false, 3, count));
  EXPECT_EQ(b.bench.events.side1, Fronts(b, options, c.darkest));
  const auto sheets = simulator::GenerateSheets(3, 7, *options.geometry, c.darkest);
  for (std::size_t i = 0; i < sheets.size() && i < b.bench.events.side2.size(); ++i) {
    EXPECT_EQ(b.bench.events.side2[i], c.twoSided ? sheets[i].side2 : SideArray()) << i;
  }
  EXPECT_EQ(b.bench.reader->Side1TimingMarks(), 50);
  EXPECT_EQ(b.bench.reader->Side2TimingMarks(), c.twoSided ? 50 : 0);
  const auto commands = b.Commands();
  EXPECT_EQ(std::ranges::count(commands, "READ 5 Y E"), c.rejecter ? 3 : 0);
  EXPECT_EQ(std::ranges::count(commands, "READ 5 Y"), c.rejecter ? 0 : 3);
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
  EXPECT_FALSE(b.bench.serial->open);
}

INSTANTIATE_TEST_SUITE_P(
    Models, PageRead,
    ::testing::Values(ReadCase{"OneSide", teskReaderTypeScantronScanMark2500, 15, false, false},
                      ReadCase{"TwoSides", teskReaderTypeScantronScanMark2500, 15, true, false},
                      ReadCase{"HeldForTheRejecter", teskReaderTypeScantronScanMark4000, 15, true, true},
                      ReadCase{"HandFed", teskReaderTypeScantronScanMark2000, 15, false, false},
                      ReadCase{"SmallES", teskReaderTypeScantronScanMarkES2010, 15, false, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ScanMark, RawModelsStoreTheByteItself) {
  SideArray front(50, 48);
  front.At(1, 1) = 99;
  front.At(1, 2) = 12;
  front.At(50, 48) = 48;
  ScanMarkBench b(teskReaderTypeScantron8000, {.sheets = {{.side1 = front, .side2 = {}, .barcodes = {}}}});
  ASSERT_TRUE(b.bench.reader->StartReader());
  ASSERT_TRUE(b.bench.reader->ReadPage());
  EXPECT_EQ(b.bench.reader->Side1Array(), front);
}

// A scanner in four lines: every command is acknowledged, every sheet is the given run of bytes. What it says
// of the sheet waits until `rest` has followed the data, `pause` later.
class ScriptedScanMark : public simulator::Scanner {
 public:
  explicit ScriptedScanMark(std::string data, std::string status = "00      !   ", std::string rest = {},
                            simulator::Milliseconds pause = {})
      : data_(std::move(data)), status_(std::move(status)), rest_(std::move(rest)), pause_(pause) {}

 protected:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    if (byte != '\r') {
      line_ += static_cast<char>(byte);
      return;
    }
    const std::string command = std::exchange(line_, {});
    const bool read = command.starts_with("\x1bREAD 5 Y");
    Reply(command == "\x1bQSTS" ? status_ : read ? data_ : std::string("\r"), now);
    if (read && !rest_.empty()) Reply(rest_, now, pause_);
  }

 private:
  std::string data_;
  std::string status_;
  std::string rest_;
  simulator::Milliseconds pause_;
  std::string line_;
};

struct DataCase {
  const char* name;
  std::string data;
  bool read;
  std::vector<std::array<int, 3>> side1;  // row, column, value
  std::vector<std::array<int, 3>> side2;
  std::vector<std::string> sources;
};

const std::string kRow(48, '1');

const DataCase kData[] = {
    {"NoValueIsNoSheet", "\r", false, {}, {}, {}},
    {"ShortDataLeavesTheRestAndSkipsSide2", "5\r", true, {{1, 1, 5}}, {}, {}},
    {"FortyEightValuesMakeARow", std::string(48, '0') + "7\r", true, {{2, 1, 7}}, {}, {}},
    {"ValuesBelowTheScaleAreStoredAsTheyAre", "/\r", true, {{1, 1, -1}}, {}, {}},
    {"HighestByte", "\xff\r", true, {{1, 1, 207}}, {}, {}},
    {"Side2FollowsAtTheEndOfSide1", std::string(96, '0') + "9\r", true, {}, {{1, 1, 9}}, {}},
    {"Side2HasNoLimitOfItsOwn",
     std::string(96, '0') + std::string(48, '0') + "9\r",
     false,
     {},
     {},
     {"basScantron.ReadPageST"}},
};

class PageData : public ::testing::TestWithParam<DataCase> {};

TEST_P(PageData, IsStoredRowByRow) {
  const DataCase& c = GetParam();
  Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>(c.data));
  bench.reader->SetSide1Rows(From1({2}));
  bench.reader->SetSide2Rows(From1({1}));
  TwoSided(*bench.reader);
  ASSERT_TRUE(bench.reader->StartReader());
  bench.reader->StoreSheet({.side1 = SideArray(1, 1)});
  EXPECT_EQ(bench.reader->ReadPage(), c.read);
  EXPECT_EQ(bench.host.Sources(), c.sources);
  if (!c.read) {
    EXPECT_EQ(bench.reader->Side1Array(), SideArray(1, 1)) << "the engine's arrays were touched";
    return;
  }
  SideArray side1(2, 48);
  for (const auto& [row, column, value] : c.side1) side1.At(row, column) = static_cast<std::int16_t>(value);
  EXPECT_EQ(bench.reader->Side1Array(), side1);
  if (c.side2.empty()) {
    EXPECT_TRUE(bench.reader->Side2Array().Empty() || c.data.size() > 96);
    return;
  }
  for (const auto& [row, column, value] : c.side2)
    EXPECT_EQ(bench.reader->Side2Array().At(row, column), value);
}

INSTANTIATE_TEST_SUITE_P(Records, PageData, ::testing::ValuesIn(kData),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ScanMark, SheetWithMoreBehindItsEndIsRefusedHoweverLateThatComes) {
  const std::string kLine(48, '1');
  const struct {
    const char* what;
    teskReaderType type;
    std::string data;
    std::string rest;
    bool twoSided = false;
    bool windows = false;
  } kCases[] = {
      {"a value damaged into an end", teskReaderTypeScantronScanMark2500, kLine + "1\r",
       kLine.substr(2) + "\r"},
      {"the last value", teskReaderTypeScantronScanMark2500, kLine + kLine.substr(1) + "\r", "\r"},
      {"on side 2", teskReaderTypeScantronScanMark2500, kLine + kLine + "1\r", kLine.substr(2) + "\r", true},
      {"in windows", teskReaderTypeScantronScanMark2500, "12\r", "4\r", false, true},
      {"a raw value of 13", teskReaderTypeScantron8000, kLine + "\r", kLine.substr(1) + "\r"},
      {"the scanner starts anew", teskReaderTypeScantronScanMark5500, kLine + "12", "\rSCANMARK 5500\r"},
      {"one value too many", teskReaderTypeScantronScanMark2500, kLine + kLine, "1\r"},
  };
  for (const auto& c : kCases) {
    for (const int pause : {0, 20, 400, 5000, 10300}) {
      Bench bench(c.type, std::make_shared<ScriptedScanMark>(c.data, "00      !   ", c.rest,
                                                             simulator::Milliseconds(pause)));
      bench.reader->SetSide1Rows(From1({2}));
      bench.reader->SetSide2Rows(From1({1}));
      if (c.twoSided) TwoSided(*bench.reader);
      if (c.windows) AddWindow(*bench.reader, {1, 2, 1, 1, 2, 1, 1, 1});
      ASSERT_TRUE(bench.reader->StartReader());
      EXPECT_FALSE(bench.reader->ReadPage()) << c.what << ", " << pause << " ms later";
      EXPECT_EQ(bench.host.messages.size(), 1U) << c.what;
      EXPECT_TRUE(bench.reader->Side1Array().Empty()) << c.what;
    }
  }
}

TEST(ScanMark, EnginesOfTwoModelsKeepTheirScalesApart) {
  Bench characters(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>("7\r"));
  Bench raw(teskReaderTypeScantron8000, std::make_shared<ScriptedScanMark>("\x63\r"));
  ASSERT_TRUE(characters.reader->StartReader() && raw.reader->StartReader());
  ASSERT_TRUE(characters.reader->ReadPage() && raw.reader->ReadPage());
  EXPECT_EQ(characters.reader->Side1Array().At(1, 1), 7);
  EXPECT_EQ(raw.reader->Side1Array().At(1, 1), 99);
}

TEST(ScanMark, FullSheetWithoutAnEndIsASheet) {
  Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>(std::string(96, '3')));
  bench.reader->SetSide1Rows(From1({2}));
  ASSERT_TRUE(bench.reader->StartReader());
  EXPECT_TRUE(bench.reader->ReadPage());
  EXPECT_EQ(bench.reader->Side1Array().At(2, 48), 3);
}

TEST(ScanMark, ExtentNarrowerThanARowFailsTheReadUntouched) {
  Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>(kRow + "\r"));
  bench.reader->SetSide1Cols(From1({40}));
  ASSERT_TRUE(bench.reader->StartReader());
  EXPECT_FALSE(bench.reader->ReadPage());
  ASSERT_THAT(bench.host.Sources(), ElementsAre("basScantron.ReadPageST"));
  EXPECT_EQ(bench.host.errors[0].number, 9);
  EXPECT_TRUE(bench.reader->CancelScan());
  EXPECT_TRUE(bench.reader->Side1Array().Empty());
}

TEST(ScanMark, LateEndOfAFullSheetIsNotTakenForTheStatus) {
  // At the line's pace the terminator comes after the last value has been stored.
  const auto options = Stock({}, 2, false);
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, options);
  b.scanner->PaceAt(1920);
  ASSERT_TRUE(b.bench.reader->StartReader());
  EXPECT_TRUE(b.bench.reader->ReadPage());
  EXPECT_TRUE(b.bench.reader->ReadPage());
  EXPECT_EQ(b.bench.events.side1, Fronts(b, options, 15));
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

// Acknowledges the eject commands only after a while, as transports do.
class LateAcknowledger : public simulator::Scanner {
 public:
  LateAcknowledger(simulator::Milliseconds delay, std::string data) : delay_(delay), data_(std::move(data)) {}

 private:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    if (byte != '\r') {
      line_ += static_cast<char>(byte);
      return;
    }
    const std::string command = std::exchange(line_, {});
    if (command.starts_with("\x1b"
                            "EJCT")) {
      late_ = now + delay_;
    } else if (command == "\x1bQSTS") {
      Reply("0000000!!   ", now);
    } else {
      Reply(command.starts_with("\x1bREAD") ? data_ : "\r", now);
    }
    // The late answer goes out with whatever is said next, in front of it or behind.
    if (late_ && now >= *late_) {
      late_.reset();
      Reply("\r", now);
    }
  }

  simulator::Milliseconds delay_;
  std::string data_;
  std::string line_;
  std::optional<simulator::Time> late_;
};

TEST(ScanMark, LateAcknowledgementOfARejectMovesNoMark) {
  for (const int delay : {0, 100, 600, 740, 760, 800, 900, 1500}) {
    Bench bench(teskReaderTypeScantronScanMark4000,
                std::make_shared<LateAcknowledger>(simulator::Milliseconds(delay), "123456\r"));
    ASSERT_TRUE(bench.reader->StartReader());
    ASSERT_TRUE(bench.reader->ReadPage());
    const SideArray first = bench.reader->Side1Array();
    bench.reader->RejectPage();
    if (bench.reader->ReadPage()) {
      EXPECT_EQ(bench.reader->Side1Array(), first) << delay;
    }
  }
}

// Says to each command what the test has it say, in pieces: the text, and how long it comes after the one
// before. `count`: how many commands like this one there were, with this one.
class Saying : public simulator::Scanner {
 public:
  using Pieces = std::vector<std::pair<std::string, int>>;  // milliseconds
  using Says = std::function<Pieces(const std::string& command, int count)>;

  explicit Saying(Says says) : says_(std::move(says)) {}

 private:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    if (byte != '\r') {
      line_ += static_cast<char>(byte);
      return;
    }
    const std::string command = std::exchange(line_, {}).substr(1, 4);
    simulator::Milliseconds delay{0};
    for (const auto& [text, pause] : says_(command, ++counts_[command])) {
      Reply(text, now, delay += simulator::Milliseconds(pause));
    }
  }

  Says says_;
  std::string line_;
  std::map<std::string, int> counts_;
};

TEST(ScanMark, StatusBehindAStrayByteIsAskedForAgain) {
  const auto scanner = std::make_shared<Saying>([](const std::string& command, int count) -> Saying::Pieces {
    if (command == "QSTS") return {{count == 1 ? "\r00000000!   " : "00000000!   ", 0}};
    return {{command == "READ" ? "123\r" : "\r", 0}};
  });
  Bench bench(teskReaderTypeScantronScanMark2500, scanner);
  ASSERT_TRUE(bench.reader->StartReader());
  ASSERT_TRUE(bench.reader->ReadPage());
  EXPECT_EQ(bench.reader->Side1Array().At(1, 1), 1);
  EXPECT_THAT(bench.host.messages, IsEmpty());
}

TEST(ScanMark, WhatStandsBehindAStatusIsTheStatussOwnOrRefusesTheSheet) {
  const std::string kSheet = kRow + kRow;
  const struct {
    const char* what;
    Saying::Pieces (*status)(int count);
    Saying::Pieces firstSheet;
    bool first;
  } kCases[] = {
      {"the late line end of a record that never came before",
       [](int n) -> Saying::Pieces {
         return {{"00      !  " + NumberText(n), 0}, {"\r", n == 1 ? 0 : 500}};
       },
       {{kSheet + "\r", 0}},
       true},
      {"a line end that was late when it was to be learnt",
       [](int n) -> Saying::Pieces {
         return {{"00      !   ", 0}, {"\r", n == 1 ? 900 : 1}};
       },
       {{kSheet + "\r", 0}},
       false},
      {"the line end of a record that a damaged sheet's has moved",
       [](int) -> Saying::Pieces {
         return {{"0000000!!  \r", 0}};
       },
       {{kSheet.substr(1) + "\r", 0}, {"\r", 20}},
       false},
  };
  for (const auto& c : kCases) {
    const auto scanner = std::make_shared<Saying>([&](const std::string& command, int n) -> Saying::Pieces {
      if (command == "QSTS") return c.status(n);
      if (command != "READ") return {{"\r", 0}};
      return n == 1 ? c.firstSheet : Saying::Pieces{{kSheet + "\r", 0}};
    });
    Bench bench(teskReaderTypeScantronScanMark2500, scanner);
    bench.reader->SetSide1Rows(From1({2}));
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_EQ(bench.reader->ReadPage(), c.first) << c.what;
    EXPECT_THAT(bench.host.messages, SizeIs(c.first ? 0 : 1)) << c.what;
    bench.reader->SetCancelScan(false);
    EXPECT_TRUE(bench.reader->ReadPage()) << c.what;
  }
}

TEST(ScanMark, LineEndBehindAnAcknowledgementMayComeLate) {
  for (const int late : {1, 100, 500}) {
    const auto scanner = std::make_shared<Saying>([&](const std::string&, int) -> Saying::Pieces {
      return {{"\r", 0}, {"\n", late}};
    });
    Bench bench(teskReaderTypeScantronScanMark2500, scanner);
    EXPECT_TRUE(bench.reader->StartReader()) << late;
  }
}

TEST(ScanMark, RejectAcknowledgedLaterThanAShortTimeOutIsNoFault) {
  const auto scanner = std::make_shared<Saying>([](const std::string& command, int) -> Saying::Pieces {
    return {{"\r", command == "EJCT" ? 1200 : 0}};
  });
  Bench bench(teskReaderTypeScantronScanMark4000, scanner);
  bench.reader->SetTimeOut(1);
  ASSERT_TRUE(bench.reader->StartReader());
  EXPECT_TRUE(basScantron::RejectPageST(*bench.reader, true));
  EXPECT_THAT(bench.host.errors, IsEmpty());
}

TEST(ScanMark, CancelInTheMiddleOfASlowSheetStillResetsTheScannerInSilence) {
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock({}, 1, false));
  b.scanner->PaceAt(480);
  ASSERT_TRUE(b.bench.reader->StartReader());
  b.bench.time->onMessages = [&](int) {
    if (b.bench.time->Elapsed() > 2s) b.bench.reader->SetCancelScan(true);
  };
  EXPECT_FALSE(b.bench.reader->ReadPage());
  b.Commands();
  b.bench.reader->EndReader();
  EXPECT_THAT(b.Commands(), ElementsAre("SRST"));
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
}

TEST(ScanMark, WindowReadTellsItsTimeOutsInItsOwnWords) {
  const std::pair<const char*, const char*> kCases[] = {
      {"",
       "There was no response from the Scantron scanner. The scanner timed out waiting for the scanned "
       "data."},
      {"1",
       "There was no response from the Scantron scanner. The scanner timed out waiting to receive the "
       "scanned data."}};
  for (const auto& [data, text] : kCases) {
    Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>(data));
    AddWindow(*bench.reader, {1, 2, 1, 1, 2, 1, 1, 1});
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_FALSE(bench.reader->ReadPage());
    EXPECT_EQ(bench.host.messages, (Messages{{"Read Error", text}}));
  }
}

TEST(ScanMark, HostMayReplaceEverythingInsideAWait) {
  for (int turn = 1; turn <= 30; ++turn) {
    ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock({}, 2, false));
    b.scanner->PaceAt(1920);
    b.bench.time->onMessages = [&](int now) {
      if (now != turn) return;
      b.bench.reader->SetfComm(nullptr);
      b.bench.reader->SetPrinter(nullptr);
      b.bench.reader->SetWindows(nullptr);
      b.bench.reader->SetSide1Rows(From1({1}));
    };
    std::int32_t count = 0;
    b.bench.reader->ReadBatch(false, 2, count);
    for (const SideArray& side : b.bench.events.side1) EXPECT_EQ(side.Columns(), 48) << turn;
  }
}

TEST(ScanMark, WindowsAreStoredInTheOrderOfTheirWalk) {
  // Four windows; the values 1, 2, 3 ... in the order of the wire.
  Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>("123456789:;<=>?@\r"));
  bench.reader->SetSide1Rows(From1({6}));
  bench.reader->SetSide1Cols(From1({6}));
  bench.reader->SetSide2Rows(From1({6}));
  bench.reader->SetSide2Cols(From1({6}));
  AddWindow(*bench.reader, {1, 2, 2, 1, 2, 3, 1, 1});    // line by line: (1,1) (1,4) (3,1) (3,4)
  AddWindow(*bench.reader, {6, 2, -1, 6, 2, -1, 1, 0});  // column by column from (5,5)
  AddWindow(*bench.reader, {1, 2, 1, 1, 2, 1, 2, 2});    // the first of side 2
  AddWindow(*bench.reader, {3, 2, 1, 3, 2, 1, 1, 2});    // and so is all that follows
  ASSERT_TRUE(bench.reader->StartReader());
  ASSERT_TRUE(bench.reader->ReadPage());
  SideArray side1(6, 6);
  side1.At(1, 1) = 1;
  side1.At(1, 4) = 2;
  side1.At(3, 1) = 3;
  side1.At(3, 4) = 4;
  side1.At(5, 5) = 5;
  side1.At(6, 5) = 6;
  side1.At(5, 6) = 7;
  side1.At(6, 6) = 8;
  SideArray side2(6, 6);
  side2.At(1, 1) = 9;
  side2.At(1, 2) = 10;
  side2.At(2, 1) = 11;
  side2.At(2, 2) = 12;
  side2.At(3, 3) = 13;
  side2.At(3, 4) = 14;
  side2.At(4, 3) = 15;
  side2.At(4, 4) = 16;
  EXPECT_EQ(bench.reader->Side1Array(), side1);
  EXPECT_EQ(bench.reader->Side2Array(), side2);
  EXPECT_EQ(bench.reader->Side1TimingMarks(), -1);
}

TEST(ScanMark, WindowOutsideTheSideFailsTheReadUntouched) {
  Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<ScriptedScanMark>("123\r"));
  AddWindow(*bench.reader, {0, 1, 1, 1, 3, 1, 1, 1});
  ASSERT_TRUE(bench.reader->StartReader());
  EXPECT_FALSE(bench.reader->ReadPage());
  EXPECT_THAT(bench.host.Sources(), ElementsAre("basScantron.ReadWindowsST"));
  EXPECT_TRUE(bench.reader->Side1Array().Empty());
}

// ---- What the operator is told

struct FaultCase {
  const char* name;
  teskReaderType type;
  Fault fault;
  Messages messages;
};

const char* const kNoInit = "There was no response from the Scantron scanner. Could not initialize!";
const std::string kDownload =
    "An error occurred trying to download the form definition to the Scantron scanner";

const FaultCase kFaults[] = {
    {"ResetSilence",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::SilenceReset},
     {{"No Response", kNoInit}}},
    {"Threshold",
     teskReaderTypeScantron8000,
     {FaultKind::RefuseThreshold},
     {{"Initialize Error", kDownload + " when issuing the scanner threshold command."}}},
    {"FormStart",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::RefuseFormStart},
     {{"Initialize Error", kDownload + " when issuing the form start command."}}},
    {"Side1",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::RefuseRegion},
     {{"Initialize Error", kDownload + ".  Invalid sheet definition.|Sheet: 1|Side: 1"}}},
    {"Side2",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::RefuseRegion, 2},
     {{"Initialize Error", kDownload + ".  Invalid sheet definition|Sheet: 1|Side: 2"}}},
    {"FormEnd",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::RefuseFormEnd},
     {{"Initialize Error", kDownload + " while issuing the end of form command."}}},
    {"Printer", teskReaderTypeScantronScanMark2500, {FaultKind::RefusePrinter}, {}},
    {"Jam",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::Jam},
     {{"Paper Jam", "The Scantron scanner reports a paper jam. Please clear the jam and try again."}}},
    {"DoubleFeed",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::DoubleFeed},
     {{"Double Feed", "The Scantron scanner reports a double feed. Please rescan the page."}}},
    {"TimingLine",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::Timing},
     {{"Initialize Error",
       "The Scantron scanner reported a timing line error. Make sure that the form corresponds to the open "
       "template and that it was not skewed when scanning. Please rescan."}}},
    {"FormErrorWithoutBlankIsSilent", teskReaderTypeScantronScanMark2500, {FaultKind::FormError}, {}},
    {"CommandError",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::CommandError},
     {{"Command Error", "Your Scantron scanner reported a command error. Error #50"}}},
    {"UnknownStatusIsSilent", teskReaderTypeScantronScanMark2500, {FaultKind::UnknownStatus}, {}},
    {"EmptyHopperIsSilent", teskReaderTypeScantronScanMark2500, {FaultKind::Empty}, {}},
    {"StatusSilence",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::SilenceStatus},
     {{"Initialize Error", kNoInit}}},
    {"ShortStatus",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::ShortStatus},
     {{"Initialize Error", kNoInit}}},
    {"ReadSilence",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::Silence},
     {{"Read Error",
       "There was no response from the Scantron scanner. The scanner timed out waiting for scanned data."}}},
    {"DataCut",
     teskReaderTypeScantronScanMark2500,
     {FaultKind::Cut, 1, 100},
     {{"Read Error",
       "There was no response from the Scantron scanner. The scanner timed out waiting to receive the "
       "scanned "
       "data."}}},
};

class Faults : public ::testing::TestWithParam<FaultCase> {};

TEST_P(Faults, ReachTheOperatorInTheirOwnWordsAndLeaveNoSheet) {
  const FaultCase& c = GetParam();
  ScanMarkBench b(c.type, Stock({c.fault}));
  TwoSided(*b.bench.reader);
  std::int32_t count = 0;
  b.bench.reader->ReadBatch(false, 1, count);
  EXPECT_EQ(b.bench.host.messages, c.messages);
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
  EXPECT_THAT(b.bench.events.side1, IsEmpty());
  EXPECT_TRUE(b.bench.reader->Side1Array().Empty());
  EXPECT_TRUE(b.bench.reader->CancelScan());
  EXPECT_FALSE(b.bench.serial->open);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Faults, ::testing::ValuesIn(kFaults),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ScanMark, RefusedWindowOfSide2NamesItsPlaceInTheCollection) {
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock({{FaultKind::RefuseRegion, 2}}));
  TwoSided(*b.bench.reader);
  AddWindow(*b.bench.reader, {1, 2, 1, 1, 2, 1, 1, 1});
  AddWindow(*b.bench.reader, {1, 2, 1, 1, 2, 1, 2, 1});
  EXPECT_FALSE(b.bench.reader->StartReader());
  EXPECT_EQ(
      b.bench.host.messages,
      (Messages{{"Initialize Error", kDownload + ". Invalid sheet definition|Sheet: 1|Side: 2|Field: 2"}}));
}

TEST(ScanMark, ResetAnsweredWithSomethingElseIsAResetError) {
  class Refusing : public simulator::Scanner {
    void OnByte(std::uint8_t byte, simulator::Time now) override {
      if (byte == '\r') Reply("?", now);
    }
  };
  Bench bench(teskReaderTypeScantronScanMark2500, std::make_shared<Refusing>());
  EXPECT_FALSE(bench.reader->StartReader());
  EXPECT_EQ(
      bench.host.messages,
      (Messages{{"Reset Error",
                 "An error occurred trying to reset the Scantron scanner.  Please power the scanner off "
                 "and on and retry the operation."}}));
}

// ---- Disposing and imprinting

TEST(ScanMark, RejectSwitchesTheImprinterOffAndGivesTheSheetTimeToLeave) {
  ScanMarkBench b(teskReaderTypeScantronScanMark4000, Stock());
  b.bench.reader->SetSleepTime(40);
  ASSERT_TRUE(b.bench.reader->StartReader());
  ASSERT_TRUE(b.bench.reader->ReadPage());
  b.Commands();
  const auto before = b.bench.time->Elapsed();
  b.bench.reader->RejectPage();
  EXPECT_THAT(b.Commands(), ElementsAre("PRN$ 1 N ", "EJCT C"));
  EXPECT_GE(b.bench.time->Elapsed() - before, 15 * 40ms);
  ASSERT_THAT(b.scanner->Disposals(), SizeIs(1));
  EXPECT_EQ(b.scanner->Disposals()[0].exit, Exit::Rejected);
}

struct ImprintCase {
  std::int16_t distance;
  std::string buffer;
  std::string command;
};

TEST(ScanMark, ImprintIsThePositionInBlanksAndTheTextCutTo125) {
  const ImprintCase kCases[] = {
      {0, "Ed. 7", "EJCT A Ed. 7"},
      {3, "x", "EJCT A    x"},
      {120, "1234567890", "EJCT A " + std::string(120, ' ') + "12345"},
      {300, "lost", "EJCT A " + std::string(125, ' ')},
      {-1, "y", "EJCT A y"},
      {0, "a\rb\x1b", "EJCT A a b "},
      {0, "M\xC3\xBCller \xE2\x82\xAC", "EJCT A M\xFCller ?"},
  };
  for (const ImprintCase& c : kCases) {
    ScanMarkBench b(teskReaderTypeScantronScanMark4000, Stock());
    auto& printer = *b.bench.reader->Printer();
    printer.SetEnabled(true);
    printer.SetActive(true);
    printer.SetDistance(c.distance);
    printer.SetBuffer1(c.buffer);
    ASSERT_TRUE(b.bench.reader->StartReader());
    ASSERT_TRUE(b.bench.reader->ReadPage(true));
    b.Commands();
    b.bench.reader->EjectPage();
    EXPECT_THAT(b.Commands(), ElementsAre(c.command));
  }
}

TEST(ScanMark, InactiveImprinterLeavesTheTrailingBlank) {
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock());
  b.bench.reader->Printer()->SetBuffer1("never");
  ASSERT_TRUE(b.bench.reader->StartReader());
  ASSERT_TRUE(b.bench.reader->ReadPage());
  b.Commands();
  b.bench.reader->EjectPage();
  EXPECT_THAT(b.Commands(), ElementsAre("EJCT A "));
}

TEST(ScanMark, ModelsWithoutADisposingRoutineAreLeftAlone) {
  ScanMarkBench b(teskReaderTypeScantron8000, Stock());
  ASSERT_TRUE(b.bench.reader->StartReader());
  ASSERT_TRUE(b.bench.reader->ReadPage());
  b.Commands();
  b.bench.reader->EjectPage();
  b.bench.reader->RejectPage();
  EXPECT_THAT(b.Commands(), IsEmpty());
}

TEST(ScanMark, SilenceAtTheEjectIsShown) {
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock({{FaultKind::SilenceEject}}));
  ASSERT_TRUE(b.bench.reader->StartReader());
  ASSERT_TRUE(b.bench.reader->ReadPage());
  b.bench.reader->EjectPage();
  EXPECT_EQ(b.bench.host.messages,
            (Messages{{"Eject Page Error",
                       "There was no response from the Scantron scanner. Could not eject the page!"}}));
}

// ---- Waiting

TEST(ScanMark, PersonHasAllTheTimeToInsertASheet) {
  auto options = Stock({}, 1, false);
  options.timings.insertion = simulator::Milliseconds(60'000);
  ScanMarkBench b(teskReaderTypeScantronScanMark2000, options);
  ASSERT_TRUE(b.bench.reader->StartReader());
  ASSERT_TRUE(b.bench.reader->ReadPage());
  // The stock is empty now: the reader waits until the host gives up.
  int polls = 0;
  b.bench.time->onMessages = [&](int) { b.bench.reader->SetCancelScan(++polls > 5000); };
  EXPECT_FALSE(b.bench.reader->ReadPage());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
  EXPECT_GT(b.bench.time->Elapsed(), 60s);
}

TEST(ScanMark, TextsPassThroughTheHostsTranslation) {
  ScanMarkBench b(teskReaderTypeScantronScanMark2500, Stock({{FaultKind::CommandError}}));
  b.bench.host.translate["Command Error"] = "Befehlsfehler";
  b.bench.host.translate["Your Scantron scanner reported a command error. Error #"] = "Fehler Nr. ";
  ASSERT_TRUE(b.bench.reader->StartReader());
  EXPECT_FALSE(b.bench.reader->ReadPage());
  EXPECT_EQ(b.bench.host.messages, (Messages{{"Befehlsfehler", "Fehler Nr. 50"}}));
}

}  // namespace
}  // namespace tesk::test
