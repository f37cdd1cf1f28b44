// The read/write scalar properties of the engine by their own names, for --set. Knows the engine.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "cli/optionValues.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

struct EngineProperty {
  std::string_view name;
  std::string_view means;  // with its unit, for the operator
  std::string_view takes;  // "True or False"
  // Throws RunTimeError or UsageError for a text that does not convert.
  void (*set)(clsTeskReader& engine, const std::string& text);
  std::span<const Enumerator> (*members)() = nullptr;  // of an enumeration
};

std::span<const EngineProperty> EngineProperties();

// The property by its name in any case; nullptr where there is none.
const EngineProperty* FindEngineProperty(std::string_view name);

// "NAME=VALUE" taken apart, its name checked. Throws UsageError with the nearest names.
struct Assignment {
  const EngineProperty* property;
  std::string value;
};
Assignment ParseAssignment(const std::string& text);

// Sets the property; throws UsageError where the value does not convert.
void Apply(const Assignment& assignment, clsTeskReader& engine);

}  // namespace tesk::cli
