// Where `teskread setup` shows the setup dialog: in a window, or in the terminal. Knows the engine.
#pragma once

#include <memory>
#include <string>

#include "engine/Seams.h"

namespace tesk::cli {

class SetupScreen {
 public:
  virtual ~SetupScreen() = default;
  // Empty: the system's own.
  virtual std::shared_ptr<SetupDialog> Dialog() = 0;
  // Shows a message where the dialog stands and waits for the operator; lines are joined with "|". False
  // where the message is to go to standard error.
  virtual bool ShowMessage(const std::string& title, const std::string& text) = 0;
  // Shows a message over the dialog as soon as that stands. False as above.
  virtual bool Announce(const std::string& title, const std::string& text) = 0;
  // What a wait of the engine's gives way to. True when there was something to do.
  virtual bool RunMessages() = 0;
};

// Throws UsageError where there is nothing to show the dialog on.
std::shared_ptr<SetupScreen> CreateSetupScreen();

}  // namespace tesk::cli
