// The reading cycle, the batch, disposal and error reporting of the engine, with a dispatch that only records
// what it is asked.
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/EngineBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(EngineTest, FreshEngineHasNothingSetButCancelScan) {
  EXPECT_TRUE(reader->CancelScan());
  EXPECT_EQ(reader->ReaderType(), teskReaderTypeNone);
  EXPECT_EQ(reader->ReaderName(), "None");
  EXPECT_EQ(reader->Port(), 0);
  EXPECT_EQ(reader->SleepTime(), 0);
  EXPECT_EQ(reader->Side1TimingMarks(), -1);
  EXPECT_EQ(reader->Profiles()->Count(), 46);
  EXPECT_EQ(reader->Windows()->Count(), 0);
  EXPECT_EQ(reader->Barcodes()->Count(), 0);
  EXPECT_EQ(reader->AnswerKey(), nullptr);
}

TEST_F(EngineTest, NeverStartedReaderRaisesOnlyBeforeSheet) {
  EXPECT_FALSE(reader->ReadPage());
  EXPECT_THAT(events.names, ElementsAre("BeforeSheet"));
  EXPECT_THAT(dispatch->calls, IsEmpty());
}

struct OrderCase {
  const char* name;
  bool printerActive;
  bool initialize;
  bool hostRejects;
  bool hostCancelsPrint;
  bool printFails;
  std::vector<std::string> events;
  std::vector<std::string> calls;
};

class SheetOrder : public EngineTest, public ::testing::WithParamInterface<OrderCase> {};

TEST_P(SheetOrder, EventsAndDriverCallsKeepTheirOrder) {
  const OrderCase& c = GetParam();
  if (c.printerActive) ActivatePrinter();
  dispatch->print = !c.printFails;
  events.onPreprocess = [&](SideArray&, SideArray&, BarcodeArray&, bool& reject) { reject = c.hostRejects; };
  events.onBeforePrint = [&](bool& cancel) { cancel = c.hostCancelsPrint; };
  ASSERT_TRUE(reader->StartReader());
  EXPECT_TRUE(reader->ReadPage(c.initialize));
  EXPECT_EQ(events.names, c.events);
  EXPECT_EQ(dispatch->calls, c.calls);
}

INSTANTIATE_TEST_SUITE_P(
    All, SheetOrder,
    ::testing::Values(OrderCase{"Plain",
                                false,
                                true,
                                false,
                                false,
                                false,
                                {"BeforeSheet", "PreprocessSheet", "ReadSheet", "AfterSheet"},
                                {"Init", "Read"}},
                      OrderCase{"Printed",
                                true,
                                true,
                                false,
                                false,
                                false,
                                {"BeforeSheet", "PreprocessSheet", "ReadSheet", "BeforePrint", "AfterPrint",
                                 "AfterSheet"},
                                {"Init", "Read", "Print"}},
                      OrderCase{"ImprinterNotInitialised",
                                true,
                                false,
                                false,
                                false,
                                false,
                                {"BeforeSheet", "PreprocessSheet", "ReadSheet", "AfterSheet"},
                                {"Init", "Read"}},
                      OrderCase{"RejectedByTheHost",
                                true,
                                true,
                                true,
                                false,
                                false,
                                {"BeforeSheet", "PreprocessSheet", "AfterSheet"},
                                {"Init", "Read"}},
                      OrderCase{"PrintCancelledByTheHost",
                                true,
                                true,
                                false,
                                true,
                                true,
                                {"BeforeSheet", "PreprocessSheet", "ReadSheet", "BeforePrint", "AfterSheet"},
                                {"Init", "Read", "Print(skip)"}},
                      OrderCase{"PrintFails",
                                true,
                                true,
                                false,
                                false,
                                true,
                                {"BeforeSheet", "PreprocessSheet", "ReadSheet", "BeforePrint", "AfterSheet"},
                                {"Init", "Read", "Print"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(EngineTest, HostsChangeInBeforeSheetDoesNotReachTheImprinter) {
  ActivatePrinter();
  events.onBeforeSheet = [&](bool& initialize) {
    EXPECT_FALSE(initialize);
    initialize = true;
  };
  ASSERT_TRUE(reader->StartReader());
  EXPECT_TRUE(reader->ReadPage(false));
  EXPECT_THAT(dispatch->calls, ElementsAre("Init", "Read"));
}

TEST_F(EngineTest, WhatPreprocessSheetChangesIsWhatReadSheetGets) {
  events.onPreprocess = [](SideArray& side1, SideArray& side2, BarcodeArray& texts, bool&) {
    side1 = SideArray(2, 3);
    side1.At(2, 3) = 42;
    side2 = SideArray(1, 1);
    texts = {"a", "b"};
  };
  ASSERT_TRUE(reader->StartReader());
  ASSERT_TRUE(reader->ReadPage());
  ASSERT_EQ(events.side1.size(), 1U);
  EXPECT_EQ(events.side1[0].At(2, 3), 42);
  EXPECT_EQ(events.side2[0].Rows(), 1);
  EXPECT_THAT(events.barcodes[0], ElementsAre("a", "b"));
  EXPECT_EQ(reader->Side1Array().At(2, 3), 42);
}

TEST_F(EngineTest, AnswerOfAfterSheetBecomesCancelScanEvenWhenItClearsIt) {
  ASSERT_TRUE(reader->StartReader());
  events.onReadSheet = [&] { reader->SetCancelScan(true); };
  events.onAfterSheet = [](bool& cancel) {
    EXPECT_TRUE(cancel);
    cancel = false;
  };
  EXPECT_TRUE(reader->ReadPage());
  EXPECT_FALSE(reader->CancelScan());
}

struct BatchCase {
  const char* name;
  bool init;
  int sheets;
  std::int32_t maxSheets;
  std::int32_t startCount;
  bool hostEjects;
  bool result;
  std::int32_t count;
  std::vector<std::string> calls;
};

class Batch : public EngineTest, public ::testing::WithParamInterface<BatchCase> {};

TEST_P(Batch, CountsAndDisposesAsHostsExpect) {
  const BatchCase& c = GetParam();
  dispatch->init = c.init;
  dispatch->sheets = c.sheets;
  if (c.hostEjects) events.onAfterSheet = [&](bool&) { reader->EjectPage(); };
  std::int32_t count = c.startCount;
  EXPECT_EQ(reader->ReadBatch(false, c.maxSheets, count), c.result);
  EXPECT_EQ(count, c.count);
  EXPECT_EQ(dispatch->calls, c.calls);
  // Only a batch that was cancelled or came to its limit leaves the scan cancelled.
  EXPECT_EQ(reader->CancelScan(), c.maxSheets != 0 && count <= std::max(c.maxSheets, 2));
}

INSTANTIATE_TEST_SUITE_P(
    All, Batch,
    ::testing::Values(
        BatchCase{"StartFails", false, 5, -1, 0, false, false, 0, {"Init", "Close"}},
        BatchCase{"NoSheetsWanted", true, 5, 0, 0, false, true, 0, {"Init", "Close"}},
        BatchCase{"FailedReadCounts", true, 1, -1, 0, false, true, 2, {"Init", "Read", "Read", "Close"}},
        BatchCase{"LastSheetOfTheLimitIsEjected",
                  true,
                  5,
                  2,
                  0,
                  false,
                  true,
                  2,
                  {"Init", "Read", "Read", "Eject", "Close"}},
        BatchCase{"DisposedSheetIsNotEjectedAgain",
                  true,
                  5,
                  1,
                  0,
                  true,
                  true,
                  1,
                  {"Init", "Read", "Eject", "Close"}},
        BatchCase{
            "CountGoesOnFromTheStart", true, 5, 3, 2, false, true, 3, {"Init", "Read", "Eject", "Close"}},
        BatchCase{"StartBeyondTheLimitReadsNothing", true, 5, 3, 7, false, true, 7, {"Init", "Close"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(EngineTest, BatchEndsWhenAnErrorKeepsComingBack) {
  reader->SetPrinter(nullptr);
  std::int32_t count = 0;
  EXPECT_TRUE(reader->ReadBatch(false, -1, count));
  EXPECT_EQ(count, 1);
  EXPECT_THAT(host.Sources(), ElementsAre("clsTeskReader.ReadPage"));
  EXPECT_EQ(host.errors[0].number, 91);
}

TEST_F(EngineTest, SheetIsDisposedOfOnlyOnce) {
  ASSERT_TRUE(reader->StartReader());
  ASSERT_TRUE(reader->ReadPage());
  reader->RejectPage();
  reader->EjectPage();
  reader->RejectPage();
  EXPECT_THAT(dispatch->calls, ElementsAre("Init", "Read", "Reject"));
  ASSERT_TRUE(reader->ReadPage());
  dispatch->ejectFails = true;
  reader->EjectPage();
  reader->EjectPage();
  EXPECT_THAT(dispatch->calls, ElementsAre("Init", "Read", "Reject", "Read", "Eject", "Eject"));
}

TEST_F(EngineTest, PrintThatSendsTheSheetOnDisposesOfIt) {
  ActivatePrinter();
  dispatch->printDisposes = true;
  events.onBeforePrint = [](bool& cancel) { cancel = true; };
  ASSERT_TRUE(reader->StartReader());
  ASSERT_TRUE(reader->ReadPage(true));
  reader->EjectPage();
  EXPECT_THAT(dispatch->calls, ElementsAre("Init", "Read", "Print(skip)"));
}

TEST_F(EngineTest, EndReaderReleasesTheAnswerKey) {
  struct Key : HostObject {};
  auto key = std::make_shared<Key>();
  const std::weak_ptr<Key> watch = key;
  reader->SetAnswerKey(std::move(key));
  EXPECT_TRUE(reader->EndReader());
  EXPECT_TRUE(watch.expired());
}

TEST_F(EngineTest, BatchThatCannotCountAnyFurtherEndsTheReader) {
  std::int32_t count = std::numeric_limits<std::int32_t>::max();
  EXPECT_FALSE(reader->ReadBatch(false, -1, count));
  EXPECT_TRUE(reader->CancelScan());
  EXPECT_EQ(dispatch->calls.back(), "Close");
  EXPECT_EQ(host.errors.at(0).number, 6);
}

TEST_F(EngineTest, GeometryMaximumIgnoresElementZero) {
  reader->SetSide1Rows(Int16Array({9, 3, 7}, 0));
  EXPECT_EQ(reader->Side1RowExtent(), 7);
  EXPECT_EQ(reader->Side1Rows().At(0), 9);
  reader->SetSide1Rows(Int16Array({-5, -2}, 1));
  EXPECT_EQ(reader->Side1RowExtent(), 0);
  EXPECT_THROW(static_cast<void>(reader->Side1Rows().At(3)), RunTimeError);
}

TEST_F(EngineTest, ColorDepthTakesOnlyItsMembers) {
  for (const auto& [given, stored] : {std::pair{1, 1}, {2, 2}, {3, 0}, {5, 0}, {-1, 0}, {0, 0}}) {
    reader->SetColorDepth(static_cast<teskReaderColorDepth>(given));
    EXPECT_EQ(reader->ColorDepth(), stored) << given;
  }
}

TEST_F(EngineTest, HelpTopicOfAnUnknownIndexIsReported) {
  reader->SetHelpID(teskReaderHelpIDProperties, 1200);
  EXPECT_EQ(reader->HelpID(teskReaderHelpIDProperties), 1200);
  reader->SetHelpID(static_cast<teskReaderHelpID>(7), 1);
  EXPECT_EQ(reader->HelpID(static_cast<teskReaderHelpID>(-1)), 0);
  EXPECT_THAT(host.Sources(), ElementsAre("clsTeskReader.HelpID", "clsTeskReader.HelpID"));
}

TEST_F(EngineTest, DefaultsOfATypeWithoutAProfileAreRefusedAndReported) {
  EXPECT_FALSE(reader->LoadDefaults(teskReaderTypeDatawinHemeraC));
  EXPECT_THAT(host.Sources(), ElementsAre("clsTeskReader.LoadDefaults"));
  EXPECT_EQ(reader->ReaderType(), teskReaderTypeDatawinHemeraC);
}

TEST_F(EngineTest, DefaultsLeaveWhatIsTheHostsOwn) {
  reader->SetPort(5);
  reader->SetWindowing(true);
  reader->SetContinuous(true);
  reader->SetDuplexForm(true);
  reader->SetRecognitionMode(teskRecognitionTypeWindow);
  ASSERT_TRUE(reader->LoadDefaults(teskReaderTypeScantron8000));
  EXPECT_EQ(reader->Port(), 5);
  EXPECT_TRUE(reader->Windowing() && reader->Continuous() && reader->DuplexForm());
  EXPECT_EQ(reader->RecognitionMode(), teskRecognitionTypeWindow);
  EXPECT_EQ(reader->RecognitionThresholdMax(), 99);
  EXPECT_EQ(reader->StopBits(), 2);
  EXPECT_TRUE(reader->Duplex());
}

// ---- The error report

TEST_F(EngineTest, ReportWithoutAHostObjectNamesNumberPlaceAndMessage) {
  class Box : public MessageBox {
   public:
    void Show(const std::string& title, const std::string& text) override { shown = title + ": " + text; }
    std::string shown;
  };
  auto box = std::make_shared<Box>();
  EXPECT_FALSE(reader->SetError(nullptr));
  SetMessageBox(box);
  ReportError(ErrorReport{.line = 12, .number = 8002, .source = "basRead.ReaderInit", .message = "No port."});
  SetMessageBox(nullptr);
  EXPECT_EQ(
      box->shown,
      "Application Error: Error# 8002, Location: Quillon Reader - basRead.ReaderInit; Line: 12|No port.");
}

TEST_F(EngineTest, SilentReportRestoresTheHostsSilence) {
  for (const bool before : {false, true}) {
    host.silent = before;
    ReportError(ErrorReport{.number = 5, .source = "a.b", .message = "c"}, true);
    EXPECT_EQ(host.silent, before);
  }
  ReportError(ErrorReport{.number = 5, .source = "a.b", .message = "c"}, false);
  EXPECT_THAT(host.silentAtError, ElementsAre(true, true, true));
}

}  // namespace
}  // namespace tesk::test
