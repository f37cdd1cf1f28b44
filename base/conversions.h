// Text to value and value to text by the rules of automation hosts. No locale ever changes them.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "base/RunTimeError.h"

namespace tesk {

// The number that the text begins with, blanks and tabs ignored; 0 where it begins with none. Understands
// a sign, a decimal point, an exponent (E or D) and whole numbers behind "&H" (hexadecimal) and "&O".
// Error 6 for a number beyond the range of a double, or of 32 bits behind "&H" and "&O"; 0 for one too small.
double Val(std::string_view text);

// "True" or "False" in any case, or a number (not 0 is True). Anything else is error 13.
bool TextToBoolean(std::string_view text);

// Rounded half to even; error 6 outside the type's range or for a value that is no number.
std::int16_t ToInt16(double value);
std::int32_t ToInt32(double value);
float ToSingle(double value);

// Checked narrowing of whole numbers; error 6 outside the target's range.
template <std::integral To, std::integral From>
To Narrow(From value) {
  if (!std::in_range<To>(value)) throw Overflow();
  return static_cast<To>(value);
}

std::string NumberText(std::int32_t value);
// The shortest text that reads back as the same value: 1 is "1", 1.5 is "1.5".
std::string NumberText(float value);
std::string BooleanText(bool value);  // "True" or "False"

// A whole number with at least `digits` digits, zeros in front (format "00", "000").
std::string PaddedText(std::int32_t value, int digits);

std::string HexText(std::uint32_t value);  // upper case, no leading zeros

// Every occurrence of `from` in `text` replaced by `to`.
std::string Replace(std::string text, std::string_view from, std::string_view to);

// A host's text as a scanner takes it: one ISO 8859-1 byte per character, "?" for a character that has none or
// that a line of so many data bits (4 to 8, else 8) does not carry, a blank for a control character, which would
// break the framing of a command.
std::string WireText(std::string_view utf8, std::int32_t dataBits = 8);

// ASCII case folding, for names and "True".
std::string LowerCase(std::string_view text);

}  // namespace tesk
