// A simulated scanner: a plain state machine with bytes in, bytes and pauses out. The same object serves in
// memory, behind a pseudo-terminal and as a serial port of another system. It knows base alone.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesk::simulator {

using Time = std::chrono::steady_clock::time_point;
using Milliseconds = std::chrono::milliseconds;

enum class Direction { FromHost, ToHost };

// One run of bytes on the wire, in the order in which it happened: all that went one way before the next
// byte went the other way.
struct Traffic {
  Direction direction;
  std::string bytes;

  bool operator==(const Traffic&) const = default;
};

class Scanner {
 public:
  Scanner() = default;
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;
  virtual ~Scanner() = default;

  // Takes bytes that the host sent.
  void Receive(std::string_view bytes, Time now);
  // Hands over the bytes that are due by `now`, in order; empty where none are.
  std::string Send(Time now);
  // When the next byte is due; empty while the scanner has nothing to say.
  std::optional<Time> NextDue() const;

  // Delivers what is said from now on no faster than the line's bit rate; 0 or less: as fast as it is taken.
  void PaceAt(double bytesPerSecond);

  // From now on remembers at most so many bytes and runs of the transcript, the latest, and so many complaints,
  // the first: for a scanner that serves for weeks.
  void KeepAtMost(std::size_t transcript, std::size_t complaints);

  // Everything that went over the wire so far.
  const std::deque<Traffic>& Transcript() const { return transcript_; }
  // What the host did wrong by the rules of this scanner's protocol: an unknown command, a wrong blank, a
  // missing terminator. Empty when all was well.
  const std::vector<std::string>& Complaints() const { return complaints_; }

 protected:
  // One byte of the host's, in order.
  virtual void OnByte(std::uint8_t byte, Time now) = 0;

  // Queues bytes to the host; they are due `delay` after `now`, never before earlier ones.
  void Reply(std::string_view bytes, Time now, Milliseconds delay = Milliseconds(0));
  // Forgets the replies that nobody has taken yet.
  void DropReplies();
  void Complain(std::string complaint);

 private:
  struct Due {
    Time at;
    char byte;
  };

  void Record(Direction direction, std::string_view bytes);
  void Forget();

  std::deque<Due> queue_;
  Time lastDue_ = Time::min();
  std::chrono::nanoseconds byteTime_{0};
  std::deque<Traffic> transcript_;
  std::size_t transcriptSize_ = 0;  // bytes, and one more for each run
  std::size_t mostTranscript_ = SIZE_MAX;
  std::vector<std::string> complaints_;
  std::size_t mostComplaints_ = SIZE_MAX;
};

// `bytes` in double quotes for a complaint, whatever is not printable as <1B>.
std::string Quoted(std::string_view bytes);

}  // namespace tesk::simulator
