// Where the setup dialog stands: in a window, or in the terminal that a command was typed into. Each system has
// its own, in a folder below. Knows the engine.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "engine/Seams.h"

namespace tesk {

// Nothing to show the dialog on. The text says what to do; lines are joined with "|".
class NoSetupScreen : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

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

// For the command line. Throws NoSetupScreen.
std::shared_ptr<SetupScreen> CreateSetupScreen();

// For hosts with windows of their own; empty on a system without: there a host brings its own.
std::shared_ptr<SetupDialog> CreateSetupDialog();

}  // namespace tesk
