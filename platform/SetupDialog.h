// The setup dialog of this system. Needs no system header.
#pragma once

#include <memory>

#include "engine/Seams.h"

namespace tesk::platform {

// Empty on a system whose programs have no windows: there a host brings its own.
std::shared_ptr<SetupDialog> CreateSetupDialog();

}  // namespace tesk::platform
