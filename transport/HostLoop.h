// The seams of time: the monotonic clock, and the host's message loop that waits give way to.
#pragma once

#include <chrono>

#include "transport/SerialControl.h"

namespace tesk {

using Milliseconds = std::chrono::milliseconds;
using TimePoint = std::chrono::steady_clock::time_point;

class Clock {
 public:
  virtual ~Clock() = default;
  virtual TimePoint Now() const = 0;  // monotonic
};

class HostLoop {
 public:
  virtual ~HostLoop() = default;
  // Lets the host's pending messages run. Where there was none it blocks until a message comes, a byte
  // arrives at `arrival`, or a few milliseconds (at most 20) have passed.
  virtual void DoEvents(ArrivalHandle arrival) = 0;
  // A polling pause: at most `atMost`, ended by the first byte at `arrival`; messages do not run.
  virtual void Pause(ArrivalHandle arrival, Milliseconds atMost) = 0;
  // A prescribed pause: lasts its full time; messages do not run.
  virtual void Sleep(Milliseconds time) = 0;
  // How much longer than asked for a Sleep may last.
  virtual Milliseconds Tick() const { return Milliseconds(0); }
};

}  // namespace tesk
