// Which line settings exist at all, whatever the hardware, and how a refused one is worded.
#pragma once

#include <string>

#include "base/RunTimeError.h"
#include "transport/SerialLine.h"

namespace tesk::platform {

// Error 8015; setting: what cannot be done, "2 stop bits".
RunTimeError RefusedSetting(const std::string& device, const std::string& setting);

// Throws error 8015 for 4 data bits, 1.5 stop bits without 5 data bits, 2 stop bits with them, and for
// values that are no members.
void CheckLineSettings(const std::string& device, const LineSettings& settings);

// For messages: "14400 bits per second", "7 data bits", "mark parity", "1.5 stop bits", "RTS/CTS
// handshaking".
std::string BitRateText(const LineSettings& settings);
std::string DataBitsText(const LineSettings& settings);
std::string ParityText(const LineSettings& settings);
std::string StopBitsText(const LineSettings& settings);
std::string HandshakingText(const LineSettings& settings);

}  // namespace tesk::platform
