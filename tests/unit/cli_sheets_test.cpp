// What scan writes and simulate reads: the text forms of a sheet, and files that nobody vouches for.
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandError.h"
#include "cli/scan/GridText.h"
#include "cli/scan/SheetRecord.h"
#include "cli/simulated/SheetFile.h"

namespace tesk::cli {
namespace {

using testing::AllOf;
using testing::HasSubstr;

SheetRecord ThreeMarks() {
  SheetRecord record{.sheet = 1,
                     .reader = 15,
                     .side1 = {},
                     .side2 = {},
                     .barcodes = {"12345"},
                     .disposed = "ejected",
                     .warnings = {}};
  record.side1.timingMarks = 10;
  record.side1.marks = SideArray(2, 3);
  record.side1.marks.At(1, 3) = 7;
  record.side1.marks.At(2, 1) = -16;
  return record;
}

TEST(CliSheets, NdjsonOfAnySheetStaysOneLineOfValidUtf8WithItsMembersInOrder) {
  SheetRecord record = ThreeMarks();
  record.side2 =
      SideRecord{.timingMarks = -1, .marks = SideArray(1, 1), .image = "C:\\a \"b\".bmp", .coordinates = ""};
  record.barcodes = {"line\nfeed", "\xff"};
  record.warnings = {"pale"};
  EXPECT_EQ(
      NdjsonText(record),
      "{\"sheet\":1,\"reader\":15,"
      "\"side1\":{\"timing_marks\":10,\"marks\":[[0,0,7],[-16,0,0]],\"image\":\"\",\"coordinates\":\"\"},"
      "\"side2\":{\"timing_marks\":-1,\"marks\":[[0]],\"image\":\"C:\\\\a "
      "\\\"b\\\".bmp\",\"coordinates\":\"\"},"
      "\"barcodes\":[\"line\\nfeed\",\"\xEF\xBF\xBD\"],\"disposed\":\"ejected\",\"warnings\":[\"pale\"]}\n");
}

TEST(CliSheets, AnEmptyTextIsNoBarcodeNorIsWhatADriverHandsOutForNone) {
  EXPECT_TRUE(BarcodesRead({""}).empty());
  EXPECT_EQ(BarcodesRead({"", "7", "", "?"}, "?"), (std::vector<std::string>{"7", "?"}));
  EXPECT_TRUE(BarcodesRead({"?"}, "?").empty());
  EXPECT_EQ(BarcodesRead({"?"}), std::vector<std::string>{"?"});
}

TEST(CliSheets, CsvListsMarksThatAreNotZeroAndQuotesBarcodes) {
  SheetRecord record = ThreeMarks();
  record.barcodes = {"a,\"b\"", "=1+1", "-7", "'x", "\t@"};
  EXPECT_EQ(CsvHeader() + CsvText(record),
            "sheet,side,row,column,value\n1,1,1,3,7\n1,1,2,1,-16\n1,0,1,0,\"a,\"\"b\"\"\"\n1,0,2,0,'=1+1\n"
            "1,0,3,0,'-7\n1,0,4,0,''x\n1,0,5,0,'\t@\n");
  record.side1.marks = SideArray(2, 3);
  record.barcodes = {"+"};
  EXPECT_EQ(CsvText(record), "1,1,0,0,0\n1,0,1,0,'+\n");
}

TEST(CliSheets, TheGridShowsMarksFaintMarksAndHalvesOfALine) {
  SheetRecord record = ThreeMarks();
  record.side1.marks = SideArray(3, 4);
  record.side1.marks.At(1, 1) = 9;  // upper half
  record.side1.marks.At(2, 2) = 9;  // lower half
  record.side1.marks.At(1, 3) = 9;  // both
  record.side1.marks.At(2, 3) = 15;
  record.side1.marks.At(3, 4) = 3;  // faint, on a row without a partner
  const std::string text = GridText(record, "Scantron Scanmark 5500", {.threshold = 7, .darkest = 15});
  EXPECT_THAT(text, HasSubstr("   1 │▀▄█ │"));
  EXPECT_THAT(text, HasSubstr("│   ░│"));
  EXPECT_THAT(text, AllOf(HasSubstr("4 marks, 1 faint"), HasSubstr("10 timing marks"), HasSubstr("12345"),
                          HasSubstr("ejected")));
}

TEST(CliSheets, TheGridDrawsNoRowsBeyondThePaperAndMovesNoTerminalsCursor) {
  SheetRecord record = ThreeMarks();
  record.side1.marks = SideArray(500, 14);
  record.side1.marks.At(9, 1) = 15;
  record.side1.timingMarks = 50;
  EXPECT_THAT(GridText(record, "X", {}), HasSubstr("rows 51 to 500 are empty"));
  record.side1.marks.At(500, 14) = 15;
  record.barcodes = {"\x1b[2J"};
  EXPECT_THAT(GridText(record, "X", {}),
              testing::Not(testing::AnyOf(HasSubstr("are empty"), HasSubstr("\x1b"))));
}

std::vector<simulator::Sheet> Read(const std::string& text, std::int16_t darkest = 15) {
  std::istringstream stream(text);
  return ReadSheets(stream, "sheets.ndjson", darkest);
}

std::string FailureOf(const std::string& text) {
  try {
    Read(text);
  } catch (const CommandFailure& failure) {
    return failure.what();
  }
  return "no failure";
}

TEST(CliSheetFile, HostileLinesAreRefusedWithTheirNumber) {
  const std::string good = R"({"side1":{"marks":[[0,1],[2,3]]},"side2":null})";
  const std::pair<std::string, const char*> cases[] = {
      {"{", "no JSON"},
      {"[]", "one JSON object"},
      {"{}", "no \"side1\""},
      {R"({"side1":{}})", "no \"marks\""},
      {R"({"side1":{"marks":7}})", "no array"},
      {R"({"side1":{"marks":[7]}})", "row 1"},
      {R"({"side1":{"marks":[[0],[0,0]]}})", "row 2"},
      {R"({"side1":{"marks":[[16]]}})", "0 to 15"},
      {R"({"side1":{"marks":[[-1]]}})", "0 to 15"},
      {R"({"side1":{"marks":[[1.5]]}})", "no whole number"},
      {R"({"side1":{"marks":[[18446744073709551615]]}})", "0 to 15"},
      {R"({"side1":{"marks":[[0]]},"side2":{"marks":null}})", "side2"},
      {R"({"side1":{"marks":[[0]]},"barcodes":[7]})", "barcodes"},
      {std::string(200'000, '['), "no"},
      {std::string("{\"side1\":\0}", 11), "no JSON"},
      {"{\"side1\":{\"marks\":[[0]]},\"barcodes\":[\"\xff\"]}", "no JSON"}};
  for (const auto& [line, says] : cases) {
    EXPECT_THAT(FailureOf(good + "\n\n" + line + "\n" + good),
                AllOf(HasSubstr("sheets.ndjson, line 3: "), HasSubstr(says)))
        << line.substr(0, 80);
  }
}

TEST(CliSheetFile, AFileWithoutSheetsIsNoStock) {
  EXPECT_THAT(FailureOf("\n \n"), HasSubstr("no sheet in this file"));
  EXPECT_THROW(ReadSheetFile("/nonexistent/sheets.ndjson", 15), CommandFailure);
  EXPECT_THROW(ReadSheetFile(".", 15), CommandFailure);
}

}  // namespace
}  // namespace tesk::cli
