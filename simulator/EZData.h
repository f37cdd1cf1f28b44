// The simulated Scantron EZData and Chatsworth readers, as far as they say who they are, and what those that read
// sheets have in common with them. It knows base and the simulator's own parts.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "simulator/AwaitingScanner.h"
#include "simulator/Simulators.h"

namespace tesk::simulator {

extern const Family kEZDataFamily;

// Understands downloads: DC2, a command, DC2, "E".
class EZData : public AwaitingScanner {
 public:
  explicit EZData(Options options) : AwaitingScanner(std::move(options), false) {}

 protected:
  void OnByte(std::uint8_t byte, Time now) override;
  // A command but the identification; False: there is none like it.
  virtual bool OnCommand(const std::string& /*command*/, Time /*now*/) { return false; }
  // What was heard of a download is forgotten.
  void Deafen() { heard_.clear(); }

 private:
  void Identify(Time now);

  std::string heard_;  // of a download
  std::int32_t requests_ = 0;
};

}  // namespace tesk::simulator
