// Options that the parser hands over as values of their own types. Knows the parser.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/values.h"

namespace tesk::cli {

// What help says of an option.
struct OptionWords {
  const char* name;   // "--side1"
  const char* takes;  // "RxC"
  const char* does;
  const char* example;  // "--side1 50x48"
};

template <class Value>
struct OptionTarget {
  using Type = Value;
  static constexpr bool kRepeats = false;
};
template <class Value>
struct OptionTarget<std::optional<Value>> : OptionTarget<Value> {};
template <class Value>
struct OptionTarget<std::vector<Value>> {
  using Type = Value;
  static constexpr bool kRepeats = true;
};

// The words that an option takes, parted by blanks, travel with it, for the shells that complete them: as the name
// of a check that accepts everything, the first of its checks.
inline void KeepWords(CLI::Option& option, const std::string& words) {
  option.check(CLI::Validator("").name(words));
}

// Whether a reader of values can list the few that it takes.
template <class Read>
concept ListsWords = requires(const Read& read) {
  { read.Words() } -> std::convertible_to<std::string>;
};

// Adds an option that sets `value`, which outlives the parsing; a vector takes one more value each time the option
// stands there. `read` makes the value of the text, or of the option's name and the text, and throws UsageError, or
// CommandFailure, where it cannot.
template <class Value, class Read>
CLI::Option& AddOption(CLI::App& command, const OptionWords& words, Value& value, Read read) {
  const auto valueOf = [name = std::string(words.name), read](const std::string& text) {
    if constexpr (std::is_invocable_v<Read, const std::string&>) {
      return read(text);
    } else {
      return read(name, text);
    }
  };
  const std::string help = Explain(words.does, words.example);
  if constexpr (OptionTarget<Value>::kRepeats) {
    const auto take = [&value, valueOf](const std::vector<std::string>& texts) {
      for (const std::string& text : texts) value.push_back(valueOf(text));
    };
    return *command.add_option_function<std::vector<std::string>>(words.name, take, help)
                ->allow_extra_args(false)
                ->type_name(words.takes);
  } else {
    const auto take = [&value, valueOf](const std::string& text) { value = valueOf(text); };
    CLI::Option& option = *command.add_option_function<std::string>(words.name, take, help);
    if constexpr (ListsWords<Read>) KeepWords(option, read.Words());
    return *option.type_name(words.takes);
  }
}

// The same for texts that mean themselves.
template <class Value>
CLI::Option& AddOption(CLI::App& command, const OptionWords& words, Value& value) {
  return AddOption(command, words, value, [](const std::string& text) { return text; });
}

inline void AddFlag(CLI::App& command, const OptionWords& words, bool& value) {
  command.add_flag(words.name, value, Explain(words.does, words.example));
}

// A whole number from `least` to `most`, which Number holds.
template <class Number>
auto WholeFrom(std::int32_t least, std::int32_t most) {
  return [least, most](std::string_view option, const std::string& text) {
    return static_cast<Number>(ParseWholeNumber(option, text, least, most));
  };
}

// One of a few words, in any case.
template <class Value>
class OneOf {
 public:
  OneOf(std::initializer_list<std::pair<std::string, Value>> choices) : choices_(choices) {}

  Value operator()(std::string_view option, const std::string& text) const {
    for (const auto& [name, value] : choices_) {
      if (LowerCase(name) == LowerCase(text)) return value;
    }
    throw UsageError(fmt::format("{}: \"{}\" is none of {}", option, text, Joined(", ")));
  }

  // Parted by blanks.
  std::string Words() const { return Joined(" "); }

 private:
  std::string Joined(std::string_view separator) const {
    std::string names;
    for (const auto& choice : choices_) names += (names.empty() ? "" : std::string(separator)) + choice.first;
    return names;
  }

  std::vector<std::pair<std::string, Value>> choices_;
};

}  // namespace tesk::cli
