// The parser of OpScan records, byte by byte: what it makes of every kind of line, run and text, and that it does not
// matter where the bytes were cut up.
#include <gtest/gtest.h>

#include "base/RunTimeError.h"
#include "drivers/opscanRecord.h"
#include "tests/support/TestBench.h"

namespace tesk::basNCS {
namespace {

std::string Times(std::size_t count, const std::string& text) {
  std::string repeated;
  for (std::size_t i = 0; i < count; ++i) repeated += text;
  return repeated;
}

std::string RunOf(int count, char character) {
  return std::string{'\x15', static_cast<char>(64 + count), character};
}

const std::string kBlankLine(48, '0');

// Takes the bytes up to the record's end; "side,bytes,line" for each line of a wrong length.
std::string TakeAll(OpScanRecord& record, std::string_view bytes) {
  std::string wrong;
  for (const char byte : bytes) {
    if (record.Ended()) break;
    if (const auto w = record.Take(static_cast<std::uint8_t>(byte))) {
      wrong += NumberText(w->side) + "," + NumberText(w->bytes) + "," + NumberText(w->line) + " ";
    }
  }
  return wrong;
}

std::string ResultOf(const OpScanRecord& record) {
  const Sheet sheet = record.Result();
  std::string text = test::MarksText(sheet.side1) + " " + test::MarksText(sheet.side2) + " " +
                     NumberText(*sheet.side1TimingMarks) + "/" +
                     NumberText(sheet.side2TimingMarks.value_or(-1));
  for (const std::string& one : sheet.texts) text += " '" + one + "'";
  return text + (record.Broken() ? " broken" : "") + (record.MayEndInSilence() ? " may end" : "") +
         (record.Ended() ? "" : " goes on");
}

// Lines of a wrong length, both sides, their counts, the texts, and how the record stands.
std::string Read(std::string_view bytes, bool twoSided = false) {
  OpScanRecord record(twoSided);
  const std::string wrong = TakeAll(record, bytes);
  return wrong + ResultOf(record);
}

TEST(OpScanRecord, CharactersAndRunsBecomeValuesAndColumn48IsBlank) {
  EXPECT_EQ(Read("a7079AF:7@7G7f7 7\x01"
                 "7\r"),
            "[150x48 1,1=7 1,3=7 1,4=9 1,5=10 1,6=15 1,8=7 1,10=7 1,11=16 1,12=7 1,13=47 1,14=7 1,15=-16 "
            "1,16=7 1,17=-47 1,18=7] [] 1/-1 '?'");
  EXPECT_EQ(Read("a" + std::string(45, '0') + "FEDa" + std::string(45, '0') + "FE\n"),
            "[150x48 1,46=15 1,47=14 2,46=15 2,47=14] [] 2/-1 '?'");
  EXPECT_EQ(Read("a" + RunOf(3, 'F') + std::string(45, '0') + "a\r"),
            "[150x48 1,1=15 1,2=15 1,3=15] [] 2/-1 '?'");
  EXPECT_EQ(Read("a" + RunOf(48, '0') + "a12" + RunOf(0, '9') + kBlankLine.substr(2) + "a\r"),
            "[150x48 2,1=1 2,2=2] [] 3/-1 '?'");
  EXPECT_EQ(Read("a" + RunOf(2, 'a') + kBlankLine.substr(2) + "a\r"), "[150x48 1,1=42 1,2=42] [] 2/-1 '?'");
  EXPECT_EQ(Read("a" + std::string(46, '0') + RunOf(4, '2') + "a\r"),
            "1,50,1 [150x48 1,47=2 2,1=2 2,2=2] [] 2/-1 '?'");
}

TEST(OpScanRecord, WrongLineLengthIsReportedUnderTheSideOfTheNextMarker) {
  const std::string line47 = kBlankLine.substr(1);
  EXPECT_EQ(Read("a" + line47 + "a" + kBlankLine + "a" + kBlankLine + "0b" + kBlankLine + "\r"),
            "1,47,1 2,49,0 [150x48] [] 3/-1 '?'");
  EXPECT_EQ(Read("a" + kBlankLine + "b" + line47 + "b" + line47 + "a" + kBlankLine + "\r"),
            "2,47,1 1,47,1 [150x48] [] 2/-1 '?'");
  EXPECT_EQ(Read("aaa" + kBlankLine + "\r"), "1,0,1 1,0,2 [150x48] [] 3/-1 '?'");
  EXPECT_EQ(Read("0a" + kBlankLine + "\r"), "1,49,0 [150x48] [] 1/-1 '?' broken");
  // Nobody checks the last line.
  EXPECT_EQ(Read("a" + line47 + "\r"), "[150x48] [] 1/-1 '?'");
  EXPECT_EQ(Read("a" + line47 + "c\r"), "[150x48] [] 1/-1 ''");
}

TEST(OpScanRecord, RowsAdvanceByColumnsOfEachSideAndNeverByMarkers) {
  const std::string line = "2" + kBlankLine.substr(1);
  EXPECT_EQ(Read("a" + std::string(40, '0') + "a12345678" + "9\r"),
            "1,40,1 [150x48 1,41=1 1,42=2 1,43=3 1,44=4 1,45=5 1,46=6 1,47=7 2,1=9] [] 2/-1 '?'");
  EXPECT_EQ(Read("a" + line + "b" + line + "a" + line + "b" + line + "b" + line + "\r", true),
            "[150x48 1,1=2 2,1=2] [150x48 1,1=2 2,1=2 3,1=2] 2/3 '?'");
  EXPECT_EQ(Read("a" + line + "b" + line + "a" + line + "b" + line + "\r"),
            "[150x48 1,1=2 2,1=2] [] 2/-1 '?'");
}

TEST(OpScanRecord, Holds150RowsAndFailsAtTheFirstMarkBeyond) {
  const std::string full = Times(150, "a" + kBlankLine);
  EXPECT_EQ(Read(full + "a\r"), "[150x48] [] 151/-1 '?'");
  EXPECT_EQ(Read(Times(200, "b" + kBlankLine) + "\r"), "[150x48] [] 0/-1 '?'");
  const auto number = [](const std::string& bytes, bool twoSided) {
    const auto error = Attempt([&] { Read(bytes, twoSided); });
    return error ? error->Number() : -1;
  };
  EXPECT_EQ(number(full + "a1", false), kErrorSubscript);
  EXPECT_EQ(number(full + "a" + RunOf(47, ':'), false), -1);
  EXPECT_EQ(number(full + "a" + RunOf(48, ':'), false), kErrorSubscript);
  EXPECT_EQ(number(Times(151, "b" + kBlankLine), true), kErrorSubscript);
  EXPECT_EQ(number(std::string(32'767, 'a'), false), -1);
  EXPECT_EQ(number(std::string(32'768, 'a'), false), kErrorOverflow);
  EXPECT_EQ(number("c" + std::string(65'535, '1'), false), -1);
  EXPECT_EQ(number("c" + std::string(65'536, '1'), false), kErrorLineRead);
}

TEST(OpScanRecord, WhatNoScannerSendsBreaksTheRecord) {
  EXPECT_EQ(Read("X"), "[150x48 1,1=33] [] 0/-1 '?' broken goes on");
  EXPECT_EQ(Read("a\x15?"), "[150x48] [] 1/-1 '?' broken");
  EXPECT_EQ(Read("a\x15@0"), "[150x48] [] 1/-1 '?' goes on");
  EXPECT_EQ(Read("a" + RunOf(4, '\x1F')), "[150x48] [] 1/-1 '?' broken");
  EXPECT_EQ(Read("a" + RunOf(4, ' ') + "\r"), "[150x48 1,1=-16 1,2=-16 1,3=-16 1,4=-16] [] 1/-1 '?'");
  EXPECT_EQ(Read("cAB" + RunOf(4, '\n')), "[150x48] [] 0/-1 'AB' broken");
  EXPECT_EQ(Read("c" + kBlankLine),
            "[150x48] [] 0/-1 '000000000000000000000000000000000000000000000000' broken may end goes on");
  EXPECT_EQ(Read("ac" + kBlankLine),
            "[150x48] [] 1/-1 '000000000000000000000000000000000000000000000000' may end goes on");
  EXPECT_EQ(Read("cAB" + std::string(45, '0') + "d" + kBlankLine),
            "[150x48] [] 0/-1 '000000000000000000000000000000000000000000000' "
            "'000000000000000000000000000000000000000000000000' may end goes on");
}

TEST(OpScanRecord, TextSectionYieldsItsLinesWithoutTheirPrefixes) {
  EXPECT_EQ(Read("a" + kBlankLine + "\r"), "[150x48] [] 1/-1 '?'");
  EXPECT_EQ(Read("c\r"), "[150x48] [] 0/-1 ''");
  EXPECT_EQ(Read("cAB123dCD456d\r"), "[150x48] [] 0/-1 '123' '456'");
  EXPECT_EQ(Read("cAB123dCD4\n"), "[150x48] [] 0/-1 '123'");
  EXPECT_EQ(Read("cAB123d"), "[150x48] [] 0/-1 '123' '' may end goes on");
  EXPECT_EQ(Read("cAB123\r"), "[150x48] [] 0/-1 'AB123'");
  EXPECT_EQ(Read("cAdd\r"), "[150x48] [] 0/-1 '' ''");
  EXPECT_EQ(Read("cAB" + RunOf(5, '7') + RunOf(2, 'd') + RunOf(0, '8') + "abcd\r"),
            "[150x48] [] 0/-1 '77777ddabc'");
}

TEST(OpScanRecord, SilenceIsAnEndInTheTextSectionAloneAndNeverWithinARun) {
  for (const char* bytes : {"", "a00", "a\x15", "cAB\x15",
                            "c\x15"
                            "D"})
    EXPECT_EQ(Read(bytes).find("may end"), std::string::npos);
  for (const char* bytes : {"c", "cAB1d",
                            "cAB\x15"
                            "D1"})
    EXPECT_NE(Read(bytes).find("may end"), std::string::npos);
}

// A record with everything in it.
const std::string kGood = "a" + RunOf(47, '2') + "F" + "a0123456789ABCDEF" + RunOf(32, '1') + "b" +
                          kBlankLine + "b" + std::string(24, '8') + RunOf(24, '9') + "cAB" + RunOf(4, '5') +
                          "0dCD77d\r";

TEST(OpScanRecord, EveryRestCompletesACutRecordAndEveryWrongByteEndsInAPageOrAnError) {
  const std::string whole = Read(kGood, true);
  for (std::size_t at = 0; at < kGood.size(); ++at) {
    OpScanRecord record(true);
    EXPECT_EQ(TakeAll(record, kGood.substr(0, at)), "") << at;
    EXPECT_FALSE(record.Ended()) << at;
    EXPECT_EQ(TakeAll(record, kGood.substr(at)), "") << at;
    EXPECT_EQ(ResultOf(record), whole) << at;
    for (int value = 0; value < 256; ++value) {
      std::string bytes = kGood + "\r\r\r";
      bytes[at] = static_cast<char>(value);
      OpScanRecord spoilt(true);
      const auto error = Attempt([&] { TakeAll(spoilt, bytes); });
      ASSERT_TRUE(error ? error->Number() == kErrorSubscript : spoilt.Ended()) << at << " " << value;
    }
  }
}

}  // namespace
}  // namespace tesk::basNCS
