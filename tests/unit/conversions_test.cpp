// Text to value and value to text, with the texts that a hostile store, port or host may hand in.
#include "base/conversions.h"

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/HostServices.h"

namespace tesk::test {
namespace {

using namespace std::string_view_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The number of the error that escapes from `body`, 0 where none does.
template <class Body>
std::int32_t ErrorOf(Body body) {
  const auto error = Attempt([&] { body(); });
  return error ? error->Number() : 0;
}

TEST(Val, ReadsTheNumberThatATextBeginsWith) {
  const struct {
    std::string_view text;
    double value;
  } kCases[] = {
      {"", 0},
      {"12", 12},
      {"  12 ", 12},
      {"1 2 3", 123},
      {"\t1\n2", 12},
      {"-7", -7},
      {"+7", 7},
      {"- 7", -7},
      {"1.5", 1.5},
      {".5", 0.5},
      {"-.5", -0.5},
      {"5.", 5},
      {"1,5", 1},
      {"1.2.3", 1.2},
      {"12abc", 12},
      {"abc", 0},
      {".", 0},
      {"-", 0},
      {"--1", 0},
      {"+-1", 0},
      {"1e3", 1000},
      {"1E3", 1000},
      {"1d3", 1000},
      {"1D+3", 1000},
      {"1e-2", 0.01},
      {"1e", 1},
      {"1e+", 1},
      {"1ex", 1},
      {"e3", 0},
      {".e3", 0},
      {"&H1F", 31},
      {"&hff", 255},
      {"& H 1 0", 16},
      {"&O17", 15},
      {"&o8", 0},
      {"&H", 0},
      {"&", 0},
      {"&X1", 0},
      {"&HG", 0},
      {"&H-1", 0},
      {"&HFFFFFFFF", -1},
      {"-&H1", 0},
      {"0x10", 0},
      {"inf", 0},
      {"nan", 0},
      {"True", 0},
      {"\xEF\xBB\xBF"
       "1",
       0},
      {"1\0"
       "2"sv,
       1},
      {"\0"
       "1"sv,
       0},
      {"\xA0"
       "1",
       0},
      {"007", 7},
      {"1_000", 1},
      {"5%", 5},
  };
  for (const auto& c : kCases) EXPECT_DOUBLE_EQ(Val(c.text), c.value) << '"' << c.text << '"';
}

TEST(Val, NumbersBeyondEveryRangeAreAnOverflow) {
  const std::string manyDigits(5000, '9');
  for (const std::string& text :
       {manyDigits, "-" + manyDigits, std::string("1e309"), "1e" + manyDigits,
        std::string("1e9223372036854775807"), std::string("&H100000000"), "&O" + std::string(60, '7')}) {
    EXPECT_EQ(ErrorOf([&] { Val(text); }), kErrorOverflow) << text.substr(0, 20);
  }
}

TEST(Val, NumbersTooSmallToHoldAreZero) {
  const std::string manyDigits(5000, '9');
  for (const std::string& text :
       {std::string("1e-400"), std::string("1e-9223372036854775807"), "-1e-" + manyDigits,
        "0." + std::string(5000, '0') + "1", "0e" + manyDigits, std::string(400, '9') + "e-800"}) {
    EXPECT_EQ(Val(text), 0) << text.substr(0, 20);
  }
  EXPECT_DOUBLE_EQ(Val(std::string(5000, '0') + "7"), 7);
}

TEST(TextToBoolean, TakesTheTwoWordsInAnyCaseAndNumbers) {
  const struct {
    std::string_view text;
    std::optional<bool> value;  // empty: a type mismatch
  } kCases[] = {
      {"True", true},     {"TRUE", true}, {"true", true},   {" False\t", false}, {"fAlSe", false},
      {"0", false},       {"-1", true},   {"1", true},      {"200", true},       {"0.0", false},
      {"-0", false},      {"0.5", true},  {"+1", true},     {"1e3", true},       {" 2 ", true},
      {"", {}},           {" ", {}},      {"yes", {}},      {"T", {}},           {"Truex", {}},
      {"True False", {}}, {"1x", {}},     {"1 2", {}},      {"+", {}},           {"-", {}},
      {"+-1", {}},        {"-+1", {}},    {"++1", {}},      {"nan", {}},         {"inf", {}},
      {"-inf", {}},       {"0x1", {}},    {"True\0"sv, {}}, {"\0"sv, {}},        {"\xFF", {}},
      {"0,5", {}},
  };
  for (const auto& c : kCases) {
    std::optional<bool> value;
    const std::int32_t error = ErrorOf([&] { value = TextToBoolean(c.text); });
    EXPECT_EQ(value, c.value) << '"' << c.text << '"';
    EXPECT_EQ(error, c.value ? 0 : kErrorTypeMismatch) << '"' << c.text << '"';
  }
}

TEST(Rounding, HalvesGoToTheEvenNeighbour) {
  const struct {
    double value;
    std::int16_t rounded;
  } kCases[] = {
      {0.5, 0},
      {1.5, 2},
      {2.5, 2},
      {3.5, 4},
      {-0.5, 0},
      {-1.5, -2},
      {-2.5, -2},
      {2.4999, 2},
      {2.5001, 3},
      {32767.49, INT16_MAX},
      {-32768.5, INT16_MIN},
      {1e-300, 0},
      {-0.0, 0},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(ToInt16(c.value), c.rounded) << c.value;
    EXPECT_EQ(ToInt32(c.value), c.rounded) << c.value;
  }
  EXPECT_EQ(ToInt32(2147483647.4), INT32_MAX);
  EXPECT_EQ(ToInt32(-2147483648.5), INT32_MIN);
}

TEST(Rounding, ValuesOutsideTheTypeAreAnOverflow) {
  for (const double value : {32767.5, -32769.0, 1e300, kInfinity, -kInfinity, kNaN}) {
    EXPECT_EQ(ErrorOf([&] { ToInt16(value); }), kErrorOverflow) << value;
  }
  for (const double value : {2147483647.5, -2147483649.0, 1e300, kInfinity, -kInfinity, kNaN}) {
    EXPECT_EQ(ErrorOf([&] { ToInt32(value); }), kErrorOverflow) << value;
  }
  for (const double value : {1e39, -1e39, kInfinity, -kInfinity, kNaN}) {
    EXPECT_EQ(ErrorOf([&] { ToSingle(value); }), kErrorOverflow) << value;
  }
  EXPECT_EQ(ToSingle(1.5), 1.5F);
  EXPECT_EQ(ToSingle(-1e-300), 0);
}

TEST(Narrow, NeverWrapsAround) {
  EXPECT_EQ(Narrow<std::int16_t>(32767), INT16_MAX);
  EXPECT_EQ(Narrow<std::int16_t>(std::int64_t{-32768}), INT16_MIN);
  EXPECT_EQ(ErrorOf([] { Narrow<std::int16_t>(32768); }), kErrorOverflow);
  EXPECT_EQ(ErrorOf([] { Narrow<std::int16_t>(-32769); }), kErrorOverflow);
  EXPECT_EQ(ErrorOf([] { Narrow<std::int16_t>(std::uint64_t{1} << 48); }), kErrorOverflow);
  EXPECT_EQ(ErrorOf([] { Narrow<std::uint8_t>(-1); }), kErrorOverflow);
  EXPECT_EQ(ErrorOf([] { Narrow<std::int32_t>(std::size_t{0x80000000}); }), kErrorOverflow);
}

TEST(NumberText, IsShortAndReadsBackAsTheSameValue) {
  EXPECT_EQ(NumberText(INT32_MIN), "-2147483648");
  EXPECT_EQ(NumberText(0), "0");
  const struct {
    float value;
    std::string_view text;
  } kCases[] = {{0, "0"},          {1, "1"},      {1.5F, "1.5"},   {2, "2"},
                {-0.25F, "-0.25"}, {0.1F, "0.1"}, {1e10F, "1E+10"}};
  for (const auto& c : kCases) EXPECT_EQ(NumberText(c.value), c.text);
  for (const float value :
       {1.0F / 3, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min(),
        -std::numeric_limits<float>::min(), 16777217.0F, 100000.0F}) {
    EXPECT_EQ(ToSingle(Val(NumberText(value))), value) << value;
  }
}

TEST(PaddedText, FillsWithZerosBehindTheSignAndCutsNothing) {
  const struct {
    std::int32_t value;
    int digits;
    std::string_view text;
  } kCases[] = {
      {0, 2, "00"},      {7, 2, "07"},  {42, 2, "42"},
      {123, 2, "123"},   {7, 3, "007"}, {-7, 2, "-07"},
      {-123, 2, "-123"}, {5, 0, "5"},   {INT32_MIN, 12, "-002147483648"},
  };
  for (const auto& c : kCases) EXPECT_EQ(PaddedText(c.value, c.digits), c.text);
}

TEST(Texts, SmallHelpersDoWhatTheirNamesSay) {
  EXPECT_EQ(HexText(0), "0");
  EXPECT_EQ(HexText(0xABCDEF01), "ABCDEF01");
  EXPECT_EQ(BooleanText(true) + BooleanText(false), "TrueFalse");
  EXPECT_EQ(LowerCase("TeSk\xC3\x84Z@["), "tesk\xC3\x84z@[") << "bytes beyond ASCII stay as they are";
  EXPECT_EQ(Replace("aXbXX", "X", "XY"), "aXYbXYXY") << "what was put in is not replaced again";
  EXPECT_EQ(Replace("aaa", "aa", "b"), "ba");
  EXPECT_EQ(Replace("abc", "", "x"), "abc");
  EXPECT_EQ(Replace("a|b", "|", ""), "ab");
}

}  // namespace
}  // namespace tesk::test
