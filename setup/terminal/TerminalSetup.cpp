// Systems without windows: the dialog stands in the terminal that the command was typed into.
#include <optional>
#include <vector>

#include "platform/Platform.h"
#include "setup/SetupScreen.h"
#include "setup/terminal/TerminalOptions.h"
#include "setup/terminal/terminalKind.h"

namespace tesk {
namespace {

class TerminalSetup : public SetupScreen,
                      public SetupDialog,
                      public std::enable_shared_from_this<TerminalSetup> {
 public:
  std::shared_ptr<SetupDialog> Dialog() override { return shared_from_this(); }

  bool ShowMessage(const std::string& title, const std::string& text) override {
    if (screen_) screen_->ShowBox(title, text);
    return screen_.has_value();
  }

  bool Announce(const std::string& title, const std::string& text) override {
    announced_.push_back({title, text});
    return true;
  }

  bool RunMessages() override { return options_ && options_->RunMessages(); }

  bool Show(clsTeskReader& reader, std::int32_t, const std::shared_ptr<HostObject>&) override {
    screen_.emplace();
    options_.emplace(*screen_, reader);
    const bool confirmed = options_->Run(announced_);
    options_.reset();
    screen_.reset();
    return confirmed;
  }

 private:
  std::optional<TerminalScreen> screen_;
  std::optional<TerminalOptions> options_;
  std::vector<OperatorMessage> announced_;
};

}  // namespace

std::shared_ptr<SetupScreen> CreateSetupScreen() {
  if (!platform::StandardInputIsTerminal() || !platform::StandardOutputIsTerminal()) {
    throw NoSetupScreen(
        "setup shows a dialog and needs a terminal for its input and output|"
        "\"teskread settings save\" changes settings without one");
  }
  if (const std::string why = WhyNotDrawable(); !why.empty()) throw NoSetupScreen(why);
  return std::make_shared<TerminalSetup>();
}

std::shared_ptr<SetupDialog> CreateSetupDialog() { return nullptr; }

}  // namespace tesk
