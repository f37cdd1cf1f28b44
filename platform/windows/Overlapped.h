// One overlapped operation at a time, with the event that tells its end.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/windows/Handle.h"

namespace tesk::platform {

// How an operation ended.
struct Outcome {
  DWORD error = ERROR_SUCCESS;
  DWORD bytes = 0;
};

class Overlapped {
 public:
  explicit Overlapped(HANDLE file);
  Overlapped(const Overlapped&) = delete;
  Overlapped& operator=(const Overlapped&) = delete;
  // Cancels what is under way.
  ~Overlapped();

  // What the system writes to or reads from while an operation is under way.
  struct State {
    OVERLAPPED overlapped{};
    Handle event;
    std::string buffer;
    DWORD mask = 0;
  };
  State& Shared() { return *state_; }

  // started: what the system call answered.
  void Begin(BOOL started);
  bool Pending() const { return pending_; }
  HANDLE Event() const { return state_->event.Get(); }
  // The outcome once the operation has ended; empty while it has not after `milliseconds`.
  std::optional<Outcome> Wait(DWORD milliseconds);
  // Ends the operation, whatever it has done by then.
  Outcome Cancel();

 private:
  HANDLE file_;
  std::unique_ptr<State> state_;
  bool pending_ = false;
  DWORD startError_ = ERROR_SUCCESS;
};

}  // namespace tesk::platform
