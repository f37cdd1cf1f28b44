// One batch from start to end: the engine, its line, its host, its trace. Knows the assembly and the
// platform.
#pragma once

#include <memory>

#include "cli/Console.h"
#include "cli/scan/BatchReport.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/SheetTaker.h"
#include "transport/SerialLine.h"

namespace tesk::cli {

// Reads sheets over `serial` until the hopper is empty, the plan's number is reached, something is wrong or the
// operator ends it. Throws UsageError where the plan does not fit the model, CommandFailure for a trace that cannot
// be opened; nothing has been sent by then.
BatchReport RunScan(const ScanPlan& plan, std::shared_ptr<SerialSystem> serial,
                    std::shared_ptr<Console> console, SheetTaker& taker,
                    std::shared_ptr<OmrLibraryLoader> omrLoader = nullptr);

}  // namespace tesk::cli
