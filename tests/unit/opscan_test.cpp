// The OpScan driver against scanners that say what a test wrote down: every command and its time, what it stores, and
// what it tells the operator.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drivers/basNCS.h"
#include "tests/support/Talker.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Messages = std::vector<RecordingHost::Message>;
using Pieces = std::vector<Piece>;

const std::string kScanMode = "s0";
const std::string kStatus = "s1";
const std::string kRead = "\x11";
const std::string kFine(5, '\0');
// Half of a blank line, and a line whose first and last mark that counts are 1 and 2.
const std::string kHalf(24, '0');
const std::string kLine = "1" + std::string(45, '0') + "20";
const std::string kLine47 = kLine.substr(1);

std::string Report(char mode, char letter = 'N') {
  std::string report(51, '-');
  report[34] = letter;
  report[48] = mode;
  return report;
}

const Said kGood{{kScanMode, Report('i')}, {kRead, "a" + kLine + "\r"}, {kStatus, kFine}};

struct OpScanBench : Bench {
  explicit OpScanBench(const Said& said = {}, teskReaderType type = teskReaderTypeNCSOpScan7)
      : Bench(type, std::make_shared<Talker>(With(kGood, said), Talker::Hears::Commands)) {
    reader->SetSleepTime(5);
    reader->SetTimeOut(10);
  }
};

using Settings = std::function<void(Bench&)>;
void TwoSided(Bench& b) { b.SetExtents(50, 40, true); }
void WithoutFeeder(Bench& b) { b.reader->SetFeeder(false); }

// What happens in a session with a scanner that says this instead of what a good one says.
std::string Play(const char* calls, const Said& said = {}, const Settings& set = {}) {
  OpScanBench bench(said);
  if (set) set(bench);
  return bench.Do(calls);
}

// The same of two sheets with these records and statuses.
std::string Sheets(const Answers& first, const Answers& second, const Answers& status = kFine) {
  return Play("Srcr", {{kRead, first.Then(second)}, {kStatus, status}});
}

// ---- Starting and ending

TEST(OpScan, StartSendsWhatTheScanModeNeeds) {
  const auto start = [](const std::string& report, const Answers& then) {
    return Play("s", {{kScanMode, Answers(report).Then(then)}});
  };
  const std::string reading = Report('i');
  EXPECT_EQ(Play("srexr"),
            "0 s0 | 600 r | 600 s: yes | 600 ^Q | 1200 s1 | 1800 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?' | 1800 "
            "^R | 1800 e | 1810 x: yes | error 8018 basNCS.ReadPageNCS | 1810 r: no");
  EXPECT_EQ(start(Report('I', 'A'), ""), "0 s0 | 600 r | 600 s: yes");
  EXPECT_EQ(start(Report('e'), reading), "0 s0 | 600 ew^D | 800 ei^D | 1000 s0 | 1030 r | 1030 s: yes");
  // What the scanner says to a change of its mode is nobody's answer.
  EXPECT_EQ(
      Play("s", {{kScanMode, Answers(Report('e')).Then(reading)}, {"ew\x04", "ok\r"}, {"ei\x04", "ok\r"}}),
      "0 s0 | 600 ew^D | 800 ei^D | 1000 s0 | 1030 r | 1030 s: yes");
  EXPECT_EQ(start(Report('t', 'A'), reading),
            "0 s0 | 600 ew^D | 800 ^Q | 800 ei^D | 1000 s0 | 1030 r | 1030 s: yes");
  // The letters count in either case. The report is shorter than the one before, and that is not waited for.
  EXPECT_EQ(start(Report('Y', 'i') + "--\r", Report('I') + "\r"),
            "0 s0 | 600 ew^D | 800 ^Q | 800 ei^D | 1000 s0 | 1630 r | 1630 s: yes");
  EXPECT_EQ(start("", ""), "0 s0 | ! No Response | 10000 s: no");
  EXPECT_EQ(start(reading.substr(1), ""), "0 s0 | ! No Response | 10000 s: no");
  EXPECT_EQ(start(Report('d'), ""), "0 s0 | 600 ew^D | 800 ei^D | 1000 s0 | ! No Response | 11000 s: no");
}

TEST(OpScan, ElevenReportsMayLeadToSuccessAndTheTwelfthFailsWhateverItSays) {
  for (const int reports : {10, 11, 12, 13}) {
    Answers said = Report('t');
    for (int i = 1; i < reports; ++i) said = said.Then(Report(i % 2 == 0 ? 'w' : '?'));
    OpScanBench bench(Said{{kScanMode, said.Then(Report('i'))}});
    EXPECT_EQ(bench.reader->StartReader(), reports <= 11) << reports;
    EXPECT_EQ(std::ranges::count(bench.serial->sent, 's'), 1 + std::min(reports, 12)) << reports;
    EXPECT_EQ(bench.serial->sent.ends_with("r"), reports <= 11) << reports;
    EXPECT_EQ(bench.host.messages.size(), reports <= 11 ? 0U : 1U) << reports;
  }
}

TEST(OpScan, EndRestoresTheModesThatAreRestoredAndClosesWithoutAFeeder) {
  const auto end = [](char mode) {
    return Play("Sx", {{kScanMode, Answers(Report(mode)).Then(Report('i'))}});
  };
  EXPECT_EQ(end('i'), "10 x: yes");
  EXPECT_EQ(end('e'), "20 ew^D | 220 ee^D | 420 x: yes");
  EXPECT_EQ(end('t'), "20 ew^D | 220 et^D | 420 x: yes");
  EXPECT_EQ(end('d'), "20 ew^D | 220 ed^D | 420 x: yes");
  EXPECT_EQ(end('w'), "10 x: yes");
  EXPECT_EQ(end('s'), "20 ew^D | 220 es^D | 420 x: yes");
  EXPECT_EQ(end('y'), "10 x: yes");
  EXPECT_EQ(end('?'), "10 x: yes");
  const auto noPause = [](Bench& b) {
    WithoutFeeder(b);
    b.reader->SetSleepTime(0);
  };
  // A SleepTime below 1 becomes 50.
  EXPECT_EQ(Play("Sx", {{kScanMode, Answers(Report('e')).Then(Report('i'))}}, noPause),
            "100 ^N | 200 ew^D | 400 ee^D | 600 x: yes");
  EXPECT_EQ(Play("Sx", {}, [](Bench& b) { b.reader->SetSleepTime(1); }), "2 x: yes");
  EXPECT_EQ(Play("sx", {}, [](Bench& b) { b.reader->SetPort(9); }),
            "error 8002 basRead.ReaderInit | 0 s: no | 0 x: yes");
}

TEST(OpScan, InvalidModeIsShownAndNothingSent) {
  OpScanBench bench;
  bench.Do("S");
  for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 8})
    EXPECT_FALSE(basNCS::SetScanModeNCS(*bench.reader, mode));
  for (const std::int16_t mode : std::initializer_list<std::int16_t>{1, 7})
    EXPECT_TRUE(basNCS::SetScanModeNCS(*bench.reader, mode));
  EXPECT_EQ(bench.serial->sent,
            "s0rei\x04"
            "ey\x04");
  EXPECT_EQ(bench.host.messages, Messages(2, {"Invalid Scan Mode", "An invalid scan mode was specified."}));
}

// ---- Reading

TEST(OpScan, SheetsComeWithTheirSidesCountsAndTexts) {
  const std::string record =
      "a" + kLine + "a" + kHalf + kHalf + "b7" + kHalf.substr(1) + "\x15X0cAB12dCD34d\r\n";
  EXPECT_EQ(Play("Srer", {{kRead, record}}, TwoSided),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [150x48 1,1=7] 2/1 '12' '34' | 1200 ^R | 1200 e | "
            "1200 ^Q | 1200 s1 | 1200 r: [150x48 1,1=1 1,47=2] [150x48 1,1=7] 2/1 '12' '34'");
  // Side 2 keeps its place where it is not read.
  EXPECT_EQ(Play("Sr", {{kRead, record}}), "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 2/-1 '12' '34'");
  EXPECT_EQ(Play("Sr", {{kRead, "c\r"}}), "0 ^Q | 600 s1 | 1200 r: [150x48] [] 0/-1 ''");
  EXPECT_EQ(Play("Sr", {{kRead, "a\r"}}), "0 ^Q | 600 s1 | ! Invalid Number of Bytes | 1200 r: no");
  std::string full;
  for (int line = 0; line < 150; ++line) full += "a" + kHalf + kHalf;
  EXPECT_EQ(Play("Sr", {{kRead, full + "a1\r"}}), "0 ^Q | error 9 basNCS.ReadPageNCS | 0 r: no");
}

TEST(OpScan, LineOfAWrongLengthWarnsAndIsReadUnlessItIsTheLast) {
  EXPECT_EQ(Play("Sr", {{kRead, "a" + kLine + "a" + kLine47 + "b" + kLine + "\r"}}, TwoSided),
            "0 ^Q | ! Invalid Number of Bytes | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2 2,46=2] [150x48 1,1=1 "
            "1,47=2] 2/1 '?'");
  OpScanBench bench(
      Said{{kRead, "a1a" + kLine + "a" + kLine47 + "b" + kLine + "b" + kLine + "0a" + kLine + "\r"}});
  bench.Do("Sr");
  const std::string reported = "The scanner reported an invalid number of bytes on side ";
  const auto wrong = [&](const std::string& text) {
    return RecordingHost::Message{"Invalid Number of Bytes", reported + text};
  };
  EXPECT_THAT(bench.host.messages, ElementsAre(wrong("1|Invalid number of bytes: 1|Line number: 1"),
                                               wrong("2|Invalid number of bytes: 47|Line number: 0"),
                                               wrong("1|Invalid number of bytes: 49|Line number: 3")));
  // More behind a record than its end.
  OpScanBench behind(Said{{kRead, "a" + kLine + "a" + kLine47 + "\rab"}});
  behind.Do("Sr");
  EXPECT_THAT(behind.host.messages, ElementsAre(wrong("1|Invalid number of bytes: 49|Line number: 2")));
  OpScanBench blank(Said{{kRead, "a\r"}});
  blank.Do("Sr");
  EXPECT_THAT(blank.host.messages, ElementsAre(wrong("1|Invalid number of bytes: 0|Line number: 1")));
  OpScanBench translated(Said{{kRead, "a1a" + kLine + "\r"}});
  translated.host.translate = {{"Invalid Number of Bytes", "T"},
                               {reported + "1", "S"},
                               {"Invalid number of bytes: ", "N"},
                               {"Line number: ", "L"}};
  translated.Do("Sr");
  EXPECT_THAT(translated.host.messages, ElementsAre(RecordingHost::Message{"T", "S|N1|L1"}));
}

TEST(OpScan, TextSectionEndsInSilenceAndOnlyThere) {
  const auto read = [](const Pieces& record) {
    return Play("Sr", {{kRead, record}}, [](Bench& b) { b.reader->SetSleepTime(700); });
  };
  const std::string text = "a" + kLine + "cAB1";
  EXPECT_EQ(read({{text + "2d\r"}}), "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12'");
  EXPECT_EQ(read({{text + "2d"}}), "0 ^Q | 705 s1 | 1305 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' ''");
  EXPECT_EQ(read({{text}}), "0 ^Q | 705 s1 | 1305 r: [150x48 1,1=1 1,47=2] [] 1/-1 'AB1'");
  // A pause that hosts set, within a run and within the marks.
  EXPECT_EQ(read({{text}, {"2d\r", 690ms}}), "0 ^Q | 1290 s1 | 1890 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12'");
  EXPECT_EQ(read({{text + "\x15"}, {"D", 3s}, {"7d\r", 3s}}),
            "0 ^Q | 6600 s1 | 7200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '17777'");
  EXPECT_EQ(read({{"a" + kHalf}, {kHalf + "\r", 9s}}), "0 ^Q | 9600 s1 | 10200 r: [150x48] [] 1/-1 '?'");
}

TEST(OpScan, TextComesOutWholeOrNotAtAllHoweverItIsCut) {
  const std::string line = "a" + kLine;
  const std::string ended = line + "cAB12d\r";
  const std::string silent = line + "cAB12d";
  // Where records end with a line end: a long pause, and a text that breaks off.
  EXPECT_EQ(Sheets(ended, Pieces{{line + "cAB1"}, {"2d", 900ms}, {"\r", 5s}}),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' | 1200 ^Q | 7100 s1 | 7100 r: "
            "[150x48 1,1=1 1,47=2] [] 1/-1 '12'");
  EXPECT_EQ(
      Sheets(ended, line + "cAB12"),
      "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' | 1200 ^Q | ! No Response | 11200 r: no");
  EXPECT_EQ(Sheets(ended, line + "cAB34d"),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' | 1200 ^Q | 11800 s1 | 11800 r: "
            "[150x48 1,1=1 1,47=2] [] 1/-1 '34' ''");
  // The rest comes in front of a short status; a line end comes that nobody expected any more.
  EXPECT_EQ(Sheets(silent, Pieces{{line + "cAB12"}, {"d", 300ms}}, kFine.substr(1)),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' '' | 1200 ^Q | 1230 s1 | ! Invalid "
            "Number of Bytes | 1530 r: no");
  EXPECT_EQ(Sheets(silent, Pieces{{silent}, {"\r", 700ms}}, kFine.substr(1)),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' '' | 1200 ^Q | 1230 s1 | ! Invalid "
            "Number of Bytes | 1930 r: no");
  EXPECT_EQ(Sheets(silent, Pieces{{silent}, {"\r", 700ms}}, Answers(kFine).Then(kFine.substr(1))),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' '' | 1200 ^Q | 1230 s1 | ! Invalid "
            "Number of Bytes | 1930 r: no");
  EXPECT_EQ(Sheets(Pieces{{silent}, {"\r", 500ms}}, silent),
            "0 ^Q | 1100 s1 | 1700 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12' | 1700 ^Q | 12300 s1 | 12300 r: "
            "[150x48 1,1=1 1,47=2] [] 1/-1 '12' ''");
  const auto cancel = [](Bench& b) { b.CancelAt(300ms); };
  EXPECT_EQ(Play("Sr", {{kRead, Pieces{{silent}, {"\r", 500ms}}}, {kStatus, kFine.substr(1)}}, cancel),
            "0 ^Q | 530 s1 | 560 r: [150x48 1,1=1 1,47=2] [] 1/-1 '12'");
}

TEST(OpScan, BytesOfNoSheetRefuseItAndDelayNoOther) {
  const std::string sheet = "a" + kLine + "\r\n";
  EXPECT_EQ(Sheets("c" + sheet, sheet),
            "0 ^Q | ! Invalid Number of Bytes | 600 r: no | 1200 ^Q | 1800 s1 | 2400 r: [150x48 1,1=1 "
            "1,47=2] [] 1/-1 '?'");
  EXPECT_EQ(Sheets(sheet.substr(0, 40) + "\r" + sheet.substr(41), sheet),
            "0 ^Q | ! Invalid Number of Bytes | 600 r: no | 1200 ^Q | 1800 s1 | 2400 r: [150x48 1,1=1 "
            "1,47=2] [] 1/-1 '?'");
  // One more of the status's first byte, and a line end that trickles in behind a record and within a status.
  EXPECT_EQ(
      Play("Srrcr", {{kRead, sheet}, {kStatus, Answers(kFine).Then(kFine + kFine.substr(1)).Then(kFine)}}),
      "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?' | 1200 ^Q | 1200 s1 | ! Invalid Number of "
      "Bytes | 1200 r: no | 1800 ^Q | 2400 s1 | 3000 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?'");
  EXPECT_EQ(Sheets(Pieces{{"a" + kLine + "\r"}, {"\n", 15ms}}, Pieces{{"a" + kLine + "\r"}, {"\n", 15ms}},
                   Pieces{{kFine.substr(1)}, {kFine.substr(4), 15ms}}),
            "0 ^Q | 615 s1 | 1230 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?' | 1230 ^Q | 1245 s1 | 1260 r: [150x48 "
            "1,1=1 1,47=2] [] 1/-1 '?'");
}

TEST(OpScan, WaitsEndAtTheirTimeOutAndOnlyAPersonMayTakeTheirTime) {
  EXPECT_EQ(Play("Sr", {{kRead, ""}}), "0 ^Q | ! No Response | 10000 r: no");
  EXPECT_EQ(Play("Sr", {{kRead, "a" + kHalf}}), "0 ^Q | ! No Response | 10000 r: no");
  EXPECT_EQ(Play("Sr", {{kStatus, kFine.substr(2)}}), "0 ^Q | 600 s1 | ! No Response | 10600 r: no");
  // A late sheet of any length is over before the next start.
  EXPECT_EQ(Play("Srcs", {{kRead, Pieces{{"", 10500ms}, {std::string(7000, 'a')}}}}),
            "0 ^Q | ! No Response | 10000 r: no | 11100 s0 | 11700 r | 11700 s: yes");
  const Said person{{kRead, Pieces{{"", 5min}, {"a" + kLine + "\r"}}}};
  EXPECT_EQ(Play("Sr", person, WithoutFeeder),
            "0 ^Q | 300600 s1 | 301200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?'");
  // While answer sheets are graded too; each gets ten pauses before its status.
  EXPECT_EQ(Play("Sr", person, [](Bench& b) { b.reader->SetReaderGrade(true); }),
            "0 ^Q | 300650 s1 | 301250 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?'");
  const auto cancel = [&](const Said& said, bool feeder) {
    return Play("Sr", said, [=](Bench& b) {
      b.reader->SetFeeder(feeder);
      b.CancelAt(2s);
    });
  };
  EXPECT_EQ(cancel(person, false), "0 ^Q | 2010 r: no");
  EXPECT_EQ(cancel({{kRead, "a00"}}, true), "0 ^Q | 2010 r: no");
  EXPECT_EQ(cancel({{kRead, "a" + kLine + "cAB\x15"}}, true), "0 ^Q | 2010 r: no");
  EXPECT_EQ(cancel({{kRead, Pieces{{"a" + kLine + "\r", 1900ms}}}, {kStatus, "00"}}, true),
            "0 ^Q | 2020 s1 | 3520 r: no");
  EXPECT_EQ(cancel({{kRead, Pieces{{"a" + kLine + "\r", 1900ms}}}, {kStatus, Pieces{{kFine, 1400ms}}}}, true),
            "0 ^Q | 2020 s1 | 3450 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?'");
}

// ---- What the operator is told

TEST(OpScan, EveryCombinationOfStatusBitsShowsTheFirstConditionOnlyAndRejectsWithARejecter) {
  const char* const kTitles[] = {"Skewed Page", "Thickness Error", "Paper Jam", "Read Head Error"};
  for (unsigned bits = 0; bits < 64; ++bits) {
    const unsigned byte1 = 0x30 | (bits & 3U);
    const unsigned byte2 = 0x40 | (bits >> 2U);
    const bool rejecter = (bits & 1U) != 0 || bits == 32;
    OpScanBench bench(
        Said{{kStatus, std::string{'\x7F', static_cast<char>(byte1), static_cast<char>(byte2), '\x7F'}}});
    bench.reader->SetRejecter(rejecter);
    bench.Do("Sr");
    const bool faults[] = {(byte1 & 2U) != 0, (byte1 & 1U) != 0, (byte2 & 8U) != 0, (byte2 & 4U) != 0};
    const auto first = std::ranges::find(faults, true) - faults;
    std::vector<std::string> titles;
    for (const auto& message : bench.host.messages) titles.push_back(message.title);
    EXPECT_EQ(titles, first == 4 ? std::vector<std::string>{} : std::vector<std::string>{kTitles[first]})
        << bits;
    EXPECT_EQ(bench.serial->sent.ends_with("\x1B\x12"), rejecter && first < 4) << bits;
    EXPECT_EQ(bench.reader->Side1Array().Empty(), bits != 0) << bits;
    EXPECT_EQ(bench.reader->Side1TimingMarks(), 1) << "of a sheet that is refused too";
  }
}

TEST(OpScan, FaultsReachTheOperatorInTheirOwnWords) {
  const std::string silence = "There was no response from the scanner while ";
  const std::tuple<Said, std::string, std::string> kCases[] = {
      {{{kRead, ""}}, "No Response", silence + "scanning a page."},
      {{{kRead, "a1"}}, "No Response", silence + "reading data."},
      {{{kStatus, ""}}, "No Response", silence + "checking status."},
      {{{kScanMode, ""}}, "No Response", silence + "checking status."},
      {{{kStatus, std::string("\0\2\0\0", 4)}},
       "Skewed Page",
       "The scanner reports a skewed page. Please clear the page from the feeder and then rescan."},
      {{{kStatus, std::string("\0\1\0\0", 4)}},
       "Thickness Error",
       "The scanner reports a page thickness error. Please check that the scanner did not double feed and "
       "then "
       "rescan this page."},
      {{{kStatus, std::string("\0\0\10\0", 4)}},
       "Paper Jam",
       "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form."},
      {{{kStatus, std::string("\0\0\4\0", 4)}},
       "Read Head Error",
       "The scanner reports a read head error.  Check with the scanner's manufacturer for support."},
  };
  for (const auto& [said, title, text] : kCases) {
    OpScanBench bench(said);
    bench.Do("sr");
    EXPECT_THAT(bench.host.messages, ::testing::Contains(RecordingHost::Message{title, text}));
    EXPECT_TRUE(bench.reader->CancelScan());
  }
}

// ---- Imprint and disposal

TEST(OpScan, SheetIsImprintedAndSentWhereTheHostWantsIt) {
  const auto imprint = [](std::int16_t distance) {
    return [=](Bench& b) {
      b.reader->SetRejecter(true);
      b.TurnImprinterOn(distance, "B\xC3\xA4r\t1");
    };
  };
  EXPECT_EQ(
      Play("Sperj", {}, imprint(7)),
      "0 ^Q | 600 s1 | 1200 107^D | 1200 2B?r 1 ^D | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?' | 1200 ^R | "
      "1200 e | 1200 ^Q | 1200 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?' | 1200 ^[^R | 1200 j");
  EXPECT_EQ(Play("Sp", {}, imprint(123)),
            "0 ^Q | 600 s1 | 1200 1123^D | 1200 2B?r 1 ^D | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?'");
  EXPECT_EQ(Play("Srj", {}, [](Bench& b) { b.reader->SetRejecter(false); }),
            "0 ^Q | 600 s1 | 1200 r: [150x48 1,1=1 1,47=2] [] 1/-1 '?' | 1200 j");
  OpScanBench bench;
  bench.reader->SetPrinter(nullptr);
  bench.Do("S");
  EXPECT_FALSE(basNCS::PrintNCS(*bench.reader));
  EXPECT_EQ(bench.serial->sent, "s0r");
}

}  // namespace
}  // namespace tesk::test
