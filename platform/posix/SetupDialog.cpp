// No windows here; the command line shows the setup dialog in its terminal.
#include "platform/SetupDialog.h"

namespace tesk::platform {

std::shared_ptr<SetupDialog> CreateSetupDialog() { return nullptr; }

}  // namespace tesk::platform
