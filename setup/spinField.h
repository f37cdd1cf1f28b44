// The rules of an edit field with spin buttons: its bounds and what may stand in it. Knows base/ and the
// control values.
#pragma once

#include <cstdint>

#include "setup/Control.h"

namespace tesk {

// The bounds as the control itself takes them: one at a time, and never so that the minimum is above the
// maximum, which is error 380.
void SetSpinMinimum(Control& field, std::int32_t minimum);
void SetSpinMaximum(Control& field, std::int32_t maximum);

// Sets both in the order that keeps them apart at every moment. Where `minimum` is above `maximum` both
// bounds end at the same value.
void SetSpinMinMax(Control& field, std::int32_t minimum, std::int32_t maximum);

// A decimal number with the field's separator and nothing else.
bool HoldsNumber(const Control& field);
// The number that the text begins with, rounded; 0 where it begins with none. Error 6 beyond 32 bits.
std::int32_t SpinNumber(const Control& field);

// Replaces a value outside the bounds by the bound that it passes, and cuts decimals that the field does not
// have. True when it changed the text.
bool CorrectSpinText(Control& field);

// Whether the character may be typed into the field at all.
bool TakesCharacter(const Control& field, char character);

}  // namespace tesk
