// The imprinter: what each reader type offers and how its switches depend on one another.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/clsTeskReaderPrinter.h"

namespace tesk::test {
namespace {

enum Setting { Ignored, Off, AsGiven };

struct Expected {
  int type;
  Setting enabled;
  int bufferCount;
  int minPosition;
  int maxPosition;
  int maxCharacters;
  int distance;
};

// clang-format off
constexpr Expected kExpected[] = {
    {0, Ignored, 0, -1, -1, -1, 0},
    {1, Off, 0, -1, -1, -1, 0},
    {2, AsGiven, 1, 0, 24, 24, 0},
    {3, AsGiven, 1, 0, 24, 24, 0},
    {4, AsGiven, 1, 0, 24, 24, 0},
    {5, AsGiven, 1, 0, 40, 40, 0},
    {6, AsGiven, 1, 10, 25, 25, 0},
    {7, AsGiven, 3, 10, 245, 41, 245},
    {8, AsGiven, 3, 10, 245, 41, 245},
    {9, AsGiven, 3, 10, 245, 41, 245},
    {10, AsGiven, 3, 10, 245, 41, 245},
    {11, AsGiven, 1, 0, 135, 135, 0},
    {12, AsGiven, 1, 0, 135, 135, 0},
    {13, AsGiven, 1, 0, 135, 135, 0},
    {14, AsGiven, 1, 0, 135, 135, 0},
    {15, AsGiven, 1, 0, 135, 135, 0},
    {16, AsGiven, 1, 0, 135, 135, 0},
    {17, AsGiven, 1, 0, 135, 135, 0},
    {18, Off, 0, -1, -1, -1, 0},
    {19, Ignored, 0, -1, -1, -1, 0},
    {20, Off, 0, -1, -1, -1, 0},
    {21, Off, 0, -1, -1, -1, 0},
    {22, Off, 0, -1, -1, -1, 0},
    {23, Off, 0, -1, -1, -1, 0},
    {24, Ignored, 0, -1, -1, -1, 0},
    {25, AsGiven, 1, 0, 25, 25, 0},
    {26, AsGiven, 1, 10, 54, 54, 0},
    {27, AsGiven, 1, 0, 135, 135, 0},
    {28, AsGiven, 1, 0, 135, 135, 0},
    {29, AsGiven, 1, 0, 135, 135, 0},
    {30, AsGiven, 3, 10, 245, 41, 245},
    {31, AsGiven, 1, 0, 24, 24, 0},
    {32, AsGiven, 1, 0, 24, 24, 0},
    {33, AsGiven, 3, 10, 245, 41, 245},
    {34, AsGiven, 3, 10, 245, 41, 245},
    {35, Off, 0, -1, -1, -1, 0},
    {36, AsGiven, 3, 10, 245, 41, 245},
    {37, Off, 0, -1, -1, -1, 0},
    {38, Ignored, 0, -1, -1, -1, 0},
    {39, Ignored, 0, -1, -1, -1, 0},
    {40, Ignored, 0, -1, -1, -1, 0},
    {41, Off, 0, -1, -1, -1, 0},
    {42, AsGiven, 3, 10, 245, 41, 245},
    {43, AsGiven, 3, 10, 245, 41, 245},
    {44, AsGiven, 1, -1, -1, 200, 0},
    {45, AsGiven, 1, 0, 355, 42, 245},
    {46, AsGiven, 1, -1, -1, 200, 0},
    {47, Ignored, 0, -1, -1, -1, 0}, {63, Ignored, 0, -1, -1, -1, 0}, {64, Ignored, 0, -1, -1, -1, 0},
    {66, Ignored, 0, -1, -1, -1, 0}, {-1, Ignored, 0, -1, -1, -1, 0}, {INT32_MIN, Ignored, 0, -1, -1, -1, 0},
};
// clang-format on

clsTeskReaderPrinter PrinterOf(int type, bool enabledBefore) {
  clsTeskReaderPrinter printer;
  printer.SetType(teskReaderTypeNCSOpScan2);
  printer.SetEnabled(enabledBefore);
  printer.SetDistance(77);
  printer.SetType(static_cast<teskReaderType>(type));
  return printer;
}

std::vector<int> RangesOf(const clsTeskReaderPrinter& printer) {
  return {printer.MinPosition(), printer.MaxPosition(), printer.MaxCharacters()};
}

TEST(Printer, EveryTypeTakesTheSettingOfEnabledByItsOwnRule) {
  for (const Expected& e : kExpected) {
    for (const bool before : {false, true}) {
      for (const bool given : {false, true}) {
        clsTeskReaderPrinter printer = PrinterOf(e.type, before);
        EXPECT_EQ(printer.Enabled(), before) << e.type << ": a new type leaves the switch alone";
        printer.SetEnabled(given);
        EXPECT_EQ(printer.Enabled(), e.enabled == Ignored ? before : e.enabled == AsGiven && given) << e.type;
      }
    }
  }
}

TEST(Printer, EveryTypeHasItsBuffersRangesAndFirstDistance) {
  const std::vector<int> none = {-1, -1, -1};
  for (const Expected& e : kExpected) {
    const clsTeskReaderPrinter off = PrinterOf(e.type, false);
    EXPECT_EQ(RangesOf(off), none) << e.type << ": a printer that is off has no ranges";
    const clsTeskReaderPrinter on = PrinterOf(e.type, true);
    EXPECT_EQ(RangesOf(on), (std::vector<int>{e.minPosition, e.maxPosition, e.maxCharacters})) << e.type;
    EXPECT_EQ(off.BufferCount(), e.bufferCount) << e.type;
    EXPECT_EQ(on.BufferCount(), e.bufferCount) << e.type;
    EXPECT_EQ(on.Distance(), e.distance) << e.type;
  }
}

TEST(Printer, ActiveIsTrueOnlyWhileEnabledWhenSetAndWhenRead) {
  clsTeskReaderPrinter printer = PrinterOf(teskReaderTypeNCSOpScan5, false);
  printer.SetActive(true);
  printer.SetEnabled(true);
  EXPECT_FALSE(printer.Active()) << "set while off: stored as off";
  printer.SetActive(true);
  EXPECT_TRUE(printer.Active());
  printer.SetEnabled(false);
  EXPECT_FALSE(printer.Active());
  printer.SetEnabled(true);
  EXPECT_TRUE(printer.Active()) << "the stored value outlives Enabled";
  printer.SetActive(false);
  EXPECT_FALSE(printer.Active());
}

TEST(Printer, FilledBuffersBeyondTheModelsCountDoNotCount) {
  struct Case {
    teskReaderType type;
    std::vector<std::string> buffers;
    int filled;
  };
  const Case cases[] = {
      {teskReaderTypeScanningSystemsSR601, {"", "x", ""}, 1},
      {teskReaderTypeScanningSystemsSR601, {"a", "", "c"}, 2},
      {teskReaderTypeScanningSystemsSR601, {"a", "b", "c"}, 3},
      {teskReaderTypeNCSOpScan2, {"", "b", "c"}, 0},
      {teskReaderTypeNCSOpScan2, {" ", "b", "c"}, 1},
      {teskReaderTypePDIVMR138, {"a", "b", "c"}, 0},
  };
  for (const Case& c : cases) {
    clsTeskReaderPrinter printer = PrinterOf(c.type, true);
    printer.SetBuffer1(c.buffers[0]);
    printer.SetBuffer2(c.buffers[1]);
    printer.SetBuffer3(c.buffers[2]);
    EXPECT_EQ(printer.FilledBufferCount(), c.filled) << (&c - cases);
    EXPECT_EQ((std::vector{printer.Buffer1(), printer.Buffer2(), printer.Buffer3()}), c.buffers);
  }
}

TEST(Printer, DistanceIsNotCheckedAndChangesWithTheType) {
  clsTeskReaderPrinter printer;
  EXPECT_EQ(printer.Distance(), 0);
  printer.SetType(teskReaderTypeScanningSystemsSR601);
  EXPECT_EQ(printer.Distance(), 245);
  printer.SetDistance(INT16_MIN);
  EXPECT_EQ(printer.Distance(), INT16_MIN);
  printer.SetType(teskReaderTypeScanningSystemsSR601);
  EXPECT_EQ(printer.Distance(), 245) << "also where the type is the same";
  printer.SetType(teskReaderTypeNCSOpScan2);
  EXPECT_EQ(printer.Distance(), 0);
}

}  // namespace
}  // namespace tesk::test
