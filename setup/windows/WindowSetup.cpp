// Systems with windows: the dialog is the system's, whatever the streams are connected to.
#include "setup/SetupScreen.h"

namespace tesk {
namespace {

class WindowScreen : public SetupScreen {
 public:
  std::shared_ptr<SetupDialog> Dialog() override { return nullptr; }
  bool ShowMessage(const std::string&, const std::string&) override { return false; }
  bool Announce(const std::string&, const std::string&) override { return false; }
  bool RunMessages() override { return false; }
};

}  // namespace

std::shared_ptr<SetupScreen> CreateSetupScreen() { return std::make_shared<WindowScreen>(); }

}  // namespace tesk
