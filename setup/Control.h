// The controls of the setup dialog as plain values. A view draws them and tells what the user did; it holds
// no state of its own. Knows the standard library alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tesk {

enum class ControlKind { Label, CheckBox, OptionButton, Frame, Button, DropDownList, SpinField };

// Left and top edge, width and height in the view's own unit: pixels, or cells of a terminal.
struct ControlPlace {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;

  bool operator==(const ControlPlace&) const = default;
};

// One line of a drop-down list.
struct ListEntry {
  std::string text;   // shown, translated
  std::string value;  // carried: a number in decimal, a reader type's key, a parity letter

  bool operator==(const ListEntry&) const = default;
};

struct Control {
  static constexpr std::int32_t kNothingChosen = -1;

  ControlKind kind = ControlKind::Label;
  std::string caption = {};  // translated; "&" stands before the access key, "&&" for the character itself
  bool enabled = true;
  bool visible = true;
  bool checked = false;  // a check box's value

  // A drop-down list's entries and the position of the chosen one from 0.
  std::vector<ListEntry> entries = {};
  std::int32_t chosen = kNothingChosen;

  // A spin field: what stands in it, and what may. Bounds change through SetSpinMinMax.
  std::string text = {};
  std::int32_t minimum = 0;
  std::int32_t maximum = 0;
  std::size_t decimals = 0;
  char separator = '.';

  ControlPlace place = {};

  bool operator==(const Control&) const = default;
};

}  // namespace tesk
