// The OpScan driver against its simulated scanner and against written-down answers: the bytes that it sends,
// what it stores, and what it tells the operator.
#include "simulator/OpScan.h"

#include <algorithm>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/basNCS.h"
#include "simulator/Simulators.h"
#include "tests/support/ScriptedScanner.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using simulator::Exit;
using simulator::Fault;
using simulator::FaultKind;
using simulator::OpScan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Messages = std::vector<RecordingHost::Message>;

const std::string kDc1 = "\x11";
const std::string kDc2 = "\x12";
const std::string kSo = "\x0E";
const std::string kReject = "\x1B\x12";
const std::string kFine(5, '\0');

const RecordingHost::Message kStatusSilence{"No Response",
                                            "There was no response from the scanner while checking status."};
const RecordingHost::Message kSheetSilence{"No Response",
                                           "There was no response from the scanner while scanning a page."};
const RecordingHost::Message kDataSilence{"No Response",
                                          "There was no response from the scanner while reading data."};

std::string Mode(char letter) { return std::string{'e', letter, '\x04'}; }

std::string Report(char mode, char letter = 'N') {
  std::string report(51, '-');
  report[34] = letter;
  report[48] = mode;
  return report;
}

simulator::Options Stock(std::vector<Fault> faults = {}, std::int32_t count = 3) {
  return {.count = count, .seed = 7, .faults = std::move(faults)};
}

struct OpScanBench {
  explicit OpScanBench(simulator::Options options = Stock(), teskReaderType type = teskReaderTypeNCSOpScan7)
      : scanner(std::dynamic_pointer_cast<OpScan>(
            std::shared_ptr<simulator::SheetScanner>(simulator::CreateScanner(type, options)))),
        sheets(std::move(options.sheets)),
        bench(type, scanner) {
    bench.reader->SetSleepTime(5);
    bench.reader->SetTimeOut(10);
    bench.reader->SetDuplex(true);
    bench.reader->SetDuplexForm(true);
  }

  clsTeskReader& reader() { return *bench.reader; }
  std::string Sent() { return std::exchange(bench.serial->sent, {}); }
  // Started in the reading mode, and nothing sent so far.
  void Start() {
    scanner->PowerOn('i', 'N');
    ASSERT_TRUE(bench.reader->StartReader());
    Sent();
  }

  std::shared_ptr<OpScan> scanner;
  std::vector<simulator::Sheet> sheets;
  Bench bench;
};

// A started reader whose scanner then follows the script.
struct ScriptedBench {
  explicit ScriptedBench(std::vector<Turn> script, teskReaderType type = teskReaderTypeNCSOpScan7)
      : scanner(std::make_shared<ScriptedScanner>(WithStart(std::move(script)))), bench(type, scanner) {
    bench.reader->SetSleepTime(5);
    bench.reader->SetTimeOut(10);
    EXPECT_TRUE(bench.reader->StartReader());
    bench.serial->sent.clear();
  }

  static std::vector<Turn> WithStart(std::vector<Turn> script) {
    script.insert(script.begin(), {{"s0", Report('i')}, {"r", ""}});
    return script;
  }

  std::shared_ptr<ScriptedScanner> scanner;
  Bench bench;
};

// What the reader is to hold of a side on paper: 150 rows, the last column blank.
SideArray AsRead(const SideArray& paper) {
  SideArray side(150, 48);
  for (std::int32_t row = 1; row <= paper.Rows(); ++row) {
    for (std::int32_t column = 1; column <= 47; ++column) side.At(row, column) = paper.At(row, column);
  }
  return side;
}

std::vector<simulator::Sheet> Paper(std::int32_t count) {
  return simulator::GenerateSheets(count, 7, {50, 48, true}, 15);
}

// ---- Starting and ending

TEST(OpScanStart, SendsExactlyWhatTheScanModeNeeds) {
  const struct {
    char mode;
    char letter;
    std::string sent;
  } kCases[] = {
      {'i', 'N', "s0r"},
      {'i', 'A', "s0r"},
      {'e', 'N', "s0" + Mode('w') + Mode('i') + "s0r"},
      {'w', 'N', "s0" + Mode('w') + Mode('i') + "s0r"},
      {'t', 'A', "s0" + Mode('w') + kDc1 + Mode('i') + "s0r"},
      {'y', 'I', "s0" + Mode('w') + kDc1 + Mode('i') + "s0r"},
  };
  for (const auto& c : kCases) {
    OpScanBench b;
    b.scanner->PowerOn(c.mode, c.letter);
    EXPECT_TRUE(b.reader().StartReader()) << c.mode;
    EXPECT_EQ(b.Sent(), c.sent) << c.mode << c.letter;
    EXPECT_EQ(b.scanner->ScanMode(), 'i');
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
    EXPECT_THAT(b.bench.host.messages, IsEmpty());
  }
}

TEST(OpScanStart, LettersOfReportsCountInEitherCase) {
  auto scanner = std::make_shared<ScriptedScanner>(std::vector<Turn>{{"s0", Report('E', 'a')},
                                                                     {Mode('w'), ""},
                                                                     {kDc1, ""},
                                                                     {Mode('i'), ""},
                                                                     {"s0", Report('I', 'i')},
                                                                     {"r", ""}});
  Bench bench(teskReaderTypeNCSOpScan3, scanner);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_TRUE(scanner->Done());
}

TEST(OpScanStart, ElevenReportsMayLeadToSuccessAndTheTwelfthFailsWhateverItSays) {
  for (int others = 0; others <= 12; ++others) {
    std::vector<Turn> script{{"s0", Report('t')}, {Mode('w'), ""}, {Mode('i'), ""}};
    for (int i = 0; i < others; ++i) script.push_back({"s0", Report(i % 2 == 0 ? 'w' : '?')});
    script.push_back({"s0", Report('i')});
    auto scanner = std::make_shared<ScriptedScanner>(script);
    Bench bench(teskReaderTypeNCSOpScan7, scanner);
    const bool succeeds = others + 1 <= 11;
    EXPECT_EQ(bench.reader->StartReader(), succeeds) << others;
    EXPECT_EQ(bench.serial->sent.ends_with("r"), succeeds) << others;
    EXPECT_EQ(std::ranges::count(bench.serial->sent, 's'), 1 + std::min(others + 1, 12)) << others;
    EXPECT_EQ(bench.host.messages, succeeds ? Messages{} : Messages{kStatusSilence}) << others;
  }
}

TEST(OpScanStart, FailsWithItsMessageWhereAReportIsMissing) {
  const struct {
    Fault fault;
    char mode;
    std::string sent;
  } kCases[] = {
      {{FaultKind::SilenceMode, 1}, 'i', "s0"},
      {{FaultKind::ShortMode, 1}, 'i', "s0"},
      {{FaultKind::SilenceMode, 2}, 'd', "s0" + Mode('w') + Mode('i') + "s0"},
      {{FaultKind::StuckMode, 1}, 'd', "s0" + Mode('w') + Mode('i') + "s0s0s0s0s0s0s0s0s0s0s0s0"},
  };
  for (const auto& c : kCases) {
    OpScanBench b(Stock({c.fault}));
    b.scanner->PowerOn(c.mode, 'N');
    EXPECT_FALSE(b.reader().StartReader());
    EXPECT_EQ(b.Sent(), c.sent);
    EXPECT_EQ(b.bench.host.messages, Messages{kStatusSilence});
    EXPECT_TRUE(b.reader().CancelScan());
  }
}

TEST(OpScanStart, ReportThatIsShorterThanTheOneBeforeIsNotWaitedFor) {
  const auto scanner = std::make_shared<ScriptedScanner>(
      std::vector<Turn>{{"s0", Report('e') + "--\r"}, {Mode('w') + Mode('i') + "s0", Report('i') + "\r"}});
  Bench bench(teskReaderTypeNCSOpScan7, scanner);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_LT(bench.time->Elapsed(), 2s);
}

TEST(OpScanStart, UnknownScanModeIsChangedAndNeverRestored) {
  OpScanBench b(Stock({{FaultKind::UnknownMode, 1}}));
  b.scanner->PowerOn('s', 'N');
  EXPECT_TRUE(b.reader().StartReader());
  EXPECT_EQ(b.Sent(), "s0" + Mode('w') + Mode('i') + "s0r");
  EXPECT_TRUE(b.reader().EndReader());
  EXPECT_EQ(b.Sent(), kSo.substr(1));
}

TEST(OpScanEnd, RestoresTheModesThatAreRestoredAndClosesWithoutAFeeder) {
  for (const char mode : std::string("ietdwsy")) {
    for (const bool feeder : {true, false}) {
      OpScanBench b;
      b.scanner->PowerOn(mode, 'N');
      ASSERT_TRUE(b.reader().StartReader());
      b.Sent();
      b.reader().SetFeeder(feeder);
      b.reader().SetSleepTime(feeder ? 20 : -3);
      const auto before = b.bench.time->Elapsed();
      EXPECT_TRUE(b.reader().EndReader());
      const bool restored = std::string("etds").find(mode) != std::string::npos;
      EXPECT_EQ(b.Sent(), (feeder ? "" : kSo) + (restored ? Mode('w') + Mode(mode) : "")) << mode;
      EXPECT_EQ(b.scanner->ScanMode(), restored ? mode : 'i');
      const Milliseconds pause = feeder ? 20ms : 50ms;  // a SleepTime below 1 has become 50
      EXPECT_EQ(b.bench.time->Elapsed() - before, 2 * pause + (restored ? 2 * pause + 400ms : 0ms));
      EXPECT_EQ(b.reader().SleepTime(), pause.count());
      EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
    }
  }
}

TEST(OpScanEnd, PortThatNeverOpenedIsNoFault) {
  OpScanBench b;
  b.reader().SetPort(9);
  EXPECT_FALSE(b.reader().StartReader());
  b.bench.host.errors.clear();
  EXPECT_TRUE(b.reader().EndReader());
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
}

TEST(OpScanMode, InvalidModeIsShownAndNothingSent) {
  OpScanBench b;
  b.Start();
  for (const auto mode : std::initializer_list<std::int16_t>{0, -1, 8})
    EXPECT_FALSE(basNCS::SetScanModeNCS(b.reader(), mode));
  EXPECT_EQ(b.Sent(), "");
  EXPECT_EQ(b.bench.host.messages, Messages(3, {"Invalid Scan Mode", "An invalid scan mode was specified."}));
}

// ---- Reading

TEST(OpScanRead, StoresBothSidesTheCountsAndTheTexts) {
  OpScanBench b;
  b.Start();
  for (const simulator::Sheet& paper : Paper(3)) {
    ASSERT_TRUE(b.reader().ReadPage());
    EXPECT_EQ(b.Sent(), kDc1 + "s1");
    EXPECT_EQ(b.reader().Side1Array(), AsRead(paper.side1));
    EXPECT_EQ(b.reader().Side2Array(), AsRead(paper.side2));
    EXPECT_EQ(b.reader().BarcodeTexts(), paper.barcodes);
    EXPECT_EQ(b.reader().Side1TimingMarks(), 50);
    EXPECT_EQ(b.reader().Side2TimingMarks(), 50);
  }
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

TEST(OpScanRead, OneSidedReadDropsSide2ButNotItsPlace) {
  const std::pair<bool, bool> kSettings[] = {{true, false}, {false, true}, {false, false}};
  for (const auto& [duplex, duplexForm] : kSettings) {
    OpScanBench b;
    b.Start();
    b.reader().SetDuplex(duplex);
    b.reader().SetDuplexForm(duplexForm);
    b.reader().StoreSheet({.side2 = SideArray(1, 1)});
    ASSERT_TRUE(b.reader().ReadPage());
    EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(1)[0].side1));
    EXPECT_TRUE(b.reader().Side2Array().Empty());
    EXPECT_EQ(b.reader().Side1TimingMarks(), 50);
    EXPECT_EQ(b.reader().Side2TimingMarks(), -1);
    EXPECT_EQ(b.reader().BarcodeTexts(), Paper(1)[0].barcodes);
  }
}

TEST(OpScanRead, SheetFaultShowsItsTextRejectsWithARejecterAndLeavesTheArrays) {
  const Messages kSkewed{
      {"Skewed Page",
       "The scanner reports a skewed page. Please clear the page from the feeder and then rescan."}};
  const Messages kThick{{"Thickness Error",
                         "The scanner reports a page thickness error. Please check that the scanner did not "
                         "double feed and then "
                         "rescan this page."}};
  const Messages kJam{
      {"Paper Jam",
       "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form."}};
  const Messages kReadHead{
      {"Read Head Error",
       "The scanner reports a read head error.  Check with the scanner's manufacturer for support."}};
  const struct {
    FaultKind kind;
    Messages messages;
    std::string rejected;
  } kCases[] = {
      {FaultKind::Skew, kSkewed, kReject},
      {FaultKind::DoubleFeed, kThick, kReject},
      {FaultKind::Jam, kJam, kReject},
      {FaultKind::JamReading, kJam, kReject},
      {FaultKind::ReadHead, kReadHead, kReject},
      {FaultKind::UnknownStatus, {}, ""},
      {FaultKind::SilenceStatus, {kStatusSilence}, ""},
      {FaultKind::ShortStatus, {kStatusSilence}, ""},
  };
  for (const auto& c : kCases) {
    for (const bool rejecter : {true, false}) {
      SCOPED_TRACE(simulator::Describe(c.kind).name);
      OpScanBench b(Stock({{c.kind, 2}}));
      b.Start();
      b.reader().SetRejecter(rejecter);
      ASSERT_TRUE(b.reader().ReadPage());
      b.Sent();
      EXPECT_FALSE(b.reader().ReadPage());
      EXPECT_EQ(b.Sent(), kDc1 + "s1" + (rejecter ? c.rejected : ""));
      EXPECT_EQ(b.bench.host.messages, c.messages);
      EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(1)[0].side1));
      EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
    }
  }
}

TEST(OpScanRead, EveryCombinationOfStatusBitsShowsTheFirstConditionOnly) {
  for (unsigned bits = 0; bits < 64; ++bits) {
    const unsigned byte1 = 0x30 | (bits & 3U);
    const unsigned byte2 = 0x40 | (bits >> 2U);
    ScriptedBench b(
        {{kDc1, "a" + std::string(48, '1') + "\r"},
         {"s1", std::string{'\x7F', static_cast<char>(byte1), static_cast<char>(byte2), '\x7F'}}});
    std::vector<std::string> titles;
    const bool read = b.bench.reader->ReadPage();
    for (const auto& message : b.bench.host.messages) titles.push_back(message.title);
    EXPECT_EQ(read, bits == 0);
    const char* const title = (byte1 & 2U) != 0   ? "Skewed Page"
                              : (byte1 & 1U) != 0 ? "Thickness Error"
                              : (byte2 & 8U) != 0 ? "Paper Jam"
                              : (byte2 & 4U) != 0 ? "Read Head Error"
                                                  : nullptr;
    EXPECT_EQ(titles, title == nullptr ? std::vector<std::string>{} : std::vector<std::string>{title})
        << bits;
  }
}

TEST(OpScanRead, SpoiltDataGiveTheMessageOfTheWaitThatFailed) {
  const struct {
    Fault fault;
    Messages messages;
  } kCases[] = {
      {{FaultKind::Silence, 2}, {kSheetSilence}}, {{FaultKind::Cut, 2, 0}, {kSheetSilence}},
      {{FaultKind::Late, 2}, {kSheetSilence}},    {{FaultKind::Cut, 2, 1}, {kDataSilence}},
      {{FaultKind::Cut, 2, 777}, {kDataSilence}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(simulator::Describe(c.fault.kind).name);
    OpScanBench b(Stock({c.fault}));
    b.Start();
    ASSERT_TRUE(b.reader().ReadPage());
    const auto before = b.bench.time->Elapsed();
    EXPECT_FALSE(b.reader().ReadPage());
    EXPECT_GE(b.bench.time->Elapsed() - before, 10s);
    EXPECT_LT(b.bench.time->Elapsed() - before, 11s);
    EXPECT_EQ(b.bench.host.messages, c.messages);
    EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(1)[0].side1));
    EXPECT_TRUE(b.reader().CancelScan());
  }
}

TEST(OpScanRead, RowBeyond150IsAnErrorThatLeavesTheArrays) {
  OpScanBench b(Stock({{FaultKind::TooManyRows, 2}}));
  b.Start();
  ASSERT_TRUE(b.reader().ReadPage());
  EXPECT_FALSE(b.reader().ReadPage());
  EXPECT_THAT(b.bench.host.Sources(), ElementsAre("basNCS.ReadPageNCS"));
  EXPECT_EQ(b.bench.host.errors.at(0).number, kErrorSubscript);
  EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(1)[0].side1));
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

TEST(OpScanRead, LineOfAWrongLengthWarnsAndIsRead) {
  const std::string full(48, '1');
  const std::string shorter(47, '2');
  const struct {
    std::string record;
    Messages messages;
  } kCases[] = {
      {"a" + shorter + "a" + full + "\r",
       {{"Invalid Number of Bytes",
         "The scanner reported an invalid number of bytes on side 1|Invalid number of bytes: 47|Line number: "
         "1"}}},
      {"a" + full + "a" + shorter + "b" + full + "\r",
       {{"Invalid Number of Bytes",
         "The scanner reported an invalid number of bytes on side 2|Invalid number of bytes: 47|Line number: "
         "0"}}},
  };
  for (const auto& c : kCases) {
    ScriptedBench b({{kDc1, c.record}, {"s1", kFine}});
    EXPECT_TRUE(b.bench.reader->ReadPage());
    EXPECT_EQ(b.bench.host.messages, c.messages);
    EXPECT_EQ(b.bench.reader->Side1TimingMarks(), 2);
  }
  OpScanBench simulated(Stock({{FaultKind::WrongCount, 1}}));
  simulated.Start();
  EXPECT_TRUE(simulated.reader().ReadPage());
  ASSERT_EQ(simulated.bench.host.messages.size(), 1U);
  EXPECT_EQ(simulated.bench.host.messages[0].title, "Invalid Number of Bytes");
}

TEST(OpScanRead, WarningIsTranslatedPieceByPiece) {
  ScriptedBench b({{kDc1, "a1a" + std::string(48, '1') + "\r"}, {"s1", kFine}});
  b.bench.host.translate = {{"Invalid Number of Bytes", "T"},
                            {"The scanner reported an invalid number of bytes on side 1", "S"},
                            {"Invalid number of bytes: ", "N"},
                            {"Line number: ", "L"}};
  EXPECT_TRUE(b.bench.reader->ReadPage());
  EXPECT_EQ(b.bench.host.messages, (Messages{{"T", "S|N1|L1"}}));
}

TEST(OpScanRead, TextSectionEndsInSilenceAndOnlyThere) {
  const std::string line = "a" + std::string(48, '1');
  const struct {
    const char* what;
    std::vector<Turn> record;
    std::vector<std::string> texts;
  } kCases[] = {
      {"no section", {{kDc1, line + "\r"}}, {"?"}},
      {"ended by a carriage return", {{kDc1, line + "cAB12dCD34d\r\n"}}, {"12", "34"}},
      {"ended by silence", {{kDc1, line + "cAB12d"}}, {"12", ""}},
      {"a pause shorter than SleepTime", {{kDc1, line + "cAB1"}, {"", "2d\r", 40ms}}, {"12"}},
      {"ended by silence within a line", {{kDc1, line + "cAB1"}}, {"AB1"}},
      {"a pause within a run", {{kDc1, line + "cAB\x15"}, {"", "D", 3s}, {"", "7d\r", 3s}}, {"7777"}},
      {"a pause within the marks", {{kDc1, "a"}, {"", std::string(48, '1') + "\r", 9s}}, {"?"}},
  };
  for (const auto& c : kCases) {
    std::vector<Turn> script = c.record;
    script.push_back({"s1", kFine});
    ScriptedBench b(script);
    b.bench.reader->SetSleepTime(50);
    EXPECT_TRUE(b.bench.reader->ReadPage()) << c.what;
    EXPECT_EQ(b.bench.reader->BarcodeTexts(), c.texts) << c.what;
    EXPECT_EQ(b.bench.reader->Side1Array().At(1, 47), 1) << c.what;
  }
}

TEST(OpScanRead, TextComesOutWholeOrNotAtAllHoweverItIsCut) {
  const std::string line = "a" + std::string(48, '1');
  const struct {
    const char* what;
    std::vector<Turn> first;
    std::vector<Turn> second;
    std::size_t status;  // bytes
    bool read;
    bool cancel = false;
  } kCases[] = {
      {"a long pause where records end with a line end",
       {{kDc1, line + "cAB12d\r"}},
       {{kDc1, line + "cAB1"}, {"", "2d", 900ms}, {"", "\r", 5s}},
       5,
       true},
      {"a text that breaks off where records end with a line end",
       {{kDc1, line + "cAB12d\r"}},
       {{kDc1, line + "cAB12"}},
       5,
       false},
      {"the rest in front of a short status",
       {{kDc1, line + "cAB12d"}},
       {{kDc1, line + "cAB12"}, {"", "d", 300ms}},
       4,
       false},
      {"a cancel before the line end", {}, {{kDc1, line + "cAB12d"}, {"", "\r", 500ms}}, 4, true, true},
      {"a line end that nobody expected any more",
       {},
       {{kDc1, line + "cAB12d"}, {"", "\r", 700ms}},
       4,
       false},
  };
  for (const auto& c : kCases) {
    const Turn status{"s1", std::string(c.status, '\0')};
    std::vector<Turn> script = c.first;
    if (!script.empty()) script.push_back(status);
    script.insert(script.end(), c.second.begin(), c.second.end());
    script.push_back(status);
    ScriptedBench b(script);
    if (!c.first.empty()) {
      ASSERT_TRUE(b.bench.reader->ReadPage()) << c.what;
    }
    b.bench.time->onMessages = [&](int) { b.bench.reader->SetCancelScan(c.cancel); };
    EXPECT_EQ(b.bench.reader->ReadPage(), c.read) << c.what;
    EXPECT_THAT(b.bench.host.messages, SizeIs(c.read ? 0 : 1)) << c.what;
    if (c.read) {
      EXPECT_THAT(b.bench.reader->BarcodeTexts(), ElementsAre("12")) << c.what;
    }
  }
}

TEST(OpScanRead, TextsThatSilenceEndsAreASheetAlsoWhereALineEndCameBefore) {
  const std::string line = "a" + std::string(48, '1');
  ScriptedBench b({{kDc1, line + "cAB12d\r"}, {"s1", kFine}, {kDc1, line + "cAB34d"}, {"s1", kFine}});
  EXPECT_TRUE(b.bench.reader->ReadPage() && b.bench.reader->ReadPage());
  EXPECT_THAT(b.bench.reader->BarcodeTexts(), ElementsAre("34", ""));
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

TEST(OpScanRead, BytesOfNoSheetRefuseItAndDelayNoOther) {
  const std::string sheet = "a" + std::string(48, '1') + "a" + std::string(48, '2') + "\r\n";
  const struct {
    const char* what;
    std::vector<Turn> spoilt;
  } kCases[] = {
      {"one that begins a text", {{kDc1, "c" + sheet}}},
      {"the rest of a record that a damaged byte ended",
       {{kDc1, sheet.substr(0, 60) + "\r" + sheet.substr(61)}}},
      {"one more of the status's first byte", {{kDc1, sheet}, {"s1", kFine + kFine.substr(0, 1)}}},
  };
  for (const auto& c : kCases) {
    std::vector<Turn> script{{kDc1, sheet}, {"s1", kFine}};
    script.insert(script.end(), c.spoilt.begin(), c.spoilt.end());
    script.insert(script.end(), {{kDc1, sheet}, {"s1", kFine}});
    ScriptedBench b(script);
    EXPECT_TRUE(b.bench.reader->ReadPage());
    EXPECT_FALSE(b.bench.reader->ReadPage()) << c.what;
    EXPECT_THAT(b.bench.host.messages, SizeIs(1)) << c.what;
    b.bench.reader->SetCancelScan(false);
    const auto before = b.bench.time->Elapsed();
    EXPECT_TRUE(b.bench.reader->ReadPage()) << c.what;
    // The silences that tell what stands behind an answer are paid anew.
    EXPECT_LE(b.bench.time->Elapsed() - before, 3 * 600ms) << c.what;
  }
}

TEST(OpScanRead, LineEndThatTricklesInBehindARecordIsNotTakenForTheStatus) {
  ScriptedBench b({{kDc1, "a" + std::string(48, '1') + "\r"},
                   {"", "\n", 15ms},
                   {"s1", std::string(4, '\0')},
                   {"", std::string(1, '\0'), 15ms},
                   {kDc1, "a" + std::string(48, '2') + "\r"},
                   {"", "\n", 15ms},
                   {"s1", kFine}});
  EXPECT_TRUE(b.bench.reader->ReadPage());
  EXPECT_TRUE(b.bench.reader->ReadPage());
  EXPECT_EQ(b.bench.reader->Side1Array().At(1, 1), 2);
  EXPECT_TRUE(b.scanner->Done());
}

TEST(OpScanRead, LateSheetOfAnyLengthIsOverBeforeTheNextStart) {
  std::string record;
  for (int line = 0; line < 150; ++line) record += "a" + std::string(48, '1');
  ScriptedBench b({{kDc1, record + "\r", 10500ms}, {"s0", Report('i')}, {"r", ""}});
  EXPECT_FALSE(b.bench.reader->ReadPage());
  EXPECT_TRUE(b.bench.reader->StartReader());
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
}

TEST(OpScanRead, PersonMayTakeTheirTimeToInsertASheet) {
  const struct {
    bool feeder;
    bool grade;
    bool waits;
  } kCases[] = {{true, false, false}, {true, true, true}, {false, false, true}, {false, true, true}};
  for (const auto& c : kCases) {
    ScriptedBench b({{kDc1, "a" + std::string(48, '1') + "\r", 5min}, {"s1", kFine}});
    b.bench.reader->SetFeeder(c.feeder);
    b.bench.reader->SetReaderGrade(c.grade);
    EXPECT_EQ(b.bench.reader->ReadPage(), c.waits);
    EXPECT_EQ(b.bench.host.messages, c.waits ? Messages{} : Messages{kSheetSilence});
  }
}

TEST(OpScanRead, GradedSheetGetsTenPausesBeforeItsStatus) {
  const auto timeOf = [](bool grade) {
    OpScanBench b;
    b.Start();
    b.reader().SetReaderGrade(grade);
    b.reader().SetSleepTime(400);
    const auto before = b.bench.time->Elapsed();
    b.bench.time->onMessages = [&](int) {
      const auto elapsed = b.bench.time->Elapsed() - before;
      if (elapsed > 2s && elapsed < 4s) {
        EXPECT_EQ(b.reader().Side1TimingMarks(), 50) << "not seen meanwhile";
      }
    };
    EXPECT_TRUE(b.reader().ReadPage());
    return b.bench.time->Elapsed() - before;
  };
  EXPECT_GE(timeOf(true) - timeOf(false), 4s);
  EXPECT_LT(timeOf(true) - timeOf(false), 4100ms);
}

TEST(OpScanRead, CancelEndsEveryWaitSoonAndQuietly) {
  const std::string line = "a" + std::string(48, '1');
  const std::vector<std::vector<Turn>> kScripts{
      {{kDc1, ""}},
      {{kDc1, "a00"}},
      {{kDc1, line + "cAB\x15"}},
      {{kDc1, line + "\r"}, {"s1", "00"}},
  };
  for (const auto& script : kScripts) {
    for (const bool feeder : {true, false}) {
      ScriptedBench b(script);
      b.bench.reader->SetFeeder(feeder);
      b.bench.time->onMessages = [&](int) {
        if (b.bench.time->Elapsed() > 4s) b.bench.reader->SetCancelScan(true);
      };
      EXPECT_FALSE(b.bench.reader->ReadPage());
      // A status that is on its way gets a moment more.
      EXPECT_LT(b.bench.time->Elapsed(), 6s);
      EXPECT_THAT(b.bench.host.messages, IsEmpty());
      EXPECT_TRUE(b.bench.reader->Side1Array().Empty());
    }
  }
}

// ---- Imprint and disposal

TEST(OpScanDispose, SendsTheImprintAndTheSheetWhereTheHostWantsIt) {
  OpScanBench b;
  b.Start();
  b.reader().SetRejecter(true);
  const auto printer = b.reader().Printer();
  printer->SetDistance(7);
  printer->SetBuffer1("B\xC3\xA4r\t1");
  ASSERT_TRUE(b.reader().ReadPage());
  b.Sent();
  EXPECT_TRUE(basNCS::PrintNCS(b.reader()));
  EXPECT_EQ(b.Sent(),
            "107\x04"
            "2B?r 1 \x04");
  b.reader().EjectPage();
  EXPECT_EQ(b.Sent(), kDc2);
  ASSERT_TRUE(b.reader().ReadPage());
  b.Sent();
  b.reader().RejectPage();
  EXPECT_EQ(b.Sent(), kReject);
  b.reader().SetRejecter(false);
  ASSERT_TRUE(b.reader().ReadPage());
  b.Sent();
  b.reader().RejectPage();  // not without a rejecter
  EXPECT_EQ(b.Sent(), "");

  EXPECT_EQ(b.scanner->ImprintPosition(), "07");
  EXPECT_THAT(b.scanner->Disposals(), ElementsAre(simulator::Disposal{1, Exit::Accepted, true, "B?r 1", true},
                                                  simulator::Disposal{2, Exit::Rejected, true, "", false}));
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
}

TEST(OpScanDispose, ImprintPositionHasAtLeastTwoDigitsAndNoImprinterSendsNothing) {
  OpScanBench b;
  b.Start();
  const std::pair<std::int16_t, std::string> kCases[] = {{0, "00"}, {9, "09"}, {10, "10"}, {123, "123"}};
  for (const auto& [distance, text] : kCases) {
    b.reader().Printer()->SetDistance(distance);
    EXPECT_TRUE(basNCS::PrintNCS(b.reader()));
    EXPECT_EQ(b.Sent(), "1" + text +
                            "\x04"
                            "2 \x04");
  }
  b.reader().SetPrinter(nullptr);
  EXPECT_FALSE(basNCS::PrintNCS(b.reader()));
  EXPECT_EQ(b.Sent(), "");
}

TEST(OpScanBatch, EveryModelReadsAHundredSheetsAndLosesNone) {
  for (const std::int32_t type : {2, 3, 4, 5, 6, 25, 26, 31, 32}) {
    OpScanBench b(Stock({}, 100), static_cast<teskReaderType>(type));
    std::int32_t count = 0;
    EXPECT_TRUE(b.reader().ReadBatch(false, 100, count));
    ASSERT_EQ(b.bench.events.side1.size(), 100U) << type;
    const auto paper = Paper(100);
    for (std::size_t i = 0; i < paper.size(); ++i) {
      ASSERT_EQ(b.bench.events.side1[i], AsRead(paper[i].side1)) << type << " " << i;
      ASSERT_EQ(b.bench.events.side2[i], AsRead(paper[i].side2)) << type << " " << i;
      ASSERT_EQ(b.bench.events.barcodes[i], paper[i].barcodes) << type << " " << i;
    }
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty()) << type;
    EXPECT_THAT(b.bench.host.messages, IsEmpty()) << type;
    EXPECT_EQ(b.scanner->ScanMode(), 'e') << type;  // as it was found
  }
}

TEST(OpScanSimulator, SendsRunsBothAsRunsAndPlainly) {
  OpScanBench b;
  b.Start();
  ASSERT_TRUE(b.reader().ReadPage());
  std::string heard;
  for (const auto& traffic : b.scanner->Transcript()) {
    if (traffic.direction == simulator::Direction::ToHost) heard += traffic.bytes;
  }
  EXPECT_NE(heard.find("\x15"), std::string::npos);
  EXPECT_NE(heard.find("00000000"), std::string::npos);
}

TEST(OpScanSimulator, RecordsWhatAHostDoesWrong) {
  const std::pair<const char*, std::string> kCases[] = {
      {"unknown command", "x"},
      {"ill-formed status query", "s2"},
      {"ill-formed scan mode", "eq\x04"},
      {"ill-formed scan mode", "ei\r"},
      {"does not pass through", "et\x04"},
      {"before the start", kDc1},
      {"outside the reading mode", "ew\x04r"},
      {"outside the reading mode", "ew\x04" + kDc1},
      {"while a sheet is being read", "r" + kDc1 + kDc1},
      {"unknown command", "\x1B\x11"},
      {"not two digits", "11\x04"},
      {"not two digits", "1ab\x04"},
      {"without a blank", "2text\x04"},
      {"without end", "2" + std::string(300, 'x')},
  };
  for (const auto& [complaint, bytes] : kCases) {
    simulator::Options options = Stock();
    options.timings.reading = 1s;
    OpScanBench b(options);
    b.scanner->PowerOn('i', 'N');
    b.scanner->Receive(bytes, simulator::Time());
    ASSERT_FALSE(b.scanner->Complaints().empty()) << complaint;
    EXPECT_NE(b.scanner->Complaints()[0].find(complaint), std::string::npos) << b.scanner->Complaints()[0];
  }
  OpScanBench handFed(Stock(), teskReaderTypeNCSOpScan2);
  handFed.scanner->Receive(kReject, simulator::Time());
  EXPECT_EQ(handFed.scanner->Complaints().size(), 1U);
}

}  // namespace
}  // namespace tesk::test
