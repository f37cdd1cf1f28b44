// Takes the marks out of what a terminal device delivers: it doubles the byte 255 and puts 255 and 0 before
// a byte whose parity or stop bit was wrong. Knows nobody.
#pragma once

#include <string>
#include <string_view>

namespace tesk::platform {

class ParityMarks {
 public:
  // The bytes as they were sent. A byte with an error is left out and remembered; a mark may be cut up
  // between two calls.
  std::string Take(std::string_view marked) {
    std::string bytes;
    for (const char c : marked) {
      switch (state_) {
        case State::Plain:
          state_ = c == kMark ? State::Mark : State::Plain;
          if (c != kMark) bytes += c;
          break;
        case State::Mark:
          state_ = c == '\0' ? State::Damaged : State::Plain;
          if (c != '\0') bytes += c;
          break;
        case State::Damaged:
          damaged_ = true;
          state_ = State::Plain;
          break;
      }
    }
    return bytes;
  }

  // Whether a byte was damaged since the last question.
  bool TakeDamage() {
    const bool damaged = damaged_;
    damaged_ = false;
    return damaged;
  }

 private:
  enum class State { Plain, Mark, Damaged };
  static constexpr char kMark = '\xFF';

  State state_ = State::Plain;
  bool damaged_ = false;
};

}  // namespace tesk::platform
