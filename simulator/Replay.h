// A scanner that answers as a recorded one did: it expects exactly the bytes that the recorded host sent and
// says what the recorded scanner said after them. It knows base and the simulator's own parts.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "simulator/Scanner.h"

namespace tesk::simulator {

// One record of a session.
struct Recorded {
  Direction direction = Direction::FromHost;
  std::string bytes;      // at least one
  Milliseconds delay{0};  // ToHost: since the record before it
  std::size_t line = 0;   // where the record stands, for complaints
  std::string time;       // likewise: when it happened, as the recording has it
};

// Complains at the first byte of the host's that differs and says nothing from then on. When bytes come is
// not compared, only which.
class Replay : public Scanner {
 public:
  // What the scanner says before the host's first byte comes due from `now` on.
  Replay(std::vector<Recorded> session, Time now);

  // The host will send nothing more: complains about what it should have sent.
  void End();

 protected:
  void OnByte(std::uint8_t byte, Time now) override;

 private:
  void SayWhatFollows(Time now);
  void Part(std::uint8_t byte);

  std::vector<Recorded> session_;
  std::size_t next_ = 0;   // the record that is expected; those of the scanner's before it are queued
  std::size_t heard_ = 0;  // bytes of that record
  bool parted_ = false;
};

}  // namespace tesk::simulator
