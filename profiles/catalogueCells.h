// The notations of the catalogue's cells. A cell is written as text and parsed while compiling; text in
// another notation does not compile.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/RunTimeError.h"

namespace tesk {

// Walks along one cell; every mismatch is an error, and in a cell an error ends the compilation.
class CellText {
 public:
  explicit constexpr CellText(std::string_view text) : rest_(text) {}

  constexpr std::int16_t Number() {
    if (rest_.empty() || !IsDigit(rest_.front())) throw InvalidCall();
    std::int32_t number = 0;
    for (; !rest_.empty() && IsDigit(rest_.front()); rest_.remove_prefix(1)) {
      number = number * 10 + (rest_.front() - '0');
      if (number > INT16_MAX) throw Overflow();
    }
    return static_cast<std::int16_t>(number);
  }

  // True at `letter`, False at a dash.
  constexpr bool Flag(char letter) {
    if (rest_.empty() || (rest_.front() != letter && rest_.front() != '-')) throw InvalidCall();
    const bool set = rest_.front() == letter;
    rest_.remove_prefix(1);
    return set;
  }

  constexpr bool Skip(std::string_view word) {
    if (!rest_.starts_with(word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }

  constexpr void Expect(std::string_view word) {
    if (!Skip(word)) throw InvalidCall();
  }

  constexpr void ExpectEnd() const {
    if (!rest_.empty()) throw InvalidCall();
  }

 private:
  static constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

  std::string_view rest_;
};

// "ev": may be changed by the user, applies at all; a dash where not.
struct PairCell {
  bool enabled;
  bool visible;

  consteval PairCell(const char* cell) {
    CellText text(cell);
    enabled = text.Flag('e');
    visible = text.Flag('v');
    text.ExpectEnd();
  }
};

// "1ev": the proposed value, 0 to kLargest, and its pair.
template <std::int16_t kLargest>
struct TripleCell {
  std::int16_t value;
  bool enabled;
  bool visible;

  consteval TripleCell(const char* cell) {
    CellText text(cell);
    value = text.Number();
    if (value > kLargest) throw Overflow();
    enabled = text.Flag('e');
    visible = text.Flag('v');
    text.ExpectEnd();
  }
};

using SwitchCell = TripleCell<1>;
using ColorDepthCell = TripleCell<2>;
using ResolutionCell = TripleCell<INT16_MAX>;

// "10 (e)": the value, may be changed; "9 (hidden)": does not apply; "0": applies, fixed.
struct DiscriminationCell {
  std::int16_t value;
  bool enabled;
  bool visible;

  consteval DiscriminationCell(const char* cell) {
    CellText text(cell);
    value = text.Number();
    enabled = text.Skip(" (e)");
    visible = !text.Skip(" (hidden)");
    text.ExpectEnd();
  }
};

// "15 (0-31) (e)": the value, its range, may be changed.
struct ThresholdCell {
  std::int16_t value;
  std::int16_t minimum;
  std::int16_t maximum;
  bool enabled;

  consteval ThresholdCell(const char* cell) {
    CellText text(cell);
    value = text.Number();
    text.Expect(" (");
    minimum = text.Number();
    text.Expect("-");
    maximum = text.Number();
    text.Expect(")");
    if (maximum < minimum) throw InvalidCall();
    enabled = text.Skip(" (e)");
    text.ExpectEnd();
  }
};

}  // namespace tesk
