// What a model can be asked to read: the sizes of its sheets, its windows and its barcodes. Knows the engine.
#pragma once

#include "cli/scan/ScanPlan.h"

namespace tesk::cli {

// Throws UsageError where the plan asks the model for what it cannot read, before any paper moves. The engine
// holds the plan already.
void CheckModelLimits(const ScanPlan& plan, const clsTeskReader& engine);

}  // namespace tesk::cli
