// The settings that decide what goes over the wire, as a trace states them. Knows the engine.
#pragma once

#include <string>

#include "cli/scan/ScanPlan.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

// NAME=VALUE, parted by blanks: what the engine is set to, and what the host does with the sheets.
std::string TraceSettingsText(const clsTeskReader& engine, const ScanPlan& plan);

}  // namespace tesk::cli
