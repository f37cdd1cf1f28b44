// Text to value and value to text, with the texts that a hostile store, port or host may hand in.
#include "base/conversions.h"

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

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

// The texts between bars.
std::vector<std::string> Parts(std::string_view texts) {
  std::vector<std::string> parts(1);
  for (const char c : texts) c == '|' ? (void)parts.emplace_back() : parts.back().push_back(c);
  return parts;
}

TEST(Val, ReadsTheNumberThatATextBeginsWith) {
  for (const auto& text : Parts("|abc|.|-|--1|+-1|e3|.e3|&o8|&H|&|&X1|&HG|&H-1|-&H1|0x10|inf|nan|True|"
                                "\xEF\xBB\xBF\x31|\0\x31|\xA0\x31"sv)) {
    EXPECT_EQ(Val(text), 0) << '"' << text << '"';
  }
  for (const auto& text :
       Parts("1,5=1|1e=1|1e+=1|1ex=1|1\0\x32=1|1_000=1|12=12|  12 =12|\t1\n2=12|12abc=12|"
             "1 2 3=123|-7=-7|- 7=-7|+7=7|007=7|1.5=1.5|1.2.3=1.2|.5=0.5|-.5=-0.5|5.=5|5%=5|"
             "1e3=1000|1E3=1000|1d3=1000|1D+3=1000|1e-2=0.01|&H1F=31|&hff=255|& H 1 0=16|"
             "&O17=15|&HFFFFFFFF=-1"sv)) {
    const auto equals = text.rfind('=');
    EXPECT_DOUBLE_EQ(Val(text.substr(0, equals)), std::stod(text.substr(equals + 1))) << text;
  }
}

TEST(Val, NumbersBeyondEveryRangeAreAnOverflowAndThoseTooSmallToHoldZero) {
  const std::string many(5000, '9');
  const std::string zeros(5000, '0');
  for (const std::string& text : {many, "-" + many, "1e" + many, "&O" + std::string(60, '7')}) {
    EXPECT_EQ(ErrorOf([&] { Val(text); }), kErrorOverflow) << text.substr(0, 20);
  }
  for (const auto& text : Parts("1e309|1e9223372036854775807|&H100000000")) {
    EXPECT_EQ(ErrorOf([&] { Val(text); }), kErrorOverflow) << text;
  }
  for (const std::string& text :
       {"-1e-" + many, "0." + zeros + "1", "0e" + many, std::string(400, '9') + "e-800",
        std::string("1e-400"), std::string("1e-9223372036854775807")}) {
    EXPECT_EQ(Val(text), 0) << text.substr(0, 20);
  }
  EXPECT_DOUBLE_EQ(Val(zeros + "7"), 7);
}

TEST(TextToBoolean, TakesTheTwoWordsInAnyCaseAndNumbers) {
  const std::pair<std::optional<bool>, std::string_view> kCases[] = {
      {true, "True|TRUE|true|-1|1|200|0.5|+1|1e3| 2 "},
      {false, " False\t|fAlSe|0|0.0|-0"},
      {{}, "| |yes|T|Truex|True False|1x|1 2|+|-|+-1|-+1|++1|nan|inf|-inf|0x1|True\0|\0|\xFF|0,5"sv}};
  for (const auto& [expected, texts] : kCases) {
    for (const auto& text : Parts(texts)) {
      std::optional<bool> value;
      EXPECT_EQ(ErrorOf([&] { value = TextToBoolean(text); }), expected ? 0 : kErrorTypeMismatch) << text;
      EXPECT_EQ(value, expected) << '"' << text << '"';
    }
  }
}

TEST(Rounding, HalvesGoToTheEvenNeighbourAndValuesOutsideTheTypeAreAnOverflow) {
  std::string rounded;
  for (const double value :
       {0.5, 1.5, 2.5, 3.5, -0.5, -1.5, -2.5, 2.4999, 2.5001, 1e-300, 32767.49, -32768.5}) {
    EXPECT_EQ(ToInt16(value), ToInt32(value));
    rounded += NumberText(ToInt16(value)) + " ";
  }
  EXPECT_EQ(rounded, "0 2 2 4 0 -2 -2 2 3 0 32767 -32768 ");
  EXPECT_EQ(ToInt32(2147483647.4), INT32_MAX);
  EXPECT_EQ(ToInt32(-2147483648.5), INT32_MIN);
  EXPECT_EQ(ToSingle(1.5), 1.5F);
  EXPECT_EQ(ToSingle(-1e-300), 0);
  const auto overflows = [](auto convert, double above, double below) {
    for (const double value : {above, below, 1e300, kInfinity, -kInfinity, kNaN}) {
      EXPECT_EQ(ErrorOf([&] { convert(value); }), kErrorOverflow) << value;
    }
  };
  overflows(ToInt16, 32767.5, -32769);
  overflows(ToInt32, 2147483647.5, -2147483649.0);
  overflows(ToSingle, 1e39, -1e39);
}

TEST(Narrow, NeverWrapsAround) {
  EXPECT_EQ(Narrow<std::int16_t>(32767), INT16_MAX);
  EXPECT_EQ(Narrow<std::int16_t>(std::int64_t{-32768}), INT16_MIN);
  for (const std::int64_t value : {32768LL, -32769LL, 1LL << 48}) {
    EXPECT_EQ(ErrorOf([&] { Narrow<std::int16_t>(value); }), kErrorOverflow);
  }
  EXPECT_EQ(ErrorOf([] { Narrow<std::uint8_t>(-1); }), kErrorOverflow);
  EXPECT_EQ(ErrorOf([] { Narrow<std::int32_t>(std::size_t{0x80000000}); }), kErrorOverflow);
}

TEST(NumberText, IsShortAndReadsBackAsTheSameValue) {
  EXPECT_EQ(NumberText(INT32_MIN) + NumberText(0), "-21474836480");
  const std::pair<float, std::string_view> kCases[] = {{0, "0"},          {1, "1"},      {1.5F, "1.5"},
                                                       {-0.25F, "-0.25"}, {0.1F, "0.1"}, {1e10F, "1E+10"}};
  for (const auto& [value, text] : kCases) EXPECT_EQ(NumberText(value), text);
  using Limits = std::numeric_limits<float>;
  for (const float value : {1.0F / 3, Limits::max(), Limits::denorm_min(), -Limits::min(), 16777217.0F}) {
    EXPECT_EQ(ToSingle(Val(NumberText(value))), value) << value;
  }
}

TEST(PaddedText, FillsWithZerosBehindTheSignAndCutsNothing) {
  std::string texts;
  for (const auto& [value, digits] :
       {std::pair{0, 2}, {7, 2}, {42, 2}, {123, 2}, {-7, 2}, {-123, 2}, {5, 0}, {INT32_MIN, 12}})
    texts += PaddedText(value, digits) + " ";
  EXPECT_EQ(texts, "00 07 42 123 -07 -123 5 -002147483648 ");
}

// What goes into a scanner's command: a byte per character, nothing that would end the command.
TEST(WireText, IsOneByteThatTheLineCarriesPerCharacter) {
  const std::tuple<std::string_view, std::int32_t, std::string_view> kCases[] = {
      {"A\xC3\xBF z\xC3\xA9\xC2\xA0\xC2\x9F\x1F\x20\x7E\x7F", 8, "A\xFF z\xE9\xA0   ~ "},
      {"\xE2\x82\xAC!\xF0\x9F\x96\xA8!\xC4\x80!\x80!\xC3", 8, "?!?!?!?!?"},
      {"\xC2\xA0~", 7, "?~"},
      {"?@", 6, "??"},
      {"?", 5, "?"},
      {"\r\x1B !", 4, "  ??"},
      {"\xC3\xBF", 9, "\xFF"},
      {"\xC3\xBF", 3, "\xFF"}};
  for (const auto& [text, dataBits, wire] : kCases) EXPECT_EQ(WireText(text, dataBits), wire) << text;
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
