// The VMR138 driver against scanners that say what a test wrote down: every command and its time, the rows that it
// counts and stores, and what it tells the operator.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/vmrRecord.h"
#include "tests/support/Talker.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

using Pieces = std::vector<Piece>;
using Settings = std::function<void(Bench&)>;

std::string Status(int status1, int status2 = 0) {
  return {'?', static_cast<char>(status1), static_cast<char>(status2)};
}

const Said kGood{{"Q", Status(0)}, {"+", Answers("F0").Then("")}, {"8", "\n@A\r"}, {"9", ""}};

struct VmrBench : Bench {
  explicit VmrBench(const Said& said = {})
      : Bench(teskReaderTypePDIVMR138, std::make_shared<Talker>(With(kGood, said), Talker::Hears::Commands)) {
    reader->SetSleepTime(10);
    reader->SetTimeOut(10);
    reader->SetRecognitionThreshold(240);
  }
};

// What happens in a session with a scanner that says this instead of what a good one says.
std::string Play(const char* calls, const Said& said = {}, const Settings& set = {}) {
  VmrBench bench(said);
  if (set) set(bench);
  return bench.Do(calls);
}

// The same of two reads of these records.
std::string Sheets(const Answers& first, const Answers& second) {
  return Play("Srcr", {{"8", first.Then(second)}});
}

// ---- Starting and ending

TEST(Vmr, SessionGoesOverTheWireAtTheseTimes) {
  const auto slow = [](Bench& b) { b.reader->SetSleepTime(40); };
  EXPECT_EQ(Play("srerjx", {}, slow),
            "0 0 | 700 Q | 1130 + | 1390 s: yes | 1590 Q | 1790 8 | 2220 9 | 2420 r: [500x14 1,7=241] [] "
            "1/-1 '' | 2420 4 | 2520 e | 2720 Q | 2920 8 | 3320 9 | 3520 r: [500x14 1,7=241] [] 1/-1 '' | "
            "3520 3 | 4520 j | 4520 9 | 4520 x: no");
  EXPECT_EQ(Play("sx", {}, [](Bench& b) { b.reader->SetPort(9); }),
            "error 8002 basRead.ReaderInit | 0 s: no | 0 x: no");
}

TEST(Vmr, StartCompletesTheSetUpThatTheStatusAsksForAndSetsTheThreshold) {
  const auto start = [](int status1, int status2, const char* threshold, std::int16_t wanted = 240) {
    return Play("s", {{"Q", Status(status1, status2)}, {"+", Answers(threshold).Then("")}},
                [=](Bench& b) { b.reader->SetRecognitionThreshold(wanted); });
  };
  EXPECT_EQ(start(16, 0, "F0"), "0 0 | 550 Q | 630 D | 680 + | 790 s: yes");
  EXPECT_EQ(start(4, 0, "F0"), "0 0 | 550 Q | 630 G | 680 + | 790 s: yes");
  EXPECT_EQ(start(16 + 4 + 8, 8 + 4, "F0"), "0 0 | 550 Q | 630 D | 630 G | 650 E | 720 + | 830 s: yes");
  EXPECT_EQ(start(128, 1 + 2 + 4 + 16, "EE"), "0 0 | 550 Q | 680 + | 760 + | 780 + | 860 s: yes");
  EXPECT_EQ(start(0, 0, "F3"), "0 0 | 550 Q | 680 + | 760 - | 780 - | 800 - | 880 s: yes");
  EXPECT_EQ(start(0, 0, "C0", 194), "0 0 | 550 Q | 680 + | 760 + | 780 + | 860 s: yes");
  EXPECT_EQ(start(0, 0, "D9", 215), "0 0 | 550 Q | 680 + | 760 - | 780 - | 860 s: yes");
  EXPECT_EQ(Play("s", {{"+", Pieces{{"F", 900ms}, {"0", 900ms}}}}), "0 0 | 550 Q | 680 + | 2540 s: yes");
  EXPECT_EQ(Play("s", {{"+", Answers("EE").Then("")}}, [](Bench& b) { b.reader->SetSleepTime(0); }),
            "0 0 | 500 Q | 530 + | 560 + | 570 + | 640 s: yes");
  // Answers to the steps that come so slowly that they would be taken for the status.
  EXPECT_EQ(Play("sr", {{"+", Answers("EE").Then(Pieces{{"E", 300ms}, {"F", 300ms}})}}),
            "0 0 | 550 Q | 680 + | 760 + | 780 + | 860 s: yes | 910 Q | 2010 Q | 2060 8 | 2190 9 | 2240 r: "
            "[500x14 1,7=241] [] 1/-1 ''");
  EXPECT_EQ(Play("s", {{"+", Answers("EE").Then("")}}, [](Bench& b) { b.CancelAt(660ms); }),
            "0 0 | 550 Q | 680 + | 760 + | 770 s: no");
}

TEST(Vmr, ThresholdThatIsMissingOrNonsenseFailsTheStartAndLeavesTheTimeOutAsItWas) {
  const std::string kInvalid =
      "The PDI scanner returned an invalid threshold setting.  Please reset the scanner and retry.";
  for (const char* answer : {"", "G0", "C?", "BF", "0F", "f0", "Fa", "FG", "C/", "F", " F", "FF0"}) {
    VmrBench bench(Said{{"+", answer}});
    EXPECT_FALSE(bench.reader->StartReader()) << answer;
    EXPECT_EQ(bench.serial->sent, "0Q+");
    const std::string text =
        *answer == '\0' ? "There was no response from the PDI scanner while initializing." : kInvalid;
    EXPECT_THAT(bench.host.messages,
                ElementsAre(RecordingHost::Message{"Threshold Initialization Error", text}))
        << answer;
    EXPECT_LT(bench.time->Elapsed(), 4s) << "the threshold has a second, not the time-out";
    EXPECT_EQ(bench.reader->fComm()->tmrScan()->Interval(), 10'000);
  }
}

// ---- Reading

TEST(Vmr, BitsOfEveryByteArePlacedFromTheLastRowUp) {
  const auto read = [](const std::string& record) {
    VmrBench bench({{"8", record}});
    EXPECT_THAT(bench.Do("Sr"), HasSubstr(" 9 | "));
    return MarksText(bench.reader->Side1Array()) + " " + NumberText(bench.reader->Side1TimingMarks());
  };
  EXPECT_EQ(read("\n\x61\x61\r"), "[500x14 1,1=241 1,6=241 1,7=241 1,12=241] 1");
  EXPECT_EQ(read("\n\x41\x42\x44\x48\x50\x60\r"),
            "[500x14 1,5=241 1,12=241 2,3=241 2,10=241 3,1=241 3,8=241] 3");
  EXPECT_EQ(read("\n@@@@\r"), "[500x14] 2");
  EXPECT_EQ(read(std::string("\n\x01\0\x20@\r", 6)), "[500x14 1,6=241 2,1=241] 2");
  EXPECT_EQ(read("\n\x80\xC1\r"), "[500x14 1,7=241] 1");
  // Line ends as data, and each ending.
  EXPECT_EQ(read("\n\r@@\r\r"), "[500x14 1,7=241 1,9=241 1,10=241 2,1=241 2,3=241 2,4=241] 2");
  EXPECT_EQ(read("\n\n@\r"), "[500x14 1,2=241 1,4=241] 1");
  for (const char* ending : {"\r", "\r\n", "\r\r", "\n\r"}) {
    EXPECT_EQ(read(std::string("\n@\x41\x42@") + ending), "[500x14 1,2=241 2,7=241] 2") << ending;
  }
  EXPECT_EQ(read("\n" + std::string(1001, '@') + "A\r"), "[500x14 1,7=241] 501");
  EXPECT_EQ(read("\n\r"), "[500x14] 0");
  EXPECT_EQ(read("\r"), "[500x14] -1");
}

TEST(Vmr, APauseAnywhereInARecordOfEitherEndingShiftsNoMark) {
  const std::tuple<std::string, std::string, Milliseconds> kRecords[] = {
      {"@\x60\x41@\x44@@\x41", "[500x14 1,7=241 2,3=241 3,1=241 4,12=241]", 2000ms},
      // Without bit 64 a carriage return may be data, and silence alone tells the end.
      {"\x01\x02\r\x05\x03\x04",
       "[500x14 1,1=241 1,2=241 1,9=241 2,1=241 2,3=241 2,4=241 2,7=241 2,9=241 3,1=241 3,8=241]", 900ms},
      {"\r@@@", "[500x14 2,1=241 2,3=241 2,4=241]", 900ms},
  };
  for (const auto& [rows, marks, longest] : kRecords) {
    for (const std::string ending : {"\r", "\r\n", "\r\r", "\n\r"}) {
      const std::string record = "\n" + rows + ending;
      for (std::size_t cut = 1; cut < record.size(); ++cut) {
        for (const auto pause : {40ms, 130ms, 300ms, longest}) {
          VmrBench bench({{"8", Pieces{{record.substr(0, cut)}, {record.substr(cut), pause}}}});
          bench.Do("S");
          int sheets = 0;
          for (; sheets < 2 && bench.reader->ReadPage(); ++sheets) {
            EXPECT_EQ(MarksText(bench.reader->Side1Array()), marks) << cut << " of " << record.size();
            EXPECT_EQ(bench.reader->Side1TimingMarks(), rows.size() / 2);
          }
          // Only where silence alone tells the end, a pause in front of its last byte is taken for one.
          const bool told = cut + 1 < record.size() || ending == "\r" || ending == "\n\r";
          EXPECT_TRUE(!told || sheets == 2) << cut << " of " << record.size();
        }
      }
    }
  }
}

TEST(Vmr, ALostOrAddedByteIsALossOfDataWhateverTheMarksAre) {
  for (const std::string rows : {"@A@@B@@@", "A@@@@@@@", "@\x01@@\x02@@@"}) {
    for (const std::string ending : {"\r", "\r\n", "\n\r"}) {
      const std::string good = "\n" + rows + ending;
      for (std::size_t at = 1; at <= rows.size(); ++at) {
        for (const std::string by : {"", "@@", "AA"}) {
          const std::string damaged = std::string(good).replace(at, 1, by);
          // Without bit 64 the line feed of an ending that nobody knows yet may as well be data.
          const bool ambiguous = rows[1] == '\x01' && ending == "\n\r";
          EXPECT_TRUE(ambiguous || Play("Sr", {{"8", damaged}}).ends_with("r: no")) << at << by;
          EXPECT_THAT(Sheets(good, damaged), ::testing::AllOf(HasSubstr("r: ["), HasSubstr("! Read Error")))
              << at << by;
        }
      }
    }
  }
}

TEST(Vmr, SheetWithWhatIsNoneOfItsRecordIsRefusedUntouched) {
  const std::string rows = "\n@A";
  // Another ending than the sheet before had, and bytes behind a record.
  EXPECT_EQ(Sheets(rows + "\r", rows + "\r\n"),
            "50 Q | 100 8 | 230 9 | 280 r: [500x14 1,7=241] [] 1/-1 '' | 330 Q | 380 8 | 480 9 | ! Read "
            "Error | 530 r: no");
  EXPECT_EQ(
      Sheets(rows + "\r", rows + "\n\r"),
      "50 Q | 100 8 | 230 9 | 280 r: [500x14 1,7=241] [] 1/-1 '' | 330 Q | 380 8 | ! Read Error | 480 r: no");
  EXPECT_EQ(Sheets(rows + "\r\n", rows + "\r"),
            "50 Q | 100 8 | 230 9 | 280 r: [500x14 1,7=241] [] 1/-1 '' | 330 Q | 380 8 | ! Read Error | "
            "10480 r: no");
  EXPECT_EQ(Sheets(rows + "\r", Pieces{{rows + "\r"}, {"@", 90ms}}),
            "50 Q | 100 8 | 230 9 | 280 r: [500x14 1,7=241] [] 1/-1 '' | 330 Q | 380 8 | 480 9 | ! Read "
            "Error | 530 r: no");
  EXPECT_EQ(Sheets(rows + "\rA", rows + "\r"),
            "50 Q | 100 8 | ! Read Error | 200 r: no | 850 Q | 900 8 | 1030 9 | 1080 r: [500x14 1,7=241] [] "
            "1/-1 ''");
  // Among marks with bit 64 a line end can only be a damaged byte; without any it may be data.
  EXPECT_EQ(Sheets("\n\r@A@\r", rows + "\r"),
            "50 Q | 100 8 | ! Read Error | 1200 r: no | 1850 Q | 1900 8 | 2030 9 | 2080 r: [500x14 1,7=241] "
            "[] 1/-1 ''");
  EXPECT_EQ(Sheets("\n@@\r", "\n\r@@@\r"),
            "50 Q | 100 8 | 1200 9 | 1250 r: [500x14] [] 1/-1 '' | 1300 Q | 1350 8 | 2450 9 | 2500 r: "
            "[500x14 2,1=241 2,3=241 2,4=241] [] 2/-1 ''");
  // Too many rows, half a row too many, no line feed, an ending in front, more behind what would be the end.
  EXPECT_EQ(Sheets("\nA@" + std::string(1000, '@') + "\r", rows + "\r"),
            "50 Q | 100 8 | ! Read Error | 230 r: no | 880 Q | 930 8 | 1060 9 | 1110 r: [500x14 1,7=241] [] "
            "1/-1 ''");
  EXPECT_EQ(Sheets(Pieces{{"\nA@@"}, {"@@@@\r", 2s}}, rows + "\r"),
            "50 Q | 100 8 | ! Read Error | 2100 r: no | 2750 Q | 2800 8 | 2930 9 | 2980 r: [500x14 1,7=241] "
            "[] 1/-1 ''");
  EXPECT_EQ(Sheets("\n@AB@@\r", "A@A@\r"),
            "50 Q | 100 8 | ! Read Error | 200 r: no | 850 Q | 900 8 | ! Read Error | 950 r: no");
  EXPECT_EQ(Sheets("\rA@A@\r", Pieces{{rows + "\r\n"}, {"A", 130ms}}),
            "50 Q | 100 8 | ! Read Error | 150 r: no | 800 Q | 880 8 | ! Read Error | 1010 r: no");
  EXPECT_EQ(Sheets(Pieces{{rows + "\nA"}, {"\r", 2s}}, rows + "\r"),
            "50 Q | 100 8 | ! Read Error | 200 r: no | 850 Q | 2700 Q | 2750 8 | 2880 9 | 2930 r: [500x14 "
            "1,7=241] [] 1/-1 ''");
  EXPECT_EQ(Play("Sr", {}, [](Bench& b) { b.reader->SetRecognitionThreshold(32767); }),
            "error 6 basPeripheralDynamics.ReadPagePD | 0 r: no");
}

TEST(Vmr, RecordWithoutEndIsDamaged) {
  basPeripheralDynamics::VmrRecord record({});
  for (int byte = 1; byte <= 65'535; ++byte) record.Take('@');
  EXPECT_TRUE(!record.Damaged() && record.Missing() == 1);
  record.Take('@');
  EXPECT_TRUE(record.Damaged() && record.Missing() == 0);
}

TEST(Vmr, NothingButThePrescribedPausesCostsTimeOnceTheEndingIsKnown) {
  EXPECT_EQ(Play("Srrr", {{"8", "\n@A@@\r"}}),
            "50 Q | 100 8 | 230 9 | 280 r: [500x14 2,7=241] [] 2/-1 '' | 330 Q | 380 8 | 480 9 | 530 r: "
            "[500x14 2,7=241] [] 2/-1 '' | 580 Q | 630 8 | 730 9 | 780 r: [500x14 2,7=241] [] 2/-1 ''");
  EXPECT_EQ(Play("Srr", {{"8", "\n@A@@\r\n"}}),
            "50 Q | 100 8 | 230 9 | 280 r: [500x14 2,7=241] [] 2/-1 '' | 330 Q | 380 8 | 480 9 | 530 r: "
            "[500x14 2,7=241] [] 2/-1 ''");
  // Without bit 64 a moment's silence is left of the long one, as long as no sheet is any longer.
  EXPECT_EQ(Play("Srrr", {{"8", Answers("\n\x01\x02@@\n\r").Then("\n\x01@\n\r").Then("\n\x01\x02@@\n\r")}}),
            "50 Q | 100 8 | 1200 9 | 1250 r: [500x14 2,1=241 2,8=241] [] 2/-1 '' | 1300 Q | 1350 8 | 2450 9 "
            "| 2500 r: [500x14 1,1=241] [] 1/-1 '' | 2550 Q | 2600 8 | 2730 9 | 2780 r: [500x14 2,1=241 "
            "2,8=241] [] 2/-1 ''");
}

TEST(Vmr, StatusThatIsNotAloneIsAskedForOnceMore) {
  const auto status = [](const Answers& first, const Answers& second) {
    return Play("Sr", {{"Q", Answers(Status(0)).Then(first).Then(second)}});
  };
  EXPECT_EQ(status("x" + Status(0), Status(0)),
            "50 Q | 700 Q | 750 8 | 880 9 | 930 r: [500x14 1,7=241] [] 1/-1 ''");
  EXPECT_EQ(status(Pieces{{"x"}, {Status(0), 60ms}}, Status(0)),
            "50 Q | 710 Q | 760 8 | 890 9 | 940 r: [500x14 1,7=241] [] 1/-1 ''");
  EXPECT_EQ(status("x" + Status(0), Status(0) + "x"), "50 Q | 700 Q | ! Status Error | 750 r: no");
  // A sheet under way, of which the line feed may come with the status.
  EXPECT_EQ(status(Status(32) + "\n@A\r", ""), "50 Q | 180 9 | 230 r: [500x14 1,7=241] [] 1/-1 ''");
  EXPECT_EQ(status(Pieces{{Status(32)}, {"\n@A\r", 3s}}, ""),
            "50 Q | 3130 9 | 3180 r: [500x14 1,7=241] [] 1/-1 ''");
  EXPECT_EQ(status(Status(32) + "x", Status(0)),
            "50 Q | 700 Q | 750 8 | 880 9 | 930 r: [500x14 1,7=241] [] 1/-1 ''");
}

TEST(Vmr, APersonMayTakeTheirTimeAndCancelEndsEveryWaitQuietly) {
  EXPECT_EQ(Play("Sr", {{"8", Pieces{{"\n@A\r", 2h}}}}),
            "50 Q | 100 8 | 7200180 9 | 7200230 r: [500x14 1,7=241] [] 1/-1 ''");
  const auto cancel = [](const Said& said) { return Play("Sr", said, [](Bench& b) { b.CancelAt(3s); }); };
  EXPECT_EQ(cancel({{"8", ""}}), "50 Q | 100 8 | 3010 r: no");
  EXPECT_EQ(cancel({{"Q", Answers(Status(0)).Then("?")}}), "50 Q | 3010 r: no");
  EXPECT_EQ(cancel({{"Q", Answers(Status(0)).Then(Status(32))}}), "50 Q | 3010 r: no");
  EXPECT_EQ(cancel({{"8", "\n@@"}}), "50 Q | 100 8 | 3010 r: no");
  EXPECT_EQ(cancel({{"8", Pieces{{"\n\x01\x02\r", 2600ms}, {"\x05\x03\x04\r", 700ms}}}}),
            "50 Q | 100 8 | 3400 r: no");
  EXPECT_EQ(cancel({{"8", Pieces{{"\n\x01\x02\r", 2600ms}}}}),
            "50 Q | 100 8 | 3750 9 | 3800 r: [500x14 1,1=241 1,8=241] [] 1/-1 ''");
}

TEST(Vmr, ACancelInAnyPrescribedPauseKeepsASheetThatHasArrivedAndTakesNoOther) {
  for (int second = 1; second <= 20; ++second) {
    const std::string happened = Play("Sr", {}, [&](Bench& b) {
      b.reader->SetSleepTime(800);
      b.CancelAt(std::chrono::seconds(second));
    });
    // 4 s in front of the status and behind it, behind the read command, the line feed and the end
    const std::string kept = "4030 Q | 8030 8 | 16090 9 | 20120 r: [500x14 1,7=241] [] 1/-1 ''";
    EXPECT_EQ(happened, second >= 8 ? kept : "4030 Q | 8030 r: no") << second;
  }
}

TEST(Vmr, ACancelDoesNotMakeHalfASheetOfOneWhoseMarksLookLikeItsEnd) {
  for (int turn = 1; turn < 120; ++turn) {
    VmrBench bench({{"8", Pieces{{"\n\x01\x02\r"}, {"\x05\x03\x04\r", 500ms}}}});
    bench.Do("S");
    int turns = 0;
    bench.time->onMessages = [&](int) {
      if (++turns == turn) bench.reader->SetCancelScan(true);
    };
    EXPECT_TRUE(!bench.reader->ReadPage() || bench.reader->Side1TimingMarks() == 3) << turn;
  }
}

// ---- What the operator is told

TEST(Vmr, FaultsReachTheOperatorInTheirOwnWordsAndAConditionEjectsTheSheet) {
  const std::string front =
      "The PDI scanner reports a front sensor error.  Either a form is present or the scanner is improperly "
      "closed. Please clear any form from the front of the scanner and try again.";
  const std::string back =
      "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is improperly "
      "closed.  Please clear any form from inside the scanner and try again.";
  const std::string jam =
      "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry.";
  const std::string silence =
      "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is connected and powered "
      "on.";
  const std::string loss =
      "An unexpected value was encountered while reading data.  Possible loss of data encountered during "
      "scanning process.  Try increasing the value of System Pause option.|System Pause: 10";
  const auto status = [](const std::string& second) { return Said{{"Q", Answers(Status(0)).Then(second)}}; };
  const struct {
    Said said;
    std::string title, text, happened;
  } kCases[] = {
      {status(Status(2 + 1 + 64 + 16)), "Status Error", front, "50 Q | ! Status Error | 130 4 | 230 r: no"},
      {status(Status(1 + 64 + 32)), "Status Error", back, "50 Q | ! Status Error | 130 4 | 230 r: no"},
      {status(Status(64)), "Status Error", jam, "50 Q | ! Status Error | 130 4 | 230 r: no"},
      {status(""), "Status Error", silence, "50 Q | ! Status Error | 10100 r: no"},
      {status("?0"), "Status Error", silence, "50 Q | ! Status Error | 10100 r: no"},
      {{{"8", "\n@@"}}, "Read Error", loss, "50 Q | 100 8 | ! Read Error | 10200 r: no"},
  };
  for (const auto& c : kCases) {
    VmrBench bench(c.said);
    EXPECT_EQ(bench.Do("Sr"), c.happened);
    EXPECT_THAT(bench.host.messages, ElementsAre(RecordingHost::Message{c.title, c.text}));
    EXPECT_TRUE(bench.reader->CancelScan());
  }
}

}  // namespace
}  // namespace tesk::test
