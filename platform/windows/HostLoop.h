// Waiting on a port's event, the thread's message queue or the clock.
#pragma once

#include <functional>

#include "transport/HostLoop.h"

namespace tesk::platform {

// Belongs to the thread whose messages it runs.
class WindowsHostLoop : public HostLoop {
 public:
  // runMessages: work of the host besides its window messages, true when there was some; may be empty.
  explicit WindowsHostLoop(std::function<bool()> runMessages = {});
  void DoEvents(ArrivalHandle arrival) override;
  void Pause(ArrivalHandle arrival, Milliseconds atMost) override;
  void Sleep(Milliseconds time) override;
  Milliseconds Tick() const override { return Milliseconds(16); }

 private:
  std::function<bool()> runMessages_;
};

}  // namespace tesk::platform
