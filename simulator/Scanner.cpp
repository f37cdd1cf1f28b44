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

void Scanner::Complain(std::string complaint) {
  if (complaints_.size() < mostComplaints_) complaints_.push_back(std::move(complaint));
}

void Scanner::KeepAtMost(std::size_t transcript, std::size_t complaints) {
  mostTranscript_ = transcript;
  mostComplaints_ = complaints;
}

void Scanner::Record(Direction direction, std::string_view bytes) {
  if (bytes.empty()) return;
  const bool turns = transcript_.empty() || transcript_.back().direction != direction;
  if (turns) transcript_.push_back({direction, {}});
  transcript_.back().bytes += bytes;
  transcriptSize_ += bytes.size() + (turns ? 1 : 0);
  while (transcriptSize_ > mostTranscript_) Forget();
}

// The oldest run, or as much of the only one as is too much.
void Scanner::Forget() {
  std::string& oldest = transcript_.front().bytes;
  const std::size_t tooMuch = transcriptSize_ - mostTranscript_;
  if (transcript_.size() > 1 || tooMuch >= oldest.size()) {
    transcriptSize_ -= oldest.size() + 1;
    transcript_.pop_front();
  } else {
    transcriptSize_ -= tooMuch;
    oldest.erase(0, tooMuch);
  }
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
