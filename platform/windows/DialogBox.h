// The message box on the screen, for hosts without one of their own.
#pragma once

#include <memory>

#include "base/HostServices.h"

namespace tesk::platform {

// Blocks until the operator has pressed OK; the host's messages run meanwhile.
std::shared_ptr<MessageBox> CreateDialogBox();

}  // namespace tesk::platform
