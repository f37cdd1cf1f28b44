// One batch from start to end: the engine, its line, its host, its trace. Knows the assembly and the
// platform.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "cli/Console.h"
#include "cli/ScanPlan.h"
#include "cli/SheetRecord.h"
#include "transport/SerialLine.h"

namespace tesk::cli {

struct ScanOutcome {
  std::int32_t sheetsRead = 0;
  int messages = 0;  // that the operator got
  bool interrupted = false;
};

// What becomes of the sheets. Both throw CommandFailure when they cannot do their part.
struct SheetTaker {
  std::function<void()> begin;  // the plan has been found good, the batch is about to start
  std::function<void(const clsTeskReader& engine, const SheetRecord& record)> take;
};

// Reads sheets over `serial` until the hopper is empty, the plan's number is reached or the operator ends it.
// Throws UsageError where the plan does not fit the model, CommandFailure for a file that failed.
ScanOutcome RunScan(const ScanPlan& plan, std::shared_ptr<SerialSystem> serial,
                    std::shared_ptr<Console> console, const SheetTaker& taker,
                    std::shared_ptr<OmrLibraryLoader> omrLoader = nullptr);

// The exit status of a batch; tells the operator where nothing else did.
int StatusOf(const ScanOutcome& outcome, Console& console);

}  // namespace tesk::cli
