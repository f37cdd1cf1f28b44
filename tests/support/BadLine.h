// A scanner behind a line that delivers one of its answers late, or damaged in one place. Knows simulator/
// alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "simulator/Scanner.h"

namespace tesk::test {

struct Damage {
  enum class Kind { None, Pause, Insert, Replace };
  Kind kind = Kind::None;
  std::size_t answer = 0;  // the scanner's first is 0
  std::size_t byte = 0;    // within the answer; its length: behind it
  char with = '\0';
  simulator::Milliseconds pause{500};
};

// The scanner must answer at once.
class BadLine : public simulator::Scanner {
 public:
  BadLine(std::shared_ptr<simulator::Scanner> scanner, Damage damage)
      : scanner_(std::move(scanner)), damage_(damage) {}

  // As the scanner gave them.
  const std::vector<std::string>& Answers() const { return answers_; }

 private:
  void OnByte(std::uint8_t byte, simulator::Time now) override {
    const char heard = static_cast<char>(byte);
    scanner_->Receive({&heard, 1}, now);
    const std::string said = scanner_->Send(now);
    if (said.empty()) return;
    answers_.push_back(said);
    if (damage_.kind == Damage::Kind::None || answers_.size() - 1 != damage_.answer) return Reply(said, now);
    std::string rest = said.substr(damage_.byte);
    if (damage_.kind == Damage::Kind::Insert) rest.insert(0, 1, damage_.with);
    if (damage_.kind == Damage::Kind::Replace) rest.at(0) = damage_.with;
    Reply(said.substr(0, damage_.byte), now);
    Reply(rest, now, damage_.kind == Damage::Kind::Pause ? damage_.pause : simulator::Milliseconds(0));
  }

  std::shared_ptr<simulator::Scanner> scanner_;
  Damage damage_;
  std::vector<std::string> answers_;
};

}  // namespace tesk::test
