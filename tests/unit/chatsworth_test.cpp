// The Chatsworth driver against scanners that say what a test wrote down, and its simulated scanner.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/Simulators.h"
#include "tests/support/Talker.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using Pieces = std::vector<Piece>;

constexpr auto kReader = teskReaderTypeChatsworthOMR1100;
const std::string kBinary =
    "\x12I00\x12"
    "E";
const std::string kFeedOn =
    "\x12\x1B\x45\x12"
    "E";
const std::string kFeedOff =
    "\x12\x1B\x44\x12"
    "E";
const std::string kTaken = "G\r";

// Two columns: rows 12 and 9 of the first.
const Said kGood{{kBinary, kTaken}, {kFeedOn, kTaken + "!`  \r"}, {kFeedOff, kTaken}};

std::string Play(const char* calls, const Said& said = {}, Milliseconds cancel = 1h) {
  Bench bench(kReader, std::make_shared<Talker>(With(kGood, said), Talker::Hears::Commands));
  bench.reader->SetRecognitionThreshold(0);
  bench.reader->SetTimeOut(10);
  bench.CancelAt(cancel);
  return bench.Do(calls);
}

std::string Record(const Answers& record) { return Play("Sr", {{kFeedOn, record}}); }

TEST(Chatsworth, SessionSendsExactlyTheseBytesAndNoSheetIsSentOn) {
  EXPECT_EQ(Play("srejx"),
            "0 ^R^[D^RE | 0 ^RI00^RE | 0 s: yes | 0 ^R^[E^RE | 0 ^R^[D^RE | 0 r: [2x12 1,1=1 1,12=1] [] 2/-1 "
            "'' | 0 e | 0 j | 0 x: yes");
}

TEST(Chatsworth, EveryBitIsARowOfItsColumn) {
  std::string happened;
  for (const char* column :
       {"! ", "\" ", "$ ", "( ", "0 ", "` ", " !", " \"", " $", " (", " 0", " `", "\x7F\x7F"}) {
    const std::string read = Record(kTaken + "  " + column + "\r");
    happened += read.substr(read.find("[2x12")) + "\n";
  }
  EXPECT_EQ(happened,
            "[2x12 2,1=1] [] 2/-1 ''\n[2x12 2,2=1] [] 2/-1 ''\n[2x12 2,3=1] [] 2/-1 ''\n[2x12 2,4=1] [] 2/-1 "
            "''\n[2x12 2,5=1] [] 2/-1 ''\n[2x12 2,6=1] [] 2/-1 ''\n[2x12 2,7=1] [] 2/-1 ''\n[2x12 2,8=1] [] "
            "2/-1 ''\n[2x12 2,9=1] [] 2/-1 ''\n[2x12 2,10=1] [] 2/-1 ''\n[2x12 2,11=1] [] 2/-1 ''\n[2x12 "
            "2,12=1] [] 2/-1 ''\n[2x12 2,1=1 2,2=1 2,3=1 2,4=1 2,5=1 2,6=1 2,7=1 2,8=1 2,9=1 2,10=1 2,11=1 "
            "2,12=1] [] 2/-1 ''\n");
  EXPECT_THAT(Record(kTaken + std::string(252, ' ') + "\r"), EndsWith("r: [126x12] [] 126/-1 ''"));
}

TEST(Chatsworth, WhatIsNoWholeSheetIsRefused) {
  for (const std::string record :
       {"\r", "! !\r", "!\x40\r", "!\x01\r", "!\xE0\r", "! \r\r", "! \rX", "! G\r", "\x7F"}) {
    EXPECT_THAT(Record(kTaken + record), ::testing::HasSubstr("! Read Error")) << Caret(record);
  }
  EXPECT_THAT(Record(kTaken + std::string(254, ' ') + "\r"),
              EndsWith("! Read Error | 600 ^R^[D^RE | 600 r: no"));
  // The second sheet came before the feed was off, and a record that was cut in two.
  EXPECT_EQ(Record(Pieces{{kTaken + "! \r"}, {"! \r", 90ms}}),
            "0 ^R^[E^RE | 0 ^R^[D^RE | ! Read Error | 690 ^R^[D^RE | 690 r: no");
}

TEST(Chatsworth, CommandsAreSaidAgainWhereTheScannerMayNotHearThem) {
  EXPECT_EQ(Play("s", {{kBinary, Answers("").Then("").Then(kTaken)}}),
            "0 ^R^[D^RE | 0 ^RI00^RE | 600 ^RI00^RE | 1200 ^RI00^RE | 2010 s: yes");
  EXPECT_EQ(Play("s", {{kBinary, ""}}),
            "0 ^R^[D^RE | 0 ^RI00^RE | 600 ^RI00^RE | 1200 ^RI00^RE | 1800 ^RI00^RE | 2400 ^RI00^RE | 3000 "
            "^RI00^RE | 3600 ^RI00^RE | 4200 ^RI00^RE | 4800 ^RI00^RE | 5400 ^RI00^RE | 6000 ^RI00^RE | 6600 "
            "^RI00^RE | 7200 ^RI00^RE | 7800 ^RI00^RE | 8400 ^RI00^RE | 9000 ^RI00^RE | 9600 ^RI00^RE | ! No "
            "Response | 10200 s: no");
  EXPECT_EQ(Play("s", {{kBinary, "I?\r"}}), "0 ^R^[D^RE | 0 ^RI00^RE | ! Scanner Error | 0 s: no");
  EXPECT_EQ(Play("s", {{kBinary, Answers(Pieces{{kTaken, 700ms}}).Then(kTaken)}}),
            "0 ^R^[D^RE | 0 ^RI00^RE | 600 ^RI00^RE | 1510 s: yes");
  EXPECT_EQ(Play("Sr", {{kFeedOff, Answers(kTaken).Then("").Then("").Then(kTaken)}}),
            "0 ^R^[E^RE | 0 ^R^[D^RE | 105 ^R^[D^RE | 210 ^R^[D^RE | 510 r: [2x12 1,1=1 1,12=1] [] 2/-1 ''");
  EXPECT_EQ(Play("Sr", {{kFeedOff, Answers(kTaken).Then("").Then(kTaken + kTaken)}}),
            "0 ^R^[E^RE | 0 ^R^[D^RE | 105 ^R^[D^RE | 405 r: [2x12 1,1=1 1,12=1] [] 2/-1 ''");
  EXPECT_EQ(Play("Sr", {{kFeedOn, ""}}), "0 ^R^[E^RE | ! No Response | 10605 ^R^[D^RE | 10605 r: no");
}

TEST(Chatsworth, ScannersThatAnswerSlowlyAreReadSheetAfterSheet) {
  for (const auto late : {20ms, 45ms, 99ms, 101ms, 300ms, 700ms, 2500ms}) {
    const Answers slow = Pieces{{kTaken, late}};
    const Said said{{kBinary, slow}, {kFeedOn, Pieces{{kTaken, late}, {"!`  \r", late}}}, {kFeedOff, slow}};
    const std::string happened = Play("srrr", said);
    std::size_t sheets = 0;
    for (std::size_t at = 0; (at = happened.find("r: [2x12 1,1=1 1,12=1]", at)) != std::string::npos; ++at)
      ++sheets;
    EXPECT_EQ(sheets, 3U) << late.count() << " ms: " << happened;
  }
}

TEST(Chatsworth, SheetThatAnEarlierHostsFeedTookRefusesTheStartInsteadOfPassingForTheFirst) {
  EXPECT_EQ(Play("s", {{kFeedOff, "! \rG\r"}}), "0 ^R^[D^RE | ! Read Error | 0 s: no");
  EXPECT_EQ(Play("s", {{kFeedOff, Answers("").Then("! \rG\r").Then(kTaken)}}),
            "0 ^R^[D^RE | 105 ^R^[D^RE | ! Read Error | 405 s: no");
}

TEST(Chatsworth, ThresholdOfWhichAMarkWouldBeNoneIsRefused) {
  for (const std::int16_t threshold : std::initializer_list<std::int16_t>{-2, -1}) {
    Bench bench(kReader, std::make_shared<Talker>(kGood, Talker::Hears::Commands));
    bench.reader->SetRecognitionThreshold(threshold);
    EXPECT_EQ(bench.Do("Sr"), "error 5 basChatsworth.ReadPageCT | 0 r: no");
  }
}

TEST(Chatsworth, APersonMayTakeTheirTimeAndACancelSwitchesTheFeedOff) {
  EXPECT_EQ(Play("Sr", {{kFeedOn, Pieces{{kTaken}, {"! \r", 2h}}}}, 3h),
            "0 ^R^[E^RE | 7200000 ^R^[D^RE | 7200000 r: [1x12 1,1=1] [] 1/-1 ''");
  EXPECT_EQ(Play("Sr", {{kFeedOn, kTaken}}, 3s), "0 ^R^[E^RE | 3040 ^R^[D^RE | 3040 r: no");
  EXPECT_EQ(Play("Sr",
                 {{kFeedOn, Pieces{{kTaken}, {"! \r", 2990ms}}},
                  {kFeedOff, Answers(kTaken).Then("").Then(Pieces{{kTaken, 300ms}})}},
                 3s),
            "0 ^R^[E^RE | 2990 ^R^[D^RE | 3020 ^R^[D^RE | 3050 ^R^[D^RE | 3080 ^R^[D^RE | 3110 ^R^[D^RE | "
            "3140 ^R^[D^RE | 3170 ^R^[D^RE | 3200 ^R^[D^RE | 3230 ^R^[D^RE | 3260 ^R^[D^RE | 3290 ^R^[D^RE | "
            "3620 r: [1x12 1,1=1] [] 1/-1 ''");
}

TEST(ChatsworthSimulator, SaysNothingOfSheetsUntilItIsTold) {
  const auto scanner = simulator::CreateScanner(kReader, {.count = 2});
  simulator::Time now{};
  scanner->Receive(kFeedOn, now);
  EXPECT_EQ(scanner->Send(now += 1s), kTaken);
  scanner->Receive(kFeedOff + kBinary, now);
  EXPECT_EQ(scanner->Send(now), kTaken + kTaken);
  scanner->Receive(kFeedOn, now);
  EXPECT_EQ(scanner->Send(now += 1s).size(), kTaken.size() + 101) << "50 columns and their end";
  scanner->Receive(
      "\x12J\x12"
      "E",
      now += 1s);
  EXPECT_EQ(scanner->Send(now), "J?\r");
  EXPECT_THAT(scanner->Complaints(), ElementsAre("unknown command: \"<12>J<12>E\""));
}

}  // namespace
}  // namespace tesk::test
