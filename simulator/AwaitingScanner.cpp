// The sheet that is being read.
#include "simulator/AwaitingScanner.h"

#include <algorithm>
#include <utility>

namespace tesk::simulator {

void AwaitingScanner::Begin(std::string record, Time now) {
  const Time start = feeder_ ? now : std::max(now, inPlace_);
  Time due = start + Settings().timings.answer + Settings().timings.reading;
  const bool late = TakeFault(FaultKind::Late, NextSheet()).has_value();
  if (late) due += Settings().timings.late;
  underWay_ = Reading{std::move(record), due};
  Reply(underWay_->record, now, UntilDue(now));
  if (!late) return;
  // It goes through the transport in time; only what it says is late.
  underWay_.reset();
  lateOnWire_ = true;
  Feed(true, now);
}

void AwaitingScanner::Settle(Time now) {
  if (!underWay_ || now < underWay_->due) return;
  underWay_.reset();
  Feed(true, now);
}

void AwaitingScanner::Abandon() {
  underWay_.reset();
  if (!std::exchange(lateOnWire_, false)) DropReplies();
}

void AwaitingScanner::Answer(std::string_view bytes, Time now) {
  if (underWay_) DropReplies();
  Reply(bytes, now, Settings().timings.answer);
  if (underWay_) Reply(underWay_->record, now, UntilDue(now));
}

void AwaitingScanner::Release(Exit exit, std::string imprint, bool imprinterOn, Time now) {
  if (Held()) inPlace_ = now + Settings().timings.insertion;
  Dispose(exit, std::move(imprint), imprinterOn, now);
}

Milliseconds AwaitingScanner::UntilDue(Time now) const {
  return std::chrono::ceil<Milliseconds>(underWay_->due - now);
}

}  // namespace tesk::simulator
