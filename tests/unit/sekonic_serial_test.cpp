// The Sekonic serial driver: how it starts, which windows it rewrites, and how it imprints sheets and sends them on.
// Every byte that it sends counts, and so does when.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/SekonicBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Settings Threshold(std::int16_t threshold) {
  return [=](Bench& b) { b.reader->SetRecognitionThreshold(threshold); };
}

void Rejecter(Bench& b) { b.reader->SetRejecter(true); }

// ---- Starting

TEST(SekonicSerial, StartSendsExactlyTheModelsSetUp) {
  EXPECT_EQ(Play(kSr601, "sx", {{"\005OM", "0\r"}}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL1^M | 1035 s: yes | 1035 x: yes");
  EXPECT_EQ(Play(kSr607, "s"), "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 s: yes");
  EXPECT_EQ(Play(kSr700351, "s", {{"\005OM", " 2 \r"}}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL05^M | 1035 s: yes");
  EXPECT_EQ(Play(kSr700352, "s", {{"\005OM", "3\r"}}, Threshold(12)),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL12^M | 1035 s: yes");
  // Line ends in front of an answer belong to the one before.
  EXPECT_EQ(Play(kSr607, "s", {{"\005OM", "\r\n1\r"}}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 s: yes");
  // The first character of whichever reply came last decides on the discrimination.
  EXPECT_EQ(Play(kSr700352, "s", {{"\005OM", "10\r"}}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL05^M | 1035 ^SDD02^M | 1035 s: yes");
  EXPECT_EQ(Play(kSr700352, "s", {{"\005OM", "1\r"}, {"\005O", "000000\r"}}, Rejecter),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^EO^M | 1065 ^PDL2^M | 1065 s: yes");
  EXPECT_EQ(Play(kSr601, "s", {{"\005OM", "0\r"}, {"\005O", "1\r"}}, Rejecter),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^EO^M | 1065 ^PDL1^M | 1065 ^SDD02^M | 1065 s: yes");
  // The SR-410 without STX and with a 0 in front of its threshold. Card readers take no windows.
  EXPECT_EQ(Play(kSr410, "s", {}, Threshold(8)), "0 ^X^M | 1005 ^PT^M1^M | 1005 ^PDL08^M | 1005 s: yes");
  EXPECT_EQ(Play(kSr430, "s", {}, Threshold(16)),
            "0 ^X^M | 1005 ^PT^M^B2^M | 1005 ^PDL16^M | 1005 ^S15^M | 1005 s: yes");
  EXPECT_EQ(Play(kSr430, "s", {},
                 [](Bench& b) {
                   b.AddWindow({1, 1, 2, 1, 1, 5, 1, 0});
                 }),
            "0 ^X^M | 1005 ^PT^M^B2^M | 1005 ^PDL01^M | 1005 ^S15^M | 1005 s: yes");
}

TEST(SekonicSerial, RejecterBecomesWhatTheScannerSaysItHas) {
  for (const auto& [fitted, has] : {std::pair("000001\r", true), {"000010\r", false}, {"00000\r", false}}) {
    SekonicBench bench(kSr607, {{"\005O", fitted}});
    bench.reader->SetRejecter(true);
    EXPECT_TRUE(bench.reader->StartReader());
    EXPECT_EQ(bench.reader->Rejecter(), has) << fitted;
  }
}

TEST(SekonicSerial, WindowsAreSentInTheirOrderAndNegativeGapsRewrittenInTheHostsOwnOnceAndForAll) {
  SekonicBench bench(kSr601, {});
  bench.AddWindow({2, 10, 4, -2, 20, 5, -3, 0});
  bench.AddWindow({1, 9, 1, 0, 7, 3, -1, 0});
  bench.AddWindow({1, 99, 1, 1, 1, 48, 0, 0});
  EXPECT_EQ(
      bench.Do("sxs"),
      "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 ^PQ^M | 1035 /^PW^M^B040402080503112^M | "
      "1035 ^PW^M^B090100050301112^M | 1035 ^PW^M^B990101014800112^M | 1035 s: yes | 1035 x: yes | 1035 ^X^M "
      "| 2040 ^EOM^M | 2070 ^PDL2^M | 2070 ^SDD02^M | 2070 ^PQ^M | 2070 /^PW^M^B040402080503112^M | 2070 "
      "^PW^M^B090100050301112^M | 2070 ^PW^M^B990101014800112^M | 2070 s: yes");
  const auto window = bench.reader->Windows()->Item(1);
  EXPECT_THAT((std::vector{window->StartRow(), window->RowGap(), window->StartCol(), window->ColGap()}),
              ElementsAre(4, 2, 8, 3));
}

TEST(SekonicSerial, WindowThatHasNoRoomOnTheWireFailsTheStartInsteadOfShiftingItsFields) {
  const auto start = [](std::array<std::int16_t, 8> window) {
    return Play(kSr601, "s", {}, [=](Bench& b) { b.AddWindow(window); });
  };
  EXPECT_EQ(start({1, 100, 1, 1, 1, 5, 1, 0}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 ^PQ^M | error 5 "
            "basScanningSystems.InitReaderSS | 1035 s: no");
  EXPECT_EQ(start({1, 1, 1, 1, -1, 5, 1, 0}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 ^PQ^M | error 5 "
            "basScanningSystems.InitReaderSS | 1035 s: no");
  EXPECT_EQ(start({1, 1, 5, -1, 1, 5, 1, 0}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 ^PQ^M | error 5 "
            "basScanningSystems.InitReaderSS | 1035 s: no");
  EXPECT_EQ(start({1, 1, 20000, -20000, 1, 5, 1, 0}),
            "0 ^X^M | 1005 ^EOM^M | 1035 ^PDL2^M | 1035 ^SDD02^M | 1035 ^PQ^M | error 6 "
            "basScanningSystems.InitReaderSS | 1035 s: no");
}

TEST(SekonicSerial, StartThatTheScannerDoesNotAnswerIsShownAndOneThatIsCancelledIsNot) {
  const std::string silence = "There was no response from the Sekonic scanner while initializing.";
  const std::string refusal = "An error occurred while initializing the Sekonic scanner.";
  const std::tuple<Said, std::string> kCases[] = {
      {{{"\030", ""}}, silence},
      {{{"\030", "\x15\r"}}, refusal},
      {{{"\005OM", ""}}, silence},
      {{{"\005OM", "1X\r"}}, refusal},
      {{{"\005OM", " \r"}}, refusal},
      {{{"\005OM", "1\rX"}}, refusal},
      {{{"\005O", ""}}, silence},
      {{{"\005O", "000001\rX"}}, refusal},
      {{{"\005OM", Pieces(1000, {"1", 500ms})}}, silence},
  };
  for (const auto& [said, text] : kCases) {
    SekonicBench bench(kSr607, With({{"\005OM", "1\r"}}, said));
    bench.reader->SetRejecter(true);
    EXPECT_FALSE(bench.reader->StartReader());
    EXPECT_THAT(bench.host.messages, ElementsAre(RecordingHost::Message{"Initialization Error", text}));
    EXPECT_LT(bench.time->Elapsed(), 14s);
    SekonicBench cancelled(kSr607, said);
    cancelled.reader->SetRejecter(true);
    cancelled.CancelAt(0ms);
    EXPECT_FALSE(cancelled.reader->StartReader());
    EXPECT_THAT(cancelled.host.messages, IsEmpty());
  }
}

// ---- Imprinter and exits

TEST(SekonicSerial, SheetIsImprintedAndSentOnWithExactlyTheseBytes) {
  const auto imprint = [](Bench& b) { b.TurnImprinterOn(245, "Form 12", "a\rb"); };
  EXPECT_EQ(Play(kSr700352, "Spe", {}, imprint),
            "0 ^SP10^M | 50 ^SP3100^M | 100 ?^M | 100 ^ET^M | 1105 /^ET^M | 1105 ^PED001004^M | 1705 "
            "/^PED001002^M | 1705 ^SP32245^M | 1705 ^SP40Form 12 ^M | 1705 ^SP21^M | 1705 ^SP42a b ^M | 1705 "
            "?P^M | 2710 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 '' | 2710 ?F^M | 3715 e");
  // A cancelled imprint feeds the sheet on first, which counts as disposed of.
  const auto cancelled = [](Bench& b) {
    b.TurnImprinterOn(7, "x");
    b.events.onBeforePrint = [](bool& cancel) { cancel = true; };
  };
  EXPECT_EQ(Play(kSr700351, "Spe", {}, cancelled),
            "0 ^SP10^M | 50 ^SP3100^M | 100 ?^M | 100 ^ET^M | 1105 /^ET^M | 1105 ^PED001004^M | 1705 "
            "/^PED001002^M | 1705 ?F^M | 2710 ^SP32007^M | 2710 ^SP40x ^M | 2710 ^SP21^M | 2710 ^SP22^M | "
            "2710 ?P^M | 3715 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 '' | 3715 e");
}

TEST(SekonicSerial, RefusedOrUnansweredImprintRaisesNoAfterPrint) {
  for (const char* answer : {"0", "1", "10", ""}) {
    SekonicBench bench(kSr607, {{"?P", answer}});
    bench.TurnImprinterOn(7, "x");
    bench.Do("Sp");
    const bool printed = std::string(answer).ends_with('0');
    EXPECT_EQ(std::ranges::count(bench.events.names, "AfterPrint"), printed ? 1 : 0) << answer;
    EXPECT_EQ(bench.host.messages.size(), *answer == '\0' ? 1U : 0U) << answer;
  }
}

TEST(SekonicSerial, SheetLeavesThroughTheExitThatTheHostAskedFor) {
  const auto leave = [](const char* calls, const Settings& set = {}) {
    const std::string happened = Play(kSr607, calls, {{"\005O", "000001\r"}}, set);
    return happened.substr(happened.rfind("''") + 5);
  };
  EXPECT_EQ(leave("Srj", Rejecter), "1605 ^SR05^M | 1605 j");
  EXPECT_EQ(leave("Spj", Rejecter), "1605 ^SR05^M | 1605 j");
  EXPECT_EQ(leave("Spe", Rejecter), "1605 ^SR04^M | 1605 e");
  EXPECT_EQ(leave("Srj"), "1605 ^SR04^M | 1605 j");
  EXPECT_EQ(leave("Srjx"), "1605 ^SR04^M | 1605 j | 1605 x: yes");
  EXPECT_EQ(leave("Spe"), "1605 ?F^M | 2610 e");
  EXPECT_EQ(Play(kSr607, "Spe", {{"?F", ""}}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 1605 /^PED001002^M | 1605 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 4/6 '' | 1605 ?F^M | ! No Response | 11605 e");
  EXPECT_EQ(Play(kSr430, "Srj", {{"?", "0"}}, OneSided),
            "0 ?^M | 0 ^ET^M | 1005 ^PED001004^M | 1605 r: [4x48 1,10=5] [] 4/-1 '' | 1605 j");
}

}  // namespace
}  // namespace tesk::test
