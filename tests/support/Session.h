// A recorded session as a test replays it: the trace, what the scan that made it was told, and what came of
// it. Knows the command line's parts.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/ScanPlan.h"
#include "cli/trace/TraceFile.h"

namespace tesk::test {

// The names of all sessions, sorted.
std::vector<std::string> SessionNames();

// The file NAME + `ending` of a session; an empty text where there is none.
std::string SessionFile(const std::string& name, const std::string& ending);

cli::RecordedTrace SessionTrace(const std::string& name);

// The scan that the settings of a trace describe.
cli::ScanPlan PlanOf(const cli::RecordedTrace& trace);

}  // namespace tesk::test
