// The stock and the transport of a simulated scanner.
#include "simulator/SheetScanner.h"

#include <algorithm>
#include <utility>

namespace tesk::simulator {

bool SheetScanner::SheetReady(Time now) const {
  if (SheetsLeft() == 0) return false;
  return feeder_ || (!held_ && now >= inserted_);
}

const Sheet& SheetScanner::Feed(bool hold, Time leaves) {
  const Sheet& sheet = options_.sheets.at(fed_++);
  held_ = hold;
  if (!hold) {
    disposals_.push_back({LastSheet(), Exit::Passed, false, {}, false});
    inserted_ = leaves + options_.timings.insertion;
  }
  return sheet;
}

void SheetScanner::Dispose(Exit exit, std::string imprint, bool imprinterOn, Time now) {
  if (held_) {
    const bool printed = imprinterOn && !imprint.empty();
    disposals_.push_back({LastSheet(), exit, true, std::move(imprint), printed});
    inserted_ = now + options_.timings.insertion;
    held_ = false;
  } else if (!disposals_.empty() && disposals_.back().exit == Exit::Passed && !disposals_.back().held) {
    disposals_.back().exit = exit;
    disposals_.back().imprint = std::move(imprint);
  }
}

std::optional<Fault> SheetScanner::TakeFault(FaultKind kind, std::int32_t number) {
  auto& faults = options_.faults;
  const auto found = std::find_if(faults.begin(), faults.end(), [&](const Fault& fault) {
    return fault.kind == kind && fault.number == number;
  });
  if (found == faults.end()) return std::nullopt;
  const Fault fault = *found;
  faults.erase(found);
  return fault;
}

}  // namespace tesk::simulator
