// An engine for a command that reads no sheets: its messages go to the console, Ctrl-C cancels what it does.
#pragma once

#include <memory>

#include "cli/Console.h"
#include "engine/clsTeskReader.h"
#include "transport/SerialLine.h"

namespace tesk::cli {

class EngineSession {
 public:
  EngineSession(std::shared_ptr<SerialSystem> serial, std::shared_ptr<Console> console);
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;
  ~EngineSession();

  clsTeskReader& Engine() const { return *engine_; }
  // How many messages the operator has got.
  int Messages() const { return host_->Messages(); }

 private:
  std::shared_ptr<ConsoleHost> host_;
  std::shared_ptr<clsTeskReader> engine_;
};

}  // namespace tesk::cli
