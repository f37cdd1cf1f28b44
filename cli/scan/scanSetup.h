// Sets the engine up for a scan. Knows the engine.
#pragma once

#include "cli/scan/ScanPlan.h"

namespace tesk {
class clsTeskReader;
}  // namespace tesk

namespace tesk::cli {

// Sets the engine up: the model's defaults first, then the options in the order of their documentation.
// Touches no wire. Throws UsageError where an option does not fit the model, CommandFailure where the model
// cannot be scanned with.
void ConfigureEngine(const ScanPlan& plan, clsTeskReader& engine);

}  // namespace tesk::cli
