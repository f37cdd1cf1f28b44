// The simulated Peripheral Dynamics VMR138: the scanner's side of its wire. It knows base and the simulator's
// own parts.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "simulator/AwaitingScanner.h"
#include "simulator/Simulators.h"

namespace tesk::simulator {

extern const Family kPeripheralDynamicsFamily;

class PeripheralDynamics final : public AwaitingScanner {
 public:
  explicit PeripheralDynamics(Options options) : AwaitingScanner(std::move(options), false) {}

  // The threshold in force, 192 to 255.
  std::int32_t Threshold() const { return threshold_; }
  void SetThreshold(std::int32_t threshold) { threshold_ = threshold; }
  // Everything that the status asks for has been sent.
  bool SetUp() const { return missing_.empty(); }

 protected:
  void OnByte(std::uint8_t byte, Time now) override;

 private:
  // Yields what is wrong with the command; empty: it was taken.
  using Handler = std::string (PeripheralDynamics::*)(char command, Time now);
  struct Command;
  static const Command kCommands[];

  std::string OnStart(char command, Time now);
  std::string OnSetUp(char command, Time now);
  std::string OnThreshold(char command, Time now);
  std::string OnStatus(char command, Time now);
  std::string OnRead(char command, Time now);
  std::string OnEnd(char command, Time now);
  std::string OnDispose(char command, Time now);

  void BeginReading(Time now);
  std::string StatusReply();
  std::string RecordOf(const Sheet& sheet);

  std::string missing_ = "DGE";  // set-up commands that the scanner waits for
  std::int32_t threshold_ = 239;
  std::int32_t thresholdCommands_ = 0;
  bool started_ = false;
  bool waiting_ = false;  // was told to read and has not begun: there is no sheet
  bool ended_ = true;     // the last reading was ended
};

}  // namespace tesk::simulator
