// The values of the command line's options: what is taken, what is refused, and that a refusal helps.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandError.h"
#include "cli/NearestNames.h"
#include "cli/PortChoice.h"
#include "cli/ReaderChoice.h"
#include "cli/assignments.h"
#include "cli/optionValues.h"
#include "cli/scan/ScanPlan.h"
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

TEST(CliOptions, SheetSizesKeepTheirOrderPerSheetDefinition) {
  const SheetSizes sizes = ParseSheetSizes("--side1", "50x48,0X40,32767x1");
  EXPECT_THAT(sizes.rows, ElementsAre(50, 0, 32767));
  EXPECT_THAT(sizes.columns, ElementsAre(48, 40, 1));
}

TEST(CliOptions, SheetSizesThatAreNoneAreRefusedByName) {
  for (const Refused& refused : {Refused{"", "no sheet size"},
                                 {"50", "50x48"},
                                 {"50x", "no sheet size"},
                                 {"x48", "no sheet size"},
                                 {"50x48,", "no sheet size"},
                                 {"-1x48", "0 to 32767 rows"},
                                 {"50x0", "1 to 32767 columns"},
                                 {"32768x1", "32767"},
                                 {"50 x48", "no sheet size"},
                                 {"50x48x2", "no sheet size"},
                                 {"30000x30000", "at most 4000000"},
                                 {"1e2x48", "no sheet size"}}) {
    const auto error = UsageErrorOf([&] { ParseSheetSizes("--side2", refused.text); });
    EXPECT_THAT(error, AllOf(HasSubstr("--side2"), HasSubstr(refused.says))) << refused.text;
  }
}

TEST(CliOptions, WindowsTakeExactlyEight16BitNumbers) {
  EXPECT_THAT(ParseWindow("1,10,-1,5,+4,32767,2,-32768"), ElementsAre(1, 10, -1, 5, 4, 32767, 2, -32768));
  for (const char* text : {"", "1,2,3,4,5,6,7", "1,2,3,4,5,6,7,8,9", "1,2,3,4,5,6,7,x", "1,2,3,4,5,6,7,32768",
                           "1,,3,4,5,6,7,8", "1,2,3,4,5,6,7, 8"}) {
    EXPECT_THAT(UsageErrorOf([&] { ParseWindow(text); }), HasSubstr("--window")) << text;
  }
}

TEST(CliOptions, BarcodesTakeSymbologyAndOrientationByNumberOrName) {
  const auto byNumber = ParseBarcode("1,2,30,8,2,1");
  const auto byName = ParseBarcode("1,2,30,8,teskbarcodetypecode39,teskBarcodeOrientationVertical");
  EXPECT_EQ(byNumber.symbology, teskBarcodeTypeCode39);
  EXPECT_EQ(byName.symbology, byNumber.symbology);
  EXPECT_EQ(byName.orientation, teskBarcodeOrientationVertical);
  EXPECT_EQ(byNumber.distance, 30);
  EXPECT_THAT(UsageErrorOf([] { ParseBarcode("1,2,30,8,Code39,1"); }),
              HasSubstr("teskBarcodeTypeCode39 (2)"));
}

TEST(CliOptions, PortsAreNumbersDevicesOrTheSimulator) {
  EXPECT_EQ(ParsePort("16").number, 16);
  EXPECT_EQ(ParsePort("SIM").kind, PortChoice::Kind::Simulated);
  EXPECT_EQ(ParsePort("/dev/pts/4").device, "/dev/pts/4");
  EXPECT_EQ(ParsePort("/dev/pts/4").number, 1);
  EXPECT_EQ(ParsePort("COM23").kind, PortChoice::Kind::Device);
  for (const char* text : {"", "0", "17", "-1", "+17", "99999999999"}) {
    EXPECT_THAT(UsageErrorOf([&] { ParsePort(text); }), HasSubstr("--port")) << text;
  }
}

TEST(CliOptions, ReadersAreNumbersEnumeratorsOrDisplayNamesInAnyCase) {
  for (const char* text : {"15", "teskReaderTypeScantronScanMark5500", "TESKREADERTYPESCANTRONSCANMARK5500",
                           "scantron scanmark 5500"}) {
    EXPECT_EQ(ParseReader(text), teskReaderTypeScantronScanMark5500) << text;
  }
  for (const Refused& refused : {Refused{"47", "1 to 46"},
                                 {"-1", "no reader"},
                                 {"015", "1 to 46"},
                                 {"Scantron Scanmark 5501", "Scantron Scanmark 5500"},
                                 {"scanmark", "Scantron Scanmark 2000"},
                                 {"teskReaderTypeScantron800", "teskReaderTypeScantron8000"},
                                 {"", "teskread readers"},
                                 {"0", "no scanner"},
                                 {"none", "no scanner"}}) {
    const auto error = UsageErrorOf([&] { ParseReader(refused.text); });
    EXPECT_THAT(error, AllOf(HasSubstr("--reader"), HasSubstr(refused.says))) << refused.text;
  }
}

TEST(CliOptions, AModelWithoutADriverIsNamedInPlainWords) {
  try {
    RequireDriver(teskReaderTypeAppersonAdvantageLink);
    FAIL() << "accepted";
  } catch (const CommandFailure& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("The Apperson Advantage Link has no driver in this version"));
  }
}

TEST(CliOptions, NearestNamesPutThoseThatContainTheTextFirst) {
  constexpr std::string_view kNames[] = {"Duplex", "DuplexForm", "Port", "Parity"};
  EXPECT_THAT(NearestNames("duplx", kNames), ElementsAre("Duplex", "DuplexForm"));
  EXPECT_THAT(NearestNames("FORM", kNames), testing::Contains("DuplexForm"));
  EXPECT_EQ(EditDistance("kitten", "sitting"), 3U);
}

class CliProperties : public testing::Test {
 protected:
  std::string Set(const std::string& text) {
    return UsageErrorOf([&] { Apply(ParseAssignment(text), *bench_.reader); });
  }
  clsTeskReader& Engine() { return *bench_.reader; }

 private:
  test::Bench bench_{teskReaderTypeScantronScanMark5500, nullptr};
};

TEST_F(CliProperties, EveryKindOfValueConvertsAsHostsWriteIt) {
  for (const char* text :
       {"Duplex=False", "feeder=0", "Rejecter=TRUE", "SleepTime=5", "TimeOut=3", "Parity=E", "StopBits=1.5",
        "BaudRate=38400", "FlowControl=teskReaderFlowControlHardware", "Resolution=-1", "ReaderType=16",
        "CancelScan=1", "HelpFile=a=b", "RecognitionMode=2"}) {
    EXPECT_EQ(Set(text), "no UsageError") << text;
  }
  EXPECT_FALSE(Engine().Duplex());
  EXPECT_FALSE(Engine().Feeder());
  EXPECT_TRUE(Engine().Rejecter());
  EXPECT_EQ(Engine().SleepTime(), 5);
  EXPECT_EQ(Engine().TimeOut(), 3);
  EXPECT_EQ(Engine().Parity(), "E");
  EXPECT_EQ(Engine().StopBits(), 1.5F);
  EXPECT_EQ(Engine().BaudRate(), teskReaderBaudRate38400);
  EXPECT_EQ(Engine().FlowControl(), teskReaderFlowControlHardware);
  EXPECT_EQ(Engine().Resolution(), -1);
  EXPECT_EQ(Engine().ReaderType(), teskReaderTypeScantron8000);
  EXPECT_EQ(Engine().HelpFile(), "a=b");
  EXPECT_EQ(Engine().RecognitionMode(), teskRecognitionTypeWindow);
}

TEST_F(CliProperties, WhatDoesNotConvertIsRefusedAndSaysWhatIsTaken) {
  for (const Refused& refused : {Refused{"Duplex=yes", "True or False"},
                                 {"Duplex=", "True or False"},
                                 {"Port=32768", "-32768 to 32767"},
                                 {"SleepTime=5 ", "whole number"},
                                 {"SleepTime=1e3", "whole number"},
                                 {"StopBits=one", "decimal point"},
                                 {"StopBits=1e99", "decimal point"},
                                 {"BaudRate=fast", "a bit rate"},
                                 {"Duplex", "NAME=VALUE"},
                                 {"Duplx=1", "did you mean Duplex"},
                                 {"Printer=on", "True or False"},
                                 {"Side1Rows=50", "no property"},
                                 {"ReaderName=x", "no property"},
                                 {"=1", "no property"},
                                 {"", "no property"}}) {
    EXPECT_THAT(Set(refused.text), AllOf(HasSubstr("--set"), HasSubstr(refused.says))) << refused.text;
  }
}

class CliScanPlan : public testing::Test {
 protected:
  ScanOptions Options(teskReaderType reader = teskReaderTypeScantronScanMark5500) {
    ScanOptions options;
    options.reader = std::to_string(reader);
    options.port = "sim";
    options.side1 = "50x48";
    return options;
  }
  std::string Configure(const ScanOptions& options) {
    Engine().SetDuplexForm(false);  // as in a fresh engine
    return UsageErrorOf([&] { ConfigureEngine(ParseScanOptions(options), Engine()); });
  }
  clsTeskReader& Engine() { return *bench_.reader; }

 private:
  test::Bench bench_{teskReaderTypeScantronScanMark5500, nullptr};
};

TEST_F(CliScanPlan, ABackMakesATwoSidedFormOnlyWhereTheScannerReadsOne) {
  auto options = Options();
  options.side2 = "40x48";
  EXPECT_EQ(Configure(options), "no UsageError");
  EXPECT_TRUE(Engine().TwoSided());
  EXPECT_THAT(Engine().Side2Rows().Elements(), ElementsAre(40));

  options.assignments = {"DuplexForm=False"};
  EXPECT_EQ(Configure(options), "no UsageError");
  EXPECT_FALSE(Engine().DuplexForm());

  auto oneSided = Options(teskReaderTypeScantronScanMark2000);
  oneSided.side2 = "40x48";
  EXPECT_EQ(Configure(oneSided), "no UsageError");
  EXPECT_FALSE(Engine().DuplexForm());
}

TEST_F(CliScanPlan, WindowsSelectWindowReadingAndNoneSelectsThePage) {
  auto options = Options();
  EXPECT_EQ(Configure(options), "no UsageError");
  EXPECT_EQ(Engine().RecognitionMode(), teskRecognitionTypePage);
  options.side2 = "50x48";
  options.windows = {"1,10,1,1,5,2,1,0", "3,4,1,1,5,2,2,1"};
  EXPECT_EQ(Configure(options), "no UsageError");
  EXPECT_EQ(Engine().RecognitionMode(), teskRecognitionTypeWindow);
  EXPECT_EQ(Engine().Windows()->Count(), 2);
  EXPECT_EQ(Engine().Windows()->Item(2)->Page(), 2);
}

TEST_F(CliScanPlan, TheImprintReachesItsBuffersWithPositionAndSwitches) {
  auto options = Options();
  options.imprints = {"Room 7"};
  options.imprintPosition = "12";
  EXPECT_EQ(Configure(options), "no UsageError");
  EXPECT_TRUE(Engine().Printer()->Active());
  EXPECT_EQ(Engine().Printer()->Buffer1(), "Room 7");
  EXPECT_EQ(Engine().Printer()->Distance(), 12);
}

TEST_F(CliScanPlan, OptionsThatDoNotFitEachOtherOrTheModelAreRefusedByName) {
  using Change = void (*)(ScanOptions&);
  struct Case {
    Change change;
    const char* says;
  };
  for (const Case& misfit :
       {Case{[](ScanOptions& o) { o.side1.clear(); }, "--side1: is required"},
        {[](ScanOptions& o) { o.port.clear(); }, "--port: is required"},
        {[](ScanOptions& o) { o.side2 = "50x48,50x48"; }, "--side2"},
        {[](ScanOptions& o) { o.imprintPosition = "3"; }, "--imprint-position: goes with --imprint"},
        {[](ScanOptions& o) {
           o.imprints = {"a", "b"};
         },
         "--imprint"},
        {[](ScanOptions& o) {
           o.imprints = {"a", "b", "c", "d"};
         },
         "up to 3"},
        {[](ScanOptions& o) { o.imprints = {"a\rb"}; }, "control characters"},
        {[](ScanOptions& o) { o.imprints = {"a"}, o.imprintPosition = "136"; }, "0 to 135"},
        {[](ScanOptions& o) { o.maxSheets = "many"; }, "--max-sheets"},
        {[](ScanOptions& o) { o.dispose = "shred"; }, "eject, reject, none"},
        {[](ScanOptions& o) { o.format = "xml"; }, "ndjson, csv, grid"}}) {
    auto options = Options();
    misfit.change(options);
    EXPECT_THAT(Configure(options), HasSubstr(misfit.says));
  }
}

TEST_F(CliScanPlan, WhatTheModelCannotReadIsRefusedBeforePaperMoves) {
  struct Case {
    teskReaderType reader;
    void (*change)(ScanOptions&);
    const char* says;  // empty: it is taken
  };
  using O = ScanOptions;
  constexpr auto kScanMark = teskReaderTypeScantronScanMark5500;
  constexpr auto kSekonic = teskReaderTypeScanningSystemsSR607;
  constexpr auto kOpScan = teskReaderTypeNCSOpScan4;
  for (const Case& c :
       {Case{kScanMark, [](O& o) { o.side1 = "20x12"; },
             "--side1: 20x12 does not fit: the Scantron Scanmark 5500 "
             "reads pages of 48 columns; write 20x48"},
        {kScanMark, [](O& o) { o.side1 = "50x48,40x49"; }, "40x49"},
        {kScanMark, [](O& o) { o.side1 = "50x48,0x1"; }, ""},
        {kScanMark, [](O& o) { o.side1 = "9999x48"; }, ""},
        {kScanMark, [](O& o) { o.side1 = o.side2 = "50x48,40x48"; }, "the same number of rows"},
        {kScanMark, [](O& o) { o.side1 = "50x48,50x48,40x48", o.side2 = "50x48,40x48,0x48"; }, ""},
        {kScanMark, [](O& o) { o.side2 = "50x47"; }, "--side2: 50x47 does not fit"},
        {kScanMark, [](O& o) { o.side1 = "20x12", o.windows = {"1,20,1,1,12,1,1,0"}; }, ""},
        {kScanMark, [](O& o) { o.side1 = "20x49", o.windows = {"1,20,1,1,12,1,1,0"}; }, "at most 48 columns"},
        {kScanMark, [](O& o) { o.assignments = {"DuplexForm=True"}; }, "--side2: is required"},
        {kScanMark, [](O& o) { o.assignments = {"RecognitionMode=2"}; }, "--window: is required"},
        {kScanMark, [](O& o) { o.barcodes = {"1,1,30,8,2,1"}; }, "reads no barcodes"},
        {teskReaderTypeScantron8000, [](O& o) { o.windows = {"1,2,1,1,2,1,1,0"}; }, "reads whole pages only"},
        {kSekonic, [](O& o) { o.side1 = "999x48"; }, ""},
        {kSekonic, [](O& o) { o.side1 = "1000x48"; }, "at most 999 rows"},
        {kSekonic, [](O& o) { o.side1 = "20x12"; }, ""},
        {teskReaderTypeSekonicSR430, [](O& o) { o.side1 = "20x13"; }, "at most 12 columns"},
        {teskReaderTypePDIVMR138, [](O& o) { o.side1 = "500x14"; }, ""},
        {teskReaderTypePDIVMR138, [](O& o) { o.side1 = "501x14"; }, "at most 500 rows"},
        {teskReaderTypePDIVMR138, [](O& o) { o.side1 = "500x15"; }, "at most 14 columns"},
        {kOpScan, [](O& o) { o.side1 = "150x48"; }, ""},
        {kOpScan, [](O& o) { o.side1 = "151x48"; }, "at most 150 rows"},
        {kOpScan,
         [](O& o) {
           o.assignments = {"Duplex=True", "DuplexForm=True"};
         },
         ""},
        {kSekonic, [](O& o) { o.assignments = {"DuplexForm=True"}; }, "--side2: is required"},
        {kOpScan, [](O& o) { o.windows = {"1,2,1,1,2,1,1,0"}; }, "reads whole pages only"},
        {teskReaderTypeSekonicSR3500, [](O& o) { o.side1 = "201x48"; }, "at most 200 rows"},
        {kOpScan, [](O& o) { o.barcodes = {"1,1,30,8,2,1"}; }, ""},
        {kOpScan, [](O& o) { o.barcodes = {"3,1,30,8,2,1"}; }, "Page 3 is no side"},
        {kOpScan, [](O& o) { o.barcodes = {"1,1,-1,8,2,1"}; }, "are 0 or more"},
        {kOpScan, [](O& o) { o.barcodes = {"1,1,30,8,24,1"}; }, "\"24\" is none of"},
        {kOpScan, [](O& o) { o.barcodes = {"1,1,30,8,2,3"}; }, "\"3\" is none of"},
        {kSekonic, [](O& o) { o.barcodes.assign(9, "1,1,30,8,2,1"); }, "at most 8 barcodes, 9 were given"}}) {
    auto options = Options(c.reader);
    c.change(options);
    const std::string error = Configure(options);
    EXPECT_THAT(error, HasSubstr(*c.says ? c.says : "no UsageError")) << c.reader << ' ' << options.side1;
  }
  for (const auto& [fields, says] :
       {Refused{"1,50,1,1,48,1,1,0", ""},
        {"50,50,-1,48,48,-1,1,1", ""},
        {"1,51,1,1,48,1,1,0", "rows 1 to 51 lie outside the sheet, which has rows 1 to 50"},
        {"49,50,-1,1,48,1,1,0", "rows 0 to 49"},
        {"1,50,1,2,48,1,1,0", "columns 2 to 49"},
        {"1,2,0,1,2,1,1,0", "the step from row to row is 0"},
        {"1,1,0,1,1,0,1,0", ""},
        {"1,0,1,1,2,1,1,0", "it has no rows"},
        {"1,2,1,1,2,1,0,0", "Page is 1 (front) or 2 (back)"},
        {"1,2,1,1,2,1,2,0", "the back is not read"},
        {"1,2,1,1,2,1,1,2", "Orientation is 0"}}) {
    auto options = Options(kScanMark);
    options.windows = {fields};
    EXPECT_THAT(Configure(options), HasSubstr(*says ? says : "no UsageError")) << fields;
  }
  auto backFirst = Options(kScanMark);
  backFirst.side2 = "50x48";
  backFirst.windows = {"1,2,1,1,2,1,2,0", "1,2,1,1,2,1,1,0"};
  EXPECT_THAT(Configure(backFirst), HasSubstr("the windows of the front (Page 1) come before"));
}

TEST_F(CliScanPlan, APropertyMayStandInForThePortOption) {
  auto options = Options();
  options.port.clear();
  options.assignments = {"Port=4"};
  EXPECT_EQ(Configure(options), "no UsageError");
  EXPECT_EQ(Engine().Port(), 4);
}

}  // namespace
}  // namespace tesk::cli
