// What a system reports of bytes that came damaged or were lost, and how that is worded.
#pragma once

#include <cstdint>
#include <string>

#include "base/RunTimeError.h"

namespace tesk::platform {

enum class LineDamage : std::uint8_t {
  Marked,         // the line's check of a byte failed: its parity or its stop bit
  Parity,         // a byte's parity was wrong
  Framing,        // a byte had no stop bit
  Break,          // the line was held longer than any byte
  PortOverrun,    // the port had no room for a byte
  SystemOverrun,  // the system had no room for the bytes that waited
};

// Error 8020. device: its name for messages.
RunTimeError Damaged(const std::string& device, LineDamage damage);

}  // namespace tesk::platform
