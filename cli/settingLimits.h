// What may be saved: settings that no scanner or line can do are refused when they are saved, not when the next
// batch waits in the hopper. Knows the engine.
#pragma once

#include "cli/engineProperties.h"

namespace tesk::cli {

// Throws UsageError where the value lies outside what lines take, or what the model's profile offers; the
// assignment has been applied. A model without a profile is not asked.
void CheckSaved(const Assignment& assignment, const clsTeskReader& engine);

}  // namespace tesk::cli
