// What every simulated scanner does: the line's pace, the transcript, the complaints.
#include "simulator/Scanner.h"

#include <algorithm>
#include <utility>

namespace tesk::simulator {

void Scanner::Receive(std::string_view bytes, Time now) {
  Record(Direction::FromHost, bytes);
  for (const char byte : bytes) OnByte(static_cast<std::uint8_t>(byte), now);
}

std::string Scanner::Send(Time now) {
  std::string due;
  while (!queue_.empty() && queue_.front().at <= now) {
    due += queue_.front().byte;
    queue_.pop_front();
  }
  Record(Direction::ToHost, due);
  return due;
}

std::optional<Time> Scanner::NextDue() const {
  if (queue_.empty()) return std::nullopt;
  return queue_.front().at;
}

void Scanner::PaceAt(double bytesPerSecond) {
  const double nanoseconds = bytesPerSecond > 0 ? 1e9 / bytesPerSecond : 0;
  // A minute per byte is slower than any line.
  byteTime_ = std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(nanoseconds, 60e9)));
}

// A byte is due when its last bit has arrived.
void Scanner::Reply(std::string_view bytes, Time now, Milliseconds delay) {
  lastDue_ = std::max(lastDue_, now + delay);
  for (const char byte : bytes) {
    lastDue_ += byteTime_;
    queue_.push_back({lastDue_, byte});
  }
}

void Scanner::DropReplies() {
  queue_.clear();
  lastDue_ = Time::min();
}

void Scanner::Complain(std::string complaint) { complaints_.push_back(std::move(complaint)); }

void Scanner::Record(Direction direction, std::string_view bytes) {
  if (bytes.empty()) return;
  if (transcript_.empty() || transcript_.back().direction != direction)
    transcript_.push_back({direction, {}});
  transcript_.back().bytes += bytes;
}

std::string Quoted(std::string_view bytes) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string text = "\"";
  for (const char character : bytes) {
    const auto code = static_cast<unsigned char>(character);
    if (code >= 32 && code < 127) {
      text += character;
    } else {
      text += {'<', kHex[code >> 4U], kHex[code & 15U], '>'};
    }
  }
  return text + '"';
}

}  // namespace tesk::simulator
