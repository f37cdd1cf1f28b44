// What may be saved: settings that no scanner or line can do are refused when they are saved, not when the next
// batch waits in the hopper. Knows the engine.
#pragma once

#include <string>
#include <string_view>

#include "cli/assignments.h"

namespace tesk::cli {

// What may be saved of a property, "1 to 600 seconds"; empty where it has no limits of its own.
std::string LimitsText(std::string_view property);

// What help says that a setting takes: its limits, which say more of a number than how long it may be, or else what
// all of its kind take.
std::string ValuesText(const EngineSetting& setting);

// Throws UsageError where the value lies outside what lines take, or what the model's profile offers; the
// assignment has been applied. A model without a profile is not asked.
void CheckSaved(const Assignment& assignment, const clsTeskReader& engine);

}  // namespace tesk::cli
