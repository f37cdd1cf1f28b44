// --set NAME=VALUE: which settings of the engine it takes, and what operators are told of them. Knows the engine.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/settings.h"

namespace tesk::cli {

struct SettingWords {
  std::string_view name;        // of the setting
  std::string_view means;       // with its unit
  std::string_view takes = "";  // empty: what all of its kind take
};

// Of every setting, as help lists them.
std::span<const SettingWords> WordsOfSettings();

// "True or False", "a whole number from -32768 to 32767".
std::string_view TakesText(const EngineSetting& setting);

// The value that an operator's text stands for; nothing where the setting does not take it. Stricter than what is
// saved: numbers are nothing but digits. An enumeration takes numbers that are no member, since hosts may save them.
std::optional<SettingValue> ValueOf(const EngineSetting& setting, const std::string& text);

struct Assignment {
  const EngineSetting* setting;
  SettingValue value;
  std::string text;  // as it was typed
};

// "NAME=VALUE" with the name in any case. Throws UsageError with the nearest names, or with what the setting takes.
Assignment ParseAssignment(const std::string& text);

inline void Apply(const Assignment& assignment, clsTeskReader& engine) {
  assignment.setting->set(engine, assignment.value);
}

}  // namespace tesk::cli
