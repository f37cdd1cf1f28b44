// What the wire says about the engine's doing: whether it waits for a sheet or one is under way. Knows no
// protocol.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "cli/trace/LineObserver.h"
#include "transport/HostLoop.h"

namespace tesk::cli {

// A host that polls sends the same bytes again and again; a host that works sends something else or takes
// bytes. Models without a serial line never show any activity.
class LineActivity : public LineObserver {
 public:
  explicit LineActivity(std::shared_ptr<const Clock> clock) : clock_(std::move(clock)) {}

  void Sent(std::string_view bytes) override {
    repeated_ = bytes == lastSent_;
    lastSent_ = bytes;
    Act();
  }
  void Received(std::string_view /*bytes*/) override { Act(); }
  void Closed() override { *this = LineActivity(clock_); }

  // The same command goes out over and over: the scanner has no sheet yet.
  bool Polling() const { return repeated_; }
  // A command was sent or bytes came no longer than `quiet` ago, and it was no repeated poll.
  bool Working(Milliseconds quiet) const {
    return active_ && !repeated_ && clock_->Now() - lastActivity_ <= quiet;
  }

 private:
  void Act() {
    active_ = true;
    lastActivity_ = clock_->Now();
  }

  std::shared_ptr<const Clock> clock_;
  std::string lastSent_;
  bool repeated_ = false;
  bool active_ = false;
  TimePoint lastActivity_{};
};

}  // namespace tesk::cli
