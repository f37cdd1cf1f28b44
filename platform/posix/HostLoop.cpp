// Waiting on a terminal device or the clock.
#include "platform/posix/HostLoop.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "platform/Platform.h"

namespace tesk::platform {
namespace {

using Steady = std::chrono::steady_clock;
using Nanoseconds = std::chrono::nanoseconds;

constexpr Milliseconds kBlock(10);

timespec ToTimespec(Nanoseconds time) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(time);
  return {.tv_sec = static_cast<time_t>(whole.count()), .tv_nsec = static_cast<long>((time - whole).count())};
}

enum class Woken { Arrival, TimeOver, Signal };

// A hung-up device is ready at once and for ever: the next read reports it, and until somebody reads, the
// pause keeps the caller's loop from spinning.
Woken Block(ArrivalHandle arrival, Nanoseconds atMost) {
  pollfd state{static_cast<int>(arrival), POLLIN, 0};
  const nfds_t count = arrival == kNoArrivalHandle ? 0 : 1;
  timespec time = ToTimespec(std::max(atMost, Nanoseconds::zero()));
  const int ready = ::ppoll(&state, count, &time, nullptr);
  if (ready < 0) return errno == EINTR ? Woken::Signal : Woken::TimeOver;
  if (ready == 0) return Woken::TimeOver;
  if ((state.revents & (POLLHUP | POLLERR | POLLNVAL)) == 0) return Woken::Arrival;
  return Block(kNoArrivalHandle, std::min<Nanoseconds>(atMost, kBlock)) == Woken::Signal ? Woken::Signal
                                                                                         : Woken::Arrival;
}

}  // namespace

PosixHostLoop::PosixHostLoop(std::function<bool()> runMessages) : runMessages_(std::move(runMessages)) {}

void PosixHostLoop::DoEvents(ArrivalHandle arrival) {
  if (RunMessages()) return;
  if (Block(arrival, kBlock) == Woken::Signal) RunMessages();
}

void PosixHostLoop::Pause(ArrivalHandle arrival, Milliseconds atMost) {
  const auto deadline = Steady::now() + atMost;
  while (Block(arrival, deadline - Steady::now()) == Woken::Signal) {
  }
}

void PosixHostLoop::Sleep(Milliseconds time) {
  const timespec deadline = ToTimespec((Steady::now() + time).time_since_epoch());
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
  }
}

std::shared_ptr<HostLoop> CreateHostLoop(std::function<bool()> runMessages) {
  return std::make_shared<PosixHostLoop>(std::move(runMessages));
}

}  // namespace tesk::platform
