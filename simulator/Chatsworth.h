// The simulated Chatsworth Data OMR-1100: the scanner's side of its wire. It knows base and the simulator's own parts.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "simulator/EZData.h"

namespace tesk::simulator {

extern const Family kChatsworthFamily;

class Chatsworth final : public EZData {
 public:
  explicit Chatsworth(Options options) : EZData(std::move(options)) {}

 protected:
  void OnByte(std::uint8_t byte, Time now) override;
  bool OnCommand(const std::string& command, Time now) override;

 private:
  bool Hears(Time now);
  void FeedNext(Time now);
  std::string RecordOf(const Sheet& sheet);

  bool binary_ = false;  // sends what it reads
  bool feeds_ = false;
  Time due_{};  // of the record of the sheet that was put in last
};

}  // namespace tesk::simulator
