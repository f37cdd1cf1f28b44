// Serial ports as the terminal devices of Linux.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/lineCommon.h"
#include "platform/posix/LineCounters.h"
#include "transport/HostLoop.h"
#include "transport/SerialLine.h"

namespace tesk::platform {

// Ports 1 to 8 are /dev/ttyS0 to 7, 9 to 16 /dev/ttyUSB0 to 7; TESKREADER_PORT_<N> overrides one, and
// `explicitPort`, where not empty, is Port 1 whatever else is said.
DevicePaths DefaultDevicePaths(std::string explicitPort);

// What a device's driver has counted of damaged and lost bytes; empty where it counts nothing.
using CounterSource = std::function<std::optional<LineCounters>(int descriptor)>;

// The system's own; empty for a device that counts nothing, such as a pseudo-terminal.
std::optional<LineCounters> CountersOf(int descriptor);

class PosixSerialSystem : public SerialSystem {
 public:
  explicit PosixSerialSystem(DevicePaths paths, Milliseconds patience = kWritePatience,
                             CounterSource counters = CountersOf);
  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override;

 private:
  DevicePaths paths_;
  Milliseconds patience_;
  CounterSource counters_;
};

}  // namespace tesk::platform
