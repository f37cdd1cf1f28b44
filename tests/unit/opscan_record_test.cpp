// The parser of OpScan records, byte by byte: what it makes of every kind of line, run and text, and that it
// does not matter where the bytes were cut up.
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/RunTimeError.h"
#include "drivers/opscanRecord.h"

namespace tesk::basNCS {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

constexpr const char* kNak = "\x15";

std::string Times(std::size_t count, const std::string& text) {
  std::string repeated;
  for (std::size_t i = 0; i < count; ++i) repeated += text;
  return repeated;
}

std::string RunOf(int count, char character) {
  return std::string{'\x15', static_cast<char>(64 + count), character};
}

const std::string kBlankLine = std::string(48, '0');

struct Parsed {
  explicit Parsed(std::string_view bytes, bool twoSided = true) : record(twoSided) {
    for (const char byte : bytes) {
      if (record.Ended()) break;
      if (const auto wrong = record.Take(static_cast<std::uint8_t>(byte))) warnings.push_back(*wrong);
    }
  }

  Sheet page() { return record.Result(); }

  OpScanRecord record;
  std::vector<WrongLength> warnings;
};

std::vector<std::int16_t> RowOf(const SideArray& side, std::int32_t row, std::int32_t columns) {
  std::vector<std::int16_t> values;
  for (std::int32_t column = 1; column <= columns; ++column) values.push_back(side.At(row, column));
  return values;
}

TEST(OpScanRecord, DecodesEveryCharacterIntoItsValue) {
  const struct {
    char character;
    std::int16_t value;
  } kCases[] = {{'0', 0}, {'5', 5},  {'9', 9},  {'A', 10},  {'F', 15},    {':', 0},
                {'@', 0}, {'G', 16}, {'f', 47}, {' ', -16}, {'\x01', -47}};
  for (const auto& c : kCases) {
    Parsed parsed(std::string("a7") + c.character + "7\r");
    EXPECT_THAT(RowOf(parsed.page().side1, 1, 4), ElementsAre(7, c.value, 7, 0)) << c.character;
  }
}

TEST(OpScanRecord, Column48OfACompletedRowIsBlankWhateverWasSent) {
  Parsed parsed("a" + std::string(48, 'F') + "a" + std::string(47, 'E') + "\n");
  EXPECT_EQ(parsed.page().side1.At(1, 47), 15);
  EXPECT_EQ(parsed.page().side1.At(1, 48), 0);
  EXPECT_EQ(parsed.page().side1.At(2, 47), 14);
  EXPECT_EQ(parsed.page().side1TimingMarks, 2);
  EXPECT_THAT(parsed.warnings, IsEmpty());
  EXPECT_TRUE(parsed.record.Ended());
}

TEST(OpScanRecord, RunsCountAndStoreAsIfWrittenOut) {
  const struct {
    const char* what;
    std::string line;
    std::string writtenOut;
  } kCases[] = {
      {"a short run", RunOf(4, 'F') + std::string(44, '1'), "FFFF" + std::string(44, '1')},
      {"a whole line", RunOf(48, '3'), std::string(48, '3')},
      {"an empty run", "12" + RunOf(0, '9') + std::string(46, '4'), "12" + std::string(46, '4')},
      {"a run of marker letters", RunOf(2, 'a') + std::string(46, '0'), ""},
      {"a run over the end of a row", RunOf(50, '2'), std::string(50, '2')},
  };
  for (const auto& c : kCases) {
    Parsed parsed("a" + c.line + "a\r");
    EXPECT_EQ(parsed.warnings.size(), c.writtenOut.size() > 48 ? 1U : 0U) << c.what;
    if (c.writtenOut.empty()) {
      EXPECT_EQ(parsed.page().side1.At(1, 1), 'a' - 55) << c.what;
    } else {
      EXPECT_EQ(parsed.page().side1, Parsed("a" + c.writtenOut + "a\r").page().side1) << c.what;
    }
  }
}

TEST(OpScanRecord, WrongLineLengthIsReportedUnderTheSideOfTheNextMarker) {
  const std::string shortLine(47, '1');
  const struct {
    std::string bytes;
    std::vector<WrongLength> warnings;
  } kCases[] = {
      {"a" + shortLine + "a" + kBlankLine + "\r", {{1, 47, 1}}},
      {"a" + kBlankLine + "a" + shortLine + "b" + kBlankLine + "\r", {{2, 47, 0}}},
      {"a" + kBlankLine + "b" + shortLine + "b" + kBlankLine + "\r", {{2, 47, 1}}},
      {"b" + kBlankLine + "b" + shortLine + "a" + kBlankLine + "\r", {{1, 47, 0}}},
      {"aaa" + kBlankLine + "\r", {{1, 0, 1}, {1, 0, 2}}},
      {"a" + kBlankLine + "0a" + kBlankLine + "\r", {{1, 49, 1}}},
      {"0a" + kBlankLine + "\r", {{1, 49, 0}}},
      {"a" + shortLine + "\r", {}},  // nobody checks the last line
      {"a" + shortLine + "c\r", {}},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Parsed(c.bytes).warnings, c.warnings) << c.bytes;
  }
}

TEST(OpScanRecord, RowsAdvanceByColumnsAndNeverByMarkers) {
  Parsed parsed("a" + std::string(40, '1') + "a" + std::string(40, '2') + "\r");
  EXPECT_EQ(parsed.page().side1.At(1, 40), 1);
  EXPECT_EQ(parsed.page().side1.At(1, 41), 2);
  EXPECT_EQ(parsed.page().side1.At(2, 1), 2);
  EXPECT_EQ(parsed.page().side1.At(2, 32), 2);
  EXPECT_EQ(parsed.page().side1.At(2, 33), 0);
}

TEST(OpScanRecord, SidesHaveRowsOfTheirOwnAndSide2IsCountedWhereItIsNotRead) {
  const std::string bytes = "a" + std::string(48, '1') + "b" + std::string(48, '2') + "a" +
                            std::string(48, '3') + "b" + std::string(48, '4') + "\r";
  for (const bool twoSided : {true, false}) {
    Parsed parsed(bytes, twoSided);
    EXPECT_EQ(parsed.page().side1.At(2, 1), 3);
    EXPECT_EQ(parsed.page().side1TimingMarks, 2);
    EXPECT_EQ(parsed.page().side2TimingMarks, twoSided ? std::optional<std::int16_t>(2) : std::nullopt);
    EXPECT_EQ(parsed.page().side2.Empty(), !twoSided);
    EXPECT_TRUE(!twoSided || parsed.page().side2.At(2, 1) == 4);
  }
}

TEST(OpScanRecord, Holds150RowsAndFailsAtTheFirstMarkBeyond) {
  const std::string full = Times(150, "a" + kBlankLine);
  EXPECT_NO_THROW(Parsed(full + "a\r"));
  EXPECT_NO_THROW(Parsed(Times(200, "b" + kBlankLine) + "\r", false));
  const auto number = [](const std::string& bytes) {
    try {
      Parsed parsed(bytes);
    } catch (const RunTimeError& error) {
      return error.Number();
    }
    return -1;
  };
  EXPECT_EQ(number(full + "a1"), kErrorSubscript);
  EXPECT_EQ(number(full + "a" + RunOf(48, ':')), kErrorSubscript);
  EXPECT_EQ(number(Times(151, "b" + kBlankLine)), kErrorSubscript);
  EXPECT_EQ(number(std::string(40'000, 'a')), kErrorOverflow);
  EXPECT_EQ(number("c" + std::string(70'000, '1')), kErrorLineRead);
}

TEST(OpScanRecord, WhatNoScannerSendsBreaksTheRecord) {
  for (const std::string& bytes :
       {std::string("X"), "0a" + kBlankLine, "a" + std::string(kNak) + "!", "a" + RunOf(4, '\r'),
        "cAB" + RunOf(4, '\n'), "a" + RunOf(4, kNak[0]), "ca" + kBlankLine, "c" + kBlankLine}) {
    EXPECT_TRUE(Parsed(bytes).record.Broken()) << bytes;
  }
  EXPECT_FALSE(Parsed("cAB" + std::string(45, '0') + "d\r").record.Broken());
  EXPECT_FALSE(Parsed("a" + RunOf(0, 'A') + "c" + RunOf(3, 'd') + "d\r").record.Broken());
}

TEST(OpScanRecord, TextSectionYieldsItsLinesWithoutTheirPrefixes) {
  const struct {
    const char* what;
    std::string bytes;
    Texts texts;
  } kCases[] = {
      {"no section", "a" + kBlankLine + "\r", {"?"}},
      {"an empty section", "c\r", {""}},
      {"two lines", "cAB123dCD456d\r", {"123", "456"}},
      {"line feed ends too", "cAB123d\n", {"123"}},
      {"ended by silence: the last empty line stays", "cAB123d", {"123", ""}},
      {"a line that was not closed is dropped", "cAB123dCD4\r", {"123"}},
      {"the only line not closed stays, prefix and all", "cAB123\r", {"AB123"}},
      {"shorter than the prefix", "cAdd\r", {"", ""}},
      {"a run", "cAB" + RunOf(5, '7') + "d\r", {"77777"}},
      {"a run of ends of lines is text", "cAB" + RunOf(2, 'd') + "d\r", {"dd"}},
      {"markers are text", "cABabcd\r", {"abc"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(Parsed(c.bytes).page().texts, c.texts) << c.what;
}

TEST(OpScanRecord, SilenceIsAnEndInTheTextSectionAloneAndNeverWithinARun) {
  const struct {
    std::string bytes;
    bool mayEnd;
  } kCases[] = {{"", false},
                {"a00", false},
                {"a" + std::string(kNak), false},
                {"c", true},
                {"cAB1d", true},
                {"cAB" + std::string(kNak), false},
                {"c\x15"
                 "D",
                 false},
                {"cAB" + RunOf(4, '1'), true},
                {"cAB1d\r", false}};
  for (const auto& c : kCases) EXPECT_EQ(Parsed(c.bytes).record.MayEndInSilence(), c.mayEnd) << c.bytes;
}

// A record with everything in it.
const std::string kGood = "a" + RunOf(47, '2') + "F" + "a0123456789ABCDEF" + RunOf(32, '1') + "b" +
                          kBlankLine + "b" + std::string(24, '8') + RunOf(24, '9') + "cAB" + RunOf(4, '5') +
                          "0dCD77d\r";

TEST(OpScanRecord, EveryCutLeavesARecordThatHasNotEndedAndEveryRestCompletesIt) {
  const Sheet whole = Parsed(kGood).page();
  EXPECT_EQ(whole.texts, (Texts{"55550", "77"}));
  for (std::size_t cut = 0; cut < kGood.size(); ++cut) {
    Parsed parsed(kGood.substr(0, cut));
    EXPECT_FALSE(parsed.record.Ended()) << cut;
    EXPECT_THAT(parsed.warnings, IsEmpty()) << cut;
    for (const char byte : kGood.substr(cut)) parsed.record.Take(static_cast<std::uint8_t>(byte));
    EXPECT_TRUE(parsed.record.Ended()) << cut;
    EXPECT_EQ(parsed.page().side1, whole.side1) << cut;
    EXPECT_EQ(parsed.page().side2, whole.side2) << cut;
    EXPECT_EQ(parsed.page().texts, whole.texts) << cut;
  }
}

TEST(OpScanRecord, EverySingleWrongByteEndsInAPageOrAnError) {
  for (std::size_t at = 0; at < kGood.size(); ++at) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = kGood;
      bytes[at] = static_cast<char>(value);
      try {
        Parsed parsed(bytes + "\r\r\r");
        ASSERT_TRUE(parsed.record.Ended()) << at << " " << value;
      } catch (const RunTimeError& error) {
        ASSERT_EQ(error.Number(), kErrorSubscript) << at << " " << value;
      }
    }
  }
}

}  // namespace
}  // namespace tesk::basNCS
