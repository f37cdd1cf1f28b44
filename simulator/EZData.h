// The simulated Scantron EZData and Chatsworth readers, as far as they say who they are: they read no sheets.
// It knows base and the simulator's own parts.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "simulator/Simulators.h"

namespace tesk::simulator {

extern const Family kEZDataFamily;

class EZData final : public SheetScanner {
 public:
  explicit EZData(Options options) : SheetScanner(std::move(options), false) {}

 protected:
  void OnByte(std::uint8_t byte, Time now) override;

 private:
  void Identify(Time now);

  std::string request_;  // what has come of it
  std::int32_t requests_ = 0;
};

}  // namespace tesk::simulator
