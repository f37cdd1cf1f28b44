// The Sekonic serial driver against its simulated scanner: the marks, counts and barcodes that it stores, and
// that it stores nothing where a record is spoilt.
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/SekonicBench.h"

namespace tesk::test {
namespace {

using simulator::Fault;
using simulator::FaultKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Messages = std::vector<RecordingHost::Message>;

// What the sheet holds inside rows x columns of a side of 48 columns.
SideArray Page(const SideArray& sheet, std::int32_t rows) {
  SideArray page(rows, 48);
  for (std::int32_t row = 1; row <= std::min(rows, sheet.Rows()); ++row) {
    for (std::int32_t column = 1; column <= sheet.Columns(); ++column) {
      page.At(row, column) = sheet.At(row, column);
    }
  }
  return page;
}

// ---- Whole pages

TEST(SekonicSerial, PageIsReadWithExactlyTheseBytes) {
  SekonicBench b(kSr607);
  EXPECT_TRUE(b.reader.StartReader());
  b.Sent();
  EXPECT_TRUE(b.reader.ReadPage());
  b.reader.EjectPage();
  EXPECT_THAT(b.Sent(), ElementsAre("?", "ENQ T", "/ENQ T", "DLE ED001020", "/DLE ED001020", "DC3 R04"));
  b.reader.SetDuplexForm(false);
  b.reader.SetSide1Rows(From1({5, 112, 9}));
  EXPECT_TRUE(b.reader.ReadPage());
  EXPECT_THAT(b.Sent(), ElementsAre("?", "ENQ T", "DLE ED001112"));
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
}

TEST(SekonicSerial, HundredSheetsOfEveryModelLoseNoMark) {
  for (const teskReaderType type : {kSr601, kSr607, kSr700351, kSr700352, kSr410, kSr430}) {
    SekonicBench b(type, Stock({}, 100));
    const bool duplex = b.reader.Duplex();
    std::int32_t count = 0;
    b.bench.events.onReadSheet = [&] {
      EXPECT_EQ(b.reader.Side1TimingMarks(), 20);
      EXPECT_EQ(b.reader.Side2TimingMarks(), duplex ? 20 : -1);
    };
    b.bench.events.onAfterSheet = [&](bool&) { b.reader.EjectPage(); };
    EXPECT_TRUE(b.reader.ReadBatch(false, 100, count));
    ASSERT_EQ(b.bench.events.side1.size(), 100U) << type;
    for (std::size_t i = 0; i < 100; ++i) {
      EXPECT_EQ(b.bench.events.side1[i], Page(b.sheets[i].side1, 20)) << type << " sheet " << i;
      EXPECT_EQ(b.bench.events.side2[i], duplex ? Page(b.sheets[i].side2, 20) : SideArray());
    }
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
    EXPECT_THAT(b.bench.host.messages, IsEmpty());
    EXPECT_THAT(b.bench.host.errors, IsEmpty());
  }
}

TEST(SekonicSerial, WronglySetSwitchesOfTheSr430AreToldInsteadOfReadingWrongMarks) {
  SideArray side(20, 12);
  side.At(3, 11) = 9;
  simulator::Options options;
  options.sheets = {{side, {}, {}}};
  options.faults = {{FaultKind::WrongMode, 1}};
  SekonicBench b(kSr430, options);
  EXPECT_TRUE(b.reader.StartReader());
  EXPECT_FALSE(b.reader.ReadPage());
  EXPECT_EQ(b.bench.host.messages,
            (Messages{{"Read Error",
                       "The Sekonic SR-430 appears to be in the wrong reading mode.  Please ensure that dip "
                       "switch 6 is in the default position; Check the manual that came with your hardware "
                       "for further instructions on how to do this."}}));
  EXPECT_TRUE(b.reader.Side1Array().Empty());
}

struct SpoiltCase {
  const char* name;
  Fault fault;
  bool windows;
  std::int32_t error;
  const char* source;
};

const SpoiltCase kSpoilt[] = {
    {"PageSilence", {FaultKind::Silence, 1}, false, kErrorTimeOut, "ReadEntirePageSS"},
    {"PageLate", {FaultKind::Late, 1}, false, kErrorTimeOut, "ReadEntirePageSS"},
    {"PageShort", {FaultKind::Short, 1}, false, kErrorTimeOut, "ReadEntirePageSS"},
    {"PageCut", {FaultKind::Cut, 1, 25}, false, kErrorTimeOut, "ReadEntirePageSS"},
    {"PageOneRowTooMany", {FaultKind::Overrun, 1}, false, kErrorSubscript, "ReadEntirePageSS"},
    {"WindowsSilence", {FaultKind::Silence, 1}, true, kErrorTimeOut, "ReadWindowsSS"},
    {"WindowsLate", {FaultKind::Late, 1}, true, kErrorTimeOut, "ReadWindowsSS"},
    {"WindowsCut", {FaultKind::Cut, 1, 25}, true, kErrorTimeOut, "ReadWindowsSS"},
    {"WindowsOneItemTooMany", {FaultKind::Overrun, 1}, true, kErrorSubscript, "AddToArraySS"},
    {"BarcodeSilence", {FaultKind::SilenceBarcodes, 1}, false, kErrorTimeOut, "ReadPageSS"},
};

class SekonicSpoilt : public ::testing::TestWithParam<SpoiltCase> {};

TEST_P(SekonicSpoilt, RecordIsReportedOnceAndChangesNothing) {
  const SpoiltCase& c = GetParam();
  SekonicBench b(kSr607, Stock({c.fault}));
  if (c.windows) b.AddWindow({1, 1, 20, 1, 1, 40, 1});
  b.reader.SetBarcode(true);
  b.AddBarcode();
  SideArray before(1, 1);
  before.At(1, 1) = 77;
  b.reader.StoreSheet({.side1 = before, .side2 = before});
  EXPECT_TRUE(b.reader.StartReader());
  EXPECT_FALSE(b.reader.ReadPage());
  EXPECT_THAT(b.bench.host.Sources(), ElementsAre(std::string("basScanningSystems.") + c.source));
  EXPECT_EQ(b.bench.host.errors.at(0).number, c.error);
  if (c.error == kErrorTimeOut) {
    EXPECT_EQ(b.bench.host.errors.at(0).message, "There was no response from the scanner.");
  }
  EXPECT_EQ(b.reader.Side1Array(), before);
  EXPECT_EQ(b.reader.Side2Array(), before);
  EXPECT_EQ(b.reader.Side1TimingMarks(), -1);
  EXPECT_THAT(b.reader.BarcodeTexts(), ElementsAre(""));
  EXPECT_TRUE(b.reader.CancelScan());
}

INSTANTIATE_TEST_SUITE_P(Faults, SekonicSpoilt, ::testing::ValuesIn(kSpoilt),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SekonicSerial, SilenceAtTheTimingMarksIsShownAndCostsTheCountAlone) {
  SekonicBench b(kSr601, Stock({{FaultKind::SilenceTimingMarks, 1}}));
  EXPECT_TRUE(b.reader.StartReader());
  EXPECT_TRUE(b.reader.ReadPage());
  EXPECT_EQ(b.bench.host.messages,
            (Messages{{"No Response", "There was no response from the Sekonic scanner."}}));
  EXPECT_EQ(b.reader.Side1TimingMarks(), -1);
  EXPECT_EQ(b.reader.Side1Array(), Page(b.sheets[0].side1, 20));
}

// The scanner of two heads and slow answers: pieces of one answer arrive a tenth of a second apart.
class Hesitant : public simulator::Scanner {
 public:
  Hesitant(std::string status, std::string marks) : status_(std::move(status)), marks_(std::move(marks)) {}

 private:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    if (byte != '\r') {
      line_ += static_cast<char>(byte);
      return;
    }
    const std::string command = std::exchange(line_, {});
    if (command == "\030") Reply("\x06", now);
    if (command == "\005OM") Reply("1", now);
    if (command == "?") InPieces(status_, now);
    if (command.ends_with("\005T")) InPieces(marks_, now);
    if (command.find("ED001") != std::string::npos) {
      for (int row = 0; row < 4; ++row) Reply("05 \r", now, simulator::Milliseconds(300));
    }
  }
  void InPieces(const std::string& answer, simulator::Time now) {
    Reply(answer.substr(0, 1), now);
    Reply(answer.substr(1), now, simulator::Milliseconds(100));
  }

  std::string status_;
  std::string marks_;
  std::string line_;
};

TEST(SekonicSerial, AnswersInPiecesAreNeitherMarksNorAGoodStatus) {
  struct Case {
    const char* status;
    const char* marks;
    bool read;
  };
  for (const Case& c : {Case{"00", "004", true}, Case{"04", "004", false}, Case{"00", "00", false}}) {
    Bench bench(teskReaderTypeScanningSystemsSR607, std::make_shared<Hesitant>(c.status, c.marks));
    bench.reader->SetDuplexForm(true);
    bench.reader->SetSide1Rows(From1({4}));
    bench.reader->SetSide2Rows(From1({4}));
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_EQ(bench.reader->ReadPage(), c.read) << c.status << c.marks;
    if (!c.read) continue;
    EXPECT_EQ(bench.reader->Side1TimingMarks(), 4);
    EXPECT_EQ(bench.reader->Side1Array().At(4, 1), 5);
    EXPECT_EQ(bench.reader->Side1Array().At(1, 2), 0);
  }
}

TEST(SekonicSerial, ThousandRowsAreAnErrorInsteadOfAFourthDigit) {
  SekonicBench b(kSr601);
  EXPECT_TRUE(b.reader.StartReader());
  b.reader.SetSide1Rows(From1({1000}));
  EXPECT_FALSE(b.reader.ReadPage());
  EXPECT_EQ(b.bench.host.errors.at(0).number, kErrorInvalidCall);
}

// ---- Windows

// Windows on both sides with gaps, several items and more than one mark per item.
void AddForm(SekonicBench& b) {
  b.AddWindow({1, 2, 9, 1, 1, 30, 1});
  b.AddWindow({2, 1, 10, 2, 2, 20, 2});
  b.AddWindow({1, 20, 6, -1, 48, 9, -2});
}

bool InForm(std::int32_t side, std::int32_t row, std::int32_t column) {
  if (side == 2) return row % 2 == 1 && row < 20 && column % 2 == 0 && column <= 40;
  return (row >= 2 && row <= 10 && column <= 30) || (row >= 15 && column >= 32 && column % 2 == 0);
}

SideArray Windowed(const SideArray& sheet, std::int32_t side) {
  SideArray expected(20, 48);
  for (std::int32_t row = 1; row <= 20; ++row) {
    for (std::int32_t column = 1; column <= 48; ++column) {
      if (InForm(side, row, column)) expected.At(row, column) = sheet.At(row, column);
    }
  }
  return expected;
}

TEST(SekonicSerial, WindowsOfBothSidesAreReadInPlaceAndTheRestStaysBlank) {
  SekonicBench b(kSr700352, Stock({}, 30));
  AddForm(b);
  std::int32_t count = 0;
  EXPECT_TRUE(b.reader.ReadBatch(false, 30, count));
  ASSERT_EQ(b.bench.events.side1.size(), 30U);
  for (std::size_t i = 0; i < 30; ++i) {
    EXPECT_EQ(b.bench.events.side1[i], Windowed(b.sheets[i].side1, 1));
    EXPECT_EQ(b.bench.events.side2[i], Windowed(b.sheets[i].side2, 2));
  }
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
}

TEST(SekonicSerial, SideWithoutWindowsIsAskedButNotWaitedFor) {
  SekonicBench b(kSr607);
  b.AddWindow({1, 1, 20, 1, 1, 40, 1});
  EXPECT_TRUE(b.reader.StartReader());
  b.Sent();
  const auto before = b.bench.time->Elapsed();
  EXPECT_TRUE(b.reader.ReadPage());
  EXPECT_THAT(b.Sent(), ElementsAre("?", "ENQ T", "/ENQ T", "DLE R*", "/DLE R*"));
  EXPECT_LT(b.bench.time->Elapsed() - before, 2s);
  EXPECT_EQ(b.reader.Side2Array(), SideArray(20, 48));
}

TEST(SekonicSerial, WindowOutsideTheExtentsIsErrorNineAndChangesNothing) {
  SekonicBench b(kSr601);
  b.AddWindow({1, 1, 20, 1, 1, 40, 1});
  b.reader.SetSide1Rows(From1({19}));
  b.reader.SetSide1Cols(From1({3}));
  EXPECT_TRUE(b.reader.StartReader());
  EXPECT_FALSE(b.reader.ReadPage());
  EXPECT_THAT(b.bench.host.Sources(), ElementsAre("basScanningSystems.AddToArraySS"));
  EXPECT_EQ(b.bench.host.errors.at(0).number, kErrorSubscript);
  EXPECT_TRUE(b.reader.Side1Array().Empty());
}

TEST(SekonicSerial, EveryCutOfAWindowSessionFailsAndEverySplitReadsTheSame) {
  const auto run = [](PortBehaviour behaviour, const std::function<void(SekonicBench&, bool)>& check) {
    SekonicBench b(kSr607, Stock({}, 1));
    AddForm(b);
    b.bench.serial->behaviour = behaviour;
    const bool read = b.reader.StartReader() && b.reader.ReadPage();
    check(b, read);
    std::size_t delivered = 0;
    for (const auto& traffic : b.scanner->Transcript()) {
      if (traffic.direction == simulator::Direction::ToHost) delivered += traffic.bytes.size();
    }
    return delivered;
  };
  const auto right = [](SekonicBench& b, bool read) {
    ASSERT_TRUE(read);
    EXPECT_EQ(b.reader.Side1Array(), Windowed(b.sheets[0].side1, 1));
    EXPECT_EQ(b.reader.Side2Array(), Windowed(b.sheets[0].side2, 2));
  };
  const auto nothing = [](SekonicBench& b, bool read) {
    ASSERT_FALSE(read);
    EXPECT_TRUE(b.reader.Side1Array().Empty());
    EXPECT_TRUE(b.reader.Side2Array().Empty());
  };
  const std::size_t delivered = run({}, right);
  for (std::size_t at = 1; at < delivered && !HasFailure(); ++at) {
    SCOPED_TRACE(at);
    PortBehaviour cut;
    cut.silentAfter = at;
    run(cut, nothing);
    PortBehaviour split;
    split.pauseAfter = at;
    run(split, right);
  }
}

// ---- Barcodes

TEST(SekonicSerial, BarcodesAreSetUpPerDefinitionAndReadIntoEightTexts) {
  simulator::Options options;
  options.sheets = {{SideArray(20, 48), SideArray(20, 48), {"4711", "A-B 9"}}};
  SekonicBench b(kSr601, options);
  b.reader.SetBarcode(true);
  for (int i = 0; i < 3; ++i) b.AddBarcode();
  b.reader.SetSleepTime(100);
  EXPECT_TRUE(b.reader.StartReader());
  b.Sent();
  EXPECT_TRUE(b.reader.ReadPage());
  EXPECT_THAT(b.Sent(), ElementsAre("DC3 BA00", "DC3 BA01", "DC3 BA10999", "DC3 BA10999", "DC3 BA10999", "?",
                                    "ENQ T", "DC3 BA05", "DLE ED001020"));
  EXPECT_THAT(b.reader.BarcodeTexts(), ElementsAre("4711", "A-B 9", "", "", "", "", "", ""));
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
}

TEST(SekonicSerial, NinthBarcodeDefinitionIsNotSetUpAndNoneIsWithoutTheSwitch) {
  SekonicBench b(kSr601);
  for (int i = 0; i < 9; ++i) b.AddBarcode();
  EXPECT_TRUE(b.reader.StartReader());
  b.Sent();
  EXPECT_TRUE(b.reader.ReadPage());
  EXPECT_THAT(b.Sent(), ElementsAre("?", "ENQ T", "DLE ED001020"));
  EXPECT_THAT(b.reader.BarcodeTexts(), ElementsAre(""));
  b.reader.SetBarcode(true);
  EXPECT_TRUE(b.reader.ReadPage());
  EXPECT_EQ(b.Sent().size(), 2U + 8U + 4U);
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
}

}  // namespace
}  // namespace tesk::test
