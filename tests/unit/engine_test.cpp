// The reading cycle, the batch, disposal and error reporting of the engine, with a dispatch that only records
// what it is asked.
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/settings.h"
#include "tests/support/EngineBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(EngineTest, FreshEngineHasNothingSetButCancelScan) {
  for (const EngineSetting& setting : EngineSettings()) {
    const std::string text = SettingText(setting.get(*reader));
    EXPECT_TRUE(setting.name == "CancelScan" ? text == "True"
                                             : text.empty() || text == "0" || text == "False")
        << setting.name << text;
  }
  EXPECT_EQ(reader->ReaderName(), "None");
  EXPECT_EQ(reader->Side1TimingMarks(), -1);
  EXPECT_EQ(reader->Side2TimingMarks(), -1);
  EXPECT_EQ(reader->Profiles()->Count(), 46);
  EXPECT_EQ(reader->Windows()->Count() + reader->Barcodes()->Count(), 0);
  EXPECT_EQ(reader->AnswerKey(), nullptr);
}

TEST_F(EngineTest, NeverStartedReaderRaisesOnlyBeforeSheet) {
  EXPECT_FALSE(reader->ReadPage());
  EXPECT_THAT(events.names, ElementsAre("BeforeSheet"));
  EXPECT_THAT(dispatch->calls, IsEmpty());
}

struct OrderCase {
  const char* name;
  const char* does;  // what host and driver do: Printer, Initialize, Reject, CancelPrint, PrintFails
  const char* events;
  const char* calls;
};

class SheetOrder : public EngineTest, public ::testing::WithParamInterface<OrderCase> {};

TEST_P(SheetOrder, EventsAndDriverCallsKeepTheirOrder) {
  const auto does = [](const char* what) {
    return std::string(GetParam().does).find(what) != std::string::npos;
  };
  if (does("Printer")) ActivatePrinter();
  dispatch->print = !does("PrintFails");
  events.onPreprocess = [&](SideArray&, SideArray&, BarcodeArray&, bool& reject) { reject = does("Reject"); };
  events.onBeforePrint = [&](bool& cancel) { cancel = does("CancelPrint"); };
  ASSERT_TRUE(reader->StartReader());
  EXPECT_TRUE(reader->ReadPage(does("Initialize")));
  EXPECT_EQ(Joined(events.names), GetParam().events);
  EXPECT_EQ(Joined(dispatch->calls), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(
    All, SheetOrder,
    ::testing::Values(
        OrderCase{"Plain", "Initialize", "BeforeSheet PreprocessSheet ReadSheet AfterSheet", "Init Read"},
        OrderCase{"Printed", "Printer Initialize",
                  "BeforeSheet PreprocessSheet ReadSheet BeforePrint AfterPrint AfterSheet",
                  "Init Read Print"},
        OrderCase{"ImprinterNotInitialised", "Printer", "BeforeSheet PreprocessSheet ReadSheet AfterSheet",
                  "Init Read"},
        OrderCase{"RejectedByTheHost", "Printer Initialize Reject", "BeforeSheet PreprocessSheet AfterSheet",
                  "Init Read"},
        OrderCase{"PrintCancelledByTheHost", "Printer Initialize CancelPrint PrintFails",
                  "BeforeSheet PreprocessSheet ReadSheet BeforePrint AfterSheet", "Init Read Print(skip)"},
        OrderCase{"PrintFails", "Printer Initialize PrintFails",
                  "BeforeSheet PreprocessSheet ReadSheet BeforePrint AfterSheet", "Init Read Print"}),
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

TEST_F(EngineTest, WhatASheetDoesNotSayStaysAsTheOneBeforeHadIt) {
  const auto shown = [&] {
    return reader->Side1Image() + reader->Side2Image() + reader->Side1Coordinates() +
           reader->Side2Coordinates() + NumberText(reader->Side1TimingMarks()) +
           NumberText(reader->Side2TimingMarks());
  };
  reader->StoreSheet({.side1TimingMarks = 3,
                      .side2TimingMarks = 4,
                      .side1Image = "a",
                      .side2Image = "b",
                      .side1Coordinates = "c",
                      .side2Coordinates = "d"});
  EXPECT_EQ(shown(), "abcd34");
  reader->StoreSheet({});
  EXPECT_EQ(shown(), "abcd34");
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

TEST_F(EngineTest, BatchesCountAndDisposeAsHostsExpect) {
  const struct {
    const char* name;
    bool init;
    int sheets;
    std::int32_t maxSheets, startCount;
    bool hostEjects;
    std::int32_t count;
    const char* calls;
  } kCases[] = {{"start fails", false, 5, -1, 0, false, 0, "Init Close"},
                {"no sheets wanted", true, 5, 0, 0, false, 0, "Init Close"},
                {"a failed read counts", true, 1, -1, 0, false, 2, "Init Read Read Close"},
                {"the limit's last is ejected", true, 5, 2, 0, false, 2, "Init Read Read Eject Close"},
                {"what is disposed of stays so", true, 5, 1, 0, true, 1, "Init Read Eject Close"},
                {"goes on from the start", true, 5, 3, 2, false, 3, "Init Read Eject Close"},
                {"start beyond the limit", true, 5, 3, 7, false, 7, "Init Close"}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    dispatch->calls.clear();
    dispatch->init = c.init;
    dispatch->sheets = c.sheets;
    events.onAfterSheet = [&](bool&) {
      if (c.hostEjects) reader->EjectPage();
    };
    std::int32_t count = c.startCount;
    EXPECT_EQ(reader->ReadBatch(false, c.maxSheets, count), c.init);
    EXPECT_EQ(count, c.count);
    EXPECT_EQ(Joined(dispatch->calls), c.calls);
    // Only a batch that was cancelled or came to its limit leaves the scan cancelled.
    EXPECT_EQ(reader->CancelScan(), c.maxSheets != 0 && count <= std::max(c.maxSheets, 2));
  }
}

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

// What a profile proposes is the catalogue's business; that all of it arrives, and nothing else changes, is ours.
TEST_F(EngineTest, DefaultsTakeWhatTheProfileProposesAndLeaveTheHostsOwn) {
  for (const EngineSetting& setting : EngineSettings()) {
    if (setting.kind == SettingKind::Boolean) setting.set(*reader, true);
  }
  reader->SetPort(5);
  reader->SetRecognitionMode(teskRecognitionTypeWindow);
  ASSERT_TRUE(reader->LoadDefaults(teskReaderTypeScantron8000));
  std::string texts;
  for (const EngineSetting& setting : EngineSettings()) {
    texts += std::string(setting.name) + "=" + SettingText(setting.get(*reader)) + " ";
  }
  EXPECT_EQ(texts,
            "ImagingEnabled=False ReaderGrade=False Barcode=False Duplex=True Feeder=True FlowControl=0 "
            "Image=False MarkCutOff=65 MarkDiscrimination=10 Printer=False ReaderType=16 ErasureThreshold=20 "
            "RecognitionThreshold=35 RecognitionThresholdMax=99 Rejecter=False BaudRate=9600 DataBits=8 "
            "Parity=N Port=5 StopBits=2 SleepTime=50 TimeOut=10 Continuous=True Windowing=True ColorDepth=0 "
            "Resolution=200 DuplexForm=True RecognitionMode=2 CancelScan=True HelpFile= Side1Image= "
            "Side2Image= Side1Coordinates= Side2Coordinates= ");
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
