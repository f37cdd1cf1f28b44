// The sheets that simulated scanners generate, and the faults as a person orders them.
#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/Simulators.h"

namespace tesk::simulator {
namespace {

TEST(Faults, ReadsWhatItListsAndRefusesTheRestNamingWhatItTakes) {
  const auto accepted = FaultKinds(teskReaderTypeScantronScanMark5500);
  for (const FaultKind kind : accepted) {
    const std::string text = std::string(Describe(kind).name) + (kind == FaultKind::Cut ? "@40@7" : "@7");
    const Fault expected{kind, 7, kind == FaultKind::Cut ? 40U : 0U};
    EXPECT_EQ(ParseFault(text, accepted).fault, expected) << text;
  }
  for (const auto& [text, says] :
       std::map<std::string, const char*>{{"", "double-feed@SHEET"},
                                          {"Jam@1", "cut@BYTE@SHEET"},

                                          {"jam", "one number, not 0; write jam@SHEET"},
                                          {"jam@", "the last number is 1 to 1000000"},
                                          {"jam@0", "the last number is 1"},

                                          {"jam@1@2", "one number, not 2"},
                                          {"cut@3", "two numbers, not 1; write cut@BYTE@SHEET"},

                                          {"cut@1@2@3", "two numbers, not 3"}}) {
    const ParsedFault parsed = ParseFault(text, accepted);
    EXPECT_FALSE(parsed.fault.has_value()) << text;
    EXPECT_NE(parsed.error.find("\"" + text + "\""), std::string::npos) << parsed.error;
    EXPECT_NE(parsed.error.find(says), std::string::npos) << parsed.error;
  }
  const FaultKind few[] = {FaultKind::Jam};
  EXPECT_FALSE(ParseFault("timing@1", few).fault.has_value());
}

std::uint32_t Checksum(const std::vector<Sheet>& sheets) {
  std::uint32_t sum = 0;
  for (const Sheet& sheet : sheets) {
    for (const SideArray* side : {&sheet.side1, &sheet.side2}) {
      for (std::int32_t row = 1; row <= side->Rows(); ++row) {
        for (std::int32_t column = 1; column <= side->Columns(); ++column) {
          sum = sum * 31U + static_cast<std::uint32_t>(side->At(row, column));
        }
      }
    }
  }
  return sum;
}

TEST(GenerateSheets, AreTheSameOnEverySystemAndWhateverTheCount) {
  const Geometry geometry{50, 48, true};
  const auto three = GenerateSheets(3, 7, geometry, 15);
  const auto five = GenerateSheets(5, 7, geometry, 15);
  EXPECT_TRUE(std::equal(three.begin(), three.end(), five.begin()));
  EXPECT_NE(three[0], three[1]);
  EXPECT_NE(GenerateSheets(1, 8, geometry, 15)[0], three[0]);
  EXPECT_EQ(three[0].barcodes, std::vector<std::string>{"98171595"});
  EXPECT_EQ(Checksum(three), 2302825066U);
  EXPECT_TRUE(GenerateSheets(-1, 7, geometry, 15).empty());
  EXPECT_EQ(GenerateSheets(1, 7, {0, 0, true}, 15)[0].side1, SideArray());
  for (std::int32_t rows = 1; rows < 16; ++rows) {
    EXPECT_EQ(GenerateSheets(1, 7, {rows, rows, true}, 15)[0].side1.Rows(), rows);
  }
}

}  // namespace
}  // namespace tesk::simulator
