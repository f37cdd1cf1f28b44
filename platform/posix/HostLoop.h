// Waiting on a terminal device or the clock, without using the processor.
#pragma once

#include <functional>

#include "transport/HostLoop.h"

namespace tesk::platform {

class PosixHostLoop : public HostLoop {
 public:
  // runMessages: true when it ran something; may be empty.
  explicit PosixHostLoop(std::function<bool()> runMessages = {});
  // A signal ends the wait at once, and messages run once more.
  void DoEvents(ArrivalHandle arrival) override;
  void Pause(ArrivalHandle arrival, Milliseconds atMost) override;
  void Sleep(Milliseconds time) override;
  Milliseconds Tick() const override { return Milliseconds(1); }

 private:
  bool RunMessages() { return runMessages_ && runMessages_(); }

  std::function<bool()> runMessages_;
};

}  // namespace tesk::platform
