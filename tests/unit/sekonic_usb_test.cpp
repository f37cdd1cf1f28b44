// The Sekonic USB driver against simulated scanners behind the maker's library: the calls, the arrays, the
// texts, and a library that is missing or lies.
#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

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
using simulator::UsbFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Calls = std::vector<std::string>;

const SideArray kUntouched = [] {
  SideArray sentinel(1, 1);
  sentinel.At(1, 1) = 777;
  return sentinel;
}();

UsbDevice DeviceOf(const std::string& script) {
  auto parsed = simulator::ParseUsbDevice(script);
  EXPECT_EQ(parsed.error, "");
  return std::move(parsed.device).value_or(UsbDevice{});
}

// A reader of type SR3500 with the scanner that a script describes.
class UsbBench {
 public:
  explicit UsbBench(const std::string& script, teskReaderType type = teskReaderTypeSekonicSR3500)
      : scanner(std::make_shared<SekonicUsb>(DeviceOf(script))), time(std::make_shared<VirtualTime>()) {
    auto serial = std::make_shared<BenchSerial>(time, nullptr);
    reader = CreateReader(ReaderParts{.serial = serial,
                                      .loop = time,
                                      .clock = time,
                                      .omrLoader = std::make_shared<cli::SimulatedOmr>(scanner)});
    reader->LoadDefaults(type);
    reader->AddEvents(events);
    reader->StoreSheet({.side1 = kUntouched, .side2 = kUntouched});
  }
  ~UsbBench() {
    if (reader) reader->RemoveEvents(events);
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
  // The calls since the last time this was asked.
  Calls NewCalls() {
    const Calls all = scanner->Calls();
    const Calls fresh(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
    seen_ = all.size();
    return fresh;
  }
  bool Untouched() const {
    return reader->Side1Array() == kUntouched && reader->Side2Array() == kUntouched &&
           reader->Side1TimingMarks() == -1 && reader->Side2TimingMarks() == -1;
  }

  RecordingHost host;
  RecordingEvents events;
  std::shared_ptr<SekonicUsb> scanner;
  std::shared_ptr<VirtualTime> time;
  std::shared_ptr<clsTeskReader> reader;

 private:
  std::size_t seen_ = 0;
};

bool Called(const Calls& calls, const std::string& beginning) {
  return std::ranges::any_of(calls, [&](const std::string& call) { return call.starts_with(beginning); });
}

// ---- Starting

struct StartCase {
  const char* name;
  const char* script;
  bool duplex;
  bool barcode;
  Calls calls;
};

class Start : public ::testing::TestWithParam<StartCase> {};

TEST_P(Start, SetsOnlyWhatIsNotAsItShouldBe) {
  const StartCase& c = GetParam();
  UsbBench bench(c.script);
  bench.reader->SetDuplex(c.duplex);
  bench.reader->SetDuplexForm(c.duplex);
  if (c.barcode) bench.WantBarcode(1, 10, 5);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_EQ(bench.NewCalls(), c.calls);
  EXPECT_THAT(bench.host.messages, IsEmpty());
  EXPECT_TRUE(bench.reader->EndReader());
  EXPECT_THAT(bench.NewCalls(), ElementsAre("OMR_CloseDevice() = 0"));
  EXPECT_THAT(bench.scanner->Complaints(), IsEmpty());
}

const Calls kStartMethod3 = {"OMR_OpenDeviceUSB() = 0", "OMR_GetReadingMethod() = 0 [3, 0]",
                             "OMR_GetNumberOfColumnsToRead() = 48", "OMR_SetBackSensorUnit(0) = 0",
                             "OMR_GetSheetFeedMode() = 0 [0, 0]"};

// The calls of a scanner that is as it should be, with some of them replaced.
Calls Changed(Calls calls, std::vector<std::pair<std::size_t, Calls>> changes) {
  std::ranges::reverse(changes);
  for (const auto& [at, with] : changes) {
    const auto place = calls.begin() + static_cast<std::ptrdiff_t>(at);
    calls.insert(calls.erase(place), with.begin(), with.end());
  }
  return calls;
}

Calls Followed(Calls calls, const Calls& by) {
  calls.insert(calls.end(), by.begin(), by.end());
  return calls;
}

INSTANTIATE_TEST_SUITE_P(
    SekonicUsb, Start,
    ::testing::Values(
        StartCase{"AsItShouldBe", "", false, false, kStartMethod3},
        StartCase{"Method0IsLeftAlone", "reading-method 0 9", false, false,
                  Changed(kStartMethod3, {{1, {"OMR_GetReadingMethod() = 0 [0, 9]"}}})},
        StartCase{"Method1KeepsItsParameter", "reading-method 1 9", false, false,
                  Changed(kStartMethod3,
                          {{1, {"OMR_GetReadingMethod() = 0 [1, 9]", "OMR_SetReadingMethod(3, 9) = 0"}}})},
        StartCase{"Method2", "reading-method 2 -1", false, false,
                  Changed(kStartMethod3,
                          {{1, {"OMR_GetReadingMethod() = 0 [2, -1]", "OMR_SetReadingMethod(3, -1) = 0"}}})},
        StartCase{
            "OtherColumns", "columns 40", false, false,
            Changed(kStartMethod3,
                    {{2, {"OMR_GetNumberOfColumnsToRead() = 40", "OMR_SetNumberOfColumnsToRead(48) = 0"}}})},
        StartCase{"OtherFeedMode", "feed-mode 2 7", false, false,
                  Changed(kStartMethod3,
                          {{4, {"OMR_GetSheetFeedMode() = 0 [2, 7]", "OMR_SetSheetFeedMode(0, 0) = 0"}}})},
        StartCase{"TwoSided", "", true, false,
                  Changed(kStartMethod3, {{3, {"OMR_SetBackSensorUnit(1) = 0"}}})},
        StartCase{"BackSensorRefusesUnheeded", "answer OMR_SetBackSensorUnit 1 9", false, false,
                  Changed(kStartMethod3, {{3, {"OMR_SetBackSensorUnit(0) = 9"}}})},
        StartCase{"BarcodeUnitMissing", "barcode-unit -1", false, true,
                  Followed(kStartMethod3, {"OMR_GetBarcodeReaderUnit() = -1"})},
        StartCase{
            "BarcodeUnitOff", "barcode-unit 0", false, true,
            Followed(kStartMethod3, {"OMR_GetBarcodeReaderUnit() = 0", "OMR_SetBarcodeReaderUnit(1) = 0"})},
        StartCase{"BarcodeUnitOn", "barcode-unit 1", false, true,
                  Followed(kStartMethod3, {"OMR_GetBarcodeReaderUnit() = 1"})}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SekonicUsbStart, AsksForTheBackOnlyWithBothSwitchesAndForBarcodesOnlyWhereSomeAreDefined) {
  for (const auto& [duplex, form] : {std::pair(true, false), std::pair(false, true)}) {
    UsbBench bench("barcode-unit 0");
    bench.reader->SetDuplex(duplex);
    bench.reader->SetDuplexForm(form);
    bench.reader->SetBarcode(true);
    EXPECT_TRUE(bench.reader->StartReader());
    EXPECT_EQ(bench.NewCalls(), kStartMethod3);
  }
  UsbBench bench("barcode-unit 0");
  bench.WantBarcode(1, 10, 5);
  bench.reader->SetBarcode(false);
  bench.reader->SetDuplexForm(false);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_EQ(bench.NewCalls(), kStartMethod3);
}

const std::string kCannotRead = "An error occurred trying to initialize the scanner settings. Cannot read ";

TEST(SekonicUsbStart, EveryStepThatFailsIsShownInItsWordsAndEndsTheStart) {
  const struct {
    const char* script;
    std::string text;
    const char* lastCall;
  } cases[] = {
      {"answer OMR_OpenDeviceUSB 1 5",
       "An error occurred opening the USB port. Make sure your cable is plugged in and the scanner has "
       "power.",
       "OMR_GetLastError() = 0"},
      {"answer OMR_GetReadingMethod 1 5", kCannotRead + "(GetReadingMethod).", "OMR_GetReadingMethod() = 5"},
      {"reading-method 1 4\nanswer OMR_SetReadingMethod 1 -1", kCannotRead + "(SetReadingMethod).",
       "OMR_SetReadingMethod(3, 4) = -1"},
      {"columns 0\nanswer OMR_SetNumberOfColumnsToRead 1 1", kCannotRead + "(SetNumberOfColumnsToRead).",
       "OMR_SetNumberOfColumnsToRead(48) = 1"},
      {"answer OMR_GetSheetFeedMode 1 1", kCannotRead + "(GetSheetFeedMode).", "OMR_GetSheetFeedMode() = 1"},
      {"feed-mode 1 1\nanswer OMR_SetSheetFeedMode 1 1", kCannotRead + "(SetSheetFeedMode).",
       "OMR_SetSheetFeedMode(0, 0) = 1"},
  };
  for (const auto& c : cases) {
    UsbBench bench(c.script);
    EXPECT_FALSE(bench.reader->StartReader()) << c.script;
    EXPECT_TRUE(bench.reader->CancelScan()) << c.script;
    EXPECT_THAT(bench.host.messages, ElementsAre(RecordingHost::Message{"Initialization Error", c.text}));
    EXPECT_EQ(bench.NewCalls().back(), c.lastCall);
  }
}

TEST(SekonicUsbStart, ABarcodeUnitThatCannotBeSwitchedIsShownButSheetsAreRead) {
  UsbBench bench("sheets 1 20 1\nbarcode-unit 0\nanswer OMR_SetBarcodeReaderUnit 1 3");
  bench.WantBarcode(1, 10, 5);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_THAT(bench.host.messages, ElementsAre(RecordingHost::Message{
                                       "Initialization Error", kCannotRead + "(SetBarcodeReaderUnit)."}));
  EXPECT_TRUE(bench.reader->ReadPage());
  EXPECT_EQ(bench.reader->BarcodeTexts(), BarcodeArray(1)) << "a unit that is off reads nothing";
}

TEST(SekonicUsbStart, AStartAfterAFailedOneBeginsAfresh) {
  UsbBench bench("answer OMR_GetSheetFeedMode 1 1");
  EXPECT_FALSE(bench.reader->StartReader());
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_THAT(bench.scanner->Complaints(), IsEmpty());
}

class NothingToLoad : public OmrLibraryLoader {
 public:
  std::shared_ptr<OmrLibrary> Load() override { return nullptr; }
};

TEST(SekonicUsbStart, AMissingLibraryIsShownWithWhereToGetIt) {
  RecordingHost host;
  const auto time = std::make_shared<VirtualTime>();
  const auto reader = CreateReader(ReaderParts{.serial = std::make_shared<BenchSerial>(time, nullptr),
                                               .loop = time,
                                               .clock = time,
                                               .omrLoader = std::make_shared<NothingToLoad>()});
  std::int32_t count = 0;
  reader->SetReaderType(teskReaderTypeSekonicSR1800);
  EXPECT_FALSE(reader->ReadBatch(false, 1, count));
  EXPECT_THAT(
      host.messages,
      ElementsAre(RecordingHost::Message{
          "Sekonic File Missing",
          "Please obtain the OMRAPI.DLL file from your Sekonic scanner installation CD-ROM, close "
          "Quillon and then copy the DLL to your Windows\\System32 directory.|If you don't have access "
          "to the installation media, please contact Sekonic or the Sekonic reseller from whom you "
          "purchased the scanner to obtain the DLL. Once the DLL is in place, try running Quillon "
          "again."}));
  EXPECT_THAT(host.errors, IsEmpty());
}

TEST(SekonicUsbStart, AnEngineThatGoesOrChangesItsTypeClosesTheScannerOnceAndOnlyWhereItIsOpen) {
  const std::pair<const char*, std::function<void(UsbBench&)>> cases[] = {
      {"goes", [](UsbBench& b) { b.reader->RemoveEvents(b.events), b.reader = nullptr; }},
      {"changes within the family",
       [](UsbBench& b) { b.reader->SetReaderType(teskReaderTypeSekonicSR1800); }},
      {"changes", [](UsbBench& b) { b.reader->LoadDefaults(teskReaderTypePDIVMR138); }},
      {"ends", [](UsbBench& b) { b.reader->EndReader(), b.reader->SetReaderType(teskReaderTypeNone); }},
  };
  for (const auto& [what, act] : cases) {
    UsbBench bench("");
    EXPECT_TRUE(bench.reader->StartReader());
    bench.reader->SetReaderType(teskReaderTypeSekonicSR3500);
    bench.NewCalls();
    act(bench);
    EXPECT_THAT(bench.NewCalls(), ElementsAre("OMR_CloseDevice() = 0")) << what;
    EXPECT_THAT(bench.scanner->Complaints(), IsEmpty()) << what;
  }
  UsbBench closed("answer OMR_OpenDeviceUSB 1 5");
  EXPECT_FALSE(closed.reader->StartReader());
  closed.NewCalls();
  closed.reader->SetReaderType(teskReaderTypeNone);
  EXPECT_THAT(closed.NewCalls(), IsEmpty());
}

TEST(SekonicUsbStart, EndingReleasesTheLibraryAndTellsARefusedClose) {
  UsbBench bench("answer OMR_CloseDevice 1 4");
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_FALSE(bench.reader->EndReader());
  EXPECT_EQ(bench.reader->Omr(), nullptr);
  bench.NewCalls();
  EXPECT_TRUE(bench.reader->EndReader());
  EXPECT_THAT(bench.NewCalls(), IsEmpty()) << "there was nothing left to close";
}

// ---- Reading

// The sheet as the arrays must have it: 200 x 48, what the sheet does not have all 0.
SideArray OnGrid(const SideArray& side) {
  SideArray grid(200, 48);
  for (std::int32_t row = 1; row <= side.Rows(); ++row) {
    for (std::int32_t column = 1; column <= side.Columns(); ++column) {
      grid.At(row, column) = side.At(row, column);
    }
  }
  return grid;
}

TEST(SekonicUsbRead, TwoSidesWithBarcodesReachTheHostAsTheyAreOnPaper) {
  const std::string script = "sheets 3 60 7 two-sided\nbarcode 2 4711\nno-barcodes 3";
  const auto sheets = DeviceOf(script).sheets;
  UsbBench bench(script);
  bench.reader->SetDuplex(true);
  bench.reader->SetDuplexForm(true);
  bench.WantBarcode(1, 30, 12);
  std::int32_t count = 0;
  EXPECT_TRUE(bench.reader->ReadBatch(false, 3, count));
  ASSERT_THAT(bench.events.side1, SizeIs(3));
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(bench.events.side1[i], OnGrid(sheets[i].side1)) << i;
    EXPECT_EQ(bench.events.side2[i], OnGrid(sheets[i].side2)) << i;
  }
  EXPECT_EQ(bench.events.barcodes[1], BarcodeArray({sheets[1].barcodes[0], "4711"}));
  EXPECT_EQ(bench.events.barcodes[2], BarcodeArray(1));
  EXPECT_EQ(bench.reader->Side1TimingMarks(), 60);
  EXPECT_EQ(bench.reader->Side2TimingMarks(), 60);
  EXPECT_THAT(bench.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(bench.host.messages, IsEmpty());
}

TEST(SekonicUsbRead, OneSideNeverAsksForTheBackAndLeavesItsCount) {
  UsbBench bench("sheets 1 200 7 two-sided");
  bench.reader->SetDuplexForm(false);
  EXPECT_TRUE(bench.reader->StartReader());
  bench.NewCalls();
  EXPECT_TRUE(bench.reader->ReadPage());
  EXPECT_THAT(bench.NewCalls(),
              ElementsAre("OMR_GetNumberOfColumnsToRead() = 48", "OMR_FeedSheet() = 0 [sheet 1]",
                          "OMR_GetLastError() = 0", "OMR_GetMarks(0, 200) = 1 [200]"));
  EXPECT_EQ(bench.reader->Side1TimingMarks(), 200);
  EXPECT_EQ(bench.reader->Side2TimingMarks(), -1);
  EXPECT_EQ(bench.reader->Side2Array(), SideArray(200, 48));
}

TEST(SekonicUsbRead, MarkBytesAreNeitherScaledNorSigned) {
  UsbBench bench("");
  UsbDevice device;
  device.sheets.resize(1);
  device.sheets[0].side1 = SideArray(2, 48);
  device.sheets[0].side1.At(1, 1) = 1;
  device.sheets[0].side1.At(1, 48) = 255;
  device.sheets[0].side1.At(2, 1) = 128;
  bench.scanner = std::make_shared<SekonicUsb>(std::move(device));
  bench.reader = nullptr;
  bench.reader = CreateReader(ReaderParts{.serial = std::make_shared<BenchSerial>(bench.time, nullptr),
                                          .loop = bench.time,
                                          .clock = bench.time,
                                          .omrLoader = std::make_shared<cli::SimulatedOmr>(bench.scanner)});
  bench.reader->SetReaderType(teskReaderTypeSekonicSR6500);
  bench.reader->SetRecognitionThreshold(200);
  EXPECT_TRUE(bench.reader->StartReader() && bench.reader->ReadPage());
  EXPECT_EQ(bench.reader->Side1Array().At(1, 1), 1);
  EXPECT_EQ(bench.reader->Side1Array().At(1, 48), 255);
  EXPECT_EQ(bench.reader->Side1Array().At(2, 1), 128);
  EXPECT_EQ(bench.reader->Side1Array().At(2, 2), 0);
}

TEST(SekonicUsbRead, ASmallerColumnCountLaysTheRowsOutAsTheLibraryDoes) {
  for (const std::int32_t columns : {1, 40, 47}) {
    const std::string script = "sheets 1 30 7 two-sided";
    UsbBench bench(script);
    bench.reader->SetDuplex(true);
    bench.reader->SetDuplexForm(true);
    EXPECT_TRUE(bench.reader->StartReader());
    bench.scanner->SetNumberOfColumnsToRead(columns);
    EXPECT_TRUE(bench.reader->ReadPage());
    const auto sheet = DeviceOf(script).sheets[0];
    for (const auto& [read, paper] : {std::pair(bench.reader->Side1Array(), OnGrid(sheet.side1)),
                                      std::pair(bench.reader->Side2Array(), OnGrid(sheet.side2))}) {
      for (std::int32_t row = 1; row <= 200; ++row) {
        for (std::int32_t column = 1; column <= 48; ++column) {
          ASSERT_EQ(read.At(row, column), column <= columns ? paper.At(row, column) : 0) << row << column;
        }
      }
    }
    EXPECT_EQ(bench.reader->Side1TimingMarks(), 30);
  }
}

TEST(SekonicUsbRead, TimingLineErrorsAreToleratedAndTheSheetIsRead) {
  for (const char* code : {"41120003", "42120003", "40120003"}) {
    UsbBench bench("sheets 1 30 1\nfeed 1 " + std::string(code));
    EXPECT_TRUE(bench.reader->StartReader() && bench.reader->ReadPage()) << code;
    EXPECT_EQ(bench.reader->Side1TimingMarks(), 30) << code;
    EXPECT_THAT(bench.host.errors, IsEmpty()) << code;
  }
}

TEST(SekonicUsbRead, NothingReadEndsTheReadInSilence) {
  UsbBench bench("");
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_FALSE(bench.reader->ReadPage());
  EXPECT_TRUE(bench.reader->CancelScan());
  EXPECT_TRUE(bench.Untouched());
  EXPECT_THAT(bench.host.messages, IsEmpty());
  EXPECT_THAT(bench.host.errors, IsEmpty());
}

TEST(SekonicUsbRead, ACancelWhileMessagesRunFeedsNoSheet) {
  UsbBench bench("sheets 1 30 1");
  bench.time->onMessages = [&](int) { bench.reader->SetCancelScan(true); };
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_FALSE(bench.reader->ReadPage());
  EXPECT_FALSE(Called(bench.NewCalls(), "OMR_FeedSheet"));
  EXPECT_THAT(bench.host.messages, IsEmpty());
}

// ---- The scanner's errors

struct ErrorCase {
  std::uint32_t code;
  std::string number;  // as hosts show it
  std::string text;
};

std::vector<ErrorCase> ErrorCases() {
  std::ifstream file(TESKREAD_TEST_DATA "/sekonic_usb_errors.tsv");
  std::vector<ErrorCase> cases;
  std::string code;
  for (ErrorCase c;
       std::getline(file, code, '\t') && std::getline(file, c.number, '\t') && std::getline(file, c.text);) {
    c.code = static_cast<std::uint32_t>(std::stoul(code, nullptr, 16));
    cases.push_back(c);
  }
  return cases;
}

TEST(SekonicUsbErrors, EveryCodeOfTheFeedIsReportedInItsExactWords) {
  const auto cases = ErrorCases();
  ASSERT_THAT(cases, SizeIs(30));
  for (const ErrorCase& c : cases) {
    UsbBench bench("sheets 1 30 1\nfeed 1 " + HexText(c.code));
    EXPECT_TRUE(bench.reader->StartReader());
    // Those of the timing line never end a read; they are asked for by themselves.
    if ((c.code & 0xF0FFFFFF) == 0x40120003) {
      basSekonicSR::ReturnErrorSR(static_cast<std::int32_t>(c.code));
    } else {
      EXPECT_FALSE(bench.reader->ReadPage()) << c.text;
      EXPECT_TRUE(bench.Untouched()) << c.text;
    }
    ASSERT_THAT(bench.host.errors, SizeIs(1)) << c.text;
    EXPECT_EQ(bench.host.errors[0].message, c.text);
    EXPECT_EQ(NumberText(bench.host.errors[0].number), c.number);
    EXPECT_EQ(bench.host.errors[0].title, "Sekonic SR Error");
    EXPECT_EQ(bench.host.errors[0].source, "Quillon Reader - basSekonicSR.ReturnErrorSR");
    EXPECT_EQ(bench.host.errors[0].detail.size(), 8U);
  }
}

// ---- Stackers and imprint

TEST(SekonicUsbDisposal, TheStackerFollowsTheRejecterAndThePendingCancel) {
  const struct {
    bool reject;
    bool rejecter;
    bool cancel;
    const char* call;
  } cases[] = {
      {true, true, true, "OMR_EjectSheet(4) = 0"},   {true, true, false, "OMR_EjectSheet(2) = 0"},
      {true, false, true, "OMR_EjectSheet(3) = 0"},  {true, false, false, "OMR_EjectSheet(1) = 0"},
      {false, true, true, "OMR_EjectSheet(1) = 0"},  {false, true, false, "OMR_EjectSheet(3) = 0"},
      {false, false, true, "OMR_EjectSheet(1) = 0"}, {false, false, false, "OMR_EjectSheet(3) = 0"},
  };
  for (const auto& c : cases) {
    UsbBench bench("sheets 1 30 1");
    bench.reader->SetRejecter(c.rejecter);
    EXPECT_TRUE(bench.reader->StartReader() && bench.reader->ReadPage());
    bench.reader->SetCancelScan(c.cancel);
    bench.NewCalls();
    c.reject ? bench.reader->RejectPage() : bench.reader->EjectPage();
    EXPECT_THAT(bench.NewCalls(), ElementsAre(c.call));
    // An ejected sheet counts as disposed of only while a cancel is pending.
    bench.reader->EjectPage();
    EXPECT_THAT(bench.NewCalls(), SizeIs(c.reject || c.cancel ? 0 : 1)) << c.call;
  }
}

TEST(SekonicUsbDisposal, AStackerThatRefusesIsReportedWithTheScannersError) {
  UsbBench bench("sheets 1 30 1\nanswer OMR_EjectSheet 1 1\nanswer OMR_GetLastError 2 889782274");
  EXPECT_TRUE(bench.reader->StartReader() && bench.reader->ReadPage());
  bench.reader->EjectPage();
  ASSERT_THAT(bench.host.errors, SizeIs(1));
  EXPECT_EQ(bench.host.errors[0].number, 35090002);
}

UsbBench& WithImprint(UsbBench& bench) {
  auto& printer = *bench.reader->Printer();
  printer.SetEnabled(true);
  printer.SetActive(true);
  printer.SetBuffer1("R\xC3\xA4um\te 7");
  printer.SetBuffer3(std::string(40, 'x') + "\xE2\x82\xACy");
  printer.SetDistance(20);
  return bench;
}

TEST(SekonicUsbPrint, HandsOverThreeLinesInTheCodePageCutToWhatTheImprinterTakes) {
  UsbBench bench("sheets 1 30 1");
  WithImprint(bench);
  EXPECT_TRUE(bench.reader->StartReader());
  EXPECT_TRUE(bench.reader->ReadPage(true));
  const Calls calls = bench.NewCalls();
  const Calls printing(calls.end() - 5, calls.end());
  EXPECT_THAT(printing,
              ElementsAre("OMR_SetPrintOrder(1, 2, 3) = 1", "OMR_SetPrintPosition(20) = 1",
                          "OMR_SetPrintString(1, \"R<E4>um e 7\") = 1", "OMR_SetPrintString(2, \"\") = 1",
                          "OMR_SetPrintString(3, \"" + std::string(40, 'x') + "?\") = 1"));
  EXPECT_EQ(bench.events.names.back(), "AfterSheet");
  EXPECT_THAT(bench.events.names, ::testing::Contains("AfterPrint"));
  EXPECT_THAT(bench.scanner->Complaints(), IsEmpty());
}

TEST(SekonicUsbPrint, AFailedCallLeavesOutWhatFollowsAndIsShown) {
  const std::pair<const char*, std::size_t> cases[] = {{"answer OMR_SetPrintOrder 1 0", 1},
                                                       {"answer OMR_SetPrintPosition 1 0", 2},
                                                       {"answer OMR_SetPrintString 1 0", 3},
                                                       {"answer OMR_SetPrintString 2 0", 4},
                                                       {"answer OMR_SetPrintString 3 0", 5}};
  for (const auto& [fault, calls] : cases) {
    UsbBench bench(std::string("sheets 1 30 1\n") + fault);
    WithImprint(bench);
    EXPECT_TRUE(bench.reader->StartReader());
    EXPECT_TRUE(bench.reader->ReadPage(true));
    EXPECT_EQ(std::ranges::count_if(bench.scanner->Calls(),
                                    [](const std::string& call) { return call.starts_with("OMR_SetPrint"); }),
              static_cast<std::ptrdiff_t>(calls))
        << fault;
    EXPECT_THAT(bench.host.messages, SizeIs(1)) << fault;
    EXPECT_THAT(bench.events.names, ::testing::Not(::testing::Contains("AfterPrint"))) << fault;
  }
}

// ---- Barcodes

TEST(SekonicUsbBarcodes, TheAreaHoldsEveryDefinedBarcodeAndIsSetForEachSheet) {
  UsbBench bench("sheets 2 30 1");
  bench.WantBarcode(1, 40, 10);
  bench.WantBarcode(1, 20, 5);
  EXPECT_TRUE(bench.reader->StartReader());
  bench.NewCalls();
  EXPECT_TRUE(bench.reader->ReadPage());
  const Calls first = bench.NewCalls();
  EXPECT_EQ(Calls(first.begin(), first.begin() + 5),
            Calls({"OMR_SetBarCodeArea(0, 20, 30, 1) = 1", "OMR_SetBarCodeReadType(23) = 0",
                   "OMR_SetBarCodeCheckDigit(97, 0) = 0", "OMR_SetBarCodeCheckDigit(98, 0) = 0",
                   "OMR_SetBarCodeCheckDigit(99, 0) = 0"}));
  bench.WantBarcode(2, -7, -3, teskBarcodeOrientationHorizontal);
  EXPECT_TRUE(bench.reader->ReadPage());
  EXPECT_EQ(bench.NewCalls().front(), "OMR_SetBarCodeArea(2, -7, 57, 0) = 1");
}

TEST(SekonicUsbBarcodes, AScannerWithoutAUnitReadsItsSheetsWithoutThem) {
  UsbBench bench("sheets 1 30 1\nbarcode-unit -1");
  bench.WantBarcode(1, 40, 10);
  EXPECT_TRUE(bench.reader->StartReader() && bench.reader->ReadPage());
  EXPECT_FALSE(Called(bench.scanner->Calls(), "OMR_SetBarCodeReadType"));
  EXPECT_EQ(bench.reader->BarcodeTexts(), BarcodeArray(1));
  EXPECT_THAT(bench.host.messages, IsEmpty());
}

TEST(SekonicUsbBarcodes, OneThatCannotBeReadKeepsItsPlace) {
  UsbBench bench(
      "sheets 1 30 1\nno-barcodes 1\nbarcode 1 A\nbarcode 1 B\nbarcode 1 \xC4\n"
      "answer OMR_GetBarcodeData 2 1");
  bench.WantBarcode(1, 40, 10);
  EXPECT_TRUE(bench.reader->StartReader() && bench.reader->ReadPage());
  EXPECT_EQ(bench.reader->BarcodeTexts(), BarcodeArray({"A", "", "\xC3\x84"}));
}

// ---- A library that is not to be believed

TEST(SekonicUsbHostile, NothingOfASheetIsTakenFromALibraryThatCannotBeRight) {
  const std::pair<const char*, const char*> cases[] = {
      {"report OMR_GetMarks 1 201", "Rows: 201"},
      {"report OMR_GetMarks 1 -1", "Rows: -1"},
      {"report OMR_GetMarks 2 2147483647", "Rows: 2147483647"},
      {"overrun OMR_GetMarks 1", "It wrote beyond the memory that it was given."},
      {"overrun OMR_GetMarks 2", "It wrote beyond the memory that it was given."},
      {"answer OMR_GetNumberOfColumnsToRead 2 49", "Columns: 49"},
      {"answer OMR_GetNumberOfColumnsToRead 2 0", "Columns: 0"},
      {"answer OMR_GetNumberOfColumnsToRead 2 -2147483648", "Columns: -2147483648"},
      {"answer OMR_GetNumberOfColumnsToRead 2 2147483647", "Columns: 2147483647"},
      {"report OMR_GetBarcodeInfo 1 -1", "Barcodes: -1"},
      {"report OMR_GetBarcodeInfo 1 2147483647", "Barcodes: 2147483647"},
      {"report OMR_GetBarcodeData 1 256", "Barcode length: 256"},
      {"report OMR_GetBarcodeData 1 -5", "Barcode length: -5"},
      {"unterminated OMR_GetBarcodeData 1", "A barcode text has no end."},
      {"overrun OMR_GetBarcodeData 1", "It wrote beyond the memory that it was given."},
  };
  for (const auto& [fault, what] : cases) {
    UsbBench bench(std::string("sheets 1 200 1 two-sided\n") + fault);
    bench.reader->SetDuplex(true);
    bench.reader->SetDuplexForm(true);
    bench.WantBarcode(1, 40, 10);
    EXPECT_TRUE(bench.reader->StartReader()) << fault;
    EXPECT_FALSE(bench.reader->ReadPage()) << fault;
    EXPECT_TRUE(bench.Untouched()) << fault;
    EXPECT_EQ(bench.reader->BarcodeTexts(), BarcodeArray(1)) << fault;
    ASSERT_THAT(bench.host.messages, SizeIs(1)) << fault;
    EXPECT_EQ(bench.host.messages[0].title, "Read Error");
    EXPECT_EQ(bench.host.messages[0].text,
              "The Sekonic library OMRAPI.DLL returned data that cannot be right. The page cannot be read.|" +
                  std::string(what));
    EXPECT_EQ(Called(bench.scanner->Calls(), "OMR_FeedSheet"), !std::string(what).starts_with("Columns"))
        << "a sheet is fed only where its data will have room";
  }
}

TEST(SekonicUsbHostile, MarksThatCannotBeGotAreShownForTheirSide) {
  for (const auto& [number, side] : {std::pair(1, "front"), std::pair(2, "back")}) {
    UsbBench bench("sheets 1 20 1 two-sided\nanswer OMR_GetMarks " + std::to_string(number) + " 0");
    bench.reader->SetDuplex(true);
    bench.reader->SetDuplexForm(true);
    EXPECT_TRUE(bench.reader->StartReader());
    EXPECT_FALSE(bench.reader->ReadPage());
    EXPECT_TRUE(bench.Untouched());
    EXPECT_THAT(bench.host.messages, ElementsAre(RecordingHost::Message{
                                         "Read Error",
                                         "An error occurred trying to get the data from "
                                         "the " +
                                             std::string(side) + " side of the form. Cannot read."}));
  }
}

TEST(SekonicUsbHostile, GarbageFromAnyFunctionNeitherHangsNorHarms) {
  const char* functions[] = {
      "OMR_OpenDeviceUSB",     "OMR_CloseDevice",        "OMR_GetLastError",
      "OMR_GetReadingMethod",  "OMR_SetReadingMethod",   "OMR_GetNumberOfColumnsToRead",
      "OMR_SetBackSensorUnit", "OMR_GetSheetFeedMode",   "OMR_GetBarcodeReaderUnit",
      "OMR_SetBarCodeArea",    "OMR_SetBarCodeReadType", "OMR_SetBarCodeCheckDigit",
      "OMR_FeedSheet",         "OMR_GetMarks",           "OMR_GetBarcodeInfo",
      "OMR_GetBarcodeData",    "OMR_EjectSheet"};
  for (const char* function : functions) {
    for (const char* value : {"-2147483648", "-1", "1", "2147483647", "1515870810"}) {
      UsbBench bench(std::string("sheets 2 20 1\nreading-method 1 1\nanswer ") + function + " 1 " + value);
      bench.WantBarcode(1, 40, 10);
      std::int32_t count = 0;
      bench.reader->ReadBatch(false, 2, count);
      EXPECT_LE(count, 2) << function << value;
      EXPECT_EQ(bench.reader->Omr(), nullptr) << function << value;
    }
  }
}

// ---- The script of a simulated scanner

TEST(SekonicUsbScript, RefusesWhatItDoesNotUnderstandNamingTheLine) {
  for (const std::string line :
       {"sheet 1", "sheets", "sheets 1 2", "sheets -1 10 1", "sheets 1 10 1 three-sided", "sheets 1 1001 1",
        "barcode 2 X", "barcode 0 X", "no-barcodes 7", "columns x", "feed 1 4011000G", "answer GetMarks 1 0",
        "answer OMR_GetMarks 1", "overrun OMR_GetMarks", "overrun OMR_GetMarks 1 2", "feed-mode 1"}) {
    const auto parsed = simulator::ParseUsbDevice("# two lines\nsheets 1 10 1\n" + line + "\n");
    EXPECT_FALSE(parsed.device.has_value()) << line;
    EXPECT_EQ(parsed.error, "line 3: \"" + line + "\" is no statement");
  }
}

}  // namespace
}  // namespace tesk::test
