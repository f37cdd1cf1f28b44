// What the Sekonic serial driver makes of single records, and the operator's text for every status code.
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/basScanningSystems.h"
#include "drivers/sekonicCommands.h"
#include "drivers/sekonicRecords.h"
#include "simulator/SekonicSerial.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using basScanningSystems::ColumnNames;
using basScanningSystems::PageRecord;
using basScanningSystems::WindowReply;
using ::testing::ElementsAre;

// ---- Status texts

using Texts = std::map<int, std::string>;

const std::string kCommand =
    "The Sekonic scanner reports a command error. Please reset the Sekonic scanner and try again.";
const std::string kCommunications =
    "The Sekonic scanner reports a communications error. Please reset the Sekonic scanner and try again.";
const std::string kTiming =
    "The Sekonic scanner reports a timing mark error. Form could not be read as fed. Please retry.";
const std::string kSkewed =
    "The Sekonic scanner reports a skew error. The page could not be read. Please re-insert and retry.";
const std::string kSeveral =
    "The Sekonic scanner reports a paper feed error. Multiple pages were fed. Please re-insert and retry.";
const std::string kNotFed = "The Sekonic scanner could not feed a page. Please insert a page and retry.";
const std::string kLatch =
    "The cover on your Sekonic scanner is not latched into place. Please latch and retry.";
const std::string kBroken =
    "The Sekonic scanner reports a hardware error.  Please reset the sekonic scanner and try again.  If the "
    "problem persists contact the scanner's vender.";

const Texts kCards{
    {49, "The Sekonic scanner reports an internal jam. Please open the scanner and clear the jam and retry."},
    {50,
     "The Sekonic scanner reports that a card is still inside the scanner.  Please clear the card and "
     "retry."},
    {51,
     "The Sekonic scanner reports a card feed error. Please make sure the cards are inserted correctly and "
     "retry."},
    {54, kSeveral},
    {58, kSkewed},
    {64, kTiming},
    {68, "The Sekonic scanner reports that the cover is open. Please close the cover and retry."},
    {80, kCommand},
    {81, kCommunications},
    {112, kBroken},
    {113, kBroken},
    {115, kBroken},
    {116, kBroken},
    {117, kBroken},
    {118, kBroken}};
const Texts kBelow2{{49, kCommand},
                    {50,
                     "The Sekonic scanner reports a scanning problem. Either a paper jam or a multi-feed "
                     "occurred.  Please clear the jam and retry."},
                    {52, kTiming},
                    {54, kNotFed}};
const Texts kMode2{
    {49, kCommand}, {50, "The Sekonic scanner reports a paper jam. Please clear the jam and retry."},
    {52, kTiming},  {53, kNotFed},
    {54, kSeveral}, {57, kLatch},
    {58, kSkewed},  {60, "The Sekonic scanner reports a reader failure. Please check your scanner."}};
const Texts kAbove2{
    {49,
     "The Sekonic scanner reports a form is jammed inside the Sekonic scanner. Please clear the jam and "
     "retry."},
    {50,
     "The Sekonic scanner reports a paper jam. A piece of paper is stuck in the scanner. Please clear the "
     "jam "
     "and retry."},
    {51, kNotFed},
    {52, kSkewed},
    {54, kSeveral},
    {64, kTiming},
    {68, kLatch},
    {80, kCommand},
    {81, kCommunications},
    {119, "The Sekonic scanner reports a reader failure.  Error number 119 Please check your scanner."}};

struct Dialect {
  const char* name;
  teskReaderType type;
  std::int32_t readingMode;
  const Texts& texts;
};

const Dialect kDialects[] = {
    {"Sr410", teskReaderTypeScanningSystemsSR410, 0, kCards},
    {"Sr430", teskReaderTypeSekonicSR430, 0, kCards},
    {"Mode0", teskReaderTypeScanningSystemsSR601, 0, kBelow2},
    {"Mode1", teskReaderTypeScanningSystemsSR607, 1, kBelow2},
    {"Mode2", teskReaderTypeScanningSystemsSR607, 2, kMode2},
    {"Mode3", teskReaderTypeScanningSystemsSR700352, 3, kAbove2},
    {"Mode9", teskReaderTypeScanningSystemsSR700351, 9, kAbove2},
};

class SekonicStatus : public ::testing::TestWithParam<Dialect> {
 protected:
  // A started reader whose scanner is in the dialect's mode.
  std::unique_ptr<Bench> Started(std::vector<simulator::Fault> faults = {}) {
    simulator::SekonicModel model = *simulator::FindSekonicModel(GetParam().type);
    model.readingMode = GetParam().readingMode;
    simulator::Options options;
    options.sheets = {{SideArray(4, 12), SideArray(4, 12), {}}};
    options.faults = std::move(faults);
    auto bench = std::make_unique<Bench>(
        GetParam().type, std::make_shared<simulator::SekonicSerial>(model, std::move(options)));
    bench->reader->SetSide1Rows(From1({4}));
    bench->reader->SetSide2Rows(From1({4}));
    bench->reader->SetDuplexForm(true);
    EXPECT_TRUE(bench->reader->StartReader());
    return bench;
  }

  static std::vector<RecordingHost::Message> Shown(const Texts& texts, int code) {
    const auto found = texts.find(code);
    if (found == texts.end()) return {};
    return {{"Scanner Error", found->second}};
  }
};

TEST_P(SekonicStatus, EveryCodeHasItsModelsTextOrNone) {
  const auto bench = Started();
  for (int code = 0; code <= 255; ++code) {
    bench->host.messages.clear();
    basScanningSystems::ReturnErrorSS(*bench->reader, std::to_string(code));
    EXPECT_EQ(bench->host.messages, Shown(GetParam().texts, code)) << code;
  }
}

TEST_P(SekonicStatus, EveryStatusCharacterButTheZeroFailsTheReadWithItsText) {
  for (int code = 33; code < 127; ++code) {
    const auto bench = Started({{simulator::FaultKind::StatusCode, 1, static_cast<std::size_t>(code)}});
    const bool read = bench->reader->ReadPage();
    EXPECT_EQ(read, code == '0') << code;
    // Of a code of three digits only the last two arrive.
    const auto shown = read ? Shown({}, 0) : Shown(GetParam().texts, code > 99 ? code - 100 : code);
    EXPECT_EQ(bench->host.messages, shown) << code;
    EXPECT_EQ(bench->reader->Side1Array().Empty(), !read);
  }
}

TEST_P(SekonicStatus, BackSidesCodeCountsWhereTheBackIsReadAlone) {
  const bool duplex = simulator::FindSekonicModel(GetParam().type)->duplex;
  for (const bool twoSidedForm : {true, false}) {
    const auto bench = Started({{simulator::FaultKind::StatusCodeBack, 1, '2'}});
    bench->reader->SetDuplexForm(twoSidedForm);
    const bool fails = duplex && twoSidedForm;
    EXPECT_EQ(bench->reader->ReadPage(), !fails);
    EXPECT_EQ(bench->host.messages, fails ? Shown(GetParam().texts, 50) : Shown({}, 0));
  }
}

INSTANTIATE_TEST_SUITE_P(Dialects, SekonicStatus, ::testing::ValuesIn(kDialects),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SekonicStatusText, IsTranslatedInTwoPiecesAroundTheCode) {
  const auto* status = basScanningSystems::FindStatusText(teskReaderTypeScanningSystemsSR607, 3, "119");
  ASSERT_NE(status, nullptr);
  EXPECT_STREQ(status->text, "The Sekonic scanner reports a reader failure.  Error number ");
  EXPECT_STREQ(status->afterCode, " Please check your scanner.");
  for (const char* code : {"", "4", "0119", "049", "x"}) {
    EXPECT_EQ(basScanningSystems::FindStatusText(teskReaderTypeScanningSystemsSR607, 3, code), nullptr);
  }
}

// ---- Commands with settings

TEST(SekonicCommands, ThresholdTakesTheLevelOfItsReadingMode) {
  struct Case {
    std::int16_t readingMode, threshold;
    const char* text;
  };
  const Case cases[] = {{0, 0, "1"},   {0, 5, "1"},   {0, 6, "2"},  {0, 10, "2"}, {0, 11, "3"},
                        {0, 15, "3"},  {1, 4, "1"},   {1, 5, "2"},  {1, 8, "2"},  {1, 9, "3"},
                        {1, 12, "3"},  {1, 13, "4"},  {2, 0, "00"}, {2, 9, "09"}, {2, 10, "10"},
                        {3, 15, "15"}, {-1, 3, "03"}, {7, 9, "09"}};
  for (const Case& c : cases) {
    EXPECT_EQ(basScanningSystems::ThresholdCommand(c.readingMode, c.threshold),
              std::string("\020DL") + c.text + "\r")
        << c.readingMode << " " << c.threshold;
  }
}

// ---- Page record

SideArray Grid(std::int32_t rows, std::int32_t columns,
               const std::vector<std::array<std::int16_t, 3>>& marks) {
  SideArray side(rows, columns);
  for (const auto& mark : marks) side.At(mark[0], mark[1]) = mark[2];
  return side;
}

PageRecord Taken(std::int32_t rows, const std::string& bytes, ColumnNames names = ColumnNames::FromZero) {
  PageRecord record(rows, names);
  for (const char c : bytes) record.Take(static_cast<std::uint8_t>(c));
  return record;
}

TEST(SekonicPage, RecordEndsWithItsLastRowAndNotWithAnyCutOfIt) {
  const std::string good = "0?14 \r \r_9 \r";
  auto record = Taken(3, good);
  EXPECT_TRUE(record.Ended());
  EXPECT_EQ(record.TakeSide(), Grid(3, 48, {{1, 1, 15}, {1, 2, 4}, {3, 48, 9}}));
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    const auto begun = Taken(3, good.substr(0, cut));
    EXPECT_FALSE(begun.Ended()) << cut;
    EXPECT_THAT(begun.Missing(), ::testing::AllOf(::testing::Ge(1U), ::testing::Le(good.size() - cut)))
        << cut;
  }
  EXPECT_EQ(Taken(3, "0?14").Missing(), 6U);
}

TEST(SekonicPage, CardsColumnsRunFromNineDownAndOnToC) {
  auto record = Taken(1, "9182736455463728190:X;Y<A=B>C? \r", ColumnNames::Card);
  SideArray expected(1, 48);
  const std::int16_t values[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  for (std::int32_t i = 0; i < 15; ++i) expected.At(1, i + 1) = values[i];
  EXPECT_EQ(record.TakeSide(), expected);
}

TEST(SekonicPage, WronglySetSwitchesShowInTheColumnNamesOfACardAlone) {
  for (const char column : std::string(":;<=>")) {
    EXPECT_TRUE(Taken(1, {column}, ColumnNames::Card).WrongMode());
    EXPECT_FALSE(Taken(1, {column}).WrongMode());
  }
}

TEST(SekonicPage, BytesThatAreNoRowAreAnErrorAndNeverAMark) {
  struct Case {
    std::string bytes;
    ColumnNames names;
    std::int32_t error;
  };
  std::string endless;
  for (int i = 0; i < 49; ++i) endless += "01";
  const Case cases[] = {
      {"/1", ColumnNames::FromZero, kErrorSubscript},    // column 0
      {"`1", ColumnNames::FromZero, kErrorSubscript},    // column 49
      {"\r", ColumnNames::FromZero, kErrorSubscript},    // a row's end without its blank
      {" 01", ColumnNames::FromZero, kErrorSubscript},   // a blank without its CR
      {"\xB0", ColumnNames::FromZero, kErrorSubscript},  // beyond 7 bits
      {"0 ", ColumnNames::FromZero, kErrorTypeMismatch},
      {"0\r", ColumnNames::FromZero, kErrorTypeMismatch},
      {"0/", ColumnNames::FromZero, kErrorTypeMismatch},
      {"0\xFF", ColumnNames::FromZero, kErrorTypeMismatch},
      {" \r \r0", ColumnNames::FromZero, kErrorSubscript},  // a third row of two
      {" \r \r ", ColumnNames::FromZero, kErrorSubscript},
      {"D1", ColumnNames::Card, kErrorSubscript},
      {"?1", ColumnNames::Card, kErrorSubscript},
      {endless, ColumnNames::FromZero, kErrorLineRead},
  };
  for (const Case& c : cases) {
    const auto error = Attempt([&] { Taken(2, c.bytes, c.names); });
    ASSERT_TRUE(error) << c.bytes;
    EXPECT_EQ(error->Number(), c.error) << c.bytes;
  }
}

TEST(SekonicPage, LosingAnyOneByteOfARowWithMarksIsNoticed) {
  const std::string good = "0?14 \r23 \r45 \r";
  for (std::size_t lost = 0; lost < good.size(); ++lost) {
    const std::string bytes = good.substr(0, lost) + good.substr(lost + 1);
    bool ended = false;
    const auto error = Attempt([&] { ended = Taken(3, bytes).Ended(); });
    EXPECT_TRUE(error || !ended) << lost;
  }
}

// ---- Window reply

clsTeskReaderWindow Window(std::int16_t row, std::int16_t rows, std::int16_t rowGap, std::int16_t column,
                           std::int16_t columns, std::int16_t columnGap) {
  clsTeskReaderWindow window;
  window.SetPage(1);
  window.SetStartRow(row);
  window.SetNumRows(rows);
  window.SetRowGap(rowGap);
  window.SetStartCol(column);
  window.SetNumCols(columns);
  window.SetColGap(columnGap);
  return window;
}

struct Walked {
  SideArray side{20, 30};
  bool complete = false;
  bool lastItemHasCome = false;
  std::size_t missing = 0;
  std::optional<RunTimeError> error;
};

Walked Walk(const std::vector<clsTeskReaderWindow>& windows, const std::string& reply) {
  Walked walked;
  WindowReply record(windows, walked.side);
  walked.error = Attempt([&] {
    for (const char c : reply) record.Take(static_cast<std::uint8_t>(c));
  });
  walked.missing = record.Missing();
  walked.complete = !walked.error && walked.missing == 0;
  walked.lastItemHasCome = record.LastItemHasCome();
  return walked;
}

// Items in rows 2, 4 and 6 with choices in columns 5, 8, ... 17; one item in row 9.
const std::vector<clsTeskReaderWindow> kWindows{Window(2, 3, 2, 5, 5, 3), Window(1, 0, 1, 1, 1, 1),
                                                Window(9, 1, 1, 1, 10, 1)};

TEST(SekonicWindows, ReplyIsSpreadItemByItemWithFurtherMarksAfterACommaInEveryLegalForm) {
  const SideArray expected = Grid(20, 30, {{2, 5, 7}, {4, 8, 15}, {4, 17, 1}, {9, 10, 3}});
  for (const char* reply :
       {"17\r2?,51\r \r:3\r", "17\r2?,51\r \r:3\r\r\r", "17,\r2?,51,\r  \r:3\r", "172?,51\r \r:3,\r"}) {
    const Walked walked = Walk(kWindows, reply);
    EXPECT_TRUE(walked.complete) << reply;
    EXPECT_EQ(walked.side, expected) << reply;
  }
}

TEST(SekonicWindows, CutReplyIsIncompleteWhereverItIsCut) {
  const std::string good = "17\r2?,51\r \r:3,11\r";
  ASSERT_TRUE(Walk(kWindows, good).complete);
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    const Walked walked = Walk(kWindows, good.substr(0, cut));
    EXPECT_FALSE(walked.error) << cut;
    EXPECT_FALSE(walked.complete) << cut;
    EXPECT_LE(walked.missing, good.size() - cut) << cut;
    // Where only the last CR is due, and where further marks may be.
    EXPECT_EQ(walked.lastItemHasCome, cut == good.size() - 1 || cut == good.size() - 4) << cut;
  }
  EXPECT_EQ(Walk(kWindows, "17").missing, 6U);
}

TEST(SekonicWindows, BytesThatFitNoWindowAreAnErrorAndNeverAMark) {
  const std::vector<clsTeskReaderWindow> low{Window(20, 2, 1, 1, 5, 1)};
  const std::vector<clsTeskReaderWindow> wide{Window(1, 1, 1, 28, 5, 1)};
  struct Case {
    const std::vector<clsTeskReaderWindow>& windows;
    std::string reply;
    std::int32_t error;
  };
  const Case cases[] = {
      {kWindows, "05", kErrorSubscript},                // choice 0
      {kWindows, "65", kErrorSubscript},                // choice 6 of 5
      {kWindows, "11,21,31,41,51,1", kErrorSubscript},  // more marks than choices
      {kWindows, "1\r", kErrorTypeMismatch},            // the darkness was lost
      {kWindows, " 17\r", kErrorSubscript},           // a blank is followed by one character, whatever it is
      {kWindows, "1,", kErrorTypeMismatch},           //
      {kWindows, " \r \r \r \r11", kErrorSubscript},  // one item too many
      {kWindows, " \r \r \r \r ", kErrorSubscript},   //
      {low, " \r11", kErrorSubscript},                // row 21 of 20
      {wide, "41", kErrorSubscript},                  // column 31 of 30
      {{}, "11\r", kErrorSubscript},                  // no window at all
  };
  for (const Case& c : cases) {
    const Walked walked = Walk(c.windows, c.reply);
    ASSERT_TRUE(walked.error) << c.reply;
    EXPECT_EQ(walked.error->Number(), c.error) << c.reply;
  }
}

// ---- Barcodes

TEST(SekonicBarcodes, RepliesOfEveryFramingGiveTheSameTextsAndGarbledOnesNone) {
  struct Case {
    std::string reply;
    std::vector<std::string> texts;
  };
  const Case cases[] = {
      {"", {}},
      {"\r", {}},
      {"4711", {"4711"}},
      {"4711\r", {"4711"}},
      {"\x02"
       "4711\x03\r\n",
       {"4711"}},
      {"12\r34\r", {"12", "34"}},
      {"12,34\r", {"12", "34"}},
      {"12\r\r34\r", {"12", "", "34"}},
      {"  A B  \r", {"A B"}},
      {"1\x07"
       "2\r34\r",
       {"", "34"}},
      {"1\xE4\r34\r", {"", "34"}},
      {"1\r2\r3\r4\r5\r6\r7\r8\r9\r", {"1", "2", "3", "4", "5", "6", "7", "8"}},
  };
  for (Case c : cases) {
    c.texts.resize(8);
    EXPECT_EQ(basScanningSystems::ParseBarcodes(c.reply), c.texts) << c.reply;
  }
}

// ---- The simulated scanner's strictness

TEST(SekonicSimulator, RecordsEveryCommandThatItsModelOrMomentDoesNotAllow) {
  struct Case {
    teskReaderType type;
    std::string sent;
    std::string complaint;
  };
  const auto simplex = teskReaderTypeScanningSystemsSR601;
  const auto duplex = teskReaderTypeScanningSystemsSR607;
  const auto card = teskReaderTypeScanningSystemsSR410;
  const Case cases[] = {
      {simplex, "\r", "unknown command"},
      {simplex, "X\r", "unknown command"},
      {simplex, "? \r", "ill-formed command"},
      {simplex, "\030\030\r", "ill-formed command"},
      {simplex, "/\005T\r", "one side"},
      {duplex, "/?\r", "not for a head"},
      {duplex, "\020T\r", "has not"},
      {card, "\005OM\r", "has not"},
      {card, "\02315\r", "has not"},
      {card, "\020T\r\0021\r", "ill-formed set-up data"},
      {teskReaderTypeSekonicSR430, "\020T\r2\r", "ill-formed set-up data"},
      {simplex, "\020DL4\r", "threshold"},
      {simplex, "\020DL01\r", "threshold"},
      {card, "\020DL00\r", "threshold"},
      {card, "\020DL09\r", "threshold"},
      {simplex, "\005OM\r\023DD02\r", "discrimination"},
      {duplex, "\005OM\r\023DD2\r", "discrimination"},
      {duplex, "\020W\r\002010101010101112\r", "forgotten"},
      {duplex, "\020Q\r\020W\r010101010101112\r", "ill-formed window"},
      {duplex, "\020Q\r\020W\r\002010101010101113\r", "ill-formed window"},
      {duplex, "\020Q\r\020W\r\002010001010101112\r", "ill-formed window"},
      {duplex, "\020Q\r\020W\r\002010200010101112\r", "ill-formed window"},
      {duplex, "\020Q\r\020W\r\002010101404901112\r", "ill-formed window"},
      {duplex, "\005T\r", "without a sheet"},
      {duplex, "\020ED001050\r", "without a sheet"},
      {duplex, "\020ED00150\r", "ill-formed page query"},
      {duplex, "\020R*\r", "without a sheet"},
      {duplex, "\023BA05\r", "without a field"},
      {duplex, "\023BA10999\r", "switched on"},
      {duplex, "\023P3224\r", "print position"},
      {duplex, "\023P43x \r", "imprint line"},
      {duplex, "\023P40x\r", "imprint line"},
      {duplex, "\023P20x\r", "imprint line"},
      // A sheet that has left, and what a reset forgets.
      {duplex, "?\r\023R04\r\005T\r", "without a sheet"},
      {duplex, "?\r\023R05\r\020ED001050\r", "without a sheet"},
      {duplex, "?\r?F\r\020R*\r", "without a sheet"},
      {duplex, "\023BA01\r\023BA10999\r\030\r?\r\023BA05\r", "without a field"},
      {duplex, "\020Q\r\020W\r\030\rX\r", "unknown command"},
      {simplex, std::string(300, 'x') + "\r", "without end"},
  };
  for (const Case& c : cases) {
    const auto scanner = simulator::CreateScanner(c.type, {.count = 1});
    scanner->Receive(c.sent, {});
    ASSERT_FALSE(scanner->Complaints().empty()) << simulator::Quoted(c.sent);
    EXPECT_NE(scanner->Complaints()[0].find(c.complaint), std::string::npos) << scanner->Complaints()[0];
  }
}

TEST(SekonicSimulator, GarbageIsThatOfItsSeedAndFitsTheLine) {
  const auto said = [](std::uint64_t seed) {
    const auto scanner =
        simulator::CreateScanner(teskReaderTypeScanningSystemsSR601,
                                 {.count = 1, .seed = seed, .faults = {{simulator::FaultKind::Garbage}}});
    scanner->Receive("?\r\020ED001050\r", {});
    return scanner->Send({});
  };
  EXPECT_EQ(said(1), said(1));
  EXPECT_NE(said(1), said(2));
  for (const char byte : said(3)) EXPECT_LT(static_cast<unsigned char>(byte), 128);
}

}  // namespace
}  // namespace tesk::test
