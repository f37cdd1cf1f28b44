// A small random generator: the same numbers from the same seed on every system, which the standard
// library's distributions do not promise. It knows nobody.
#pragma once

#include <cstdint>

namespace tesk::simulator {

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }

  // A number in low..high, both included; low where high is below it.
  std::int32_t Between(std::int32_t low, std::int32_t high) {
    if (high <= low) return low;
    const auto span = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
    return static_cast<std::int32_t>(low + static_cast<std::int64_t>((Next() >> 32U) % span));
  }

  // True in `perThousand` of a thousand cases.
  bool Chance(std::int32_t perThousand) { return Between(0, 999) < perThousand; }

 private:
  std::uint64_t state_;
};

}  // namespace tesk::simulator
