// Reads the fields of a host's command strictly: exact texts, one blank where one belongs, decimal integers
// without padding. The first thing that does not fit spoils the rest. It knows nobody.
#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

namespace tesk::simulator {

class CommandFields {
 public:
  explicit CommandFields(std::string_view text) : rest_(text) {}

  void Text(std::string_view expected) {
    if (!rest_.starts_with(expected)) return Spoil();
    rest_.remove_prefix(expected.size());
  }

  // A 16-bit integer without leading zeros, plus sign or blanks; 0 where there is none.
  std::int32_t Number() {
    std::int16_t value = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    const auto length = static_cast<std::size_t>(end - rest_.data());
    const bool padded = rest_.starts_with("-0") || (rest_.starts_with('0') && length > 1);
    if (error != std::errc() || padded) {
      Spoil();
      return 0;
    }
    rest_.remove_prefix(length);
    return value;
  }

  // One character out of `choices`; the first of them where it is none.
  char OneOf(std::string_view choices) {
    const char found = rest_.empty() ? '\0' : rest_.front();
    if (found == '\0' || choices.find(found) == std::string_view::npos) {
      Spoil();
      return choices.front();
    }
    rest_.remove_prefix(1);
    return found;
  }

  // What is left, all of it.
  std::string_view Rest() {
    const std::string_view rest = rest_;
    rest_ = {};
    return rest;
  }

  // Everything fitted and nothing is left over.
  bool Complete() const { return !spoilt_ && rest_.empty(); }

 private:
  void Spoil() {
    spoilt_ = true;
    rest_ = {};
  }

  std::string_view rest_;
  bool spoilt_ = false;
};

}  // namespace tesk::simulator
