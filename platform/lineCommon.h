// What the serial lines of every system have in common: the patience of closing, and the words for a line that is
// gone or held.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/RunTimeError.h"
#include "transport/HostLoop.h"
#include "transport/SerialLine.h"

namespace tesk::platform {

// The device of a port 1..16: a path, or a name such as "COM3".
using DevicePaths = std::function<std::string(std::int16_t port)>;

// How long a write waits without progress.
inline constexpr Milliseconds kWritePatience(5000);

// Error number and the system's reason. noun: "device" or "port", as the system's users call it.
RunTimeError Gone(std::int32_t number, const std::string& noun, const std::string& device,
                  const std::string& reason);
// Error 8021.
RunTimeError NotTaken(const std::string& device);

// Throws error 8002 where a port is not 1 to 16.
void CheckPortNumber(std::int16_t port);

// Waits until nothing is unsent: the last command must still reach the scanner. Where a held line takes nothing
// any more, the rest is thrown away, since closing would wait for it.
void Drain(const std::function<std::int64_t()>& unsent, const std::function<void()>& throwAway);

}  // namespace tesk::platform
