// Waiting on a port's event, the thread's message queue or the clock.
#include "platform/windows/HostLoop.h"

#include <algorithm>
#include <utility>

#include "platform/Platform.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

using Steady = std::chrono::steady_clock;

constexpr DWORD kBlock = 10;          // milliseconds
constexpr int kMessagesAtOnce = 256;  // a host that posts to itself without end must not hold the scanner up

struct Pumped {
  bool ran = false;
  bool quitting = false;
};

// The request to quit belongs to the host's own loop, so it goes back into the queue.
Pumped PumpMessages() {
  Pumped pumped;
  MSG message;
  for (int count = 0; count < kMessagesAtOnce && ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
       ++count) {
    if (message.message == WM_QUIT) {
      ::PostQuitMessage(static_cast<int>(message.wParam));
      pumped.quitting = true;
      break;
    }
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
    pumped.ran = true;
  }
  return pumped;
}

// Whole milliseconds, rounded up: a wait must not end early.
DWORD ToWait(Steady::duration time) {
  const auto left = std::chrono::ceil<Milliseconds>(time).count();
  return static_cast<DWORD>(std::clamp<long long>(left, 0, INT32_MAX));
}

// False: the handle is no longer good for waiting.
bool WaitFor(ArrivalHandle arrival, DWORD milliseconds) {
  const auto handle = reinterpret_cast<HANDLE>(arrival);
  return ::WaitForSingleObject(handle, milliseconds) != WAIT_FAILED;
}

void Block(ArrivalHandle arrival, DWORD milliseconds) {
  if (arrival == kNoArrivalHandle || !WaitFor(arrival, milliseconds)) ::Sleep(milliseconds);
}

void BlockForMessages(ArrivalHandle arrival, DWORD milliseconds) {
  const auto handle = reinterpret_cast<HANDLE>(arrival);
  const DWORD count = arrival == kNoArrivalHandle ? 0 : 1;
  if (::MsgWaitForMultipleObjectsEx(count, &handle, milliseconds, QS_ALLINPUT, MWMO_INPUTAVAILABLE) ==
      WAIT_FAILED) {
    ::Sleep(milliseconds);
  }
}

}  // namespace

WindowsHostLoop::WindowsHostLoop(std::function<bool()> runMessages) : runMessages_(std::move(runMessages)) {}

void WindowsHostLoop::DoEvents(ArrivalHandle arrival) {
  const Pumped pumped = PumpMessages();
  const bool hostRan = runMessages_ && runMessages_();
  if (pumped.ran || hostRan) return;
  // While the request to quit waits, the queue is never empty and blocks nobody.
  if (pumped.quitting) {
    Block(arrival, kBlock);
  } else {
    BlockForMessages(arrival, kBlock);
  }
}

// Never longer than one block: a driver that forgets to signal an arrival (Wine on a pseudo-terminal)
// costs no more than that.
void WindowsHostLoop::Pause(ArrivalHandle arrival, Milliseconds atMost) {
  Block(arrival, std::min(ToWait(atMost), kBlock));
}

// The system's sleep may end up to one tick early.
void WindowsHostLoop::Sleep(Milliseconds time) {
  const auto deadline = Steady::now() + time;
  while (Steady::now() < deadline) ::Sleep(ToWait(deadline - Steady::now()));
}

std::shared_ptr<HostLoop> CreateHostLoop(std::function<bool()> runMessages) {
  return std::make_shared<WindowsHostLoop>(std::move(runMessages));
}

}  // namespace tesk::platform
