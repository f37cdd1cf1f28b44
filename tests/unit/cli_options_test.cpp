// The values of the command line's options: what is taken, what is refused, and that a refusal helps.
#include <set>
#include <string>
#include <tuple>

#include <CLI/CLI.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandError.h"
#include "cli/NearestNames.h"
#include "cli/ReaderChoice.h"
#include "cli/assignments.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/scanSetup.h"
#include "cli/trace/traceSettings.h"
#include "cli/values.h"
#include "tests/support/TestBench.h"

namespace tesk::cli {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

template <class Action>
std::string UsageErrorOf(Action action) {
  try {
    action();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "no UsageError";
}

struct Refused {
  const char* text;
  const char* says;
};

TEST(CliOptions, SizesWindowsBarcodesAndPortsAreTakenAsTheyAreWritten) {
  const SheetSizes sizes = ParseSheetSizes("--side1", "50x48,0X40,32767x1");
  EXPECT_THAT(sizes.rows, ElementsAre(50, 0, 32767));
  EXPECT_THAT(sizes.columns, ElementsAre(48, 40, 1));
  EXPECT_THAT(ParseWindow("--window", "1,10,-1,5,+4,32767,2,-32768"),
              ElementsAre(1, 10, -1, 5, 4, 32767, 2, -32768));
  for (const char* text : {"1,2,30,8,2,1", "1,2,30,8,teskbarcodetypecode39,teskBarcodeOrientationVertical"}) {
    const auto barcode = ParseBarcode("--barcode", text);
    EXPECT_EQ(barcode.symbology, teskBarcodeTypeCode39);
    EXPECT_EQ(barcode.orientation, teskBarcodeOrientationVertical);
    EXPECT_EQ(barcode.distance, 30);
  }
  EXPECT_EQ(ParsePort("--port", "16").number, 16);
  EXPECT_EQ(ParsePort("--port", "SIM").kind, PortChoice::Kind::Simulated);
  EXPECT_EQ(ParsePort("--port", "/dev/pts/4").device, "/dev/pts/4");
  EXPECT_EQ(ParsePort("--port", "/dev/pts/4").number, 1);
  EXPECT_EQ(ParsePort("--port", "COM23").kind, PortChoice::Kind::Device);
  for (const char* text : {"15", "TESKREADERTYPESCANTRONSCANMARK5500", "scantron scanmark 5500"}) {
    EXPECT_EQ(ParseReader(text), teskReaderTypeScantronScanMark5500) << text;
  }
}

TEST(CliOptions, WhatIsNoneOfThemIsRefusedByNameAndHelped) {
  using Parse = void (*)(const std::string&);
  const Parse size = [](const std::string& text) { ParseSheetSizes("--side2", text); };
  const Parse window = [](const std::string& text) { ParseWindow("--window", text); };
  const Parse barcode = [](const std::string& text) { ParseBarcode("--barcode", text); };
  const Parse port = [](const std::string& text) { ParsePort("--port", text); };
  const Parse reader = [](const std::string& text) { ParseReader(text); };
  const std::tuple<Parse, const char*, const char*, const char*> cases[] = {
      {size, "--side2", "", "no sheet size"},
      {size, "--side2", "50", "50x48"},
      {size, "--side2", "x48", "no sheet size"},
      {size, "--side2", "50x48,", "no sheet size"},
      {size, "--side2", "-1x48", "0 to 32767 rows"},
      {size, "--side2", "50x0", "1 to 32767 columns"},
      {size, "--side2", "32768x1", "32767"},
      {size, "--side2", "50 x48", "no sheet size"},
      {size, "--side2", "30000x30000", "at most 4000000"},
      {window, "--window", "1,2,3,4,5,6,7", ""},
      {window, "--window", "1,2,3,4,5,6,7,8,9", ""},
      {window, "--window", "1,2,3,4,5,6,7,x", ""},
      {window, "--window", "1,2,3,4,5,6,7,32768", ""},
      {window, "--window", "1,,3,4,5,6,7,8", ""},
      {barcode, "--barcode", "1,2,30,8,Code39,1", "teskBarcodeTypeCode39 (2)"},
      {port, "--port", "0", ""},
      {port, "--port", "17", ""},
      {port, "--port", "+17", ""},
      {port, "--port", "99999999999", ""},
      {reader, "--reader", "47", "1 to 46"},
      {reader, "--reader", "015", "1 to 46"},
      {reader, "--reader", "Scantron Scanmark 5501", "Scantron Scanmark 5500"},
      {reader, "--reader", "scanmark", "Scantron Scanmark 2000"},
      {reader, "--reader", "", "teskread readers"},
      {reader, "--reader", "0", "no scanner"}};
  for (const auto& [parse, option, text, says] : cases) {
    EXPECT_THAT(UsageErrorOf([&, &p = parse, &t = text] { p(t); }), AllOf(HasSubstr(option), HasSubstr(says)))
        << text;
  }
}

TEST(CliOptions, NearestNamesPutThoseThatContainTheTextFirst) {
  constexpr std::string_view kNames[] = {"Duplex", "DuplexForm", "Port", "Parity"};
  EXPECT_THAT(NearestNames("duplx", kNames), ElementsAre("Duplex", "DuplexForm"));
  EXPECT_THAT(NearestNames("FORM", kNames), testing::Contains("DuplexForm"));
  EXPECT_EQ(EditDistance("kitten", "sitting"), 3U);
}

class CliAssignments : public testing::Test {
 protected:
  std::string Set(const std::string& text) {
    return UsageErrorOf([&] { Apply(ParseAssignment(text), *bench_.reader); });
  }

  test::Bench bench_{teskReaderTypeScantronScanMark5500, nullptr};
};

TEST_F(CliAssignments, EveryKindOfValueConvertsAsHostsWriteIt) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"Duplex", "False", "False"},
      {"Rejecter", "TRUE", "True"},
      {"SleepTime", "+5", "5"},
      {"SleepTime", "-2147483648", "-2147483648"},
      {"Parity", "E", "E"},
      {"StopBits", "1.5", "1.5"},
      {"BaudRate", "4800", "4800"},
      {"Resolution", "-1", "-1"},
      {"FlowControl", "teskreaderflowcontrolhardware", "2"},
      {"ReaderType", "teskReaderTypeScantron8400", "17"},
      {"DataBits", "teskReaderDataBits5", "5"},
      {"HelpFile", "a=b", "a=b"},
      {"ColorDepth", "teskReaderColorDepthColor", "2"}};
  for (const auto& [name, value, held] : cases) {
    const Assignment assignment = ParseAssignment(std::string(name) + "=" + value);
    Apply(assignment, *bench_.reader);
    EXPECT_EQ(SettingText(assignment.setting->get(*bench_.reader)), held) << name;
  }
}

TEST_F(CliAssignments, WhatDoesNotConvertIsRefusedAndSaysWhatIsTaken) {
  for (const Refused& refused : {Refused{"Duplex=yes", "True or False"},
                                 {"Duplex=2", "True or False"},
                                 {"Port=32768", "-32768 to 32767"},
                                 {"Port=-32769", "-32768 to 32767"},
                                 {"SleepTime=2147483648", "whole number"},
                                 {"SleepTime=1e3", "whole number"},
                                 {"StopBits=one", "decimal point"},
                                 {"StopBits=1e39", "decimal point"},
                                 {"StopBits=nan", "decimal point"},
                                 {"BaudRate=fast", "a bit rate"},
                                 {"Duplex", "NAME=VALUE"},
                                 {"Duplx=1", "did you mean Duplex"},
                                 {"Side1Rows=50", "no property"},
                                 {"", "no property"}}) {
    EXPECT_THAT(Set(refused.text), AllOf(HasSubstr("--set"), HasSubstr(refused.says))) << refused.text;
  }
}

// What operators are told of the settings, one line each, matches the engine's own table.
TEST_F(CliAssignments, EverySettingIsExplainedOnce) {
  std::set<std::string_view> explained;
  for (const SettingWords& words : WordsOfSettings()) {
    EXPECT_EQ(SettingNamed(words.name).name, words.name);
    EXPECT_TRUE(explained.insert(words.name).second) << words.name;
  }
  EXPECT_EQ(explained.size(), EngineSettings().size());
}

class CliScanPlan : public testing::Test {
 protected:
  // What refuses the options of a scan, on the command line or by the engine; behind it what the engine holds.
  std::string Configure(const std::string& options) {
    plan_ = {};
    Engine().SetDuplexForm(false);  // as in a fresh engine
    Engine().Windows()->RemoveAll();
    Engine().Barcodes()->RemoveAll();
    return UsageErrorOf([&] {
      CLI::App app;
      AddScanOptions(app, plan_);
      app.parse(options);
      CompleteScanPlan(plan_);
      ConfigureEngine(plan_, Engine());
    });
  }
  clsTeskReader& Engine() { return *bench_.reader; }

  ScanPlan plan_;

 private:
  test::Bench bench_{teskReaderTypeScantronScanMark5500, nullptr};
};

TEST_F(CliScanPlan, OptionsArriveInTheEngineOnceEachInTheirOrder) {
  EXPECT_EQ(Configure("--reader 15 --port sim --side1 50x48 --side2 40x48 --window 1,10,1,1,5,2,1,0 "
                      "--window 3,4,1,1,5,2,2,1 --imprint \"Room 7\" --imprint-position 12 --max-sheets -3 "
                      "--dispose REJECT --format csv --output o --append --strict --summary s --trace t"),
            "no UsageError");
  EXPECT_TRUE(Engine().TwoSided());
  EXPECT_THAT(Engine().Side1Rows().Elements(), ElementsAre(50));
  EXPECT_THAT(Engine().Side2Rows().Elements(), ElementsAre(40));
  EXPECT_EQ(
      TraceSettingsText(Engine(), plan_),
      "Side1=50x48 Side2=40x48 Duplex=true DuplexForm=true Feeder=true Rejecter=true ReaderGrade=false "
      "RecognitionMode=2 RecognitionThreshold=7 MarkDiscrimination=3 TimeOut=10 SleepTime=50 Barcode=false "
      "Windows=1,10,1,1,5,2,1,0;3,4,1,1,5,2,2,1 Barcodes=none Imprint=Room%207;; ImprintPosition=12 "
      "Dispose=reject MaxSheets=-3");
  EXPECT_EQ(plan_.output + plan_.summary + plan_.trace, "ost");
  EXPECT_TRUE(plan_.append && plan_.strict && plan_.format == SheetFormat::Csv);
  EXPECT_EQ(Configure("--reader 15 --port sim --side1 50x48"), "no UsageError");
  EXPECT_EQ(Engine().RecognitionMode(), teskRecognitionTypePage) << "no window: the whole page";
}

TEST_F(CliScanPlan, OptionsThatDoNotFitEachOtherOrTheModelAreRefusedByName) {
  std::string nine;
  for (int barcode = 1; barcode <= 9; ++barcode) nine += " --barcode 1,1,30,8,2,1";
  constexpr int kScanMark = teskReaderTypeScantronScanMark5500;
  constexpr int kSekonic = teskReaderTypeScanningSystemsSR607;
  constexpr int kOpScan = teskReaderTypeNCSOpScan4;
  constexpr int kPages = teskReaderTypeScantron8000, kNarrow = teskReaderTypeSekonicSR430;
  constexpr int kRolls = teskReaderTypePDIVMR138;
  // The reader, what follows the port, what is said; nothing where it is taken.
  const std::tuple<int, std::string, const char*> cases[] = {
      {kScanMark, "", "--side1: is required"},
      {kScanMark, "--side1 50x48 --side2 50x48,50x48", "as many as --side1: 1, not 2"},
      {kScanMark, "--side2 50x48", "--side2: goes with --side1"},
      {kScanMark, "--side1 50x48 --imprint-position 3", "--imprint-position: goes with --imprint"},
      {kScanMark, "--side1 50x48 --imprint a --imprint b",
       "--imprint: the Scantron Scanmark 5500 prints 1 line(s), 2 were given"},
      {kScanMark, "--side1 50x48 --imprint 'a\rb'", "control characters"},
      {kScanMark, "--side1 50x48 --imprint a --imprint-position 135", ""},
      {kScanMark, "--side1 50x48 --imprint a --imprint-position 136", "0 to 135"},
      {kScanMark, "--side1 50x48 --dispose shred", "--dispose: \"shred\" is none of eject, reject, none"},
      {kScanMark, "--side1 50x48 --format xml", "ndjson, csv, grid"},
      {kScanMark, "--side1 20x12",
       "--side1: 20x12 does not fit: the Scantron Scanmark 5500 reads pages of 48 columns; write 20x48"},
      {kScanMark, "--side1 50x48,0x1", ""},
      {kScanMark, "--side1 50x48,40x48 --side2 50x48,40x48", "the same number of rows"},
      {kScanMark, "--side1 50x48,50x48,40x48 --side2 50x48,40x48,0x48", ""},
      {kScanMark, "--side1 20x12 --window 1,20,1,1,12,1,1,0", ""},
      {kScanMark, "--side1 20x49 --window 1,20,1,1,12,1,1,0", "at most 48 columns"},
      {kScanMark, "--side1 50x48 --set DuplexForm=True", "--side2: is required"},
      {kScanMark, "--side1 50x48 --set RecognitionMode=2", "--window: is required"},
      {kScanMark, "--side1 50x48 --barcode 1,1,30,8,2,1", "reads no barcodes"},
      {kPages, "--side1 50x48 --window 1,2,1,1,2,1,1,0", "reads whole pages only"},
      {kSekonic, "--side1 999x48", ""},
      {kSekonic, "--side1 1000x48", "at most 999 rows"},
      {kNarrow, "--side1 20x13", "at most 12 columns"},
      {kRolls, "--side1 501x14", "at most 500 rows"},
      {kRolls, "--side1 500x15", "at most 14 columns"},
      {kOpScan, "--side1 50x48 --set Duplex=True --set DuplexForm=True", ""},
      {kOpScan, "--side1 50x48 --window 1,2,1,1,2,1,1,0", "reads whole pages only"},
      {kOpScan, "--side1 50x48 --barcode 1,1,30,8,2,1", ""},
      {kOpScan, "--side1 50x48 --barcode 3,1,30,8,2,1", "Page 3 is no side"},
      {kOpScan, "--side1 50x48 --barcode 1,1,-1,8,2,1", "are 0 or more"},
      {kOpScan, "--side1 50x48 --barcode 1,1,30,8,24,1", "\"24\" is none of"},
      {kSekonic, "--side1 50x48" + nine, "at most 8 barcodes, 9 were given"},
      {kScanMark, "--side1 50x48 --window 1,50,1,1,48,1,1,0", ""},
      {kScanMark, "--side1 50x48 --window 1,51,1,1,48,1,1,0",
       "rows 1 to 51 lie outside the sheet, which has rows 1 to 50"},
      {kScanMark, "--side1 50x48 --window 49,50,-1,1,48,1,1,0", "rows 0 to 49"},
      {kScanMark, "--side1 50x48 --window 1,50,1,2,48,1,1,0", "columns 2 to 49"},
      {kScanMark, "--side1 50x48 --window 1,2,0,1,2,1,1,0", "the step from row to row is 0"},
      {kScanMark, "--side1 50x48 --window 1,1,0,1,1,0,1,0", ""},
      {kScanMark, "--side1 50x48 --window 1,0,1,1,2,1,1,0", "it has no rows"},
      {kScanMark, "--side1 50x48 --window 1,2,1,1,2,1,0,0", "Page is 1 (front) or 2 (back)"},
      {kScanMark, "--side1 50x48 --window 1,2,1,1,2,1,2,0", "the back is not read"},
      {kScanMark, "--side1 50x48 --window 1,2,1,1,2,1,1,2", "Orientation is 0"},
      {kScanMark, "--side1 50x48 --side2 50x48 --window 1,2,1,1,2,1,2,0 --window 1,2,1,1,2,1,1,0",
       "the windows of the front (Page 1) come before"}};
  EXPECT_THAT(Configure("--reader 15 --side1 50x48"), HasSubstr("--port: is required"));
  EXPECT_EQ(Configure("--reader 15 --side1 50x48 --set Port=4"), "no UsageError");
  for (const auto& [reader, options, says] : cases) {
    const std::string error = Configure("--reader " + std::to_string(reader) + " --port sim " + options);
    EXPECT_THAT(error, HasSubstr(*says ? says : "no UsageError")) << reader << ' ' << options;
  }
}

}  // namespace
}  // namespace tesk::cli
