// The Sekonic serial driver against its simulated scanner: the marks, counts and barcodes that it stores, and
// that it stores nothing where a record is spoilt.
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/ScriptedScanner.h"
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

TEST_P(SekonicSpoilt, RecordIsReportedOnceAndChangesNothingButTheCounts) {
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
  // The host sees the counts before the marks have come.
  EXPECT_EQ(b.reader.Side1TimingMarks(), 20);
  EXPECT_EQ(b.reader.Side2TimingMarks(), 20);
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

TEST(SekonicSerial, CancelEndsTheWaitForMarksHoweverLongTheHostsPauses) {
  SekonicBench b(kSr601, Stock({{FaultKind::Silence, 1}}));
  b.reader.SetSleepTime(30'000);
  EXPECT_TRUE(b.reader.StartReader());
  const auto before = b.bench.time->Elapsed();
  b.bench.time->onMessages = [&](int) {
    if (b.bench.serial->sent.find("ED001") != std::string::npos) b.reader.SetCancelScan(true);
  };
  EXPECT_FALSE(b.reader.ReadPage());
  // A second of it is the silence behind the first count.
  EXPECT_LE(b.bench.time->Elapsed() - before, 2100ms);
  EXPECT_THAT(b.bench.host.errors, IsEmpty());
}

// ---- Answers in pieces

struct Piece {
  const char* text;
  int delay = 0;  // milliseconds after the piece before
};
using Pieces = std::vector<Piece>;
using Said = std::map<std::string, Pieces>;  // by command, CR left out

// A scanner that gives every command the same answer each time.
class Talker : public simulator::Scanner {
 public:
  explicit Talker(const Said& said) : said_(said) {
    said_.insert({{"\030", {{"\x06\r"}}},
                  {"\005OM", {{"1\r"}}},
                  {"?", {{"00"}}},
                  {"\005T", {{"004\r"}}},
                  {"/\005T", {{"006\r"}}},
                  {"\020ED001004", {{"05 \r \r \r \r"}}},
                  {"/\020ED001002", {{" \r16 \r"}}}});
  }

 private:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    if (byte != '\r') {
      line_ += static_cast<char>(byte);
      return;
    }
    simulator::Milliseconds delay{0};
    for (const Piece& piece : said_[std::exchange(line_, {})]) {
      delay += simulator::Milliseconds(piece.delay);
      Reply(piece.text, now, delay);
    }
  }

  Said said_;
  std::string line_;
};

// A form of 4 rows on side 1 and 2 on side 2.
struct TalkerBench : Bench {
  TalkerBench(const Said& said, bool twoSided) : Bench(kSr607, std::make_shared<Talker>(said)) {
    reader->SetDuplexForm(twoSided);
    reader->SetSide1Rows(From1({4}));
    reader->SetSide2Rows(From1({2}));
  }
  void AddWindow(std::int16_t page, std::int16_t rows) {
    auto window = std::make_shared<clsTeskReaderWindow>();
    window->SetPage(page);
    window->SetStartRow(1);
    window->SetNumRows(rows);
    window->SetRowGap(1);
    window->SetStartCol(1);
    window->SetNumCols(5);
    window->SetColGap(1);
    reader->Windows()->Add(window);
    reader->SetRecognitionMode(teskRecognitionTypeWindow);
  }
};

const RecordingHost::Message kNoResponse{"No Response", "There was no response from the Sekonic scanner."};
const RecordingHost::Message kNotFed{
    "Scanner Error", "The Sekonic scanner could not feed a page. Please insert a page and retry."};

struct PiecesCase {
  const char* name;
  bool twoSided;
  Said said;
  bool read;
  std::vector<std::int16_t> counts;  // of timing marks
  Messages messages;
};

const PiecesCase kPieces[] = {
    {"Whole", true, {}, true, {4, 6}, {}},
    {"SecondHeadOfAOneSidedRead", false, {{"?", {{"0"}, {"6", 200}}}}, false, {}, {kNotFed}},
    {"SecondHeadOfATwoSidedRead", true, {{"?", {{"0"}, {"6", 3000}}}}, false, {}, {kNotFed}},
    {"SecondHeadThatNeverSpeaks", true, {{"?", {{"0"}}}}, false, {}, {kNoResponse}},
    {"OnlyOneHeadFindsFault", true, {{"?", {{"6"}}}}, false, {}, {kNotFed}},
    {"CountAndItsEnd", true, {{"\005T", {{"0"}, {"04", 900}, {"\r", 900}}}}, true, {4, 6}, {}},
    {"CountOfTwoDigits", true, {{"\005T", {{"12\r"}}}}, true, {12, 6}, {}},
    {"CountWithoutEnd", false, {{"\005T", {{"004"}}}}, true, {4, -1}, {}},
    {"CountThatBreaksOff", true, {{"\005T", {{"00"}}}}, false, {}, {kNoResponse}},
    {"CountWhoseLastDigitBecameItsEnd", true, {{"\005T", {{"00\r\r"}}}}, false, {}, {kNoResponse}},
    {"CountThatIsNone", true, {{"\005T", {{"0-4\r"}}}}, false, {}, {kNoResponse}},
    {"CountsThatComeTooLate",
     true,
     {{"\005T", {{"004", 10'100}}}, {"/\005T", {{"006", 10'100}}}},
     true,
     {-1, -1},
     {kNoResponse, kNoResponse}},
    {"CountInFrontOfTheOtherHeads",
     true,
     {{"\005T", {{"004\r", 10'900}}}},
     false,
     {},
     {kNoResponse, kNoResponse}},
    {"Marks",
     true,
     {{"\020ED001004", {{"0"}, {"5 ", 300}, {"\r \r \r ", 9000}, {"\r", 9000}}}},
     true,
     {4, 6},
     {}},
};

class SekonicPieces : public ::testing::TestWithParam<PiecesCase> {};

TEST(SekonicRead, WhatWaitsBetweenSheetsIsWaitedOutWithItsRest) {
  TalkerBench bench({{"\023R04", {{"X"}, {"0", 300}}}}, true);
  ASSERT_TRUE(bench.reader->StartReader());
  for (int sheet = 1; sheet <= 2; ++sheet) {
    EXPECT_TRUE(bench.reader->ReadPage()) << sheet;
    EXPECT_EQ(bench.reader->Side1Array().At(1, 1), 5) << sheet;
    bench.reader->EjectPage();
  }
  EXPECT_THAT(bench.host.messages, IsEmpty());
}

TEST_P(SekonicPieces, AreNoMarksNoCountsAndNoGoodStatus) {
  const PiecesCase& c = GetParam();
  TalkerBench bench(c.said, c.twoSided);
  ASSERT_TRUE(bench.reader->StartReader());
  for (int sheet = 1; sheet <= 2; ++sheet) {
    bench.host.messages.clear();
    EXPECT_EQ(bench.reader->ReadPage(), c.read) << sheet;
    EXPECT_EQ(bench.host.messages, c.messages);
    EXPECT_THAT(bench.host.errors, IsEmpty());
    EXPECT_EQ(bench.reader->Side1Array().Empty(), !c.read);
    if (!c.read) return;
    EXPECT_THAT((std::vector{bench.reader->Side1TimingMarks(), bench.reader->Side2TimingMarks()}), c.counts);
    SideArray side1(4, 48);
    side1.At(1, 1) = 5;
    EXPECT_EQ(bench.reader->Side1Array(), side1);
    SideArray side2(2, 48);
    side2.At(2, 2) = 6;
    EXPECT_EQ(bench.reader->Side2Array(), c.twoSided ? side2 : SideArray());
  }
}

INSTANTIATE_TEST_SUITE_P(Answers, SekonicPieces, ::testing::ValuesIn(kPieces),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SekonicSerial, ALineThatDripsIsWaitedForNoLongerThanTheTimeOut) {
  TalkerBench bench({{"\005OM", Pieces(1000, {"1", 500})}}, false);
  EXPECT_FALSE(bench.reader->StartReader());
  EXPECT_LT(bench.time->Elapsed(), Milliseconds(bench.reader->TimeOut() * 1000) + 2s);
  EXPECT_THAT(
      bench.host.messages,
      ElementsAre(RecordingHost::Message{
          "Initialization Error", "There was no response from the Sekonic scanner while initializing."}));
}

TEST(SekonicSerial, AFaultThatOneHeadTellsDoesNotShowHowManySpeakOfAGoodSheet) {
  for (const char* fault : {"6", "06"}) {
    auto scanner = std::make_shared<ScriptedScanner>(std::vector<Turn>{{"\030\r", "\x06\r"},
                                                                       {"\005OM\r", "0\r"},
                                                                       {"\020DL1\r", ""},
                                                                       {"?\r", fault},
                                                                       {"?\r", "00"},
                                                                       {"\005T\r", "004\r"},
                                                                       {"\020ED001004\r", "05 \r \r \r \r"}});
    Bench bench(kSr607, scanner);
    bench.reader->SetDuplexForm(false);
    bench.reader->SetSide1Rows(From1({4}));
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_FALSE(bench.reader->ReadPage());
    EXPECT_EQ(bench.host.messages, Messages{kNotFed});
    bench.reader->SetCancelScan(false);
    EXPECT_TRUE(bench.reader->ReadPage()) << fault;
    EXPECT_TRUE(scanner->Done());
  }
}

TEST(SekonicSerial, BarcodeInPiecesIsOneTextAndMissingOnesCostASilence) {
  const struct {
    Pieces said;
    std::vector<const char*> texts;
  } cases[] = {
      {{{"47"}, {"11\rA", 300}, {"B", 900}, {"\r", 900}}, {"4711", "AB"}},
      {{{"4711,A"}, {"B", 500}}, {"4711", "AB"}},  // the last terminator is missing
      {{{"4711"}, {"\r", 500}}, {"4711", ""}},     // the second barcode
      {{{"\x02"
         "4711\r\x03"},
        {"AB\r\n", 500}},
       {"4711", "AB"}},
  };
  for (const auto& c : cases) {
    TalkerBench bench({{"\023BA05", c.said}}, true);
    bench.reader->SetBarcode(true);
    for (int i = 0; i < 2; ++i) bench.reader->Barcodes()->Add(std::make_shared<clsTeskReaderBarcode>());
    ASSERT_TRUE(bench.reader->StartReader());
    for (int sheet = 1; sheet <= 2; ++sheet) {
      ASSERT_TRUE(bench.reader->ReadPage());
      EXPECT_THAT(bench.reader->BarcodeTexts(), ElementsAre(c.texts[0], c.texts[1], "", "", "", "", "", ""));
      EXPECT_EQ(bench.reader->Side1Array().At(1, 1), 5);
      EXPECT_EQ(bench.reader->Side2Array().At(2, 2), 6);
    }
  }
}

TEST(SekonicSerial, WindowReplyMayLackItsLastCrButNotWhatTheSheetBeforeHad) {
  const struct {
    Pieces said;
    bool read;
    bool silent;  // an error of silence was reported
  } cases[] = {
      {{{"15\r36"}}, true, false},
      {{{"15\r "}}, true, false},
      {{{"15\r36,"}}, false, true},
      {{{"15\r3"}}, false, true},
      {{{"15\r"}}, false, true},
      {{}, false, true},
      {{{"15\r36"}, {"\r", 500}}, true, false},
      {{{"15\r36"}, {",47", 500}, {"\r", 500}}, true, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.said.empty() ? "" : c.said[0].text);
    TalkerBench bench({{"\020R*", c.said}}, false);
    bench.AddWindow(1, 2);
    ASSERT_TRUE(bench.reader->StartReader());
    const auto before = bench.time->Elapsed();
    EXPECT_EQ(bench.reader->ReadPage(), c.read);
    EXPECT_EQ(bench.host.errors.size(), c.silent ? 1U : 0U);
    if (!c.read) continue;
    EXPECT_LT(bench.time->Elapsed() - before, 3s);
    const SideArray side = bench.reader->Side1Array();
    EXPECT_EQ(side.At(1, 1), 5);
    EXPECT_EQ(side.At(2, 3), c.said[0].text[3] == '3' ? 6 : 0);
    EXPECT_EQ(side.At(2, 4), c.said.size() == 3 ? 7 : 0);
  }
}

TEST(SekonicSerial, ACancelKeepsWindowsThatHaveArrivedAndThePauseBehindThem) {
  const Said said{{"\020R*", {{"15\r36\r", 200}}}, {"/\020R*", {{"12\r", 200}}}};
  for (const bool twoSided : {false, true}) {
    // When the read ended, where the host cancelled so long after the start; empty: no sheet came of it.
    const auto run = [&](Milliseconds cancel) -> std::optional<Milliseconds> {
      TalkerBench bench(said, twoSided);
      bench.AddWindow(1, 2);
      if (twoSided) bench.AddWindow(2, 1);
      bench.reader->SetSleepTime(300);
      bench.reader->StartReader();
      bench.time->onMessages = [&](int) {
        if (bench.time->Elapsed() >= cancel) bench.reader->SetCancelScan(true);
      };
      const bool read = bench.reader->ReadPage();
      return read ? std::optional(bench.time->Elapsed()) : std::nullopt;
    };
    const auto whole = run(1h);
    ASSERT_TRUE(whole);
    for (Milliseconds early{10}; early < 280ms; early += 10ms) {
      const auto ended = run(*whole - early);
      EXPECT_TRUE(ended && *ended >= *whole) << early.count();
    }
  }
}

TEST(SekonicSerial, WindowsThatAreNotReadOrHaveNoItemsAreNoBlankSheet) {
  for (const auto& [page, rows] : {std::pair<std::int16_t, std::int16_t>{2, 2}, {1, 0}}) {
    TalkerBench bench({}, false);
    bench.AddWindow(page, rows);
    ASSERT_TRUE(bench.reader->StartReader());
    EXPECT_FALSE(bench.reader->ReadPage());
    ASSERT_EQ(bench.host.errors.size(), 1U);
    EXPECT_EQ(bench.host.errors[0].number, kErrorTimeOut);
  }
}

TEST(SekonicSerial, WholePagesAreReadWithoutASilenceOnceTheScannerIsKnown) {
  const struct {
    teskReaderType type;
    bool twoSided, barcode;
  } cases[] = {
      {kSr607, true, false}, {kSr607, false, false}, {kSr700351, false, true}, {kSr430, false, false}};
  for (const auto& c : cases) {
    SekonicBench b(c.type);
    b.reader.SetDuplexForm(c.twoSided);
    b.reader.SetBarcode(c.barcode);
    b.AddBarcode();
    EXPECT_TRUE(b.reader.StartReader());
    for (int sheet = 1; sheet <= 3; ++sheet) {
      const auto before = b.bench.time->Elapsed();
      EXPECT_TRUE(b.reader.ReadPage());
      b.reader.EjectPage();
      // Before a sheet BA00, BA01 and one field, and behind BA05.
      const auto prescribed = c.barcode ? 4 * Milliseconds(b.reader.SleepTime()) : 0ms;
      if (sheet > 1) {
        EXPECT_LE(b.bench.time->Elapsed() - before - prescribed, 3ms) << c.type;
      }
    }
  }
}

TEST(SekonicSerial, EnginesOfOneProcessKeepApartWhatTheirScannersSaid) {
  SekonicBench below(Model(kSr601, 0), Stock({{FaultKind::StatusCode, 1, '3'}}));
  ASSERT_TRUE(below.reader.StartReader());
  {
    SekonicBench above(Model(kSr700352, 3), Stock({{FaultKind::StatusCode, 1, '3'}}));
    ASSERT_TRUE(above.reader.StartReader());
  }
  RecordingHost host;
  EXPECT_FALSE(below.reader.ReadPage());
  EXPECT_THAT(host.messages, IsEmpty());  // mode 0 has no text for this code
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

TEST(SekonicSerial, EveryCutOfAWindowSessionFailsOrReadsRight) {
  const auto run = [](std::optional<std::size_t> cut, std::size_t whole) {
    SekonicBench b(kSr607, Stock({}, 1));
    AddForm(b);
    b.bench.serial->behaviour.silentAfter = cut;
    const bool read = b.reader.StartReader() && b.reader.ReadPage();
    // Behind an item without a mark only its CR is lost.
    EXPECT_TRUE(cut && *cut + 1 < whole ? !read : read || cut);
    EXPECT_EQ(b.reader.Side1Array(), read ? Windowed(b.sheets[0].side1, 1) : SideArray());
    EXPECT_EQ(b.reader.Side2Array(), read ? Windowed(b.sheets[0].side2, 2) : SideArray());
    std::size_t delivered = 0;
    for (const auto& traffic : b.scanner->Transcript()) {
      if (traffic.direction == simulator::Direction::ToHost) delivered += traffic.bytes.size();
    }
    return delivered;
  };
  const std::size_t delivered = run(std::nullopt, 0);
  for (std::size_t at = 1; at < delivered && !HasFailure(); ++at) {
    SCOPED_TRACE(at);
    run(at, delivered);
  }
}

// ---- Lines that delay and damage

struct BadLineCase {
  const char* name;
  teskReaderType type;
  std::int32_t readingMode;
  void (*setUp)(SekonicBench&);
};

const BadLineCase kBadLines[] = {
    {"TwoSides", kSr607, 1, [](SekonicBench&) {}},
    {"OneSideOfTwoHeads", kSr700352, 10,
     [](SekonicBench& b) {
       b.reader.SetDuplexForm(false);
       b.reader.SetRejecter(true);
     }},
    {"Barcodes", kSr607, 1,
     [](SekonicBench& b) {
       b.reader.SetBarcode(true);
       // So that the prescribed pause does not cover the answer.
       b.reader.SetSleepTime(1);
       for (int i = 0; i < 2; ++i) b.AddBarcode();
     }},
    {"Windows", kSr607, 1,
     [](SekonicBench& b) {
       b.AddWindow({1, 1, 3, 1, 1, 12, 1});
       b.AddWindow({2, 1, 2, 3, 2, 5, 2});
       b.AddWindow({2, 2, 2, 1, 1, 9, 1});
     }},
    {"WindowsOfOneSide", kSr601, 0,
     [](SekonicBench& b) {
       b.AddWindow({1, 1, 2, 1, 1, 9, 1});
       b.AddWindow({1, 3, 1, 1, 4, 9, 1});
     }},
    {"Cards", kSr430, 0, [](SekonicBench&) {}},
};

// Three sheets with 3 rows on side 1 and 5 on side 2, read through a line with that damage.
struct BadBatch {
  BadBatch(const BadLineCase& c, const Damage& damage) {
    SekonicBench b(Model(c.type, c.readingMode), Unequal(), damage);
    b.reader.SetSide1Rows(From1({3}));
    b.reader.SetSide2Rows(From1({5}));
    c.setUp(b);
    b.line->PaceAt(960);
    b.bench.events.onAfterSheet = [&](bool&) { b.reader.EjectPage(); };
    std::int32_t count = 0;
    b.reader.ReadBatch(false, 3, count);
    side1 = b.bench.events.side1;
    side2 = b.bench.events.side2;
    barcodes = b.bench.events.barcodes;
    told = b.bench.host.messages.size() + b.bench.host.errors.size();
    answers = b.line->Answers();
    sent = b.Sent();
    rejecter = b.reader.Rejecter();
  }

  static simulator::Options Unequal() {
    simulator::Options options;
    options.sheets = simulator::GenerateSheets(3, 11, {3, 12, true}, 8);
    const auto backs = simulator::GenerateSheets(3, 12, {5, 12, true}, 8);
    for (std::size_t i = 0; i < 3; ++i) {
      options.sheets[i].side2 = backs[i].side2;
      options.sheets[i].barcodes = {"47" + std::to_string(i), "A11 "};
    }
    return options;
  }
  bool MarksAreThoseOf(const BadBatch& good) const {
    return side1.size() <= 3 && std::equal(side1.begin(), side1.end(), good.side1.begin()) &&
           std::equal(side2.begin(), side2.end(), good.side2.begin());
  }

  std::vector<SideArray> side1;
  std::vector<SideArray> side2;
  std::vector<BarcodeArray> barcodes;
  std::vector<std::string> answers;
  Commands sent;
  bool rejecter = false;
  std::size_t told = 0;
};

class SekonicBadLine : public ::testing::TestWithParam<BadLineCase> {
 protected:
  void SetUp() override {
    ASSERT_EQ(good.side1.size(), 3U);
    ASSERT_EQ(good.told, 0U);
  }
  // Each byte of each answer; behind: the place behind its last one, too.
  template <class Check>
  void ForEachByte(bool behind, Check&& check) {
    for (std::size_t answer = 0; answer < good.answers.size(); ++answer) {
      const std::size_t bytes = good.answers[answer].size() + (behind ? 1 : 0);
      for (std::size_t byte = 0; byte < bytes && !HasFailure(); ++byte) check(answer, byte);
    }
  }
  // Right marks or a refusal, which is told. A status that nobody knows has no text; and what comes behind a
  // sheet becomes the next one's status.
  void Spoil(const Damage& damage) {
    const BadBatch batch(GetParam(), damage);
    const std::string& answer = good.answers[damage.answer];
    const std::string what = "answer " + std::to_string(damage.answer) + " " + simulator::Quoted(answer) +
                             " at " + std::to_string(damage.byte) + " " +
                             simulator::Quoted({&damage.with, 1});
    EXPECT_TRUE(batch.MarksAreThoseOf(good)) << what;
    const bool isStatus = answer.find('\r') == std::string::npos || damage.byte + 1 >= answer.size();
    EXPECT_TRUE(batch.side1.size() == 3 || isStatus || batch.told > 0) << what;
  }

  const BadBatch good{GetParam(), {}};
};

TEST_P(SekonicBadLine, AnswersInTwoPiecesGiveTheSameSheets) {
  ForEachByte(false, [&](std::size_t answer, std::size_t byte) {
    const BadBatch batch(GetParam(), {Damage::Kind::Pause, answer, byte});
    EXPECT_EQ(batch.side1, good.side1) << "answer " << answer << " at " << byte;
    EXPECT_EQ(batch.side2, good.side2) << "answer " << answer << " at " << byte;
    EXPECT_EQ(batch.barcodes, good.barcodes) << "answer " << answer << " at " << byte;
    EXPECT_EQ(batch.sent, good.sent);
    EXPECT_EQ(batch.rejecter, good.rejecter);
    EXPECT_EQ(batch.told, 0U);
  });
}

TEST_P(SekonicBadLine, OneAlienByteGivesTheRightMarksOrARefusal) {
  ForEachByte(true, [&](std::size_t answer, std::size_t byte) {
    for (const char alien : std::string("X7 \r,")) Spoil({Damage::Kind::Insert, answer, byte, alien});
  });
}

TEST_P(SekonicBadLine, OneByteThatBecameATerminatorGivesTheRightMarksOrARefusal) {
  ForEachByte(false, [&](std::size_t answer, std::size_t byte) {
    for (const char end : std::string(" \r,")) Spoil({Damage::Kind::Replace, answer, byte, end});
  });
}

INSTANTIATE_TEST_SUITE_P(Forms, SekonicBadLine, ::testing::ValuesIn(kBadLines),
                         [](const auto& info) { return std::string(info.param.name); });

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
