// The words for a device that cannot be opened.
#pragma once

#include <string>

#include "base/RunTimeError.h"

namespace tesk::platform {

// Error 8002 that names the device and the reason; its detail says who we are, whose the device is, and
// what to try.
RunTimeError CannotOpen(const std::string& device, const std::string& reason);

// Error 8005.
RunTimeError InUse(const std::string& device);

}  // namespace tesk::platform
