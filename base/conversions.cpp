// Text to value and value to text; see the header for the rules.
#include "base/conversions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace tesk {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string WithoutBlanks(std::string_view text) {
  std::string kept;
  for (char c : text) {
    if (c == '\0') break;
    if (!IsBlank(c)) kept += c;
  }
  return kept;
}

// Whole numbers behind "&H" and "&O"; as many digits as fit 32 bits, read as a signed value.
std::optional<double> RadixNumber(std::string_view text) {
  if (text.size() < 2 || text[0] != '&') return std::nullopt;
  const int base = text[1] == 'h' || text[1] == 'H' ? 16 : text[1] == 'o' || text[1] == 'O' ? 8 : 0;
  if (base == 0) return std::nullopt;
  std::uint32_t value = 0;
  const auto result = std::from_chars(text.data() + 2, text.data() + text.size(), value, base);
  if (result.ec == std::errc::result_out_of_range) throw Overflow();
  return static_cast<double>(static_cast<std::int32_t>(value));
}

// The longest prefix that is a decimal number, in the form that from_chars reads. The NUL behind the text is no part of
// a number.
std::string DecimalPrefix(const std::string& text) {
  const char* at = text.c_str();
  std::string number;
  const auto takeDigits = [&at](std::string& to) {
    const char* const first = at;
    while (IsDigit(*at)) to += *at++;
    return at != first;
  };
  if (*at == '-') number += '-';
  if (*at == '+' || *at == '-') ++at;
  bool digits = takeDigits(number);
  if (*at == '.') {
    number += *at++;
    digits = takeDigits(number) || digits;
  }
  if (!digits) return {};
  if (*at != '\0' && std::string_view("eEdD").find(*at) != std::string_view::npos) {
    ++at;
    std::string exponent = "e";
    if (*at == '+' || *at == '-') exponent += *at++;
    if (takeDigits(exponent)) number += exponent;
  }
  return number;
}

// Which way a number that is not 0 leaves the range: below 1 it is too small, else too large.
bool IsBelowOne(const std::string& number) {
  const std::size_t mantissaEnd = std::min(number.find('e'), number.size());
  const std::size_t point = std::min(number.find('.'), mantissaEnd);
  const std::size_t firstDigit = number.find_first_of("123456789");
  std::int64_t exponent = 0;
  if (mantissaEnd < number.size()) {
    const char* first = number.data() + mantissaEnd + 1;
    if (*first == '+') ++first;
    const auto result = std::from_chars(first, number.data() + number.size(), exponent);
    // An exponent beyond 64 bits outweighs any mantissa.
    if (result.ec == std::errc::result_out_of_range) return *first == '-';
  }
  return static_cast<double>(point) - static_cast<double>(firstDigit) + static_cast<double>(exponent) <= 0;
}

double ParseDecimal(const std::string& number) {
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  if (!IsBelowOne(number)) throw Overflow();
  return 0;
}

template <class Integer>
Integer RoundedTo(double value) {
  const double rounded = std::nearbyint(value);
  // Written so that a value that is no number fails too.
  if (!(rounded >= static_cast<double>(std::numeric_limits<Integer>::min()) &&
        rounded <= static_cast<double>(std::numeric_limits<Integer>::max()))) {
    throw Overflow();
  }
  return static_cast<Integer>(rounded);
}

}  // namespace

double Val(std::string_view text) {
  const std::string compact = WithoutBlanks(text);
  if (const auto radix = RadixNumber(compact)) return *radix;
  const std::string number = DecimalPrefix(compact);
  return number.empty() ? 0 : ParseDecimal(number);
}

bool TextToBoolean(std::string_view text) {
  const auto first = std::find_if_not(text.begin(), text.end(), IsBlank);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), IsBlank).base();
  const std::string trimmed = first < last ? std::string(first, last) : std::string();
  const std::string folded = LowerCase(trimmed);
  if (folded == "true") return true;
  if (folded == "false") return false;
  const bool plus = trimmed.starts_with('+') && !trimmed.starts_with("+-");
  const std::string unsignedText = plus ? trimmed.substr(1) : trimmed;
  double value = 0;
  const char* end = unsignedText.data() + unsignedText.size();
  const auto result = std::from_chars(unsignedText.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) throw TypeMismatch();
  return value != 0;
}

std::int16_t ToInt16(double value) { return RoundedTo<std::int16_t>(value); }

std::int32_t ToInt32(double value) { return RoundedTo<std::int32_t>(value); }

float ToSingle(double value) {
  // Halfway between the largest float and the power of two behind it: what is below still rounds to a float.
  constexpr double kFirstTooLarge = 0x1.ffffffp127;
  if (!(std::abs(value) < kFirstTooLarge)) throw Overflow();
  return static_cast<float>(value);
}

std::string NumberText(std::int32_t value) { return std::to_string(value); }

std::string NumberText(float value) {
  std::array<char, 32> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  std::string text(buffer.data(), result.ptr);
  std::replace(text.begin(), text.end(), 'e', 'E');
  return text;
}

std::string BooleanText(bool value) { return value ? "True" : "False"; }

std::string PaddedText(std::int32_t value, int digits) {
  std::string text = std::to_string(std::abs(std::int64_t{value}));
  const auto width = static_cast<std::size_t>(digits);
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return value < 0 ? "-" + text : text;
}

std::string HexText(std::uint32_t value) {
  std::array<char, 8> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, 16);
  std::string text(buffer.data(), result.ptr);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
  return text;
}

std::string Replace(std::string text, std::string_view from, std::string_view to) {
  if (from.empty()) return text;
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string WireText(std::string_view utf8, std::int32_t dataBits) {
  const unsigned most = dataBits >= 4 && dataBits < 8 ? (1U << static_cast<unsigned>(dataBits)) - 1 : 0xFF;
  const auto byteOf = [most](unsigned code) {
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    return control ? ' ' : code > most ? '?' : static_cast<char>(code);
  };
  std::string wire;
  for (std::size_t i = 0; i < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    if (lead < 0x80) {
      wire += byteOf(lead);
    } else if ((lead == 0xC2 || lead == 0xC3) && i + 1 < utf8.size()) {
      wire += byteOf(((lead & 0x03U) << 6U) | (static_cast<unsigned char>(utf8[i + 1]) & 0x3FU));
    } else {
      wire += '?';
    }
    i += length;
  }
  return wire;
}

std::string LowerCase(std::string_view text) {
  std::string folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return folded;
}

}  // namespace tesk
