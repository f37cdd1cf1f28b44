// What --port means: a number of the engine's, a device, or the built-in simulated scanner. Knows the platform.
#pragma once

#include <cstdint>
#include <string>

namespace tesk::cli {

struct PortChoice {
  enum class Kind { Number, Device, Simulated };
  Kind kind = Kind::Number;
  std::int16_t number = 1;  // the engine's Port; a device stands behind port 1
  std::string device;       // Device only
};

// "1" to "16", "sim" or a device path. Throws UsageError for a number out of range and for an empty text.
PortChoice ParsePort(const std::string& text);

}  // namespace tesk::cli
