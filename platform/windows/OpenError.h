// The words for a port that cannot be opened.
#pragma once

#include <string>

#include "base/RunTimeError.h"

namespace tesk::platform {

// Error 8002 that names the port and the reason; its detail says which ports there are and what to try.
RunTimeError CannotOpen(const std::string& device, const std::string& reason);

// Error 8005.
RunTimeError InUse(const std::string& device);

}  // namespace tesk::platform
