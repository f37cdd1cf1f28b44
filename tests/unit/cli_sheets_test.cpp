// What scan writes and simulate reads: the text forms of a sheet, and files that nobody vouches for.
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

TEST(CliSheets, NdjsonIsOneCompactLineWithItsMembersInOrder) {
  SheetRecord pale = ThreeMarks();
  pale.warnings = {"pale"};
  EXPECT_EQ(
      NdjsonText(pale),
      "{\"sheet\":1,\"reader\":15,"
      "\"side1\":{\"timing_marks\":10,\"marks\":[[0,0,7],[-16,0,0]],\"image\":\"\",\"coordinates\":\"\"},"
      "\"side2\":null,\"barcodes\":[\"12345\"],\"disposed\":\"ejected\",\"warnings\":[\"pale\"]}\n");
}

TEST(CliSheets, NdjsonOfAnySheetStaysOneLineOfValidUtf8) {
  SheetRecord record = ThreeMarks();
  record.side2 =
      SideRecord{.timingMarks = -1, .marks = SideArray(1, 1), .image = "C:\\a \"b\".bmp", .coordinates = ""};
  record.barcodes = {"line\nfeed", "\xff\xfe"};
  const std::string text = NdjsonText(record);
  EXPECT_EQ(text.find('\n'), text.size() - 1);
  const auto json = nlohmann::json::parse(text);
  EXPECT_EQ(json["side2"]["timing_marks"], -1);
  EXPECT_EQ(json["side2"]["image"], "C:\\a \"b\".bmp");
  EXPECT_EQ(json["barcodes"][0], "line\nfeed");
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

TEST(CliSheets, TheGridDrawsNoRowsBeyondThePaper) {
  SheetRecord record = ThreeMarks();
  record.side1.marks = SideArray(500, 14);
  record.side1.marks.At(9, 1) = 15;
  record.side1.timingMarks = 50;
  EXPECT_THAT(GridText(record, "X", {}), HasSubstr("rows 51 to 500 are empty"));
  record.side1.marks.At(500, 14) = 15;
  EXPECT_THAT(GridText(record, "X", {}), testing::Not(HasSubstr("are empty")));
}

TEST(CliSheets, TheGridMovesNoTerminalsCursor) {
  SheetRecord record = ThreeMarks();
  record.barcodes = {"\x1b[2J"};
  EXPECT_EQ(GridText(record, "X", {}).find('\x1b'), std::string::npos);
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

TEST(CliSheetFile, ReadsBackWhatScanWrites) {
  SheetRecord record = ThreeMarks();
  record.side1.marks.At(2, 1) = 15;
  record.side2 = record.side1;
  const auto sheets = Read(NdjsonText(record) + "\r\n" + NdjsonText(record));
  ASSERT_EQ(sheets.size(), 2U);
  EXPECT_EQ(sheets[1].side1, record.side1.marks);
  EXPECT_EQ(sheets[1].side2, record.side1.marks);
  EXPECT_EQ(sheets[1].barcodes, record.barcodes);
}

TEST(CliSheetFile, HostileLinesAreRefusedWithTheirNumber) {
  const std::string good = R"({"side1":{"marks":[[0,1],[2,3]]},"side2":null})";
  struct Case {
    std::string line;
    const char* says;
  };
  const Case cases[] = {{"{", "no JSON"},
                        {"[]", "one JSON object"},
                        {"7", "one JSON object"},
                        {"{}", "no \"side1\""},
                        {R"({"side1":[]})", "no object"},
                        {R"({"side1":{}})", "no \"marks\""},
                        {R"({"side1":{"marks":7}})", "no array"},
                        {R"({"side1":{"marks":[7]}})", "row 1"},
                        {R"({"side1":{"marks":[[0],[0,0]]}})", "row 2"},
                        {R"({"side1":{"marks":[[16]]}})", "0 to 15"},
                        {R"({"side1":{"marks":[[-1]]}})", "0 to 15"},
                        {R"({"side1":{"marks":[[1.5]]}})", "no whole number"},
                        {R"({"side1":{"marks":[["7"]]}})", "no whole number"},
                        {R"({"side1":{"marks":[[18446744073709551615]]}})", "0 to 15"},
                        {R"({"side1":{"marks":[[1e400]]}})", "no JSON"},
                        {R"({"side1":{"marks":[[0]]},"side2":{"marks":null}})", "side2"},
                        {R"({"side1":{"marks":[[0]]},"barcodes":[7]})", "barcodes"},
                        {R"({"side1":{"marks":[[0]]},"barcodes":"7"})", "barcodes"},
                        {std::string(200'000, '['), "no"},
                        {std::string("{\"side1\":\0}", 11), "no JSON"},
                        {"{\"side1\":{\"marks\":[[0]]},\"barcodes\":[\"\xff\"]}", "no JSON"}};
  for (const Case& hostile : cases) {
    EXPECT_THAT(FailureOf(good + "\n\n" + hostile.line + "\n" + good),
                AllOf(HasSubstr("sheets.ndjson, line 3: "), HasSubstr(hostile.says)))
        << hostile.line.substr(0, 80);
  }
}

TEST(CliSheetFile, AFileWithoutSheetsIsNoStock) {
  EXPECT_THAT(FailureOf("\n \n"), HasSubstr("no sheet in this file"));
  EXPECT_THROW(ReadSheetFile("/nonexistent/sheets.ndjson", 15), CommandFailure);
  EXPECT_THROW(ReadSheetFile(".", 15), CommandFailure);
}

}  // namespace
}  // namespace tesk::cli
