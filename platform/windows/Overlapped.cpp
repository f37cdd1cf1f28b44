// One overlapped operation at a time.
#include "platform/windows/Overlapped.h"

namespace tesk::platform {
namespace {

constexpr DWORD kCancelPatience = 1000;  // milliseconds; a sound driver needs none

std::unique_ptr<Overlapped::State> NewState() {
  auto state = std::make_unique<Overlapped::State>();
  state->event = Handle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  state->overlapped.hEvent = state->event.Get();
  return state;
}

}  // namespace

Overlapped::Overlapped(HANDLE file) : file_(file), state_(NewState()) {}

Overlapped::~Overlapped() {
  if (pending_) Cancel();
}

void Overlapped::Begin(BOOL started) {
  startError_ = started ? ERROR_SUCCESS : ::GetLastError();
  pending_ = started || startError_ == ERROR_IO_PENDING;
}

std::optional<Outcome> Overlapped::Wait(DWORD milliseconds) {
  if (!pending_) return Outcome{startError_, 0};
  if (::WaitForSingleObject(Event(), milliseconds) == WAIT_TIMEOUT) return std::nullopt;
  Outcome outcome;
  if (!::GetOverlappedResult(file_, &state_->overlapped, &outcome.bytes, FALSE)) {
    outcome.error = ::GetLastError();
  }
  pending_ = false;
  return outcome;
}

// A driver that keeps an operation for ever would write into memory that is gone: that memory is given up.
Outcome Overlapped::Cancel() {
  ::CancelIoEx(file_, &state_->overlapped);
  if (const auto outcome = Wait(kCancelPatience)) return *outcome;
  static_cast<void>(state_.release());
  state_ = NewState();
  pending_ = false;
  return {ERROR_TIMEOUT, 0};
}

}  // namespace tesk::platform
