// The bookkeeping behind LineActivity.
#include "cli/scan/LineActivity.h"

namespace tesk::cli {

void LineActivity::Sent(std::string_view bytes) {
  repeated_ = bytes == lastSent_;
  lastSent_ = bytes;
  answerLength_ = 0;
  active_ = true;
  lastActivity_ = clock_->Now();
}

void LineActivity::Received(std::string_view bytes) {
  answerLength_ += bytes.size();
  active_ = true;
  lastActivity_ = clock_->Now();
}

bool LineActivity::Working(Milliseconds quiet) const {
  return active_ && !repeated_ && clock_->Now() - lastActivity_ <= quiet;
}

}  // namespace tesk::cli
