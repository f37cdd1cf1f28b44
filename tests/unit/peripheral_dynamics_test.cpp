// The VMR138 driver against its simulated scanner and against written-down answers: the bytes that it sends,
// the rows that it counts and stores, and what it tells the operator.
#include <memory>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/simulated/SimulatedScanner.h"
#include "drivers/basPeripheralDynamics.h"
#include "simulator/PeripheralDynamics.h"
#include "simulator/Simulators.h"
#include "tests/support/ScriptedScanner.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using simulator::Exit;
using simulator::Fault;
using simulator::FaultKind;
using simulator::PeripheralDynamics;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Messages = std::vector<RecordingHost::Message>;

const Messages kStatusSilence{{"Status Error",
                               "The PDI scanner did not respond to a STATUS request.  Make sure the scanner "
                               "is connected and powered on."}};
const Messages kFrontSensor{
    {"Status Error",
     "The PDI scanner reports a front sensor error.  Either a form is present or the scanner is improperly "
     "closed. Please clear any form from the front of the scanner and try again."}};
const Messages kBackSensor{
    {"Status Error",
     "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is improperly "
     "closed.  Please clear any form from inside the scanner and try again."}};
const Messages kJam{
    {"Status Error",
     "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry."}};
const Messages kThresholdSilence{
    {"Threshold Initialization Error", "There was no response from the PDI scanner while initializing."}};
const Messages kThresholdInvalid{
    {"Threshold Initialization Error",
     "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry."}};

Messages DataLoss(const std::string& pause) {
  return {
      {"Read Error",
       "An unexpected value was encountered while reading data.  Possible loss of data encountered during "
       "scanning process.  Try increasing the value of System Pause option.|System Pause: " +
           pause}};
}

std::string Status(int status1, int status2 = 0) {
  return {'?', static_cast<char>(status1), static_cast<char>(status2)};
}

simulator::Options Stock(std::vector<Fault> faults = {}, std::int32_t count = 3) {
  return {.count = count, .seed = 7, .faults = std::move(faults)};
}

// A person who gives up after a day, so that a sheet that never comes fails a test instead of hanging it.
void GiveUpAfterADay(Bench& bench) {
  bench.time->onMessages = [&bench](int) {
    if (bench.time->Elapsed() > 24h) bench.reader->SetCancelScan(true);
  };
}

struct VmrBench {
  explicit VmrBench(simulator::Options options = Stock())
      : scanner(std::dynamic_pointer_cast<PeripheralDynamics>(std::shared_ptr<simulator::SheetScanner>(
            simulator::CreateScanner(teskReaderTypePDIVMR138, std::move(options))))),
        bench(teskReaderTypePDIVMR138, scanner) {
    bench.reader->SetSleepTime(10);
    bench.reader->SetTimeOut(10);
    bench.reader->SetRecognitionThreshold(240);
    GiveUpAfterADay(bench);
  }

  clsTeskReader& reader() { return *bench.reader; }
  std::string Sent() { return std::exchange(bench.serial->sent, {}); }
  void Start() {
    ASSERT_TRUE(bench.reader->StartReader());
    Sent();
  }

  std::shared_ptr<PeripheralDynamics> scanner;
  Bench bench;
};

// A reader that was started and whose scanner then follows the script.
struct ScriptedBench {
  explicit ScriptedBench(std::vector<Turn> script)
      : scanner(std::make_shared<ScriptedScanner>(WithStart(std::move(script)))),
        bench(teskReaderTypePDIVMR138, scanner) {
    bench.reader->SetSleepTime(10);
    bench.reader->SetTimeOut(10);
    bench.reader->SetRecognitionThreshold(240);
    GiveUpAfterADay(bench);
    EXPECT_TRUE(bench.reader->StartReader());
    bench.serial->sent.clear();
  }

  static std::vector<Turn> WithStart(std::vector<Turn> script) {
    script.insert(script.begin(), {{"0", ""}, {"Q", Status(0)}, {"+", "F0"}});
    return script;
  }

  clsTeskReader& reader() { return *bench.reader; }

  std::shared_ptr<ScriptedScanner> scanner;
  Bench bench;
};

// As ScriptedBench, and a record, cut up as written, follows each read command.
ScriptedBench WithRecords(const std::vector<std::vector<Turn>>& records) {
  std::vector<Turn> script;
  for (std::vector<Turn> record : records) {
    record.front().host = "8";
    script.push_back({"Q", Status(0)});
    script.insert(script.end(), record.begin(), record.end());
    script.push_back({"9", ""});
  }
  return ScriptedBench(std::move(script));
}

// What the reader is to hold of a sheet on paper whose marks are darker than 127.
SideArray AsRead(const SideArray& paper, std::int16_t mark = 241) {
  SideArray side(500, 14);
  for (std::int32_t row = 1; row <= paper.Rows(); ++row) {
    for (std::int32_t column = 1; column <= paper.Columns(); ++column) {
      if (paper.At(row, column) >= 128) side.At(row, column) = mark;
    }
  }
  return side;
}

std::vector<simulator::Sheet> Paper(std::int32_t count) {
  return simulator::GenerateSheets(count, 7, {50, 12, false}, 255);
}

// "row,column" of every mark, in order.
std::vector<std::string> Marks(const SideArray& side) {
  std::vector<std::string> marks;
  for (std::int32_t row = 1; row <= side.Rows(); ++row) {
    for (std::int32_t column = 1; column <= side.Columns(); ++column) {
      if (side.At(row, column) != 0) marks.push_back(std::to_string(row) + "," + std::to_string(column));
    }
  }
  return marks;
}

// ---- Starting and ending

TEST(VmrStart, CompletesTheSetUpThatTheStatusAsksForAndSetsTheThreshold) {
  const struct {
    int status1;
    int status2;
    std::string threshold;
    std::string sent;
  } kCases[] = {
      {0, 0, "F0", "0Q+"},
      {16, 0, "F0", "0QD+"},
      {4, 0, "F0", "0QG+"},
      {0, 8, "F0", "0QE+"},
      {16 + 4 + 8, 8 + 4, "F0", "0QDGE+"},
      {32 + 128, 1 + 2 + 4 + 16, "F0", "0Q+"},
      {0, 0, "EE", "0Q+++"},
      {0, 0, "F3", "0Q+---"},
      {0, 0, "FF", "0Q+" + std::string(15, '-')},
      {0, 0, "C0", "0Q+" + std::string(48, '+')},
      {0, 0, "D9", "0Q+" + std::string(23, '+')},
  };
  for (const auto& c : kCases) {
    auto scanner = std::make_shared<ScriptedScanner>(
        std::vector<Turn>{{"0", ""},
                          {"Q", Status(c.status1, c.status2)},
                          {c.sent.substr(2, c.sent.find('+') - 1), c.threshold}});
    Bench bench(teskReaderTypePDIVMR138, scanner);
    bench.reader->SetRecognitionThreshold(240);
    EXPECT_TRUE(bench.reader->StartReader()) << c.sent;
    EXPECT_EQ(bench.serial->sent, c.sent);
    EXPECT_THAT(bench.host.messages, IsEmpty());
  }
}

TEST(VmrStart, LeavesTheSimulatedScannerAtTheThresholdAndTheTimeOutAsItWas) {
  for (const std::int16_t wanted : std::initializer_list<std::int16_t>{192, 200, 240, 254, 255}) {
    VmrBench b;
    b.reader().SetRecognitionThreshold(wanted);
    EXPECT_TRUE(b.reader().StartReader());
    EXPECT_EQ(b.scanner->Threshold(), wanted);
    EXPECT_TRUE(b.scanner->SetUp());
    EXPECT_EQ(b.reader().fComm()->tmrScan()->Interval(), 10'000);
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  }
}

TEST(VmrStart, PausesAsLongAsTheScannerNeeds) {
  VmrBench b;
  b.reader().SetSleepTime(40);
  EXPECT_TRUE(b.reader().StartReader());
  // 500 after the start, 2 x 5 around the status, 2 x 2 around "E", 2 x 5 around the threshold
  EXPECT_GE(b.bench.time->Elapsed(), 500ms + 24 * 40ms);
  EXPECT_LT(b.bench.time->Elapsed(), 600ms + 24 * 40ms);
}

TEST(VmrStart, ConditionShowsItsTextOnceAndEjectsTheSheet) {
  const struct {
    int status1;
    Messages messages;
  } kCases[] = {{2, kFrontSensor}, {1, kBackSensor},      {64, kJam},
                {3, kFrontSensor}, {1 + 64, kBackSensor}, {2 + 1 + 64 + 16, kFrontSensor}};
  for (const auto& c : kCases) {
    auto scanner =
        std::make_shared<ScriptedScanner>(std::vector<Turn>{{"0", ""}, {"Q", Status(c.status1)}, {"4", ""}});
    Bench bench(teskReaderTypePDIVMR138, scanner);
    EXPECT_FALSE(bench.reader->StartReader());
    EXPECT_EQ(bench.serial->sent, "0Q4");
    EXPECT_EQ(bench.host.messages, c.messages);
    EXPECT_TRUE(bench.reader->CancelScan());
  }
}

TEST(VmrStart, FailsWithItsMessageWhereTheThresholdIsMissingOrNonsense) {
  const struct {
    std::string answer;
    Messages messages;
  } kCases[] = {
      {"", kThresholdSilence},   {"G0", kThresholdInvalid},  {"C?", kThresholdInvalid},
      {"B9", kThresholdInvalid}, {"0F", kThresholdInvalid},  {"f0", kThresholdInvalid},
      {"Fa", kThresholdInvalid}, {"FG", kThresholdInvalid},  {"F", kThresholdInvalid},
      {" F", kThresholdInvalid}, {"FF0", kThresholdInvalid},
  };
  for (const auto& c : kCases) {
    auto scanner =
        std::make_shared<ScriptedScanner>(std::vector<Turn>{{"0", ""}, {"Q", Status(0)}, {"+", c.answer}});
    Bench bench(teskReaderTypePDIVMR138, scanner);
    EXPECT_FALSE(bench.reader->StartReader()) << c.answer;
    EXPECT_EQ(bench.serial->sent, "0Q+");
    EXPECT_EQ(bench.host.messages, c.messages) << c.answer;
    EXPECT_LT(bench.time->Elapsed(), 4s) << "the threshold has a second, not the time-out";
    EXPECT_EQ(bench.reader->fComm()->tmrScan()->Interval(), bench.reader->TimeOut() * 1000);
  }
}

TEST(VmrStart, ThresholdIsOneHoweverItIsCut) {
  auto scanner = std::make_shared<ScriptedScanner>(
      std::vector<Turn>{{"0", ""}, {"Q", Status(0)}, {"+", "F", 900ms}, {"", "0", 900ms}});
  Bench bench(teskReaderTypePDIVMR138, scanner);
  bench.reader->SetRecognitionThreshold(240);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_THAT(bench.host.messages, IsEmpty());
}

TEST(VmrStart, SimulatedFaultsGiveTheirMessages) {
  const std::pair<FaultKind, Messages> kCases[] = {{FaultKind::ShortStatus, kStatusSilence},
                                                   {FaultKind::Jam, kJam},
                                                   {FaultKind::SilenceThreshold, kThresholdSilence},
                                                   {FaultKind::InvalidThreshold, kThresholdInvalid}};
  for (const auto& [kind, messages] : kCases) {
    VmrBench b(Stock({{kind, 1}}));
    EXPECT_FALSE(b.reader().StartReader());
    EXPECT_EQ(b.bench.host.messages, messages);
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  }
}

TEST(VmrEnd, ClosesAndYieldsFalse) {
  VmrBench b;
  b.Start();
  EXPECT_FALSE(b.reader().EndReader());  // the result of closing never reaches the host
  EXPECT_EQ(b.Sent(), "9");
  EXPECT_FALSE(b.bench.serial->open);
  EXPECT_FALSE(b.reader().EndReader());
  EXPECT_EQ(b.Sent(), "");
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
}

// ---- Reading

TEST(VmrRead, StoresEveryMarkAsThresholdPlusOneAndCountsTheRows) {
  VmrBench b;
  b.Start();
  for (const simulator::Sheet& paper : Paper(3)) {
    ASSERT_TRUE(b.reader().ReadPage());
    EXPECT_EQ(b.Sent(), "Q89");
    EXPECT_EQ(b.reader().Side1Array(), AsRead(paper.side1));
    EXPECT_EQ(b.reader().Side1TimingMarks(), 50);
    EXPECT_EQ(b.reader().Side2TimingMarks(), -1);
    b.reader().EjectPage();
    EXPECT_EQ(b.Sent(), "4");
  }
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

TEST(VmrRead, PlacesTheBitsOfEveryByteFromTheLastRowUp) {
  const struct {
    const char* what;
    std::string record;
    std::int16_t rows;
    std::vector<std::string> marks;
  } kCases[] = {
      {"first and last bit of each half", "\n\x61\x61\r", 1, {"1,1", "1,6", "1,7", "1,12"}},
      {"every bit in turn", "\n\x41\x42\x44\x48\x50\x60\r", 3, {"1,5", "1,12", "2,3", "2,10", "3,1", "3,8"}},
      {"no marks", "\n@@@@\r", 2, {}},
      {"without bit 64", std::string("\n\x01\0\x20@\r", 6), 2, {"1,6", "2,1"}},
      {"bit 128 means nothing", "\n\x80\xC1\r", 1, {"1,7"}},
      {"a carriage return as data", "\n\r@@\r\r", 2, {"1,7", "1,9", "1,10", "2,1", "2,3", "2,4"}},
      {"a line feed as data", "\n\n@\r", 1, {"1,2", "1,4"}},
      {"ended by CR LF", "\n@\x41\x42@\r\n", 2, {"1,2", "2,7"}},
      {"ended by CR CR", "\n@\x41\x42@\r\r", 2, {"1,2", "2,7"}},
      {"ended by LF CR", "\n@\x41\x42@\n\r", 2, {"1,2", "2,7"}},
      {"no marks beyond the array", "\n" + std::string(1001, '@') + "A\r", 501, {"1,7"}},
      {"no rows", "\n\r", 0, {}},
      {"nothing but the end", "\r", -1, {}},
  };
  for (const auto& c : kCases) {
    ScriptedBench b = WithRecords({{{"", c.record}}});
    EXPECT_TRUE(b.reader().ReadPage()) << c.what;
    EXPECT_EQ(b.reader().Side1TimingMarks(), c.rows) << c.what;
    EXPECT_EQ(Marks(b.reader().Side1Array()), c.marks) << c.what;
    EXPECT_THAT(b.bench.host.messages, IsEmpty()) << c.what;
    EXPECT_TRUE(b.scanner->Done()) << c.what;
  }
}

TEST(VmrRead, APauseAnywhereInARecordOfEitherEndingShiftsNoMark) {
  const struct {
    std::string rows;
    std::vector<std::string> marks;
    Milliseconds longest;
  } kRecords[] = {
      {"@\x60\x41@\x44@@\x41", {"1,7", "2,3", "3,1", "4,12"}, 2000ms},
      // Without bit 64 a carriage return may be data, and silence alone tells the end.
      {"\x01\x02\r\x05\x03\x04",
       {"1,1", "1,2", "1,9", "2,1", "2,3", "2,4", "2,7", "2,9", "3,1", "3,8"},
       900ms},
      {"\r@@@", {"2,1", "2,3", "2,4"}, 900ms},
  };
  for (const auto& c : kRecords) {
    for (const std::string ending : {"\r", "\r\n", "\r\r", "\n\r"}) {
      const std::string record = "\n" + c.rows + ending;
      for (std::size_t cut = 1; cut < record.size(); ++cut) {
        for (const auto pause : {40ms, 130ms, 300ms, c.longest}) {
          const std::vector<Turn> inTwo{{"", record.substr(0, cut)}, {"", record.substr(cut), pause}};
          ScriptedBench b = WithRecords({inTwo, inTwo});
          int sheets = 0;
          for (; sheets < 2 && b.reader().ReadPage(); ++sheets) {
            EXPECT_EQ(Marks(b.reader().Side1Array()), c.marks)
                << cut << " of " << record.size() << ", " << sheets;
            EXPECT_EQ(b.reader().Side1TimingMarks(), c.rows.size() / 2);
          }
          // Only where silence alone tells the end, a pause in front of its last byte is taken for one.
          const bool told = cut + 1 < record.size() || ending == "\r" || ending == "\n\r";
          EXPECT_TRUE(!told || b.scanner->Done()) << cut << " of " << record.size();
        }
      }
    }
  }
}

TEST(VmrRead, ACancelDoesNotMakeHalfASheetOfOneWhoseMarksLookLikeItsEnd) {
  for (int turn = 1; turn < 120; ++turn) {
    ScriptedBench b = WithRecords({{{"", "\n\x01\x02\r"}, {"", "\x05\x03\x04\r", 500ms}}});
    int turns = 0;
    b.bench.time->onMessages = [&](int) {
      if (++turns == turn) b.reader().SetCancelScan(true);
    };
    EXPECT_TRUE(!b.reader().ReadPage() || b.reader().Side1TimingMarks() == 3) << turn;
  }
}

TEST(VmrRead, ALostOrAddedByteIsALossOfDataWhateverTheMarksAre) {
  for (const std::string rows : {"@A@@B@@@", "A@@@@@@@", "@\x01@@\x02@@@"}) {
    for (const std::string ending : {"\r", "\r\n", "\n\r"}) {
      const std::string good = "\n" + rows + ending;
      for (std::size_t at = 1; at <= rows.size(); ++at) {
        for (const std::string by : {"", "@@", "AA"}) {
          const std::string damaged = std::string(good).replace(at, 1, by);
          ScriptedBench first = WithRecords({{{"", damaged}}});
          // Without bit 64 the line feed of an ending that nobody knows yet may as well be data.
          const bool ambiguous = rows[1] == '\x01' && ending == "\n\r";
          EXPECT_TRUE(ambiguous || !first.reader().ReadPage()) << at << by;
          ScriptedBench later = WithRecords({{{"", good}}, {{"", damaged}}});
          EXPECT_TRUE(later.reader().ReadPage());
          EXPECT_FALSE(later.reader().ReadPage()) << at << by;
          EXPECT_EQ(later.bench.host.messages, DataLoss("10"));
        }
      }
    }
  }
}

TEST(VmrRead, AnotherEndingThanTheSheetBeforeHadAndBytesBehindARecordRefuseTheSheet) {
  const std::string rows = "\n@A";
  const std::vector<std::vector<Turn>> kSecond{
      {{"", rows + "\r\n"}}, {{"", rows + "\n\r"}}, {{"", rows + "\r"}, {"", "@", 90ms}}};
  for (const auto& second : kSecond) {
    ScriptedBench b = WithRecords({{{"", rows + "\r"}}, second});
    EXPECT_TRUE(b.reader().ReadPage());
    EXPECT_FALSE(b.reader().ReadPage()) << second[0].reply;
    EXPECT_EQ(b.bench.host.messages, DataLoss("10"));
  }
  for (const char* behind : {"A", "@", "x"}) {
    ScriptedBench b = WithRecords({{{"", rows + "\r" + behind}}});
    EXPECT_FALSE(b.reader().ReadPage()) << behind;
    EXPECT_EQ(b.bench.host.messages, DataLoss("10"));
  }
  // Among marks with bit 64 it can only be a damaged byte.
  EXPECT_FALSE(WithRecords({{{"", "\n\r@A@\r"}}}).reader().ReadPage());
  ScriptedBench one = WithRecords({{{"", rows + "\r\n"}}, {{"", rows + "\r"}}});
  EXPECT_TRUE(one.reader().ReadPage());
  EXPECT_FALSE(one.reader().ReadPage());
}

TEST(VmrRead, ASheetWithoutMarksDoesNotShowThatACarriageReturnCannotBeData) {
  ScriptedBench b = WithRecords({{{"", "\n@@\r"}}, {{"", "\n\r@@@\r"}}});
  EXPECT_TRUE(b.reader().ReadPage() && b.reader().ReadPage());
  EXPECT_THAT(Marks(b.reader().Side1Array()), ElementsAre("2,1", "2,3", "2,4"));
}

// What a sheet costs: the five prescribed pauses, and for the first one the silence that tells its ending.
TEST(VmrRead, NothingButThePrescribedPausesCostsTimeOnceTheEndingIsKnown) {
  for (const std::string ending : {"\r", "\r\n", "\n\r"}) {
    // Without bit 64 a moment's silence is left of the long one, as long as no sheet is any longer.
    for (const std::string rows : {"@A@@", "\x01\x02@@"}) {
      const bool flags = rows[0] == '@';
      const std::vector<Turn> record{{"", "\n" + rows + ending}};
      ScriptedBench b = WithRecords({record, record, record});
      for (int sheet = 1; sheet <= 3; ++sheet) {
        const auto before = b.bench.time->Elapsed();
        ASSERT_TRUE(b.reader().ReadPage());
        const auto spent = b.bench.time->Elapsed() - before;
        EXPECT_GE(spent, 5 * 50ms);
        const auto first = flags ? 30ms : 1100ms;
        EXPECT_LE(spent, 5 * 50ms + (sheet == 1 ? first : flags ? 0ms : 30ms)) << sheet;
      }
    }
  }
}

TEST(VmrRead, SlowLineIsWaitedForAtTheStartAndBeforeTheRowsAreCounted) {
  for (const auto baud : {teskReaderBaudRate110, teskReaderBaudRate1200}) {
    VmrBench b;
    // Far slower than the pauses, and the answers to the steps of the threshold than the time-out.
    b.scanner->PaceAt(static_cast<std::int32_t>(baud) / 11);
    b.reader().SetBaudRate(baud);
    b.reader().SetSleepTime(1);
    b.reader().SetTimeOut(1);
    b.reader().SetRecognitionThreshold(255);
    ASSERT_TRUE(b.reader().StartReader()) << baud;
    ASSERT_TRUE(b.reader().ReadPage()) << baud;
    EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(1)[0].side1, 256));
    EXPECT_EQ(b.reader().Side1TimingMarks(), 50);
  }
}

TEST(VmrRead, MarkOutsideTheArrayIsALossOfDataWithTheCurrentPause) {
  const std::string row501 = "A@" + std::string(1000, '@');
  const std::vector<std::vector<Turn>> kRecords{
      {{"", "\n" + row501 + "\r"}},          // too many rows
      {{"", "\nA@@"}, {"", "@@@@\r", 2s}},   // half a row too many, and without marks
      {{"", "\n@\x41\x42@@\r"}},             // the same, and at once
      {{"", "\n@A\r"}, {"", "@A\r", 90ms}},  // behind the end, before the scanner was to be ready again
      {{"", "A@A@\r"}},                      // no line feed
      {{"", "\rA@A@\r"}},                    // an ending in front
      {{"", "\n@A\r\n"}, {"", "A", 130ms}},  // more behind what would have been the end
      {{"", "\n@A\nA"}, {"", "\r", 2s}},
  };
  for (const auto& record : kRecords) {
    ScriptedBench b = WithRecords({record});
    b.reader().StoreSheet({.side1 = SideArray(1, 1)});
    b.reader().SetSleepTime(12);
    EXPECT_FALSE(b.reader().ReadPage()) << record[0].reply.substr(0, 20);
    EXPECT_EQ(b.bench.host.messages, DataLoss("12"));
    EXPECT_THAT(b.bench.host.errors, IsEmpty());
    EXPECT_EQ(b.reader().Side1Array(), SideArray(1, 1));
  }
}

TEST(VmrRead, SimulatedFaultsGiveTheirMessagesAndLeaveTheArray) {
  const struct {
    Fault fault;
    Messages messages;
    std::string sent;
  } kCases[] = {
      {{FaultKind::FrontSensor, 2}, kFrontSensor, "Q4"},
      {{FaultKind::BackSensor, 2}, kBackSensor, "Q4"},
      {{FaultKind::Jam, 2}, kJam, "Q4"},
      {{FaultKind::SilenceStatus, 2}, kStatusSilence, "Q"},
      {{FaultKind::ShortStatus, 2}, kStatusSilence, "Q"},
      {{FaultKind::TooManyRows, 2}, DataLoss("10"), "Q8"},
      {{FaultKind::NoLineFeed, 2}, DataLoss("10"), "Q8"},
      {{FaultKind::TwoByteEnd, 2}, DataLoss("10"), "Q89"},
      {{FaultKind::Cut, 2, 1}, DataLoss("10"), "Q8"},
      {{FaultKind::Cut, 2, 57}, DataLoss("10"), "Q8"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(simulator::Describe(c.fault.kind).name);
    VmrBench b(Stock({c.fault}));
    b.Start();
    ASSERT_TRUE(b.reader().ReadPage());
    b.reader().EjectPage();
    b.Sent();
    EXPECT_FALSE(b.reader().ReadPage());
    EXPECT_EQ(b.Sent(), c.sent);
    EXPECT_EQ(b.bench.host.messages, c.messages);
    EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(1)[0].side1));
    EXPECT_TRUE(b.reader().CancelScan());
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  }
}

TEST(VmrRead, UnusualButGoodSheetsAreReadRight) {
  for (const FaultKind kind : {FaultKind::UnderWay, FaultKind::TwoByteEnd, FaultKind::Late}) {
    SCOPED_TRACE(simulator::Describe(kind).name);
    // An ending of two bytes is no other one when all have it.
    VmrBench b(Stock(kind == FaultKind::TwoByteEnd ? std::vector<Fault>{{kind, 1}, {kind, 2}}
                                                   : std::vector<Fault>{{kind, 2}}));
    b.Start();
    ASSERT_TRUE(b.reader().ReadPage());
    b.reader().EjectPage();
    b.Sent();
    ASSERT_TRUE(b.reader().ReadPage());
    EXPECT_EQ(b.Sent(), kind == FaultKind::UnderWay ? "Q9" : "Q89");
    EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(2)[1].side1));
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  }
}

TEST(VmrRead, PersonMayTakeTheirTimeAndCancelEndsTheWaitQuietlyWithoutLosingTheSheet) {
  simulator::Options options = Stock();
  options.timings.insertion = 2h;
  VmrBench b(options);
  b.Start();
  ASSERT_TRUE(b.reader().ReadPage());
  b.reader().EjectPage();
  ASSERT_TRUE(b.reader().ReadPage());
  EXPECT_GT(b.bench.time->Elapsed(), 2h);
  EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(2)[1].side1));
  b.reader().EjectPage();

  const auto before = b.bench.time->Elapsed();
  b.bench.time->onMessages = [&](int) {
    if (b.bench.time->Elapsed() - before > 1min) b.reader().SetCancelScan(true);
  };
  EXPECT_FALSE(b.reader().ReadPage());
  EXPECT_LT(b.bench.time->Elapsed() - before, 61s);
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
  EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(2)[1].side1));
  b.reader().EndReader();
  EXPECT_EQ(b.scanner->SheetsLeft(), 1U);
}

TEST(VmrRead, CancelEndsTheOtherWaitsQuietlyToo) {
  const std::vector<std::vector<Turn>> kScripts{
      {{"Q", ""}}, {{"Q", "?"}}, {{"Q", Status(32)}}, {{"Q", Status(0)}, {"8", "\n@@"}}};
  for (const auto& script : kScripts) {
    ScriptedBench b(script);
    b.reader().StoreSheet({.side1 = SideArray(1, 1)});
    const auto before = b.bench.time->Elapsed();
    b.bench.time->onMessages = [&](int) {
      if (b.bench.time->Elapsed() - before > 3s) b.reader().SetCancelScan(true);
    };
    EXPECT_FALSE(b.reader().ReadPage());
    EXPECT_LT(b.bench.time->Elapsed() - before, 3500ms);
    EXPECT_THAT(b.bench.host.messages, IsEmpty());
    EXPECT_EQ(b.reader().Side1Array(), SideArray(1, 1));
  }
}

TEST(VmrRead, ACancelInAnyPrescribedPauseKeepsASheetThatHasArrivedAndTakesNoOther) {
  for (int second = 1; second <= 20; ++second) {
    VmrBench b;
    b.reader().SetSleepTime(800);
    b.Start();
    const auto before = b.bench.time->Elapsed();
    b.bench.time->onMessages = [&](int) {
      if (b.bench.time->Elapsed() - before >= std::chrono::seconds(second)) b.reader().SetCancelScan(true);
    };
    // 4 s in front of the status and behind it, behind the read command, the line feed and the end
    const bool kept = b.reader().ReadPage();
    EXPECT_EQ(kept, second > 8) << second;
    EXPECT_EQ(b.Sent(), kept ? "Q89" : "Q");
    EXPECT_EQ(b.bench.time->Elapsed() - before >= 20s, kept) << "a prescribed pause lasts its full time";
    EXPECT_TRUE(!kept || b.reader().Side1Array() == AsRead(Paper(1)[0].side1));
    EXPECT_EQ(b.scanner->SheetsLeft(), kept ? 2U : 3U);
    EXPECT_THAT(b.bench.host.messages, IsEmpty());
  }
}

TEST(VmrRead, AStrayByteInFrontOfAStatusIsAskedAboutOnceMore) {
  const struct {
    std::vector<Turn> script;
    bool read;
    const char* sent;
  } kCases[] = {
      {{{"Q", "x" + Status(0)}, {"Q", Status(0)}, {"8", "\n@A\r"}}, true, "QQ89"},
      {{{"Q", "x"}, {"", Status(0), 60ms}, {"Q", Status(0)}, {"8", "\n@A\r"}}, true, "QQ89"},
      {{{"Q", "x" + std::string("  \0", 3)}, {"Q", Status(0)}, {"8", "\n@A\r"}}, true, "QQ89"},
      {{{"Q", "x" + Status(0)}, {"Q", Status(0) + "x"}}, false, "QQ"},
      {{{"Q", Status(32) + "\n@A\r"}}, true, "Q9"},
  };
  for (const auto& c : kCases) {
    ScriptedBench b(c.script);
    EXPECT_EQ(b.reader().ReadPage(), c.read) << c.sent;
    EXPECT_EQ(b.bench.serial->sent, c.sent);
    EXPECT_EQ(b.bench.host.messages, c.read ? Messages() : kStatusSilence);
    EXPECT_EQ(Marks(b.reader().Side1Array()), std::vector<std::string>(c.read ? 1 : 0, "1,7"));
  }
}

TEST(VmrRead, ThresholdThatHasNoNextValueIsAnErrorBeforeAnythingIsSent) {
  VmrBench b;
  b.Start();
  b.reader().SetRecognitionThreshold(32767);
  EXPECT_FALSE(b.reader().ReadPage());
  EXPECT_EQ(b.Sent(), "");
  EXPECT_THAT(b.bench.host.Sources(), ElementsAre("basPeripheralDynamics.ReadPagePD"));
}

// ---- Disposal

TEST(VmrDispose, SendsTheSheetWhereTheHostWantsItAndWaitsForItToLeave) {
  VmrBench b;
  b.Start();
  ASSERT_TRUE(b.reader().ReadPage());
  b.Sent();
  auto before = b.bench.time->Elapsed();
  b.reader().RejectPage();
  EXPECT_EQ(b.Sent(), "3");
  EXPECT_EQ(b.bench.time->Elapsed() - before, 1000ms);
  ASSERT_TRUE(b.reader().ReadPage());
  b.Sent();
  before = b.bench.time->Elapsed();
  b.reader().EjectPage();
  EXPECT_EQ(b.Sent(), "4");
  EXPECT_EQ(b.bench.time->Elapsed() - before, 100ms);
  EXPECT_THAT(b.scanner->Disposals(), ElementsAre(simulator::Disposal{1, Exit::Rejected, true, "", false},
                                                  simulator::Disposal{2, Exit::Accepted, true, "", false}));
}

TEST(VmrBatch, ReadsAHundredSheetsAndLosesNone) {
  VmrBench b(Stock({}, 100));
  std::int32_t count = 0;
  EXPECT_TRUE(b.reader().ReadBatch(false, 100, count));
  ASSERT_EQ(b.bench.events.side1.size(), 100U);
  const auto paper = Paper(100);
  for (std::size_t i = 0; i < paper.size(); ++i) {
    ASSERT_EQ(b.bench.events.side1[i], AsRead(paper[i].side1)) << i;
  }
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
}

TEST(VmrSimulator, AStartEndsTheReadingBeforeAndWhatIsOnItsWayArrivesDespiteTheEnd) {
  VmrBench b(Stock({{FaultKind::Cut, 1, 5}, {FaultKind::UnderWay, 1}}));
  b.Start();
  EXPECT_FALSE(b.reader().ReadPage());
  EXPECT_EQ(b.Sent(), "Q");
  ASSERT_TRUE(b.reader().StartReader() && b.reader().ReadPage());
  EXPECT_EQ(b.reader().Side1Array(), AsRead(Paper(2)[1].side1));
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());

  b.scanner->PaceAt(100);
  simulator::Time now = b.bench.time->Now() + 1h;
  for (const char* command : {"4", "8", "9"}) b.scanner->Receive(command, now += 10s);
  EXPECT_EQ(b.scanner->Send(now + 1h).size(), 102U);
}

TEST(VmrSimulator, TheSeedOfTheCommandLineMakesTheGarbage) {
  const auto garbage = [](std::uint64_t seed) {
    const auto scanner =
        cli::CreateSimulatedScanner(teskReaderTypePDIVMR138, Paper(1), {{FaultKind::Garbage, 1}}, seed);
    scanner->Receive("0DGE8", {});
    return scanner->Send(simulator::Time{} + 1h);
  };
  EXPECT_EQ(garbage(5), garbage(5));
  EXPECT_NE(garbage(5), garbage(6));
}

TEST(VmrSimulator, RecordsWhatAHostDoesWrong) {
  const std::pair<const char*, std::string> kCases[] = {
      {"unknown command", "x"},
      {"unknown command", "\r"},
      {"before the start", "Q"},
      {"before the set-up", "08"},
      {"does not ask for", "0DGED"},
      {"while a sheet is being read", "0DGE88"},
      {"before the last reading was ended",
       "0DGE848"
       "4"
       "8"},
  };
  for (const auto& [complaint, bytes] : kCases) {
    simulator::Options options = Stock();
    options.timings.reading = 1s;
    VmrBench b(options);
    simulator::Time now{};
    for (const char byte : bytes) {
      b.scanner->Receive({&byte, 1}, now);
      if (byte == '4') now += 1s;
    }
    ASSERT_FALSE(b.scanner->Complaints().empty()) << complaint;
    EXPECT_NE(b.scanner->Complaints()[0].find(complaint), std::string::npos) << b.scanner->Complaints()[0];
  }
}

}  // namespace
}  // namespace tesk::test
