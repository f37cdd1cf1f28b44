// The Sekonic USB driver against simulated scanners behind the maker's library: the calls in their order, the arrays, the
// texts, and a library that is missing or lies.
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/conversions.h"
#include "cli/simulated/SimulatedOmr.h"
#include "drivers/basSekonicSR.h"
#include "simulator/SekonicUsbScript.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using simulator::SekonicUsb;
using simulator::UsbDevice;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Settings = std::function<void(Bench&)>;

UsbDevice DeviceOf(const std::string& script) {
  auto parsed = simulator::ParseUsbDevice(script);
  EXPECT_EQ(parsed.error, "");
  return std::move(parsed.device).value_or(UsbDevice{});
}

// Two sheets with few marks, of unequal sides.
UsbDevice Device(const std::string& script) {
  UsbDevice device = DeviceOf(script);
  if (device.sheets.empty()) {
    device.sheets = {{.side1 = Grid(2, 48, {{1, 1, 1}, {1, 48, 255}, {2, 40, 128}}),
                      .side2 = Grid(3, 48, {{3, 41, 7}}),
                      .barcodes = {"4711", "A\xC4"}},
                     {.side1 = Grid(1, 48, {{1, 2, 9}}), .side2 = {}, .barcodes = {}}};
  }
  return device;
}

// A reader of type SR3500 with the scanner that a script describes. What happens are the calls into the library, with
// what they yield where it is not 0.
struct UsbBench : Bench {
  explicit UsbBench(const std::string& script) : UsbBench(std::make_shared<SekonicUsb>(Device(script))) {}
  explicit UsbBench(std::shared_ptr<SekonicUsb> device)
      : Bench(teskReaderTypeSekonicSR3500, nullptr, std::make_shared<cli::SimulatedOmr>(device)),
        scanner(std::move(device)) {
    whatElse = [this] {
      std::string calls;
      for (const auto all = scanner->Calls(); seen < all.size(); ++seen)
        calls += " | " + Replace(all[seen].substr(4), " = 0", "");
      return calls;
    };
    SetExtents(2, 3, false);
  }

  void WantBarcode(std::int16_t page, std::int16_t distance, std::int16_t length,
                   teskBarcodeOrientation orientation = teskBarcodeOrientationVertical) {
    auto barcode = std::make_shared<clsTeskReaderBarcode>();
    barcode->SetPage(page);
    barcode->SetDistance(distance);
    barcode->SetLength(length);
    barcode->SetOrientation(orientation);
    reader->Barcodes()->Add(barcode);
    reader->SetBarcode(true);
  }

  std::shared_ptr<SekonicUsb> scanner;
  std::size_t seen = 0;
};

void TwoSided(UsbBench& b) { b.SetExtents(2, 3, true); }
void OneBarcode(UsbBench& b) { b.WantBarcode(1, 10, 5); }
void Nothing(UsbBench&) {}

std::string Play(const char* calls, const std::string& script = "", void (*set)(UsbBench&) = Nothing) {
  UsbBench bench(script);
  set(bench);
  std::string happened = bench.Do(calls);
  for (const std::string& complaint : bench.scanner->Complaints()) happened += " | " + complaint;
  return happened;
}

// ---- Starting

const std::string kOpened =
    "OpenDeviceUSB() | GetReadingMethod() [3, 0] | GetNumberOfColumnsToRead() = 48 | SetBackSensorUnit(0) | "
    "GetSheetFeedMode() [0, 0]";

TEST(SekonicUsb, StartSetsOnlyWhatIsNotAsItShouldBe) {
  EXPECT_EQ(Play("sx"), kOpened + " | 0 s: yes | CloseDevice() | 0 x: yes");
  EXPECT_EQ(Play("s", "reading-method 0 9\ncolumns 40\nfeed-mode 2 7"),
            "OpenDeviceUSB() | GetReadingMethod() [0, 9] | GetNumberOfColumnsToRead() = 40 | "
            "SetNumberOfColumnsToRead(48) | SetBackSensorUnit(0) | GetSheetFeedMode() [2, 7] | "
            "SetSheetFeedMode(0, 0) | 0 s: yes");
  EXPECT_EQ(
      Play("s", "reading-method 1 9\nanswer OMR_SetBackSensorUnit 1 9", TwoSided),
      "OpenDeviceUSB() | GetReadingMethod() [1, 9] | SetReadingMethod(3, 9) | GetNumberOfColumnsToRead() = "
      "48 | SetBackSensorUnit(1) = 9 | GetSheetFeedMode() [0, 0] | 0 s: yes");
  EXPECT_EQ(Play("s", "reading-method 2 -1", [](UsbBench& b) { b.reader->SetDuplex(true); }),
            "OpenDeviceUSB() | GetReadingMethod() [2, -1] | SetReadingMethod(3, -1) | "
            "GetNumberOfColumnsToRead() = 48 | SetBackSensorUnit(0) | GetSheetFeedMode() [0, 0] | 0 s: yes");
  EXPECT_EQ(Play("s", "barcode-unit -1", OneBarcode), kOpened + " | GetBarcodeReaderUnit() = -1 | 0 s: yes");
  EXPECT_EQ(Play("s", "barcode-unit 0", OneBarcode),
            kOpened + " | GetBarcodeReaderUnit() | SetBarcodeReaderUnit(1) | 0 s: yes");
  EXPECT_EQ(Play("s", "barcode-unit 1", OneBarcode), kOpened + " | GetBarcodeReaderUnit() = 1 | 0 s: yes");
  // Barcodes are asked for only where some are defined and wanted.
  EXPECT_EQ(Play("s", "barcode-unit 0", [](UsbBench& b) { b.reader->SetBarcode(true); }),
            kOpened + " | 0 s: yes");
  EXPECT_EQ(Play("s", "barcode-unit 0",
                 [](UsbBench& b) {
                   OneBarcode(b);
                   b.reader->SetBarcode(false);
                 }),
            kOpened + " | 0 s: yes");
  // A start after a failed one begins afresh.
  EXPECT_EQ(Play("ss", "answer OMR_GetSheetFeedMode 1 1"),
            "OpenDeviceUSB() | GetReadingMethod() [3, 0] | GetNumberOfColumnsToRead() = 48 | "
            "SetBackSensorUnit(0) | GetSheetFeedMode() = 1 | ! Initialization Error | 0 s: no | "
            "CloseDevice() | OpenDeviceUSB() | GetReadingMethod() [3, 0] | GetNumberOfColumnsToRead() = 48 | "
            "SetBackSensorUnit(0) | GetSheetFeedMode() [0, 0] | 0 s: yes");
}

TEST(SekonicUsb, EveryStepOfTheStartThatFailsIsShownInItsWordsAndEndsIt) {
  const std::string cannotRead = "An error occurred trying to initialize the scanner settings. Cannot read ";
  const std::tuple<const char*, std::string, const char*> kCases[] = {
      {"answer OMR_OpenDeviceUSB 1 5",
       "An error occurred opening the USB port. Make sure your cable is plugged in and the scanner has "
       "power.",
       "GetLastError()"},
      {"answer OMR_GetReadingMethod 1 5", cannotRead + "(GetReadingMethod).", "GetReadingMethod() = 5"},
      {"reading-method 1 4\nanswer OMR_SetReadingMethod 1 -1", cannotRead + "(SetReadingMethod).",
       "SetReadingMethod(3, 4) = -1"},
      {"columns 0\nanswer OMR_SetNumberOfColumnsToRead 1 1", cannotRead + "(SetNumberOfColumnsToRead).",
       "SetNumberOfColumnsToRead(48) = 1"},
      {"answer OMR_GetSheetFeedMode 1 1", cannotRead + "(GetSheetFeedMode).", "GetSheetFeedMode() = 1"},
      {"feed-mode 1 1\nanswer OMR_SetSheetFeedMode 1 1", cannotRead + "(SetSheetFeedMode).",
       "SetSheetFeedMode(0, 0) = 1"},
      // Sheets are read without the barcodes of a unit that cannot be switched on.
      {"barcode-unit 0\nanswer OMR_SetBarcodeReaderUnit 1 3", cannotRead + "(SetBarcodeReaderUnit).",
       "GetMarks(0, 200) = 1 [2]"}};
  for (const auto& [script, text, lastCall] : kCases) {
    UsbBench bench(script);
    OneBarcode(bench);
    const bool started = bench.reader->StartReader();
    EXPECT_EQ(started, text.ends_with("(SetBarcodeReaderUnit).")) << script;
    EXPECT_EQ(bench.reader->CancelScan(), !started) << script;
    EXPECT_THAT(bench.host.messages, ElementsAre(RecordingHost::Message{"Initialization Error", text}));
    if (!started) {
      EXPECT_TRUE(bench.Do("c").empty() && bench.whatElse().ends_with(lastCall)) << script;
    } else {
      EXPECT_THAT(bench.Do("r"), HasSubstr(lastCall));
    }
  }
}

TEST(SekonicUsb, AMissingLibraryIsShownWithWhereToGetItAndWhyThatIsOfNoUse) {
  struct NothingToLoad : OmrLibraryLoader {
    explicit NothingToLoad(const char* why) : obstacle(why) {}
    std::shared_ptr<OmrLibrary> Load() override { return nullptr; }
    std::string Obstacle() const override { return obstacle; }
    const char* obstacle;
  };
  for (const auto& [obstacle, shown] : {std::pair("", ""), std::pair("Not in {0}.", "|Not in Quillon.")}) {
    Bench bench(teskReaderTypeSekonicSR1800, nullptr, std::make_shared<NothingToLoad>(obstacle));
    EXPECT_EQ(bench.Do("sx"), "! Sekonic File Missing | 0 s: no | 0 x: yes");
    EXPECT_EQ(
        bench.host.messages.at(0).text,
        "Please obtain the OMRAPI.DLL file from your Sekonic scanner installation CD-ROM, close Quillon "
        "and then copy "
        "the DLL to your Windows\\System32 directory.|If you don't have access to the installation "
        "media, please "
        "contact Sekonic or the Sekonic reseller from whom you purchased the scanner to obtain the DLL. "
        "Once the DLL "
        "is in place, try running Quillon again." +
            std::string(shown));
  }
}

TEST(SekonicUsb, AnEngineThatGoesOrChangesItsTypeClosesTheScannerOnceAndOnlyWhereItIsOpen) {
  const std::pair<const char*, void (*)(UsbBench&)> kCases[] = {
      {"", [](UsbBench& b) { b.reader->RemoveEvents(b.events), b.reader = nullptr; }},
      {"", [](UsbBench& b) { b.reader->SetReaderType(teskReaderTypeSekonicSR1800); }},
      {"", [](UsbBench& b) { b.reader->LoadDefaults(teskReaderTypePDIVMR138); }},
      {"", [](UsbBench& b) { b.reader->EndReader(), b.reader->SetReaderType(teskReaderTypeNone); }},
      {"answer OMR_OpenDeviceUSB 1 5", [](UsbBench& b) { b.reader->SetReaderType(teskReaderTypeNone); }},
  };
  for (const auto& [script, act] : kCases) {
    UsbBench bench(script);
    EXPECT_EQ(bench.reader->StartReader(), *script == '\0');
    bench.whatElse();
    act(bench);
    EXPECT_EQ(bench.whatElse(), *script == '\0' ? " | CloseDevice()" : "");
    EXPECT_THAT(bench.scanner->Complaints(), IsEmpty());
  }
  // A refused close is told, and there is nothing left to close.
  EXPECT_EQ(Play("Sxx", "answer OMR_CloseDevice 1 4"), "CloseDevice() = 4 | 0 x: no | 0 x: yes");
}

// ---- Reading

TEST(SekonicUsb, SheetsReachTheHostAsTheyAreOnPaper) {
  EXPECT_EQ(Play("Srrcr", "",
                 [](UsbBench& b) {
                   TwoSided(b);
                   b.WantBarcode(1, 40, 10);
                   b.WantBarcode(1, 20, 5);
                   b.reader->SetRecognitionThreshold(200);
                 }),
            "SetBarCodeArea(0, 20, 30, 1) = 1 | SetBarCodeReadType(23) | SetBarCodeCheckDigit(97, 0) | "
            "SetBarCodeCheckDigit(98, 0) | SetBarCodeCheckDigit(99, 0) | GetNumberOfColumnsToRead() = 48 | "
            "FeedSheet() [sheet 1] | GetLastError() | GetMarks(0, 200) = 1 [2] | GetMarks(1, 200) = 1 [3] | "
            "GetBarcodeInfo() [2] | GetBarcodeData(0) [4, \"4711\"] | GetBarcodeData(1) [2, \"A<C4>\"] | 10 "
            "r: [200x48 1,1=1 1,48=255 2,40=128] [200x48 3,41=7] 2/3 '4711' 'A\xC3\x84' | SetBarCodeArea(0, "
            "20, 30, 1) = 1 | SetBarCodeReadType(23) | SetBarCodeCheckDigit(97, 0) | "
            "SetBarCodeCheckDigit(98, 0) | SetBarCodeCheckDigit(99, 0) | GetNumberOfColumnsToRead() = 48 | "
            "FeedSheet() [sheet 2] | GetLastError() | GetMarks(0, 200) = 1 [1] | GetMarks(1, 200) = 1 [0] | "
            "GetBarcodeInfo() [0] | 20 r: [200x48 1,2=9] [200x48] 1/0 '' | SetBarCodeArea(0, 20, 30, 1) = 1 "
            "| SetBarCodeReadType(23) | SetBarCodeCheckDigit(97, 0) | SetBarCodeCheckDigit(98, 0) | "
            "SetBarCodeCheckDigit(99, 0) | GetNumberOfColumnsToRead() = 48 | FeedSheet() = 1 | "
            "GetLastError() = 1074855936 [40110000] | 30 r: no");
  // One side never asks for the back and leaves its count.
  EXPECT_EQ(Play("Sr", "", [](UsbBench& b) { b.reader->SetDuplex(true); }),
            "GetNumberOfColumnsToRead() = 48 | FeedSheet() [sheet 1] | GetLastError() | GetMarks(0, 200) = 1 "
            "[2] | 10 r: [200x48 1,1=1 1,48=255 2,40=128] [200x48] 2/-1 ''");
  // Timing-line errors are tolerated.
  for (const char* code : {"41120003", "42120003", "40120003"}) {
    EXPECT_THAT(Play("Sr", std::string("feed 1 ") + code),
                ::testing::EndsWith("r: [200x48 1,1=1 1,48=255 2,40=128] [200x48] 2/-1 ''"));
  }
  UsbBench bench("");
  TwoSided(bench);
  bench.Do("S");
  bench.scanner->SetNumberOfColumnsToRead(40);
  EXPECT_EQ(bench.Do("r"),
            "SetNumberOfColumnsToRead(40) | GetNumberOfColumnsToRead() = 40 | FeedSheet() [sheet 1] | "
            "GetLastError() | GetMarks(0, 200) = 1 [2] | GetMarks(1, 200) = 1 [3] | 10 r: [200x48 1,1=1 "
            "2,40=128] [200x48] 2/3 ''");
}

TEST(SekonicUsb, ACancelWhileMessagesRunFeedsNoSheet) {
  EXPECT_EQ(Play("Sr", "", [](UsbBench& b) { b.CancelAt(0ms); }),
            "GetNumberOfColumnsToRead() = 48 | 10 r: no");
}

TEST(SekonicUsb, BarcodesAreReadFromAnAreaThatHoldsThemAll) {
  const auto area = [](void (*set)(UsbBench&), const char* script = "") {
    const std::string happened = Play("Sr", script, set);
    return happened.substr(0, happened.find(" | GetNumber")) + happened.substr(happened.rfind(" '"));
  };
  EXPECT_EQ(area([](UsbBench& b) {
              b.WantBarcode(1, 40, 10);
              b.WantBarcode(2, -7, -3, teskBarcodeOrientationHorizontal);
            }),
            "SetBarCodeArea(2, -7, 57, 0) = 1 | SetBarCodeReadType(23) | SetBarCodeCheckDigit(97, 0) | "
            "SetBarCodeCheckDigit(98, 0) | SetBarCodeCheckDigit(99, 0) 'A\xC3\x84'");
  EXPECT_EQ(area([](UsbBench& b) {
              b.WantBarcode(2, 5, 90);
              b.WantBarcode(3, 20, 5);
            }),
            "SetBarCodeArea(1, 5, 90, 1) = 1 | SetBarCodeReadType(23) | SetBarCodeCheckDigit(97, 0) | "
            "SetBarCodeCheckDigit(98, 0) | SetBarCodeCheckDigit(99, 0) 'A\xC3\x84'");
  // A scanner without a unit, and a barcode that cannot be read, which keeps its place.
  EXPECT_EQ(area(OneBarcode, "barcode-unit -1"), "SetBarCodeArea(0, 10, 5, 1) ''");
  EXPECT_THAT(Play("Sr", "answer OMR_GetBarcodeData 1 1", OneBarcode),
              ::testing::EndsWith(" '' 'A\xC3\x84'"));
}

// ---- The scanner's errors

TEST(SekonicUsb, EveryCodeOfTheFeedIsReportedInItsExactWords) {
  std::ifstream file(TESKREAD_TEST_DATA "/sekonic_usb_errors.tsv");
  int codes = 0;
  for (std::string code, number, text;
       std::getline(file, code, '\t') && std::getline(file, number, '\t') && std::getline(file, text);
       ++codes) {
    UsbBench bench("feed 1 " + code);
    const auto value = static_cast<std::uint32_t>(std::stoul(code, nullptr, 16));
    // Those of the timing line never end a read; they are asked for by themselves.
    if ((value & 0xF0FFFFFF) == 0x40120003) {
      basSekonicSR::ReturnErrorSR(static_cast<std::int32_t>(value));
    } else {
      EXPECT_THAT(bench.Do("Sr"), ::testing::EndsWith("r: no")) << text;
      EXPECT_FALSE(bench.reader->HopperEmpty());
    }
    ASSERT_THAT(bench.host.errors, SizeIs(1)) << text;
    const ErrorReport& error = bench.host.errors[0];
    EXPECT_EQ(error.message, text);
    EXPECT_EQ(NumberText(error.number), number);
    EXPECT_EQ(error.title + error.source, "Sekonic SR ErrorQuillon Reader - basSekonicSR.ReturnErrorSR");
    EXPECT_EQ(error.detail.size(), 8U);
  }
  EXPECT_EQ(codes, 30);
  UsbBench empty("feed 1 40110000");
  empty.Do("Sr");
  EXPECT_TRUE(empty.reader->HopperEmpty() && empty.host.errors.empty());
}

// ---- Stackers and imprint

TEST(SekonicUsb, TheStackerFollowsTheRejecterAndThePendingCancel) {
  const auto leave = [](bool rejecter, bool cancel, const char* calls) {
    UsbBench bench("");
    bench.reader->SetRejecter(rejecter);
    bench.Do("Sr");
    bench.reader->SetCancelScan(cancel);
    return bench.Do(calls);
  };
  // An ejected sheet counts as disposed of only while a cancel is pending.
  EXPECT_EQ(leave(true, true, "je"), "EjectSheet(4) | 10 j | 10 e");
  EXPECT_EQ(leave(true, false, "je"), "EjectSheet(2) | 10 j | 10 e");
  EXPECT_EQ(leave(false, true, "je"), "EjectSheet(3) | 10 j | 10 e");
  EXPECT_EQ(leave(false, false, "je"), "EjectSheet(1) | 10 j | 10 e");
  EXPECT_EQ(leave(true, true, "ee"), "EjectSheet(1) | 10 e | 10 e");
  EXPECT_EQ(leave(false, false, "ee"), "EjectSheet(3) | 10 e | EjectSheet(3) | 10 e");
  EXPECT_EQ(Play("Sre", "answer OMR_EjectSheet 1 1\nanswer OMR_GetLastError 2 889782274"),
            "GetNumberOfColumnsToRead() = 48 | FeedSheet() [sheet 1] | GetLastError() | GetMarks(0, 200) = 1 "
            "[2] | 10 r: [200x48 1,1=1 1,48=255 2,40=128] [200x48] 2/-1 '' | EjectSheet(3) = 1 | "
            "GetLastError() = 889782274 | error 35090002 basSekonicSR.ReturnErrorSR | 10 e");
}

TEST(SekonicUsb, ImprintHandsOverThreeLinesInTheCodePageCutToWhatTheImprinterTakes) {
  const auto print = [](const std::string& fault) {
    UsbBench bench(fault);
    bench.TurnImprinterOn(20, "R\xC3\xA4um\te\x7F 7", std::string(40, 'x') + "\xE2\x82\xACy");
    const std::string happened = bench.Do("Sp");
    const bool printed = std::ranges::count(bench.events.names, "AfterPrint") == 1;
    return happened.substr(happened.find("SetPrint"), happened.find(" | 10 r") - happened.find("SetPrint")) +
           (printed ? " | AfterPrint" : "");
  };
  EXPECT_EQ(print(""),
            "SetPrintOrder(1, 2, 3) = 1 | SetPrintPosition(20) = 1 | SetPrintString(1, \"R<E4>um e  7\") = 1 "
            "| SetPrintString(2, \"\") = 1 | SetPrintString(3, "
            "\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx?\") = 1 | AfterPrint");
  // A failed call leaves out what follows, and is shown.
  EXPECT_EQ(print("answer OMR_SetPrintOrder 1 0"), "SetPrintOrder(1, 2, 3) | ! Print Error");
  EXPECT_EQ(print("answer OMR_SetPrintPosition 1 0"),
            "SetPrintOrder(1, 2, 3) = 1 | SetPrintPosition(20) | ! Print Error");
  EXPECT_EQ(print("answer OMR_SetPrintString 2 0"),
            "SetPrintOrder(1, 2, 3) = 1 | SetPrintPosition(20) = 1 | SetPrintString(1, \"R<E4>um e  7\") = 1 "
            "| SetPrintString(2, \"\") | ! Print Error");
  EXPECT_EQ(print("answer OMR_SetPrintString 3 0"),
            "SetPrintOrder(1, 2, 3) = 1 | SetPrintPosition(20) = 1 | SetPrintString(1, \"R<E4>um e  7\") = 1 "
            "| SetPrintString(2, \"\") = 1 | SetPrintString(3, "
            "\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx?\") | ! Print Error");
}

// ---- A library that is not to be believed

TEST(SekonicUsb, NothingOfASheetIsTakenFromALibraryThatCannotBeRight) {
  const char* const kOverrun = "It wrote beyond the memory that it was given.";
  const std::pair<const char*, const char*> kCases[] = {
      {"report OMR_GetMarks 1 201", "Rows: 201"},
      {"report OMR_GetMarks 1 -1", "Rows: -1"},
      {"report OMR_GetMarks 2 2147483647", "Rows: 2147483647"},
      {"overrun OMR_GetMarks 1", kOverrun},
      {"overrun OMR_GetMarks 2", kOverrun},
      {"answer OMR_GetNumberOfColumnsToRead 2 49", "Columns: 49"},
      {"answer OMR_GetNumberOfColumnsToRead 2 0", "Columns: 0"},
      {"report OMR_GetBarcodeInfo 1 -1", "Barcodes: -1"},
      {"report OMR_GetBarcodeInfo 1 100", "Barcodes: 100"},
      {"report OMR_GetBarcodeData 1 256", "Barcode length: 256"},
      {"report OMR_GetBarcodeData 1 -1", "Barcode length: -1"},
      {"unterminated OMR_GetBarcodeData 1", "A barcode text has no end."},
      {"overrun OMR_GetBarcodeData 1", kOverrun},
  };
  for (const auto& [fault, what] : kCases) {
    UsbBench bench(fault);
    TwoSided(bench);
    OneBarcode(bench);
    EXPECT_THAT(bench.Do("Sr"), ::testing::EndsWith("r: no")) << fault;
    EXPECT_THAT((std::vector{bench.reader->Side1TimingMarks(), bench.reader->Side2TimingMarks()}),
                ElementsAre(-1, -1));
    ASSERT_THAT(bench.host.messages, SizeIs(1)) << fault;
    EXPECT_EQ(bench.host.messages[0].text,
              "The Sekonic library OMRAPI.DLL returned data that cannot be right. The page cannot be read.|" +
                  std::string(what));
    // A sheet is fed only where its data will have room.
    EXPECT_EQ(bench.scanner->Calls().back().starts_with("OMR_GetNumber"),
              std::string(what).starts_with("Columns"));
  }
  for (const char* good : {"report OMR_GetMarks 1 200", "report OMR_GetMarks 1 0",
                           "report OMR_GetBarcodeInfo 1 99", "report OMR_GetBarcodeInfo 1 0",
                           "report OMR_GetBarcodeData 1 255", "report OMR_GetBarcodeData 1 0"}) {
    EXPECT_THAT(Play("Sr", good, OneBarcode), HasSubstr("r: [200x48")) << good;
  }
}

TEST(SekonicUsb, MarksThatCannotBeGotAreShownForTheirSide) {
  for (const auto& [number, side] : {std::pair("1", "front"), {"2", "back"}}) {
    UsbBench bench(std::string("answer OMR_GetMarks ") + number + " 0");
    TwoSided(bench);
    EXPECT_THAT(bench.Do("Sr"), ::testing::EndsWith("r: no"));
    EXPECT_EQ(bench.host.messages.at(0).text,
              std::string("An error occurred trying to get the data from the ") + side +
                  " side of the form. Cannot read.");
  }
}

TEST(SekonicUsb, GarbageFromAnyFunctionNeitherHangsNorHarms) {
  for (const char* function :
       {"OpenDeviceUSB", "CloseDevice", "GetLastError", "GetReadingMethod", "SetReadingMethod",
        "GetNumberOfColumnsToRead", "SetBackSensorUnit", "GetSheetFeedMode", "GetBarcodeReaderUnit",
        "SetBarCodeArea", "SetBarCodeReadType", "SetBarCodeCheckDigit", "FeedSheet", "GetMarks",
        "GetBarcodeInfo", "GetBarcodeData", "EjectSheet"}) {
    for (const char* value : {"-2147483648", "-1", "1", "2147483647", "1515870810"}) {
      UsbBench bench(std::string("reading-method 1 1\nanswer OMR_") + function + " 1 " + value);
      OneBarcode(bench);
      std::int32_t count = 0;
      bench.reader->ReadBatch(false, 2, count);
      EXPECT_LE(count, 2) << function << value;
      EXPECT_EQ(bench.reader->Omr(), nullptr) << function << value;
    }
  }
}

}  // namespace
}  // namespace tesk::test
