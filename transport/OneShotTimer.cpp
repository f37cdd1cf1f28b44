#include "transport/OneShotTimer.h"

#include <utility>

#include "base/RunTimeError.h"

namespace tesk {

DeadlineTimer::DeadlineTimer(std::shared_ptr<const Clock> clock) : clock_(std::move(clock)) {}

bool DeadlineTimer::Enabled() const { return enabled_ && clock_->Now() < deadline_; }

void DeadlineTimer::SetEnabled(bool enabled) {
  enabled_ = enabled;
  if (enabled) deadline_ = clock_->Now() + Milliseconds(interval_);
}

void DeadlineTimer::SetInterval(std::int32_t milliseconds) {
  if (milliseconds < 0) throw RunTimeError(kErrorInvalidProperty, "Invalid property value");
  interval_ = milliseconds;
}

}  // namespace tesk
