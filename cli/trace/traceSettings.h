// The settings that a trace states. Knows the engine.
#pragma once

#include <string>

#include "cli/scan/ScanPlan.h"

namespace tesk {
class clsTeskReader;
}  // namespace tesk

namespace tesk::cli {

// What decides what goes over the wire, as a trace states it: NAME=VALUE, parted by blanks.
std::string TraceSettingsText(const clsTeskReader& engine, const ScanPlan& plan);

}  // namespace tesk::cli
