// The walk through a recorded session.
#include "simulator/Replay.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tesk::simulator {
namespace {

std::string Place(const Recorded& record) {
  return "line " + std::to_string(record.line) + " (" + record.time + " s)";
}

}  // namespace

Replay::Replay(std::vector<Recorded> session, Time now) : session_(std::move(session)) {
  SayWhatFollows(now);
}

void Replay::OnByte(std::uint8_t byte, Time now) {
  if (parted_) return;
  if (next_ == session_.size() || static_cast<std::uint8_t>(session_[next_].bytes[heard_]) != byte) {
    Part(byte);
    return;
  }
  if (++heard_ < session_[next_].bytes.size()) return;
  heard_ = 0;
  ++next_;
  SayWhatFollows(now);
}

void Replay::SayWhatFollows(Time now) {
  Milliseconds since{0};
  for (; next_ < session_.size() && session_[next_].direction == Direction::ToHost; ++next_) {
    since += session_[next_].delay;
    Reply(session_[next_].bytes, now, since);
  }
}

void Replay::Part(std::uint8_t byte) {
  parted_ = true;
  DropReplies();
  const std::string got(1, static_cast<char>(byte));
  if (next_ == session_.size()) {
    const std::string end =
        session_.empty() ? std::string(" of a session without bytes") : " after " + Place(session_.back());
    Complain("at the end of the session," + end + ": expected nothing more, got " + Quoted(got));
    return;
  }
  const Recorded& record = session_[next_];
  const std::string_view bytes = record.bytes;
  Complain(Place(record) + ", byte " + std::to_string(heard_ + 1) + " of " + std::to_string(bytes.size()) +
           ": expected " + Quoted(bytes.substr(heard_, 1)) + ", got " + Quoted(got) + "; the record is " +
           Quoted(bytes) + ", the host sent " + Quoted(std::string(bytes.substr(0, heard_)) + got));
}

void Replay::End() {
  if (std::exchange(parted_, true) || next_ == session_.size()) return;
  const Recorded& record = session_[next_];
  const auto ofHost = [](const Recorded& one) { return one.direction == Direction::FromHost; };
  const auto left =
      std::count_if(session_.begin() + static_cast<std::ptrdiff_t>(next_), session_.end(), ofHost);
  Complain(Place(record) + ", byte " + std::to_string(heard_ + 1) + " of " +
           std::to_string(record.bytes.size()) + ": expected " +
           Quoted(std::string_view(record.bytes).substr(heard_)) +
           ", got nothing more; records of the host's that were not sent whole: " + std::to_string(left));
}

}  // namespace tesk::simulator
