// Systems without windows: the dialog stands in the terminal that the command was typed into.
#include <optional>
#include <vector>

#include "cli/CommandError.h"
#include "cli/SetupScreen.h"
#include "cli/TerminalKind.h"
#include "cli/TerminalOptions.h"
#include "platform/Platform.h"

namespace tesk::cli {
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
    throw UsageError(
        "setup shows a dialog and needs a terminal for its input and output|"
        "\"teskread settings save\" changes settings without one");
  }
  RequireDrawableTerminal();
  return std::make_shared<TerminalSetup>();
}

}  // namespace tesk::cli
