// The Sekonic serial driver against its simulated scanner: how it starts, which windows it rewrites, and how
// it imprints sheets and sends them on. Every byte that it sends counts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/SekonicBench.h"

namespace tesk::test {
namespace {

using simulator::Disposal;
using simulator::Exit;
using simulator::FaultKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Messages = std::vector<RecordingHost::Message>;

// ---- Starting

struct StartCase {
  const char* name;
  teskReaderType type;
  std::int32_t readingMode;
  void (*setUp)(SekonicBench&);
  Commands sent;
};

const StartCase kStarts[] = {
    {"Mode0", kSr601, 0, [](SekonicBench&) {}, {"CAN ", "ENQ OM", "DLE DL1"}},
    {"Mode1HasDiscrimination", kSr607, 1, [](SekonicBench&) {}, {"CAN ", "ENQ OM", "DLE DL2", "DC3 DD02"}},
    {"Mode2", kSr700351, 2, [](SekonicBench&) {}, {"CAN ", "ENQ OM", "DLE DL05"}},
    {"Mode3",
     kSr700352,
     3,
     [](SekonicBench& b) { b.reader.SetRecognitionThreshold(12); },
     {"CAN ", "ENQ OM", "DLE DL12"}},
    {"Mode10LooksLikeDiscrimination",
     kSr700352,
     10,
     [](SekonicBench&) {},
     {"CAN ", "ENQ OM", "DLE DL05", "DC3 DD02"}},
    {"RejecterAskedFor",
     kSr601,
     0,
     [](SekonicBench& b) { b.reader.SetRejecter(true); },
     {"CAN ", "ENQ OM", "ENQ O", "DLE DL1"}},
    {"FittedReplyDecidesOnDiscrimination",
     kSr700352,
     3,
     [](SekonicBench& b) { b.reader.SetRejecter(true); },
     {"CAN ", "ENQ OM", "ENQ O", "DLE DL05", "DC3 DD02"}},
    {"Sr410WithoutStx",
     kSr410,
     0,
     [](SekonicBench& b) { b.reader.SetRecognitionThreshold(8); },
     {"CAN ", "DLE T", "1", "DLE DL08"}},
    {"Sr430WithStx",
     kSr430,
     0,
     [](SekonicBench& b) { b.reader.SetRecognitionThreshold(16); },
     {"CAN ", "DLE T", "STX 2", "DLE DL16", "DC3 15"}},
    {"WindowsInTheirOrderAndOnTheirSide",
     kSr607,
     1,
     [](SekonicBench& b) {
       b.AddWindow({2, 4, 3, 2, 5, 4, 3});
       b.AddWindow({1, 1, 20, 1, 1, 48, 1});
     },
     {"CAN ", "ENQ OM", "DLE DL2", "DC3 DD02", "DLE Q", "/DLE W", "STX 040302050403112", "DLE W",
      "STX 012001014801112"}},
    {"CardReadersTakeNoWindows",
     kSr430,
     0,
     [](SekonicBench& b) {
       b.AddWindow({1, 1, 2, 1, 1, 5, 1});
     },
     {"CAN ", "DLE T", "STX 2", "DLE DL01", "DC3 15"}},
};

class SekonicStart : public ::testing::TestWithParam<StartCase> {};

TEST_P(SekonicStart, SendsExactlyTheModelsSetUp) {
  SekonicBench b(Model(GetParam().type, GetParam().readingMode), Stock());
  GetParam().setUp(b);
  EXPECT_TRUE(b.reader.StartReader());
  EXPECT_EQ(b.Sent(), GetParam().sent);
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  EXPECT_THAT(b.bench.host.messages, IsEmpty());
  b.reader.EndReader();
  EXPECT_THAT(b.Sent(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Models, SekonicStart, ::testing::ValuesIn(kStarts),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SekonicSerial, RejecterBecomesWhatTheScannerSaysItHas) {
  for (const bool fitted : {true, false}) {
    auto model = Model(kSr700351, 2);
    model.rejecter = fitted;
    SekonicBench b(model, Stock());
    b.reader.SetRejecter(true);
    EXPECT_TRUE(b.reader.StartReader());
    EXPECT_EQ(b.reader.Rejecter(), fitted);
  }
}

TEST(SekonicSerial, NegativeGapsAreRewrittenInTheHostsOwnWindowOnceAndForAll) {
  SekonicBench b(kSr601);
  b.AddWindow({1, 10, 4, -2, 20, 5, -3});
  b.AddWindow({1, 9, 1, 0, 7, 3, -1});
  for (int start = 0; start < 2; ++start) {
    EXPECT_TRUE(b.reader.StartReader());
    EXPECT_THAT(b.Sent(), ElementsAre("CAN ", "ENQ OM", "DLE DL1", "DLE Q", "DLE W", "STX 040402080503112",
                                      "DLE W", "STX 090100050301112"));
    b.reader.EndReader();
  }
  const auto window = b.reader.Windows()->Item(1);
  EXPECT_EQ(window->StartRow(), 4);
  EXPECT_EQ(window->RowGap(), 2);
  EXPECT_EQ(window->StartCol(), 8);
  EXPECT_EQ(window->ColGap(), 3);
}

TEST(SekonicSerial, WindowThatHasNoRoomOnTheWireFailsTheStartInsteadOfShiftingItsFields) {
  const struct {
    std::array<std::int16_t, 7> window;
    std::int32_t error;
  } cases[] = {
      {{1, 100, 1, 1, 1, 5, 1}, kErrorInvalidCall},
      {{1, 1, 1, 1, -1, 5, 1}, kErrorInvalidCall},
      {{1, 1, 5, -1, 1, 5, 1}, kErrorInvalidCall},
      {{1, 1, 20000, -20000, 1, 5, 1}, kErrorOverflow},
  };
  for (const auto& c : cases) {
    SekonicBench b(kSr601);
    b.AddWindow(c.window);
    EXPECT_FALSE(b.reader.StartReader());
    EXPECT_THAT(b.bench.host.Sources(), ElementsAre("basScanningSystems.InitReaderSS"));
    EXPECT_EQ(b.bench.host.errors.at(0).number, c.error);
    EXPECT_TRUE(b.reader.CancelScan());
  }
}

TEST(SekonicSerial, StartThatTheScannerDoesNotAnswerIsShownAndOneThatIsCancelledIsNot) {
  const RecordingHost::Message silence{"Initialization Error",
                                       "There was no response from the Sekonic scanner while initializing."};
  const RecordingHost::Message refusal{"Initialization Error",
                                       "An error occurred while initializing the Sekonic scanner."};
  const std::pair<FaultKind, RecordingHost::Message> cases[] = {{FaultKind::SilenceReset, silence},
                                                                {FaultKind::RefuseReset, refusal},
                                                                {FaultKind::SilenceMode, silence},
                                                                {FaultKind::SilenceFitted, silence}};
  for (const auto& [kind, message] : cases) {
    for (const bool cancel : {false, true}) {
      SekonicBench b(kSr601, Stock({{kind, 1}}));
      b.reader.SetRejecter(true);
      if (cancel) b.bench.time->onMessages = [&](int) { b.reader.SetCancelScan(true); };
      EXPECT_FALSE(b.reader.StartReader());
      EXPECT_EQ(b.bench.host.messages, cancel ? Messages{} : Messages{message}) << Describe(kind).name;
      EXPECT_THAT(b.bench.host.errors, IsEmpty());
    }
  }
}

// ---- Imprinter and exits

TEST(SekonicSerial, SheetIsImprintedAndSentOnWithExactlyTheseBytes) {
  SekonicBench b(kSr700352);
  b.TurnImprinterOn();
  b.reader.Printer()->SetBuffer1("Form 12");
  b.reader.Printer()->SetBuffer3("a\rb");
  EXPECT_TRUE(b.reader.StartReader());
  b.Sent();
  EXPECT_TRUE(b.reader.ReadPage(true));
  b.reader.EjectPage();
  EXPECT_THAT(b.Sent(),
              ElementsAre("DC3 P10", "DC3 P3100", "?", "ENQ T", "/ENQ T", "DLE ED001020", "/DLE ED001020",
                          "DC3 P32245", "DC3 P40Form 12 ", "DC3 P21", "DC3 P42a b ", "?P", "?F"));
  EXPECT_THAT(b.bench.events.names, ElementsAre("BeforeSheet", "PreprocessSheet", "ReadSheet", "BeforePrint",
                                                "AfterPrint", "AfterSheet"));
  EXPECT_THAT(b.scanner->Disposals(), ElementsAre(Disposal{1, Exit::Accepted, true, "Form 12|a b", true}));
  EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
}

TEST(SekonicSerial, CancelledImprintFeedsTheSheetOnFirstAndCountsAsDisposed) {
  SekonicBench b(kSr700351);
  b.TurnImprinterOn();
  b.reader.Printer()->SetBuffer1("x");
  b.bench.events.onBeforePrint = [](bool& cancel) { cancel = true; };
  EXPECT_TRUE(b.reader.StartReader());
  EXPECT_TRUE(b.reader.ReadPage(true));
  b.Sent();
  b.reader.EjectPage();
  EXPECT_THAT(b.Sent(), IsEmpty());
  EXPECT_THAT(b.scanner->Disposals(), ElementsAre(Disposal{1, Exit::Accepted, true, "", false}));
}

TEST(SekonicSerial, RefusedOrUnansweredImprintRaisesNoAfterPrint) {
  for (const FaultKind kind : {FaultKind::RefusePrinter, FaultKind::SilencePrint}) {
    SekonicBench b(kSr601, Stock({{kind, 1}}));
    b.TurnImprinterOn();
    EXPECT_TRUE(b.reader.StartReader());
    EXPECT_TRUE(b.reader.ReadPage(true));
    EXPECT_THAT(b.bench.events.names, ::testing::Not(::testing::Contains("AfterPrint")));
    EXPECT_EQ(b.bench.host.messages.size(), kind == FaultKind::SilencePrint ? 1U : 0U);
  }
}

TEST(SekonicSerial, SheetLeavesThroughTheExitThatTheHostAskedFor) {
  struct Case {
    bool rejecter, imprinter, reject;
    const char* command;
    Exit exit;
  };
  const Case cases[] = {
      {true, false, true, "DC3 R05", Exit::Rejected}, {true, true, true, "DC3 R05", Exit::Rejected},
      {true, true, false, "DC3 R04", Exit::Accepted}, {false, false, true, "DC3 R04", Exit::Accepted},
      {false, true, true, "?F", Exit::Accepted},      {false, true, false, "?F", Exit::Accepted},
  };
  for (const Case& c : cases) {
    SekonicBench b(kSr601);
    b.reader.SetRejecter(c.rejecter);
    EXPECT_TRUE(b.reader.StartReader());
    EXPECT_TRUE(b.reader.ReadPage(c.imprinter));
    b.Sent();
    c.reject ? b.reader.RejectPage() : b.reader.EjectPage();
    EXPECT_THAT(b.Sent(), ElementsAre(c.command));
    ASSERT_EQ(b.scanner->Disposals().size(), 1U);
    EXPECT_EQ(b.scanner->Disposals()[0].exit, c.exit);
    EXPECT_THAT(b.scanner->Complaints(), IsEmpty());
  }
}

TEST(SekonicSerial, CardReadersAreNeitherEjectedNorPrinted) {
  for (const teskReaderType type : {kSr410, kSr430}) {
    SekonicBench b(type);
    EXPECT_TRUE(b.reader.StartReader());
    EXPECT_TRUE(b.reader.ReadPage(true));
    b.Sent();
    b.reader.RejectPage();
    EXPECT_THAT(b.Sent(), IsEmpty());
    EXPECT_THAT(b.scanner->Disposals(), ElementsAre(Disposal{1, Exit::Passed, false, "", false}));
  }
}

}  // namespace
}  // namespace tesk::test
