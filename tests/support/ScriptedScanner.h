// A scanner that says exactly what a test wrote down, for answers that no simulated scanner gives. Knows
// simulator/ alone.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "simulator/Scanner.h"

namespace tesk::test {

// One turn of a conversation: when the host has sent `host`, the scanner says `reply`. A turn with nothing
// from the host goes on where the one before ended.
struct Turn {
  std::string host;
  std::string reply;
  simulator::Milliseconds delay{0};
};

class ScriptedScanner : public simulator::Scanner {
 public:
  explicit ScriptedScanner(std::vector<Turn> script) : script_(std::move(script)) {}

  // All that was written down was said, and nothing else was heard.
  bool Done() const { return next_ == script_.size() && heard_.empty(); }

 protected:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    heard_ += static_cast<char>(byte);
    if (next_ == script_.size() || heard_ != script_[next_].host) return;
    heard_.clear();
    simulator::Milliseconds delay{0};
    do {
      delay += script_[next_].delay;
      Reply(script_[next_].reply, now, delay);
      ++next_;
    } while (next_ < script_.size() && script_[next_].host.empty());
  }

 private:
  std::vector<Turn> script_;
  std::size_t next_ = 0;
  std::string heard_;
};

}  // namespace tesk::test
