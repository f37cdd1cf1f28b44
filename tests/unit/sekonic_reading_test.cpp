// The Sekonic serial driver: the marks, counts and barcodes that it stores, when it asks for them, and that it stores
// nothing where a record is spoilt.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/SekonicBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;

const std::string kPage = "\020ED001004";
const std::string kBackPage = "/\020ED001002";
const std::string kWindows = "\020R*";
const std::string kBackWindows = "/\020R*";
const std::string kCount = "\005T";
const std::string kBackCount = "/\005T";
const std::string kBarcodes = "\023BA05";

void WindowOfTwoItems(Bench& b) { b.AddWindow({1, 1, 2, 1, 1, 5, 1, 0}); }
void TwoBarcodes(Bench& b) { b.AddBarcodes(2); }

// Two sheets of an SR-607.
std::string Sheets(const Said& said, const Settings& set = {}) { return Play(kSr607, "Srcr", said, set); }

// ---- Whole pages

TEST(SekonicRead, PagesAreReadWithExactlyTheseBytesAndCostNoSilenceOnceTheScannerIsKnown) {
  EXPECT_EQ(Sheets({}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 1605 /^PED001002^M | 1605 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 4/6 '' | 1605 ?^M | 1605 ^ET^M | 1605 /^ET^M | 1605 ^PED001004^M | 1605 "
            "/^PED001002^M | 1605 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 ''");
  EXPECT_EQ(Play(kSr607, "Srer", {{"?", "0"}}, OneSided),
            "0 ?^M | 1005 ^ET^M | 2010 ^PED001004^M | 2610 r: [4x48 1,1=5] [] 4/-1 '' | 2610 ^SR04^M | 2610 "
            "e | 2610 ?^M | 2610 ^ET^M | 2610 ^PED001004^M | 2610 r: [4x48 1,1=5] [] 4/-1 ''");
  std::string rows;
  for (int row = 1; row <= 112; ++row) rows += row == 111 ? "07 \r" : " \r";
  const auto tall = [](Bench& b) {
    OneSided(b);
    b.reader->SetSide1Rows(From1({5, 112, 9}));
  };
  EXPECT_EQ(Play(kSr430, "Srr", {{"?", "0"}, {"\020ED001112", rows}}, tall),
            "0 ?^M | 0 ^ET^M | 1005 ^PED001112^M | 1605 r: [112x48 111,10=7] [] 4/-1 '' | 1605 ?^M | 1605 "
            "^ET^M | 1605 ^PED001112^M | 1605 r: [112x48 111,10=7] [] 4/-1 ''");
  EXPECT_EQ(Play(kSr601, "Sr", {}, [](Bench& b) { b.reader->SetSide1Rows(From1({1000})); }),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | error 5 basScanningSystems.ReadEntirePageSS | 1005 r: no");
}

TEST(SekonicRead, CardsNameTheirColumnsOtherwiseAndWronglySetSwitchesAreTold) {
  const auto card = [](const char* row) {
    SekonicBench bench(kSr430, {{"?", "0"}, {kPage, std::string(row) + " \r \r \r \r"}});
    OneSided(bench);
    const std::string happened = bench.Do("Sr");
    const std::string text =
        "The Sekonic SR-430 appears to be in the wrong reading mode.  Please ensure that dip switch 6 is in "
        "the "
        "default position; Check the manual that came with your hardware for further instructions on how to "
        "do this.";
    const bool wrong = bench.host.messages == std::vector{RecordingHost::Message{"Read Error", text}};
    return happened + (wrong ? " | told" : "");
  };
  EXPECT_EQ(card("9101X2C370"),
            "0 ?^M | 0 ^ET^M | 1005 ^PED001004^M | 1605 r: [4x48 1,1=1 1,10=1 1,11=2 1,15=3] [] 4/-1 ''");
  EXPECT_EQ(card("91:2"), "0 ?^M | 0 ^ET^M | 1005 ^PED001004^M | ! Read Error | 1005 r: no | told");
}

TEST(SekonicRead, SpoiltRecordsAreReportedOnceAndChangeNothingButTheCounts) {
  const auto page = [](const Answers& front) { return Play(kSr607, "Sr", {{kPage, front}}); };
  EXPECT_EQ(page(""),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | error 0 basScanningSystems.ReadEntirePageSS "
            "| 11025 r: no");
  EXPECT_EQ(page(Pieces{{"05 \r \r \r \r", 10'500ms}}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | error 0 basScanningSystems.ReadEntirePageSS "
            "| 11025 r: no");
  EXPECT_EQ(page("05 \r \r \r "),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | error 0 basScanningSystems.ReadEntirePageSS "
            "| 11005 r: no");
  EXPECT_EQ(page("05 \r \r \r \r \r"),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | error 9 basScanningSystems.ReadEntirePageSS "
            "| 1605 r: no");
  EXPECT_EQ(page("05 \r \r \r\r"),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | error 9 basScanningSystems.ReadEntirePageSS "
            "| 1005 r: no");
  EXPECT_EQ(page("05 \r0 \r \r \r"),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | error 13 "
            "basScanningSystems.ReadEntirePageSS | 1005 r: no");
  EXPECT_EQ(Play(kSr607, "Sr", {{kBackPage, " \r16 \r1"}}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 1605 /^PED001002^M | error 9 "
            "basScanningSystems.ReadEntirePageSS | 1605 r: no");
  EXPECT_EQ(
      Play(kSr607, "Sr", {{kWindows, ""}}, WindowOfTwoItems),
      "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11025 r: no");
  EXPECT_EQ(Play(kSr607, "Srcr", {{kWindows, "15\r36\r12\r"}}, WindowOfTwoItems),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PR*^M | error 9 basScanningSystems.AddToArraySS | 1065 r: "
            "no | 1665 ?^M | "
            "1665 ^ET^M | 2670 /^ET^M | 2670 ^PR*^M | error 9 basScanningSystems.AddToArraySS | 2730 r: no");
  EXPECT_EQ(Play(kSr607, "Sr", {{kBarcodes, ""}}, TwoBarcodes),
            "0 ^SBA00^M | 50 ^SBA01^M | 100 ^SBA10999^M | 150 ^SBA10999^M | 200 ?^M | 200 ^ET^M | 1205 "
            "/^ET^M | 1205 ^SBA05^M | error 0 basScanningSystems.ReadPageSS | 11225 r: no");
  SekonicBench bench(kSr607, {{kPage, ""}});
  bench.Do("Sr");
  // The host sees the counts before the marks have come.
  EXPECT_THAT((std::vector{bench.reader->Side1TimingMarks(), bench.reader->Side2TimingMarks()}),
              ElementsAre(4, 6));
  EXPECT_EQ(bench.host.errors.at(0).message, "There was no response from the scanner.");
}

// ---- Answers in pieces

TEST(SekonicRead, EveryHeadIsWaitedForAndAFaultOfOneIsNoGoodStatus) {
  EXPECT_EQ(Play(kSr607, "Srr", {{"?", Pieces{{"0"}, {"6", 200ms}}}}, OneSided),
            "0 ?^M | ! Scanner Error | 200 r: no | 200 r: no");
  EXPECT_EQ(Sheets({{"?", Pieces{{"0"}, {"6", 3000ms}}}}),
            "0 ?^M | ! Scanner Error | 3000 r: no | 3000 ?^M | ! Scanner Error | 6000 r: no");
  EXPECT_EQ(Sheets({{"?", Pieces{{"0"}, {"0", 3000ms}}}}),
            "0 ?^M | 3000 ^ET^M | 4005 /^ET^M | 4005 ^PED001004^M | 4605 /^PED001002^M | 4605 r: [4x48 "
            "1,1=5] [2x48 2,2=6] 4/6 '' | 4605 ?^M | 7605 ^ET^M | 7605 /^ET^M | 7605 ^PED001004^M | 7605 "
            "/^PED001002^M | 7605 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 ''");
  EXPECT_EQ(Sheets({{"?", "0"}}),
            "0 ?^M | ! No Response | 10000 r: no | 10600 ?^M | ! No Response | 20600 r: no");
  EXPECT_EQ(Sheets({{"?", "6"}}),
            "0 ?^M | ! Scanner Error | 1005 r: no | 1605 ?^M | ! Scanner Error | 2610 r: no");
  EXPECT_EQ(Sheets({{"?", "60"}}), "0 ?^M | ! Scanner Error | 0 r: no | 0 ?^M | ! Scanner Error | 0 r: no");
  EXPECT_EQ(Play(kSr607, "Sr", {{"?", "60"}}, OneSided),
            "0 ?^M | 0 ^ET^M | 1005 ^PED001004^M | 1605 r: [4x48 1,1=5] [] 4/-1 ''");
  // A fault that one head tells does not show how many speak of a good sheet.
  for (const char* fault : {"6", "06"}) {
    EXPECT_THAT(Play(kSr607, "Srcrr", {{"?", Answers(fault).Then("00")}}, OneSided),
                ::testing::EndsWith("r: [4x48 1,1=5] [] 4/-1 ''"));
  }
  // A code without a text, and more behind it, which makes it no status.
  EXPECT_EQ(Sheets({{"?", "0!"}}), "0 ?^M | 30 r: no | 30 ?^M | 60 r: no");
  EXPECT_EQ(Sheets({{"?", "0!0"}}), "0 ?^M | ! No Response | 0 r: no | 600 ?^M | ! No Response | 600 r: no");
}

TEST(SekonicRead, CountsInPiecesAreWaitedForAndWhatIsNoneRefusesTheSheet) {
  EXPECT_EQ(Sheets({{kCount, Pieces{{"0"}, {"04", 900ms}, {"\r", 900ms}}}}),
            "0 ?^M | 0 ^ET^M | 2805 /^ET^M | 2805 ^PED001004^M | 3405 /^PED001002^M | 3405 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 4/6 '' | 3405 ?^M | 3405 ^ET^M | 5205 /^ET^M | 5205 ^PED001004^M | 5205 "
            "/^PED001002^M | 5205 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 ''");
  EXPECT_EQ(Sheets({{kCount, "12\r"}}),
            "0 ?^M | 0 ^ET^M | 30 /^ET^M | 1035 ^PED001004^M | 1635 /^PED001002^M | 1635 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 12/6 '' | 1635 ?^M | 1635 ^ET^M | 1635 /^ET^M | 1635 ^PED001004^M | 1635 "
            "/^PED001002^M | 1635 r: [4x48 1,1=5] [2x48 2,2=6] 12/6 ''");
  EXPECT_EQ(Sheets({{kCount, "004"}}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | ! No Response | 1005 r: no | 1605 ?^M | 1605 ^ET^M | 2610 "
            "/^ET^M | ! No Response | 2610 r: no");
  EXPECT_EQ(Sheets({{kCount, "00"}}),
            "0 ?^M | 0 ^ET^M | ! No Response | 10000 r: no | 10600 ?^M | 10600 ^ET^M | ! No Response | 20600 "
            "r: no");
  EXPECT_EQ(Sheets({{kCount, "00\r\r"}}),
            "0 ?^M | 0 ^ET^M | ! No Response | 30 r: no | 630 ?^M | 630 ^ET^M | ! No Response | 660 r: no");
  EXPECT_EQ(Sheets({{kCount, "0-4\r"}}),
            "0 ?^M | 0 ^ET^M | ! No Response | 0 r: no | 600 ?^M | 600 ^ET^M | ! No Response | 600 r: no");
  EXPECT_EQ(
      Sheets({{kCount, ""}}),
      "0 ?^M | 0 ^ET^M | ! No Response | 10600 /^ET^M | 11605 ^PED001004^M | 12205 /^PED001002^M | 12205 r: "
      "[4x48 1,1=5] [2x48 2,2=6] -1/-1 '' | 12205 ?^M | 12205 ^ET^M | ! No Response | 22805 /^ET^M | 22805 "
      "^PED001004^M | 22805 /^PED001002^M | 22805 r: [4x48 1,1=5] [2x48 2,2=6] -1/-1 ''");
  EXPECT_EQ(
      Play(kSr607, "Sr", {{kCount, Pieces{{"004", 10'100ms}}}, {kBackCount, Pieces{{"006", 10'100ms}}}}),
      "0 ?^M | 0 ^ET^M | ! No Response | 10700 /^ET^M | ! No Response | 21400 ^PED001004^M | 22000 "
      "/^PED001002^M | 22000 r: [4x48 1,1=5] [2x48 2,2=6] -1/-1 ''");
  EXPECT_EQ(Play(kSr607, "Sr", {{kCount, Pieces{{"004\r", 10'900ms}}}}),
            "0 ?^M | 0 ^ET^M | ! No Response | 10600 /^ET^M | ! No Response | 11905 r: no");
}

TEST(SekonicRead, MarksInPiecesAreOnePageAndWhatWaitsBetweenSheetsIsWaitedOut) {
  EXPECT_EQ(Sheets({{kPage, Pieces{{"0"}, {"5 ", 300ms}, {"\r \r \r ", 9000ms}, {"\r", 9000ms}}}}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 19905 /^PED001002^M | 19905 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 4/6 '' | 19905 ?^M | 19905 ^ET^M | 19905 /^ET^M | 19905 ^PED001004^M | 38205 "
            "/^PED001002^M | 38205 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 ''");
  EXPECT_EQ(Play(kSr607, "Srer", {{"\023R04", Pieces{{"X"}, {"0", 300ms}}}}),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 1605 /^PED001002^M | 1605 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 4/6 '' | 1605 ^SR04^M | 1605 e | 2505 ?^M | 2505 ^ET^M | 3510 /^ET^M | 3510 "
            "^PED001004^M | 4110 /^PED001002^M | 4110 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 ''");
}

TEST(SekonicRead, CancelEndsEveryWaitHoweverLongTheHostsPauses) {
  const auto cancel = [](const Said& said) {
    return Play(kSr607, "Sr", said, [](Bench& b) {
      b.reader->SetSleepTime(30'000);
      b.CancelAt(3s);
    });
  };
  EXPECT_EQ(cancel({{kPage, ""}}), "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 3025 r: no");
  EXPECT_EQ(cancel({{kPage, "05"}}), "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 3010 r: no");
  EXPECT_EQ(cancel({{kCount, ""}}), "0 ?^M | 0 ^ET^M | 3010 r: no");
  EXPECT_EQ(cancel({{"?", ""}}), "0 ?^M | 3010 r: no");
}

TEST(SekonicRead, EnginesOfOneProcessKeepApartWhatTheirScannersSaid) {
  SekonicBench below(kSr601, {{"?", "3"}});
  below.Do("S");
  {
    SekonicBench above(kSr700352, {{"\005OM", "3\r"}});
    above.Do("S");
  }
  RecordingHost host;
  EXPECT_FALSE(below.reader->ReadPage());
  EXPECT_THAT(host.messages, ::testing::IsEmpty());  // mode 1 has no text for this code
}

// ---- Windows

TEST(SekonicRead, WindowsOfBothSidesAreReadInPlaceAndTheRestStaysBlank) {
  const auto windows = [](Bench& b) {
    b.SetExtents(20, 9, true);
    b.AddWindow({1, 1, 2, 9, 1, 30, 1, 0});
    b.AddWindow({2, 1, 1, 10, 2, 20, 2, 0});
    b.AddWindow({1, 20, 2, -1, 48, 9, -2, 0});
  };
  EXPECT_EQ(Sheets({{kWindows, "15,N6\r \r17\r98\r"}, {kBackWindows, "D9\r"}}, windows),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PR*^M | 1065 /^PR*^M | 1125 r: [20x48 1,1=5 1,30=6 "
            "19,32=7 20,48=8] [9x48 1,40=9] 4/6 '' | 1125 ?^M | 1125 ^ET^M | 1125 /^ET^M | 1125 ^PR*^M | "
            "1185 /^PR*^M | 1245 r: [20x48 1,1=5 1,30=6 19,32=7 20,48=8] [9x48 1,40=9] 4/6 ''");
  // A side without windows is asked but not waited for.
  EXPECT_EQ(Sheets({{kBackWindows, ""}}, WindowOfTwoItems),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PR*^M | 1065 /^PR*^M | 1125 r: [4x48 1,1=5 2,3=6] [2x48] "
            "4/6 '' | 1125 ?^M | 1125 ^ET^M | 1125 /^ET^M | 1125 ^PR*^M | 1185 /^PR*^M | 1245 r: [4x48 1,1=5 "
            "2,3=6] [2x48] 4/6 ''");
  EXPECT_EQ(Play(kSr601, "Sr", {{"?", "0"}},
                 [](Bench& b) {
                   OneSided(b);
                   WindowOfTwoItems(b);
                   b.reader->SetSide1Rows(From1({1}));
                 }),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | error 9 basScanningSystems.AddToArraySS | 1065 r: no");
  // An item of one row is waited for as any other.
  EXPECT_EQ(Play(kSr607, "Sr", {{kBackWindows, Pieces{{"12\r", 3s}}}},
                 [](Bench& b) {
                   WindowOfTwoItems(b);
                   b.AddWindow({2, 1, 1, 1, 1, 5, 1, 0});
                 }),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PR*^M | 1065 /^PR*^M | 4125 r: [4x48 1,1=5 2,3=6] [2x48 "
            "1,1=2] 4/6 ''");
  const auto none = [](std::int16_t page, std::int16_t rows) {
    return [=](Bench& b) {
      OneSided(b);
      b.AddWindow({page, 1, rows, 1, 1, 5, 1, 0});
    };
  };
  EXPECT_EQ(Play(kSr607, "Sr", {{kWindows, ""}}, none(2, 2)),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11025 r: no");
  EXPECT_EQ(Play(kSr607, "Sr", {{kWindows, ""}}, none(1, 0)),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11025 r: no");
}

TEST(SekonicRead, WindowReplyMayLackItsLastCrButNotWhatTheSheetBeforeHad) {
  const auto read = [](const Answers& reply, const char* calls = "Sr") {
    return Play(kSr607, calls, {{kWindows, reply}}, [](Bench& b) {
      OneSided(b);
      WindowOfTwoItems(b);
    });
  };
  EXPECT_EQ(read("15\r36"), "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | 2070 r: [4x48 1,1=5 2,3=6] [] 4/-1 ''");
  EXPECT_EQ(read("15\r "), "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | 2070 r: [4x48 1,1=5] [] 4/-1 ''");
  EXPECT_EQ(read("15\r36,"),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11005 r: no");
  EXPECT_EQ(read("15\r3"),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11005 r: no");
  EXPECT_EQ(read("15\r"),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11005 r: no");
  EXPECT_EQ(read(Pieces{{"15\r36"}, {"\r", 500ms}}),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | 1565 r: [4x48 1,1=5 2,3=6] [] 4/-1 ''");
  EXPECT_EQ(read(Pieces{{"15\r36"}, {",47", 500ms}, {"\r", 500ms}}),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | 2065 r: [4x48 1,1=5 2,3=6 2,4=7] [] 4/-1 ''");
  EXPECT_EQ(read(Answers("15\r36\r").Then("15\r36"), "Srr"),
            "0 ?^M | 0 ^ET^M | 1005 ^PR*^M | 1065 r: [4x48 1,1=5 2,3=6] [] 4/-1 '' | 1065 ?^M | 1065 ^ET^M | "
            "1065 ^PR*^M | error 0 basScanningSystems.ReadWindowsSS | 11065 r: no");
}

TEST(SekonicRead, ACancelKeepsWindowsThatHaveArrivedAndThePauseBehindThem) {
  const Said said{{kWindows, Pieces{{"15\r36\r", 200ms}}}, {kBackWindows, Pieces{{"12\r", 200ms}}}};
  for (const bool twoSided : {false, true}) {
    const auto read = [&](Milliseconds cancel) {
      SekonicBench bench(kSr607, said);
      bench.SetExtents(4, 2, twoSided);
      WindowOfTwoItems(bench);
      if (twoSided) bench.AddWindow({2, 1, 1, 1, 1, 5, 1, 0});
      bench.reader->SetSleepTime(300);
      bench.CancelAt(cancel);
      bench.Do("S");
      const Milliseconds began = bench.time->Elapsed();
      const bool kept = bench.Do("r").ends_with("''");
      return std::pair(kept, bench.time->Elapsed() - began);
    };
    const auto [good, whole] = read(1h);
    ASSERT_TRUE(good);
    for (Milliseconds early{10}; early < 280ms; early += 10ms) {
      const auto [kept, ended] = read(whole - early);
      EXPECT_TRUE(kept && ended >= whole) << early.count();
    }
  }
}

// ---- Barcodes

TEST(SekonicRead, BarcodesAreSetUpPerDefinitionAndReadIntoEightTexts) {
  EXPECT_EQ(Sheets({}, TwoBarcodes),
            "0 ^SBA00^M | 50 ^SBA01^M | 100 ^SBA10999^M | 150 ^SBA10999^M | 200 ?^M | 200 ^ET^M | 1205 "
            "/^ET^M | 1205 ^SBA05^M | 1855 ^PED001004^M | 2455 /^PED001002^M | 2455 r: [4x48 1,1=5] [2x48 "
            "2,2=6] 4/6 '4711' 'AB' '' '' '' '' '' '' | 2455 ^SBA00^M | 2505 ^SBA01^M | 2555 ^SBA10999^M | "
            "2605 ^SBA10999^M | 2655 ?^M | 2655 ^ET^M | 2655 /^ET^M | 2655 ^SBA05^M | 2705 ^PED001004^M | "
            "2705 /^PED001002^M | 2705 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 '4711' 'AB' '' '' '' '' '' ''");
  EXPECT_EQ(
      Play(kSr607, "Sr", {{kBarcodes, "7\r"}}, [](Bench& b) { b.AddBarcodes(1); }),
      "0 ^SBA00^M | 50 ^SBA01^M | 100 ^SBA10999^M | 150 ?^M | 150 ^ET^M | 1155 /^ET^M | 1155 ^SBA05^M | 1805 "
      "^PED001004^M | 2405 /^PED001002^M | 2405 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 '7' '' '' '' '' '' '' ''");
  const auto nine = [](Bench& b) {
    OneSided(b);
    b.AddBarcodes(9);
  };
  EXPECT_EQ(
      Play(kSr607, "Sr", {{kBarcodes, "1\r2\r3\r4,5,6,7\r8\r"}}, nine),
      "0 ^SBA00^M | 50 ^SBA01^M | 100 ^SBA10999^M | 150 ^SBA10999^M | 200 ^SBA10999^M | 250 ^SBA10999^M | "
      "300 ^SBA10999^M | 350 ^SBA10999^M | 400 ^SBA10999^M | 450 ^SBA10999^M | 500 ?^M | 500 ^ET^M | 1505 "
      "^SBA05^M | 2155 ^PED001004^M | 2755 r: [4x48 1,1=5] [] 4/-1 '1' '2' '3' '4' '5' '6' '7' '8'");
  EXPECT_EQ(Play(kSr607, "Sr", {},
                 [](Bench& b) {
                   b.AddBarcodes(1);
                   b.reader->SetBarcode(false);
                 }),
            "0 ?^M | 0 ^ET^M | 1005 /^ET^M | 1005 ^PED001004^M | 1605 /^PED001002^M | 1605 r: [4x48 1,1=5] "
            "[2x48 2,2=6] 4/6 ''");
}

TEST(SekonicRead, BarcodeInPiecesIsOneTextAndMissingOnesCostASilence) {
  const auto read = [](const Pieces& said) {
    SekonicBench bench(kSr607, {{kBarcodes, said}});
    TwoBarcodes(bench);
    const std::string happened = bench.Do("Sr");
    return happened.substr(happened.find("^SBA05"));
  };
  EXPECT_EQ(read({{"47"}, {"11\rA", 300ms}, {"B", 900ms}, {"\r", 900ms}}),
            "^SBA05^M | 3935 ^PED001004^M | 4535 /^PED001002^M | 4535 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 "
            "'4711' 'AB' '' '' '' '' '' ''");
  EXPECT_EQ(read({{"4711,A"}, {"B", 500ms}}),
            "^SBA05^M | 2740 ^PED001004^M | 3340 /^PED001002^M | 3340 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 "
            "'4711' 'AB' '' '' '' '' '' ''");
  EXPECT_EQ(read({{"4711"}, {"\r", 500ms}}),
            "^SBA05^M | 2740 ^PED001004^M | 3340 /^PED001002^M | 3340 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 "
            "'4711' '' '' '' '' '' '' ''");
  EXPECT_EQ(read({{"\x02"
                   "4711\r\x03"},
                  {"AB\r\n", 500ms}}),
            "^SBA05^M | 2335 ^PED001004^M | 2935 /^PED001002^M | 2935 r: [4x48 1,1=5] [2x48 2,2=6] 4/6 "
            "'4711' 'AB' '' '' '' '' '' ''");
  EXPECT_EQ(read({{"4711\rAB\r7"}}), "^SBA05^M | ! No Response | 1855 r: no");
  EXPECT_EQ(read({{"4711\r"}, {"AB\r", 100ms}, {"7", 10ms}}), "^SBA05^M | ! No Response | 1915 r: no");
}

}  // namespace
}  // namespace tesk::test
