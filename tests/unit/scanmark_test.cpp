// The ScanMark driver against scanners that say what a test wrote down: every command and its time, the marks that it
// stores, and what it tells the operator.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/basScantron.h"
#include "tests/support/Talker.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr auto k2500 = teskReaderTypeScantronScanMark2500;
constexpr auto k4000 = teskReaderTypeScantronScanMark4000;
constexpr auto k8000 = teskReaderTypeScantron8000;
constexpr auto k8400 = teskReaderTypeScantron8400;

const std::string kReset = "\x1bSRST";
const std::string kForm =
    "\x1b"
    "FRM=";
const std::string kStatus = "\x1bQSTS";
const std::string kRead = "\x1bREAD";
const std::string kEject =
    "\x1b"
    "EJCT";
const std::string kReady = "00      !   ";
const std::string kNotReady = "00          ";
const std::string kBlankRow(48, '0');

// Acknowledges everything; the flags of its status say that a sheet is there.
const Said kGood{{"", "\r"}, {kStatus, kReady}, {kRead, "5\r"}};

struct ScanMarkBench : Bench {
  explicit ScanMarkBench(teskReaderType type, const Said& said = {})
      : Bench(type, std::make_shared<Talker>(With(kGood, said))) {
    SetExtents(2, 1, false);
  }
};

using Settings = void (*)(Bench&);
void TwoSided(Bench& b) { b.SetExtents(2, 1, true); }
void Nothing(Bench&) {}

// What happens in a session with a scanner that says this instead of what a good one says.
std::string Play(teskReaderType type, const char* calls, const Said& said = {}, Settings set = Nothing) {
  ScanMarkBench bench(type, said);
  set(bench);
  return bench.Do(calls);
}

using Pieces = std::vector<Piece>;

// ---- Sessions

TEST(ScanMark, SessionsOfWholeSidesGoOverTheWireAtTheseTimes) {
  EXPECT_EQ(Play(k2500, "srerx"),
            "0 ^[SRST^M | 600 ^[FRM=FS 2 0 48 N N N^M | 630 ^[FRM=DK 1 1 1 2 48 L 2 48^M | 660 ^[FRM=LS^M | "
            "690 ^[PRN$ 1 N^M | 720 s: yes | 720 ^[QSTS^M | 1320 ^[READ 5 Y^M | 1320 ^[QSTS^M | 1320 r: "
            "[2x48 1,1=5] [] 1/0 '' | 1320 ^[EJCT A ^M | 1920 e | 1920 ^[QSTS^M | 1920 ^[READ 5 Y^M | 1920 "
            "^[QSTS^M | 1920 r: [2x48 1,1=5] [] 1/0 '' | 1920 ^[SRST^M | 1920 x: yes");
  ScanMarkBench silent(k2500, {{kRead, ""}});
  silent.Do("Sr");
  EXPECT_EQ(silent.reader->Side1TimingMarks(), 0) << "of a sheet that was asked for";
  EXPECT_EQ(Play(k2500, "sx", {}, [](Bench& b) { b.reader->SetPort(9); }),
            "error 8002 basRead.ReaderInit | 0 s: no | 0 x: yes");
  const auto twoSheets = [](Bench& b) {
    TwoSided(b);
    b.reader->SetSide1Rows(Int16Array({99, 0, 1}, 0));
    b.reader->SetSide1Cols(Int16Array({99, 48, 40}, 0));
    b.reader->SetSide2Rows(Int16Array({99, 1, 0}, 0));
    b.reader->SetSide2Cols(Int16Array({99, 47, 46}, 0));
  };
  EXPECT_EQ(
      Play(k4000, "s", {}, twoSheets),
      "0 ^[SRST^M | 600 ^[FRM=FS 0 1 48 N N N^M | 630 ^[FRM=DK 2 1 1 1 47 L 1 47^M | 660 ^[FRM=FS 1 0 40 N "
      "N N^M | 690 ^[FRM=DK 1 1 1 1 40 L 1 40^M | 720 ^[FRM=LS^M | 750 ^[PRN$ 1 N^M | 780 s: yes");
  EXPECT_EQ(Play(k2500, "s", {}, [](Bench& b) { b.reader->SetDuplexForm(true); }),
            "0 ^[SRST^M | 600 ^[FRM=FS 2 0 48 N N N^M | 630 ^[FRM=DK 1 1 1 2 48 L 2 48^M | 660 ^[FRM=LS^M | "
            "690 ^[PRN$ 1 N^M | 720 s: yes");
  const auto raw = [](Bench& b) {
    TwoSided(b);
    b.reader->SetSide1Cols(From1({5}));
    b.reader->SetSide2Cols(From1({4}));
    b.reader->SetRejecter(true);
  };
  // The raw models have no routine that disposes of a sheet.
  EXPECT_EQ(Play(k8400, "srej", {}, raw),
            "0 ^[SRST^M | 600 ^[THR= 35^M | 630 ^[FRM=FS 2 1 5 N N N^M | 660 ^[FRM=MC Y N 1 1 1 1 2 5 L 2 5 "
            "11111^M | 690 ^[FRM=MC Y N 1 2 1 1 1 4 L 1 4 1111^M | 720 ^[FRM=LS^M | 750 ^[PRN$ 1 N^M | 780 "
            "s: yes | 780 ^[QSTS^M | 1380 ^[READ 5 Y E^M | 1380 ^[QSTS^M | 1380 r: [2x5 1,1=53] [] 1/0 '' | "
            "1380 e | 1380 j");
  EXPECT_EQ(
      Play(k8000, "sr", {{kRead, std::string("\x63\x0c\0\xff\r", 5)}}),
      "0 ^[SRST^M | 600 ^[THR= 35^M | 630 ^[FRM=FS 2 0 48 N N N^M | 660 ^[FRM=MC Y N 1 1 1 1 2 48 L 2 48 "
      "111111111111111111111111111111111111111111111111^M | 690 ^[FRM=LS^M | 720 ^[PRN$ 1 N^M | 750 s: yes | "
      "750 ^[QSTS^M | 1350 ^[READ 5 Y^M | 1350 ^[QSTS^M | 1350 r: [2x48 1,1=99 1,2=12 1,4=255] [] 1/0 ''");
  EXPECT_EQ(Play(k8000, "s", {}, [](Bench& b) { b.reader->SetSide1Cols(From1({-1})); }),
            "0 ^[SRST^M | 600 ^[THR= 35^M | 630 ^[FRM=FS 2 0 -1 N N N^M | error 5 basScantron.DownloadFormST "
            "| 660 ^[SRST^M | 660 s: no");
  EXPECT_EQ(Play(k8000, "s", {}, [](Bench& b) { b.reader->SetSide1Cols(From1({0})); }),
            "0 ^[SRST^M | 600 ^[THR= 35^M | 630 ^[FRM=FS 2 0 0 N N N^M | 660 ^[FRM=MC Y N 1 1 1 1 2 0 L 2 0 "
            "^M | 690 ^[FRM=LS^M | 720 ^[PRN$ 1 N^M | 750 s: yes");
  EXPECT_EQ(Play(k2500, "s", {},
                 [](Bench& b) {
                   b.reader->SetSide1Rows(From1({50, 40}));
                 }),
            "0 ^[SRST^M | 600 ^[FRM=FS 50 0 48 N N N^M | 630 ^[FRM=DK 1 1 1 50 48 L 50 48^M | error 9 "
            "basScantron.DownloadFormST | 660 ^[SRST^M | 660 s: no");
}

TEST(ScanMark, WindowsAreSentAndStoredInTheOrderOfTheirWalk) {
  const auto windows = [](Bench& b) {
    b.SetExtents(6, 5, true);
    b.reader->SetSide1Cols(From1({6}));
    b.reader->SetSide2Cols(From1({7}));
    b.AddWindow({1, 1, 2, 2, 1, 2, 3, 1});    // line by line
    b.AddWindow({0, 6, 2, -1, 6, 3, -2, 0});  // right to left, bottom to top, by column
    b.AddWindow({2, 1, 2, 1, 1, 2, 1, 2});    // any other orientation goes by column; the first of side 2
    b.AddWindow({3, 3, 1, 1, 3, 2, 2, 1});    // a third page is on neither side, but all is stored in side 2
  };
  EXPECT_EQ(Play(k2500, "sr", {{kRead, "123456789:;<=>?@\r"}}, windows),
            "0 ^[SRST^M | 600 ^[FRM=FS 6 5 6 N N N^M | 630 ^[FRM=DK 1 1 1 3 4 L 2 2^M | 660 ^[FRM=DK 1 5 2 6 "
            "6 C 3 2^M | 690 ^[FRM=DK 2 1 1 2 2 C 2 2^M | 720 ^[FRM=LS^M | 750 ^[PRN$ 1 N^M | 780 s: yes | "
            "780 ^[QSTS^M | 1380 ^[READ 5 Y^M | 1380 ^[QSTS^M | 1380 r: [6x6 1,1=1 1,4=2 3,1=3 3,4=4 5,2=5 "
            "5,4=7 5,6=9 6,2=6 6,4=8 6,6=10] [5x7 1,1=11 1,2=12 2,1=13 2,2=14 3,3=15 3,5=16] -1/-1 ''");
  const auto window = [](std::array<std::int16_t, 8> fields) {
    ScanMarkBench bench(k2500);
    bench.AddWindow(fields);
    return bench.Do("Sr");
  };
  EXPECT_EQ(window({1, 0, 1, 1, 1, 3, 1, 1}),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | error 9 basScantron.ReadWindowsST | 600 r: no");
  // More places than any sheet has, and just as many as are believed.
  EXPECT_EQ(window({1, 1, 317, 1, 1, 317, 1, 1}), "error 5 basScantron.ReadWindowsST | 0 r: no");
  EXPECT_EQ(window({1, 1, 250, 1, 1, 400, 1, 1}),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 600 ^[QSTS^M | 600 r: [2x48 1,1=5] [] -1/-1 ''");
}

TEST(ScanMark, DataAreStoredRowByRowAndEndWithTheSheet) {
  const std::string side1 = kBlankRow + kBlankRow;
  const std::string full = kBlankRow + kBlankRow.substr(1);
  EXPECT_EQ(Play(k2500, "Sr", {{kRead, "\r"}}),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 600 ^[QSTS^M | ! Read Error | 600 r: no");
  EXPECT_EQ(Play(k2500, "Sr", {{kRead, kBlankRow + "/\xff\r"}}, TwoSided),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 600 ^[QSTS^M | 600 r: [2x48 2,1=-1 2,2=207] [] 2/0 ''");
  EXPECT_EQ(Play(k2500, "Sr", {{kRead, side1 + "9\r"}}, TwoSided),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 600 ^[QSTS^M | 600 r: [2x48] [1x48 1,1=9] 2/1 ''");
  // Side 2 has no limit of its own.
  EXPECT_EQ(Play(k2500, "Sr", {{kRead, side1 + kBlankRow + "9\r"}}, TwoSided),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | error 9 basScantron.ReadPageST | 600 r: no");
  const auto narrow = [](Bench& b) { b.reader->SetSide1Cols(From1({40})); };
  EXPECT_EQ(Play(k2500, "Sr", {{kRead, kBlankRow + "\r"}}, narrow),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | error 9 basScantron.ReadPageST | 600 r: no");
  // The end of a full sheet comes late, or never.
  EXPECT_EQ(Play(k2500, "Srr", {{kRead, Answers(Pieces{{full + "3"}, {"\r", 1ms}}).Then(full + "4")}}),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 601 ^[QSTS^M | 601 r: [2x48 2,48=3] [] 2/0 '' | 601 ^[QSTS^M | "
            "601 ^[READ 5 Y^M | 11201 ^[QSTS^M | 11201 r: [2x48 2,48=4] [] 2/0 ''");
}

TEST(ScanMark, WhatStandsBehindAnAnswerIsItsOwnOrRefusesTheSheet) {
  // A stray byte in front of a status: it is asked for again.
  EXPECT_EQ(
      Play(k2500, "Sr", {{kStatus, Answers("\r" + kReady).Then(kReady)}}),
      "0 ^[QSTS^M | 1200 ^[QSTS^M | 1800 ^[READ 5 Y^M | 1800 ^[QSTS^M | 1800 r: [2x48 1,1=5] [] 1/0 ''");
  // The late line end of a status that never came before, and one that was late when it was to be learnt.
  EXPECT_EQ(
      Play(k2500, "Srr", {{kStatus, Answers(kReady + "\r").Then(Pieces{{"00      !  2"}, {"\r", 500ms}})}}),
      "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 600 ^[QSTS^M | 1130 r: [2x48 1,1=5] [] 1/0 '' | 1130 ^[QSTS^M | 1630 "
      "^[READ 5 Y^M | 1630 ^[QSTS^M | 2130 r: [2x48 1,1=5] [] 1/0 ''");
  EXPECT_EQ(Play(k2500, "Srcr", {{kStatus, Answers(Pieces{{kReady}, {"\r", 900ms}}).Then(kReady + "\r")}}),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | ! Read Error | 900 r: no | 1500 ^[QSTS^M | 2100 ^[READ 5 Y^M | "
            "2100 ^[QSTS^M | 2100 r: [2x48 1,1=5] [] 1/0 ''");
  // The line end of a status that a damaged sheet's has moved.
  EXPECT_EQ(
      Play(k2500, "Srcr",
           {{kStatus, "00      !!  \r"}, {kRead, Answers(Pieces{{"12\r"}, {"\r", 20ms}}).Then("34\r")}}),
      "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 600 ^[QSTS^M | ! Read Error | 650 r: no | 1250 ^[QSTS^M | 1850 ^[READ "
      "5 Y^M | 1850 ^[QSTS^M | 1850 r: [2x48 1,1=3 1,2=4] [] 1/0 ''");
  EXPECT_EQ(Play(k2500, "s", {{"", Pieces{{"\r"}, {"\n", 500ms}}}}),
            "0 ^[SRST^M | 1100 ^[FRM=FS 2 0 48 N N N^M | 1630 ^[FRM=DK 1 1 1 2 48 L 2 48^M | 2160 ^[FRM=LS^M "
            "| 2690 ^[PRN$ 1 N^M | 3220 s: yes");
}

TEST(ScanMark, RejectSwitchesTheImprinterOffAndGivesTheSheetTimeToLeave) {
  const auto imprint = [](Bench& b) {
    b.reader->SetTimeOut(1);
    b.reader->SetSleepTime(40);
    b.TurnImprinterOn(3, "M\xC3\xBCller\r\x1b\xE2\x82\xAC");
  };
  EXPECT_EQ(
      Play(k4000, "Srjpex", {{kEject + " C", Pieces{{"\r", 1400ms}}}}, imprint),
      "0 ^[QSTS^M | 600 ^[READ 5 Y E^M | 600 ^[QSTS^M | 600 r: [2x48 1,1=5] [] 1/0 '' | 600 ^[PRN$ 1 N ^M | "
      "600 ^[EJCT C^M | 4100 j | 4100 ^[QSTS^M | 4100 ^[READ 5 Y E^M | 4100 ^[QSTS^M | 4100 r: [2x48 1,1=5] "
      "[] 1/0 '' | 4100 ^[EJCT A    M<FC>ller  ?^M | 4700 e | 4700 ^[SRST^M | 4700 x: yes");
}

TEST(ScanMark, PersonMayTakeTheirTimeToInsertASheetAndACancelEndsTheWait) {
  const auto slow = [](Bench& b) {
    b.reader->SetSleepTime(30'000);
    b.CancelAt(5s);
  };
  const auto status = Answers(kNotReady).Then(kNotReady).Then(kReady).Then(kReady).Then(kNotReady);
  EXPECT_EQ(Play(teskReaderTypeScantronScanMark2000, "Srr", {{kStatus, status}}, slow),
            "0 ^[QSTS^M | 1610 ^[QSTS^M | 2620 ^[QSTS^M | 2650 ^[READ 5 Y^M | 2650 ^[QSTS^M | 2650 r: [2x48 "
            "1,1=5] [] 1/0 '' | 2650 ^[QSTS^M | 3660 ^[QSTS^M | 4670 ^[QSTS^M | 5680 ^[QSTS^M | 5690 r: no");
  // In the middle of a sheet the scanner is still reset, in silence.
  const Pieces drops{{"123"}, {"456", 1900ms}, {"?78", 400ms}, {"9\r", 700ms}};
  EXPECT_EQ(Play(k2500, "Srx", {{kRead, drops}}, [](Bench& b) { b.CancelAt(2500ms); }),
            "0 ^[QSTS^M | 600 ^[READ 5 Y^M | 2515 r: no | 2545 ^[SRST^M | 2545 x: no");
}

TEST(ScanMark, SheetWithMoreBehindItsEndIsRefusedHoweverLateThatComes) {
  const std::string kLine(48, '1');
  const auto windows = [](Bench& b) { b.AddWindow({1, 1, 2, 1, 1, 2, 1, 1}); };
  const struct {
    const char* what;
    teskReaderType type;
    Settings set;
    std::string data;
    std::string rest;
  } kCases[] = {
      {"a value damaged into an end", k2500, Nothing, kLine + "1\r", kLine.substr(2) + "\r"},
      {"the last value", k2500, Nothing, kLine + kLine.substr(1) + "\r", "\r"},
      {"on side 2", k2500, TwoSided, kLine + kLine + "1\r", kLine.substr(2) + "\r"},
      {"in windows", k2500, windows, "12\r", "4\r"},
      {"a raw value of 13", k8000, Nothing, kLine + "\r", kLine.substr(1) + "\r"},
      {"the scanner starts anew", k4000, Nothing, kLine + "12", "\rSCANMARK 4000\r"},
      {"one value too many", k2500, Nothing, kLine + kLine, "1\r"},
  };
  for (const auto& c : kCases) {
    for (const auto pause : {0ms, 20ms, 400ms, 5000ms, 10300ms}) {
      ScanMarkBench bench(c.type, {{kRead, Pieces{{c.data}, {c.rest, pause}}}});
      c.set(bench);
      bench.Do("sr");
      EXPECT_THAT(bench.host.messages, SizeIs(1)) << c.what << ", " << pause.count() << " ms later";
      EXPECT_TRUE(bench.reader->Side1Array().Empty()) << c.what << ", " << pause.count() << " ms later";
      EXPECT_EQ(bench.reader->fComm()->mscComm()->InBufferCount(), 0) << "what is left of it is discarded";
    }
  }
}

TEST(ScanMark, EnginesOfTwoModelsKeepTheirScalesApart) {
  ScanMarkBench characters(k2500);
  ScanMarkBench raw(k8000);
  ASSERT_TRUE(characters.reader->StartReader() && raw.reader->StartReader());
  ASSERT_TRUE(characters.reader->ReadPage() && raw.reader->ReadPage());
  EXPECT_EQ(characters.reader->Side1Array().At(1, 1), 5);
  EXPECT_EQ(raw.reader->Side1Array().At(1, 1), '5');
}

TEST(ScanMark, LateAcknowledgementOfARejectMovesNoMark) {
  for (const auto delay : {0ms, 100ms, 600ms, 740ms, 760ms, 800ms, 900ms, 1500ms}) {
    ScanMarkBench bench(k4000, {{kRead, "1234\r"}, {kEject, Pieces{{"\r"}, {"\r", delay}}}});
    EXPECT_THAT(bench.Do("srjcr"), ::testing::HasSubstr("r: [2x48 1,1=1 1,2=2 1,3=3 1,4=4] [] 1/0 ''"));
    EXPECT_EQ(bench.reader->Side1Array(), Grid(2, 48, {{1, 1, 1}, {1, 2, 2}, {1, 3, 3}, {1, 4, 4}}));
  }
}

TEST(ScanMark, HostMayReplaceEverythingInsideAWait) {
  for (int turn = 1; turn <= 30; ++turn) {
    ScanMarkBench bench(k2500, {{kRead, Pieces{{kBlankRow}, {kBlankRow, 100ms}, {"\r", 100ms}}}});
    bench.time->onMessages = [&](int now) {
      if (now != turn) return;
      bench.reader->SetfComm(nullptr);
      bench.reader->SetPrinter(nullptr);
      bench.reader->SetWindows(nullptr);
      bench.reader->SetSide1Rows(From1({1}));
    };
    std::int32_t count = 0;
    bench.reader->ReadBatch(false, 2, count);
    for (const SideArray& side : bench.events.side1) EXPECT_EQ(side.Columns(), 48) << turn;
  }
}

TEST(ScanMark, ImprintIsThePositionInBlanksAndTheTextCutTo125) {
  const std::tuple<std::int16_t, std::string, std::string> kCases[] = {
      {0, "Ed. 7", "Ed. 7"},
      {120, "1234567890", std::string(120, ' ') + "12345"},
      {300, "lost", std::string(125, ' ')},
      {-1, "y", "y"}};
  for (const auto& [distance, text, imprint] : kCases) {
    ScanMarkBench bench(k4000);
    bench.TurnImprinterOn(distance, text);
    bench.Do("sp");
    EXPECT_THAT(bench.Do("e"), ::testing::HasSubstr(" ^[EJCT A " + imprint + "^M | "));
  }
}

// ---- What the operator is told

void Windows(Bench& b) {
  TwoSided(b);
  b.AddWindow({1, 1, 2, 1, 1, 2, 1, 1});
  b.AddWindow({2, 1, 2, 1, 1, 2, 1, 1});
}

// What the operator is told in a batch of which nothing comes.
std::string Told(const Said& said, Settings set = TwoSided, teskReaderType type = k2500) {
  ScanMarkBench bench(type, said);
  set(bench);
  std::int32_t count = 0;
  bench.reader->ReadBatch(false, 1, count);
  EXPECT_THAT(bench.host.errors, IsEmpty());
  EXPECT_TRUE(bench.reader->Side1Array().Empty() && bench.events.side1.empty());
  EXPECT_TRUE(bench.reader->CancelScan() && !bench.serial->open);
  std::string told = bench.reader->HopperEmpty() ? "the hopper is empty" : "";
  for (const auto& message : bench.host.messages) told += message.title + ": " + message.text;
  return told;
}

TEST(ScanMark, FaultsOfTheStartReachTheOperatorInTheirOwnWords) {
  const std::string silence = "There was no response from the Scantron scanner. Could not initialize!";
  const std::string download =
      "Initialize Error: An error occurred trying to download the form definition to the Scantron scanner";
  EXPECT_EQ(Told({{kReset, ""}}), "No Response: " + silence);
  EXPECT_EQ(
      Told({{kReset, Answers("?").Then("\r")}}),
      "Reset Error: An error occurred trying to reset the Scantron scanner.  Please power the scanner off "
      "and on and retry the operation.");
  EXPECT_EQ(Told({{"\x1bTHR", "?"}}, TwoSided, k8000),
            download + " when issuing the scanner threshold command.");
  EXPECT_EQ(Told({{kForm + "FS", "?"}}), download + " when issuing the form start command.");
  EXPECT_EQ(Told({{kForm + "DK 1", "?"}}), download + ".  Invalid sheet definition.|Sheet: 1|Side: 1");
  EXPECT_EQ(Told({{kForm + "DK 2", ""}}), download + ".  Invalid sheet definition|Sheet: 1|Side: 2");
  EXPECT_EQ(Told({{kForm + "DK 1", "?"}}, Windows),
            download + ".  Invalid sheet definition.|Sheet: 1|Side: 1");
  EXPECT_EQ(Told({{kForm + "DK 2", "?"}}, Windows),
            download + ". Invalid sheet definition|Sheet: 1|Side: 2|Field: 2");
  EXPECT_EQ(Told({{kForm + "LS", "?"}}), download + " while issuing the end of form command.");
  EXPECT_EQ(Told({{"\x1bPRN", "?"}}), "");
  EXPECT_EQ(Told({{kStatus, ""}}), "Initialize Error: " + silence);
  EXPECT_EQ(Told({{kStatus, kReady.substr(1)}}), "Initialize Error: " + silence);
}

TEST(ScanMark, FaultsOfASheetReachTheOperatorInTheirOwnWords) {
  const std::string timedOut =
      "Read Error: There was no response from the Scantron scanner. The scanner timed out waiting ";
  EXPECT_EQ(Told({{kStatus, "00      \xff   "}}),
            "Paper Jam: The Scantron scanner reports a paper jam. Please clear the jam and try again.");
  EXPECT_EQ(Told({{kStatus, Answers(kReady).Then("00      1   ")}}),
            "Double Feed: The Scantron scanner reports a double feed. Please rescan the page.");
  EXPECT_EQ(Told({{kStatus, "01          "}}),
            "Initialize Error: The Scantron scanner reported a timing line error. Make sure that the form "
            "corresponds "
            "to the open template and that it was not skewed when scanning. Please rescan.");
  EXPECT_EQ(Told({{kStatus, "02      !   "}}),
            "Command Error: Your Scantron scanner reported a command error. Error #50");
  // A form error without its blank, and a class that nobody knows.
  EXPECT_EQ(Told({{kStatus, "011     !   "}}), "");
  EXPECT_EQ(Told({{kStatus, "03      !   "}}), "");
  EXPECT_EQ(Told({{kStatus, kNotReady}}), "the hopper is empty");
  EXPECT_EQ(Told({{kRead, ""}}), timedOut + "for scanned data.");
  EXPECT_EQ(Told({{kRead, ""}}, Windows), timedOut + "for the scanned data.");
  EXPECT_EQ(Told({{kRead, kBlankRow}}), timedOut + "to receive the scanned data.");
  EXPECT_EQ(Told({{kRead, "1"}}, Windows), timedOut + "to receive the scanned data.");
}

TEST(ScanMark, SilenceAtTheEjectIsShown) {
  ScanMarkBench bench(k2500, {{kEject, ""}});
  bench.Do("sre");
  EXPECT_THAT(
      bench.host.messages,
      ::testing::ElementsAre(RecordingHost::Message{
          "Eject Page Error", "There was no response from the Scantron scanner. Could not eject the page!"}));
}

TEST(ScanMark, TextsPassThroughTheHostsTranslation) {
  ScanMarkBench bench(k2500, {{kStatus, "02      !   "}});
  bench.host.translate = {{"Command Error", "Befehlsfehler"},
                          {"Your Scantron scanner reported a command error. Error #", "Fehler Nr. "}};
  bench.Do("sr");
  EXPECT_THAT(bench.host.messages,
              ::testing::ElementsAre(RecordingHost::Message{"Befehlsfehler", "Fehler Nr. 50"}));
}

}  // namespace
}  // namespace tesk::test
