// Whether a model can do with its sheets what a scan asks for: send them on, hold them, print on them. Knows the
// engine.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/ScanPlan.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

// Whether sheets can be sent to a reject exit: the model has one, or may be fitted with one.
bool HasRejectExit(const clsTeskReader& engine);

// To be called once the engine has all settings. Throws UsageError where sheets would be held for ever, or would
// not leave or be printed as asked.
void CheckSheetRoad(const ScanPlan& plan, const clsTeskReader& engine);

// What will not stand on the paper as it was given, one sentence per text.
std::vector<std::string> ImprintNotices(const ScanPlan& plan, const clsTeskReader& engine);

}  // namespace tesk::cli
