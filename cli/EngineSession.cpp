// The engine of a command that reads no sheets.
#include "cli/EngineSession.h"

#include <utility>

#include "assembly/assembly.h"
#include "platform/Platform.h"

namespace tesk::cli {

EngineSession::EngineSession(std::shared_ptr<SerialSystem> serial, std::shared_ptr<Console> console)
    : host_(std::make_shared<ConsoleHost>(std::move(console))) {
  platform::InstallInterruptHandler();
  const auto cancelWhenInterrupted = [this] {
    if (engine_ && platform::Interrupted()) engine_->SetCancelScan(true);
    return false;
  };
  engine_ = CreateReader({.serial = std::move(serial),
                          .loop = platform::CreateHostLoop(cancelWhenInterrupted),
                          .clock = platform::CreateClock()});
  engine_->SetError(host_);
}

EngineSession::~EngineSession() { SetError(nullptr); }

}  // namespace tesk::cli
