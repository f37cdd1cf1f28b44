// The imprinter: what each reader type offers and how its switches depend on one another.
#include <array>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "engine/clsTeskReaderPrinter.h"

namespace tesk::test {
namespace {

enum Setting { Ignored, Off, AsGiven };

struct Expected {
  std::vector<int> types;
  Setting enabled;
  std::vector<int> properties;  // BufferCount, MinPosition, MaxPosition, MaxCharacters, Distance
};

const Expected kExpected[] = {
    {{0, 19, 24, 38, 39, 40, kLastReaderType + 1, 64, -1, INT32_MIN}, Ignored, {0, -1, -1, -1, 0}},
    {{1, 18, 20, 21, 22, 23, 35, 37, 41}, Off, {0, -1, -1, -1, 0}},
    {{2, 3, 4, 31, 32}, AsGiven, {1, 0, 24, 24, 0}},
    {{5}, AsGiven, {1, 0, 40, 40, 0}},
    {{6}, AsGiven, {1, 10, 25, 25, 0}},
    {{25}, AsGiven, {1, 0, 25, 25, 0}},
    {{26}, AsGiven, {1, 10, 54, 54, 0}},
    {{7, 8, 9, 10, 30, 33, 34, 36, 42, 43}, AsGiven, {3, 10, 245, 41, 245}},
    {{11, 12, 13, 14, 15, 16, 17, 27, 28, 29}, AsGiven, {1, 0, 135, 135, 0}},
    {{44, 46}, AsGiven, {1, -1, -1, 200, 0}},
    {{45}, AsGiven, {1, 0, 355, 42, 245}},
};

clsTeskReaderPrinter PrinterOf(int type, bool enabledBefore) {
  clsTeskReaderPrinter printer;
  printer.SetType(teskReaderTypeNCSOpScan2);
  printer.SetEnabled(enabledBefore);
  printer.SetDistance(77);
  printer.SetType(static_cast<teskReaderType>(type));
  return printer;
}

std::vector<int> PropertiesOf(const clsTeskReaderPrinter& printer) {
  return {printer.BufferCount(), printer.MinPosition(), printer.MaxPosition(), printer.MaxCharacters(),
          printer.Distance()};
}

TEST(Printer, EveryTypeHasItsPropertiesAndTakesEnabledByItsOwnRule) {
  for (const auto& [types, enabled, properties] : kExpected) {
    for (const int type : types) {
      EXPECT_EQ(PropertiesOf(PrinterOf(type, true)), properties) << type;
      EXPECT_EQ(PropertiesOf(PrinterOf(type, false)), (std::vector{properties[0], -1, -1, -1, properties[4]}))
          << type << ": off";
      for (const bool before : {false, true}) {
        for (const bool given : {false, true}) {
          clsTeskReaderPrinter printer = PrinterOf(type, before);
          EXPECT_EQ(printer.Enabled(), before) << type << ": a new type leaves the switch alone";
          printer.SetEnabled(given);
          EXPECT_EQ(printer.Enabled(), enabled == Ignored ? before : enabled == AsGiven && given) << type;
        }
      }
    }
  }
}

TEST(Printer, ActiveIsTrueOnlyWhileEnabledWhenSetAndWhenRead) {
  clsTeskReaderPrinter printer = PrinterOf(teskReaderTypeNCSOpScan5, false);
  printer.SetActive(true);
  printer.SetEnabled(true);
  EXPECT_FALSE(printer.Active()) << "set while off: stored as off";
  printer.SetActive(true);
  for (const bool enabled : {true, false, true}) {
    printer.SetEnabled(enabled);
    EXPECT_EQ(printer.Active(), enabled) << "the stored value outlives Enabled";
  }
  printer.SetActive(false);
  EXPECT_FALSE(printer.Active());
}

TEST(Printer, FilledBuffersBeyondTheModelsCountDoNotCount) {
  using Lines = std::array<std::string, 3>;
  for (const auto& [type, lines, filled] : {std::tuple{7, Lines{"", "x", ""}, 1},
                                            {7, {"a", "b", "c"}, 3},
                                            {2, {"", "b", "c"}, 0},
                                            {2, {" ", "b", "c"}, 1},
                                            {24, {"a", "b", "c"}, 0}}) {
    clsTeskReaderPrinter printer = PrinterOf(type, true);
    printer.SetBuffer1(lines[0]);
    printer.SetBuffer2(lines[1]);
    printer.SetBuffer3(lines[2]);
    EXPECT_EQ(printer.FilledBufferCount(), filled) << type;
    EXPECT_EQ((Lines{printer.Buffer1(), printer.Buffer2(), printer.Buffer3()}), lines);
  }
}

}  // namespace
}  // namespace tesk::test
