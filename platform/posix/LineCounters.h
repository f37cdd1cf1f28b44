// What a serial device's driver has counted of damaged and lost bytes.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <utility>

#include "platform/LineDamage.h"

namespace tesk::platform {

// In the order of kCounted; they only ever grow, and wrap.
using LineCounters = std::array<int, 5>;
inline constexpr std::array kCounted = {LineDamage::Parity, LineDamage::Framing, LineDamage::Break,
                                        LineDamage::PortOverrun, LineDamage::SystemOverrun};

// Compares the counters with what they were the last time.
class CounterWatch {
 public:
  // What was counted by now belongs to no conversation.
  void Start(const std::optional<LineCounters>& now) { last_ = now; }
  bool Counts() const { return last_.has_value(); }
  // What has happened since the last look; empty: nothing, or nothing is counted.
  std::optional<LineDamage> Look(const std::optional<LineCounters>& now) {
    const auto before = std::exchange(last_, now);
    if (!before || !now) return std::nullopt;
    for (std::size_t i = 0; i < kCounted.size(); ++i) {
      if ((*before)[i] != (*now)[i]) return kCounted[i];
    }
    return std::nullopt;
  }

 private:
  std::optional<LineCounters> last_;
};

}  // namespace tesk::platform
