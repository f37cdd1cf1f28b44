// The one-shot time-out timer: enabled while time is left, disabled once it has run out.
#pragma once

#include <cstdint>
#include <memory>

#include "transport/HostLoop.h"

namespace tesk {

class OneShotTimer {
 public:
  virtual ~OneShotTimer() = default;
  // Reads False once Interval has passed since it was last set to True, whether or not messages ran.
  virtual bool Enabled() const = 0;
  virtual void SetEnabled(bool enabled) = 0;  // True restarts the interval
  virtual std::int32_t Interval() const = 0;  // milliseconds
  virtual void SetInterval(std::int32_t milliseconds) = 0;
};

// The timer as a deadline on the monotonic clock.
class DeadlineTimer : public OneShotTimer {
 public:
  explicit DeadlineTimer(std::shared_ptr<const Clock> clock);
  bool Enabled() const override;
  void SetEnabled(bool enabled) override;
  std::int32_t Interval() const override { return interval_; }
  // Throws error 380 for a negative interval. A running timer keeps the deadline that it has.
  void SetInterval(std::int32_t milliseconds) override;

 private:
  std::shared_ptr<const Clock> clock_;
  std::int32_t interval_ = 0;
  bool enabled_ = false;
  TimePoint deadline_{};
};

}  // namespace tesk
