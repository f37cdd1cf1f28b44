// The engine's settings, one row each: every scalar that hosts set, by the name of its property, and what is saved
// of it. Knows the engine.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/enumerators.h"
#include "engine/clsTeskReader.h"

namespace tesk {

// What a setting holds. Whole16 and Whole32 are whole numbers of so many bits where they are saved.
enum class SettingKind { Boolean, Whole16, Whole32, Single, Text };

// Whole numbers and members of enumerations are the std::int32_t.
using SettingValue = std::variant<bool, std::int32_t, float, std::string>;

struct EngineSetting {
  std::string_view name;  // of the property
  SettingKind kind;
  SettingValue (*get)(const clsTeskReader&);
  // Takes the alternative that `get` gives. Throws error 6 for a number that the property cannot hold, error 91
  // where the imprinter is gone.
  void (*set)(clsTeskReader&, const SettingValue&);
  const char* savedAs = nullptr;  // its name in the settings store; none: it is not saved
  const char* missing = "";       // the text that stands for a missing one
  // What a model's profile proposes; none: the setting is the host's own.
  SettingValue (*proposed)(const clsTeskReaderProfile&) = nullptr;
  std::span<const Enumerator> (*members)() = nullptr;  // of an enumeration
  bool loadedAsBoolean = false;                        // a saved number that is not 0 is loaded as -1
};

// Those that are saved first, in the order in which they are.
std::span<const EngineSetting> EngineSettings();

// By the exact name of the property, which must be there.
const EngineSetting& SettingNamed(std::string_view property);

// "True", "7", "1.5".
std::string SettingText(const SettingValue& value);

// What an engine's settings are saved as, in order.
std::vector<StoredValue> SavedTexts(const clsTeskReader& reader);
// Assigns one saved text, as LoadSettings does. Throws RunTimeError where the setting cannot take it, or there is no
// such setting.
void AssignSaved(clsTeskReader& reader, const StoredValue& value);

}  // namespace tesk
