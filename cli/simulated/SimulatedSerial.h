// A serial system in memory whose every port leads to one simulated scanner. Knows the transport and the
// simulator.
#pragma once

#include <memory>

#include "simulator/Scanner.h"
#include "transport/HostLoop.h"
#include "transport/SerialLine.h"

namespace tesk::cli {

class SimulatedSerial : public SerialSystem {
 public:
  // The scanner's bytes come due on `clock`.
  SimulatedSerial(std::shared_ptr<simulator::Scanner> scanner, std::shared_ptr<const Clock> clock);
  // Throws error 8005 while a line is open, as a port that another program holds.
  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override;

 private:
  std::shared_ptr<simulator::Scanner> scanner_;
  std::shared_ptr<const Clock> clock_;
  std::weak_ptr<const void> open_;  // lives as long as the open line
};

}  // namespace tesk::cli
