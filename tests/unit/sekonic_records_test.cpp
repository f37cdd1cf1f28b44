// What the Sekonic serial driver makes of single records, byte by byte, and the operator's text for every status code.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/basScanningSystems.h"
#include "drivers/sekonicCommands.h"
#include "drivers/sekonicRecords.h"
#include "tests/support/SekonicBench.h"

namespace tesk::test {
namespace {

using basScanningSystems::ColumnNames;
using basScanningSystems::PageRecord;
using basScanningSystems::WindowReply;

// ---- Status texts

// Of all dialects, each once; a dialect names them by letters from A on.
const std::vector<std::string> kTexts{
    "The Sekonic scanner reports an internal jam. Please open the scanner and clear the jam and retry.",
    "The Sekonic scanner reports that a card is still inside the scanner.  Please clear the card and retry.",
    "The Sekonic scanner reports a card feed error. Please make sure the cards are inserted correctly and "
    "retry.",
    "The Sekonic scanner reports a paper feed error. Multiple pages were fed. Please re-insert and retry.",
    "The Sekonic scanner reports a skew error. The page could not be read. Please re-insert and retry.",
    "The Sekonic scanner reports a timing mark error. Form could not be read as fed. Please retry.",
    "The Sekonic scanner reports that the cover is open. Please close the cover and retry.",
    "The Sekonic scanner reports a command error. Please reset the Sekonic scanner and try again.",
    "The Sekonic scanner reports a communications error. Please reset the Sekonic scanner and try again.",
    "The Sekonic scanner reports a hardware error.  Please reset the sekonic scanner and try again.  If the "
    "problem persists contact the scanner's vender.",
    "The Sekonic scanner reports a scanning problem. Either a paper jam or a multi-feed occurred.  Please "
    "clear the "
    "jam and retry.",
    "The Sekonic scanner could not feed a page. Please insert a page and retry.",
    "The Sekonic scanner reports a paper jam. Please clear the jam and retry.",
    "The cover on your Sekonic scanner is not latched into place. Please latch and retry.",
    "The Sekonic scanner reports a reader failure. Please check your scanner.",
    "The Sekonic scanner reports a form is jammed inside the Sekonic scanner. Please clear the jam and "
    "retry.",
    "The Sekonic scanner reports a paper jam. A piece of paper is stuck in the scanner. Please clear the jam "
    "and "
    "retry.",
    "The Sekonic scanner reports a reader failure.  Error number 119 Please check your scanner."};

// Every code that has a text, and its text's letter.
std::string Dialect(teskReaderType type, std::int16_t readingMode) {
  std::string dialect;
  for (int code = -1; code <= 300; ++code) {
    const std::string number = std::to_string(code);
    const auto* status = basScanningSystems::FindStatusText(type, readingMode, number);
    if (status == nullptr) continue;
    const std::string text = status->text + (*status->afterCode == '\0' ? "" : number + status->afterCode);
    const auto at = std::ranges::find(kTexts, text) - kTexts.begin();
    dialect += number + static_cast<char>('A' + at) + " ";
  }
  return dialect;
}

TEST(SekonicStatus, EveryCodeHasItsModelsTextOrNone) {
  EXPECT_EQ(Dialect(kSr410, 0), "49A 50B 51C 54D 58E 64F 68G 80H 81I 112J 113J 115J 116J 117J 118J ");
  EXPECT_EQ(Dialect(kSr430, 3), Dialect(kSr410, 0));
  EXPECT_EQ(Dialect(kSr601, 0), "49H 50K 52F 54L ");
  EXPECT_EQ(Dialect(kSr607, 1), Dialect(kSr601, 0));
  EXPECT_EQ(Dialect(kSr607, 2), "49H 50M 52F 53L 54D 57N 58E 60O ");
  EXPECT_EQ(Dialect(kSr700352, 3), "49P 50Q 51L 52E 54D 64F 68N 80H 81I 119R ");
  EXPECT_EQ(Dialect(kSr700351, 9), Dialect(kSr700352, 3));
  for (const char* code : {"", "0119", "049", "x"}) {
    EXPECT_EQ(basScanningSystems::FindStatusText(kSr607, 3, code), nullptr) << code;
  }
}

TEST(SekonicStatus, CodesReachTheOperatorWithTheirNumberAndTheBackSidesWhereTheBackIsRead) {
  const auto shown = [](teskReaderType type, const std::string& mode, const std::string& status,
                        bool twoSided) {
    SekonicBench bench(type, {{"\005OM", mode}, {"?", status}});
    bench.SetExtents(4, 2, twoSided);
    bench.Do("Sr");
    return bench.host.messages.empty() ? ""
                                       : bench.host.messages[0].title + ": " + bench.host.messages[0].text;
  };
  const std::string feed = "Scanner Error: " + kTexts[11];
  EXPECT_EQ(shown(kSr607, "1\r", "60", true), feed);
  EXPECT_EQ(shown(kSr607, "1\r", "06", true), feed);
  EXPECT_EQ(shown(kSr607, "1\r", "60", false), "");
  EXPECT_EQ(shown(kSr607, "1\r", "06", false), feed);
  EXPECT_EQ(shown(kSr607, "1\r", "0!", false), "");
  // Of a code of three digits only the last two arrive: 112 is told as 12, 149 as 49.
  EXPECT_EQ(shown(kSr607, "1\r", "0p", false), "");
  EXPECT_EQ(shown(kSr607, "1\r", "0\x95", false), "Scanner Error: " + kTexts[7]);
  SekonicBench bench(kSr700352, {{"\005OM", "3\r"}});
  bench.Do("S");
  bench.host.translate = {{"The Sekonic scanner reports a reader failure.  Error number ", "Nr. "},
                          {" Please check your scanner.", "!"}};
  basScanningSystems::ReturnErrorSS(*bench.reader, "119");
  EXPECT_EQ(bench.host.messages.at(0).text, "Nr. 119!");
}

// ---- Commands with settings

TEST(SekonicCommands, ThresholdTakesTheLevelOfItsReadingMode) {
  const auto levels = [](std::int16_t readingMode) {
    std::string text;
    for (std::int16_t threshold = 0; threshold <= 16; ++threshold) {
      text += Caret(basScanningSystems::ThresholdCommand(readingMode, threshold)).substr(4);
    }
    return text;
  };
  EXPECT_EQ(levels(0), "1^M1^M1^M1^M1^M1^M2^M2^M2^M2^M2^M3^M3^M3^M3^M3^M3^M");
  EXPECT_EQ(levels(1), "1^M1^M1^M1^M1^M2^M2^M2^M2^M3^M3^M3^M3^M4^M4^M4^M4^M");
  EXPECT_EQ(levels(2), "00^M01^M02^M03^M04^M05^M06^M07^M08^M09^M10^M11^M12^M13^M14^M15^M16^M");
  EXPECT_EQ(levels(-1), levels(2));
  EXPECT_EQ(basScanningSystems::PageCommand(999), "\020ED001999\r");
}

// ---- Page record

// The side, and how many bytes are missing at least; or the error.
std::string Page(std::int32_t rows, const std::string& bytes, ColumnNames names = ColumnNames::FromZero) {
  PageRecord record(rows, names);
  const auto error = Attempt([&] {
    for (const char c : bytes) record.Take(static_cast<std::uint8_t>(c));
  });
  if (error) return "error " + NumberText(error->Number());
  const std::string missing = " " + std::to_string(record.Missing()) + (record.Ended() ? "" : " goes on");
  return record.WrongMode() ? "wrong mode" + missing : MarksText(record.TakeSide()) + missing;
}

TEST(SekonicPage, RowsArePairsOfColumnAndDarknessAndABlank) {
  EXPECT_EQ(Page(3, "0?14 \r \r_9 \r"), "[3x48 1,1=15 1,2=4 3,48=9] 0");
  EXPECT_EQ(Page(3, "0?14"), "[3x48 1,1=15 1,2=4] 6 goes on");
  EXPECT_EQ(Page(3, "0?1"), "[3x48 1,1=15] 7 goes on");
  EXPECT_EQ(Page(3, "0?14 \r "), "[3x48 1,1=15 1,2=4] 3 goes on");
  EXPECT_EQ(Page(1, "0~ \r"), "[1x48 1,1=78] 0");
  EXPECT_EQ(Page(1, "9182736455463728190:X;Y<A=B>C? \r", ColumnNames::Card),
            "[1x48 1,1=1 1,2=2 1,3=3 1,4=4 1,5=5 1,6=6 1,7=7 1,8=8 1,9=9 1,10=10 1,11=11 1,12=12 1,13=13 "
            "1,14=14 1,15=15] 0");
  for (const char column : std::string(":;<=>")) {
    EXPECT_EQ(Page(1, {column}, ColumnNames::Card), "wrong mode 0 goes on");
    EXPECT_EQ(Page(1, {column}), "[1x48] 3 goes on");
  }
}

TEST(SekonicPage, BytesThatAreNoRowAreAnErrorAndNeverAMark) {
  std::string endless;
  for (int i = 0; i < 48; ++i) endless += "01";
  EXPECT_EQ(Page(2, endless), "[2x48 1,1=1] 4 goes on");
  EXPECT_EQ(Page(2, endless + "01"), "error 8020");
  // Columns 0 and 49, a row's end without its blank, a blank without its end, beyond 7 bits, a third row.
  for (const char* bytes : {"/1", "`1", "\r", " 01", "\xB0", " \r \r0", " \r \r "})
    EXPECT_EQ(Page(2, bytes), "error 9") << bytes;
  for (const char* bytes : {"D1", "?1", " \r/"})
    EXPECT_EQ(Page(2, bytes, ColumnNames::Card), "error 9") << bytes;
  for (const char* bytes : {"0 ", "0\r", "0/", "0\x7F", "0\xFF"})
    EXPECT_EQ(Page(2, bytes), "error 13") << bytes;
  const std::string good = "0?14 \r23 \r45 \r";
  for (std::size_t lost = 0; lost < good.size(); ++lost) {
    const std::string read = Page(3, std::string(good).erase(lost, 1));
    EXPECT_TRUE(read.starts_with("error") || read.ends_with("goes on")) << lost;
  }
}

// ---- Window reply

clsTeskReaderWindow Window(std::array<std::int16_t, 6> fields) {
  clsTeskReaderWindow window;
  window.SetPage(1);
  window.SetStartRow(fields[0]);
  window.SetNumRows(fields[1]);
  window.SetRowGap(fields[2]);
  window.SetStartCol(fields[3]);
  window.SetNumCols(fields[4]);
  window.SetColGap(fields[5]);
  return window;
}

// Items in rows 2, 4 and 6 with choices in columns 5, 8, ... 17; one item in row 9.
const std::vector<clsTeskReaderWindow> kWindows{Window({2, 3, 2, 5, 5, 3}), Window({1, 0, 1, 1, 1, 1}),
                                                Window({9, 1, 1, 1, 10, 1})};

// The side, how many bytes are missing at least, and whether the last item has come or is over; or the error.
std::string Walk(const std::string& reply, const std::vector<clsTeskReaderWindow>& windows = kWindows) {
  SideArray side(20, 30);
  WindowReply record(windows, side);
  const auto error = Attempt([&] {
    for (const char c : reply) record.Take(static_cast<std::uint8_t>(c));
  });
  if (error) return "error " + NumberText(error->Number());
  return MarksText(side) + " " + std::to_string(record.Missing()) +
         (record.LastItemHasCome() ? " come" : "") + (record.LastItemIsOver() ? " over" : "");
}

TEST(SekonicWindows, ReplyIsSpreadItemByItemWithFurtherMarksAfterACommaInEveryLegalForm) {
  for (const char* reply : {"17\r2?,51\r \r:3\r", "17\r2?,51\r \r:3\r\r\r", "17,\r2?,51,\r  \r:3\r",
                            "172?,51\r \r:3,\r", "17\r2?,51\r 0:3\r"}) {
    EXPECT_EQ(Walk(reply), "[20x30 2,5=7 4,8=15 4,17=1 9,10=3] 0 come over") << reply;
  }
  EXPECT_EQ(Walk(""), "[20x30] 6");
  EXPECT_EQ(Walk("17"), "[20x30 2,5=7] 6");
  EXPECT_EQ(Walk("17\r2?,51\r \r:3"), "[20x30 2,5=7 4,8=15 4,17=1 9,10=3] 1 come");
  EXPECT_EQ(Walk("17\r2?,51\r \r:3,"), "[20x30 2,5=7 4,8=15 4,17=1 9,10=3] 1");
  EXPECT_EQ(Walk("17\r2?,51\r \r "), "[20x30 2,5=7 4,8=15 4,17=1] 1 come over");
  EXPECT_EQ(Walk("17\r2?,51\r \r  "), "[20x30 2,5=7 4,8=15 4,17=1] 1 come over");
  const std::string good = "17\r2?,51\r \r:3,11\r";
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    EXPECT_THAT(Walk(good.substr(0, cut)), ::testing::Not(::testing::HasSubstr("] 0"))) << cut;
  }
}

TEST(SekonicWindows, BytesThatFitNoWindowAreAnErrorAndNeverAMark) {
  // Choices 0 and 6 of 5, more marks than choices, a blank and darkness behind it, an item too many.
  for (const char* reply : {"05", "65", "11,21,31,41,51,1", " 17\r", " \r \r \r \r11", " \r \r \r \r "}) {
    EXPECT_EQ(Walk(reply), "error 9") << reply;
  }
  EXPECT_EQ(Walk("11,21,31,41,51"), "[20x30 2,5=1 2,8=1 2,11=1 2,14=1 2,17=1] 6");
  for (const char* reply : {"1\r", "1,", "1/"}) EXPECT_EQ(Walk(reply), "error 13") << reply;
  // Row 21 of 20, column 31 of 30, no window at all.
  EXPECT_EQ(Walk(" \r11", {Window({20, 2, 1, 1, 5, 1})}), "error 9");
  EXPECT_EQ(Walk("41", {Window({1, 1, 1, 28, 5, 1})}), "error 9");
  EXPECT_EQ(Walk("31", {Window({1, 1, 1, 28, 5, 1})}), "[20x30 1,30=1] 1 come");
  EXPECT_EQ(Walk("11\r", {}), "error 9");
}

// ---- Barcodes

TEST(SekonicBarcodes, RepliesOfEveryFramingGiveTheSameTextsAndGarbledOnesNone) {
  const auto texts = [](std::string_view reply) {
    std::string text;
    for (const std::string& one : basScanningSystems::ParseBarcodes(reply)) text += one + ";";
    return text;
  };
  EXPECT_EQ(texts(""), ";;;;;;;;");
  EXPECT_EQ(texts("4711"), "4711;;;;;;;;");
  EXPECT_EQ(texts("\x02"
                  "4711\x03\r\n34"),
            "4711;34;;;;;;;");
  EXPECT_EQ(texts("12,34\r"), "12;34;;;;;;;");
  EXPECT_EQ(texts("12\r\r34\r"), "12;;34;;;;;;");
  EXPECT_EQ(texts("  A B  \r \r~\r\x7F\r"), "A B;;~;;;;;;");
  EXPECT_EQ(texts("1\x07"
                  "2\r34\r1\xE4\r"),
            ";34;;;;;;;");
  EXPECT_EQ(texts("1\r2\r3\r4\r5\r6\r7\r8\r9\r"), "1;2;3;4;5;6;7;8;");
}

}  // namespace
}  // namespace tesk::test
