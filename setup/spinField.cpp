#include "setup/spinField.h"

#include <algorithm>
#include <string>

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk {
namespace {

constexpr std::size_t kLongestNumber = 20;  // characters; whoever types more holds a key down

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

double ValueOf(const Control& field) {
  return Val(Replace(field.text, std::string(1, field.separator), "."));
}

void Require(bool inOrder) {
  if (!inOrder) throw RunTimeError(kErrorInvalidProperty, "Invalid property value");
}

}  // namespace

void SetSpinMinimum(Control& field, std::int32_t minimum) {
  Require(minimum <= field.maximum);
  field.minimum = minimum;
}

void SetSpinMaximum(Control& field, std::int32_t maximum) {
  Require(maximum >= field.minimum);
  field.maximum = maximum;
}

void SetSpinMinMax(Control& field, std::int32_t minimum, std::int32_t maximum) {
  if (minimum < field.maximum) {
    SetSpinMinimum(field, minimum);
    SetSpinMaximum(field, std::max(minimum, maximum));
  } else {
    // A maximum below the old minimum takes that along.
    SetSpinMinimum(field, std::min(field.minimum, maximum));
    SetSpinMaximum(field, maximum);
    SetSpinMinimum(field, std::min(minimum, maximum));
  }
}

bool HoldsNumber(const Control& field) {
  const std::string& text = field.text;
  if (text.size() > kLongestNumber) return false;
  std::size_t at = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  std::size_t digits = 0;
  bool separated = false;
  for (; at < text.size(); ++at) {
    if (IsDigit(text[at])) {
      ++digits;
    } else if (text[at] == field.separator && !separated) {
      separated = true;
    } else {
      return false;
    }
  }
  return digits > 0;
}

std::int32_t SpinNumber(const Control& field) { return ToInt32(ValueOf(field)); }

bool CorrectSpinText(Control& field) {
  const std::string before = field.text;
  const double value = ValueOf(field);
  const std::size_t separator = field.text.find(field.separator);
  if (value < field.minimum) {
    field.text = NumberText(field.minimum);
  } else if (value > field.maximum) {
    field.text = NumberText(field.maximum);
  } else if (separator != std::string::npos && field.text.size() - separator - 1 > field.decimals) {
    field.text.resize(field.decimals == 0 ? separator : separator + 1 + field.decimals);
  }
  return field.text != before;
}

bool TakesCharacter(const Control& field, char character) {
  if (IsDigit(character)) return true;
  if (character == '-') return field.minimum < 0;
  return character == field.separator && field.decimals > 0;
}

}  // namespace tesk
