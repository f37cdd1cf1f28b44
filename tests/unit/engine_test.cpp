// The reading cycle, the batch, disposal and error reporting of the engine, with a driver that only plays a part.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/settings.h"
#include "tests/support/EngineBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What hosts set and ask, on a reader that nothing was done to.
class FreshEngine : public ::testing::Test {
 protected:
  EngineBench bench;
  RecordingHost& host = bench.host;
  std::shared_ptr<clsTeskReader> reader = bench.NewReader();
};

TEST_F(FreshEngine, HasNothingSetButCancelScan) {
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

TEST(Engine, RaisesEventsAndCallsTheDriverInTheirOrder) {
  Play({{"r", "", "Before r--1 cancelled"},
        {"sr", "", "init s+ Before feed1 Pre1 Read1 After1 r+1"},
        {"sap", "", "init s+ Before+ feed1 Pre1 Read1 After1 p+1"},
        {"sp", "", "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print AfterPrint1 After1 p+1"},
        {"sr", "Before:!", "init s+ Before feed1 Pre1 Read1 After1 r+1"},
        {"sp", "Pre1:!", "init s+ Before+ feed1 Pre1 After1 p+1"},
        {"sp", "BeforePrint1:!",
         "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print(skip) AfterPrint1 After1 p+1"},
        {"sp", "BeforePrint1:a",
         "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print(skip) AfterPrint1 After1 p+1"},
        {"sp", "print:!", "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print After1 p+1"}});
}

TEST(Engine, DisposesOfASheetOnce) {
  Play({{"srjejree", "",
         "init s+ Before feed1 Pre1 Read1 After1 r+1 reject Before feed2 Pre2 Read2 After2 r+2 eject"},
        {"sreee", "eject:!", "init s+ Before feed1 Pre1 Read1 After1 r+1 eject eject"},
        {"spe", "BeforePrint1:! print(skip):!",
         "init s+ Before+ feed1 Pre1 Read1 BeforePrint1 print(skip) After1 p+1"}});
}

TEST(Engine, AfterSheetsAnswerBecomesCancelScanUnlessItIsLeftAsItWas) {
  Play({{"sr", "Read1:c After1:!", "init s+ Before feed1 Pre1 Read1 After1 r+1"},
        {"sr", "After1:!", "init s+ Before feed1 Pre1 Read1 After1 r+1 cancelled"},
        {"sr", "After1:c", "init s+ Before feed1 Pre1 Read1 After1 r+1 cancelled"}});
}

TEST(Engine, BatchesCountAndDisposeAsHostsExpect) {
  Play({{"b", "init:!", "init close b-0 cancelled"},
        {"b0", "", "init close b+0"},
        {"b", "feed2:!", "init Before feed1 Pre1 Read1 After1 Before feed2 close b+2 cancelled"},
        {"b2", "",
         "init Before feed1 Pre1 Read1 After1 Before feed2 Pre2 Read2 After2 eject close b+2 cancelled"},
        {"b1", "After1:e", "init Before feed1 Pre1 Read1 After1 eject close b+1 cancelled"},
        {"B1", "",
         "init Before+ feed1 Pre1 Read1 BeforePrint1 print AfterPrint1 After1 eject close B+1 cancelled"},
        {"2b3", "", "init Before feed1 Pre1 Read1 After1 eject close b+3 cancelled"},
        {"7b3", "", "init close b+7"},
        {"b4", "After2:3",
         "init Before feed1 Pre1 Read1 After1 Before feed2 Pre2 Read2 After2 Before feed3 Pre3 Read3 After3 "
         "eject close b+4 cancelled"},
        {"b6", "Before:4",
         "init Before feed1 Pre1 Read1 After1 Before feed2 Pre2 Read2 After2 eject close b+6 cancelled"},
        {"b", "After1:c", "init Before feed1 Pre1 Read1 After1 eject close b+1 cancelled"},
        {"nb", "", "init error91 close b+1 cancelled"},
        {"mb", "", "init Before feed1 Pre1 Read1 After1 error6 close b-2147483647 cancelled"}});
}

TEST(Engine, GivesReadSheetWhatPreprocessSheetChanges) {
  EngineBench bench;
  RecordingEvents events;
  bench.reader->RemoveEvents(bench);
  bench.reader->AddEvents(events);
  events.onPreprocess = [](SideArray& side1, SideArray& side2, BarcodeArray& texts, bool&) {
    side1.At(1, 1) = 42;
    side2 = SideArray(2, 3);
    texts = {"a", "b"};
  };
  EXPECT_EQ(bench.Do("sr"), "init s+ feed1 r+1");
  EXPECT_EQ(MarksText(events.side1.at(0)) + MarksText(events.side2.at(0)), "[1x1 1,1=42][2x3]");
  EXPECT_EQ(MarksText(bench.reader->Side1Array()), "[1x1 1,1=42]");
  EXPECT_THAT(events.barcodes.at(0), ElementsAre("a", "b"));
}

TEST_F(FreshEngine, WhatASheetDoesNotSayStaysAsTheOneBeforeHadIt) {
  const auto shown = [&] {
    return reader->Side1Image() + reader->Side2Image() + reader->Side1Coordinates() +
           reader->Side2Coordinates() + NumberText(reader->Side1TimingMarks()) +
           NumberText(reader->Side2TimingMarks());
  };
  Sheet first;
  first.side1TimingMarks = 3, first.side2TimingMarks = 4, first.side1Image = "a", first.side2Image = "b";
  first.side1Coordinates = "c", first.side2Coordinates = "d";
  for (const Sheet& sheet : {first, Sheet{}}) {
    reader->StoreSheet(sheet);
    EXPECT_EQ(shown(), "abcd34");
  }
}

TEST_F(FreshEngine, EndReaderReleasesTheAnswerKey) {
  struct Key : HostObject {};
  auto key = std::make_shared<Key>();
  const std::weak_ptr<Key> watch = key;
  reader->SetAnswerKey(std::move(key));
  EXPECT_TRUE(reader->EndReader());
  EXPECT_TRUE(watch.expired());
}

TEST_F(FreshEngine, GeometryMaximumIgnoresElementZero) {
  reader->SetSide1Rows(Int16Array({9, 3, 7}, 0));
  EXPECT_EQ(reader->Side1RowExtent(), 7);
  EXPECT_EQ(reader->Side1Rows().At(0), 9);
  reader->SetSide1Rows(Int16Array({-5, -2}, 1));
  EXPECT_EQ(reader->Side1RowExtent(), 0);
  EXPECT_THROW(static_cast<void>(reader->Side1Rows().At(3)), RunTimeError);
}

TEST_F(FreshEngine, ColorDepthTakesOnlyItsMembers) {
  for (const auto& [given, stored] : {std::pair{1, 1}, {2, 2}, {3, 0}, {5, 0}, {-1, 0}, {0, 0}}) {
    reader->SetColorDepth(static_cast<teskReaderColorDepth>(given));
    EXPECT_EQ(reader->ColorDepth(), stored) << given;
  }
}

TEST_F(FreshEngine, ReportsAHelpTopicOfAnUnknownIndexAndDefaultsOfATypeWithoutAProfile) {
  reader->SetHelpID(teskReaderHelpIDProperties, 1200);
  EXPECT_EQ(reader->HelpID(teskReaderHelpIDProperties), 1200);
  reader->SetHelpID(static_cast<teskReaderHelpID>(7), 1);
  EXPECT_EQ(reader->HelpID(static_cast<teskReaderHelpID>(-1)), 0);
  EXPECT_FALSE(reader->LoadDefaults(teskReaderTypeDatawinHemeraC));
  EXPECT_EQ(reader->ReaderType(), teskReaderTypeDatawinHemeraC);
  EXPECT_THAT(host.Sources(),
              ElementsAre("clsTeskReader.HelpID", "clsTeskReader.HelpID", "clsTeskReader.LoadDefaults"));
}

// What a profile proposes is the catalogue's business; that all of it arrives, and nothing else changes, is ours.
TEST_F(FreshEngine, DefaultsTakeWhatTheProfileProposesAndLeaveTheHostsOwn) {
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

TEST_F(FreshEngine, ReportWithoutAHostObjectNamesNumberPlaceAndMessage) {
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

TEST_F(FreshEngine, SilentReportRestoresTheHostsSilence) {
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
