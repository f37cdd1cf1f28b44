// Serial ports as the communications devices of Windows.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/lineCommon.h"
#include "transport/HostLoop.h"
#include "transport/SerialLine.h"

namespace tesk::platform {

// Port N is COMN; TESKREADER_PORT_<N> overrides one, and `explicitPort`, where not empty, is Port 1
// whatever else is said.
DevicePaths DefaultDevicePaths(std::string explicitPort);

class WindowsSerialSystem : public SerialSystem {
 public:
  explicit WindowsSerialSystem(DevicePaths paths, Milliseconds patience = kWritePatience);
  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override;

 private:
  DevicePaths paths_;
  Milliseconds patience_;
};

}  // namespace tesk::platform
