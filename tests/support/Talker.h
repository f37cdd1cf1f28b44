// A scanner that says what a test writes down, for answers that no simulated scanner gives. Knows simulator/ alone.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "simulator/Scanner.h"

namespace tesk::test {

// A part of an answer, and how long it comes after the part before.
struct Piece {
  std::string text;
  simulator::Milliseconds delay{0};
};

// What a scanner says to a command: the first time, the second time, and from then on as the last time.
struct Answers {
  Answers(const char* text) : each{{{text}}} {}
  Answers(const std::string& text) : each{{{text}}} {}
  Answers(std::vector<Piece> pieces) : each{std::move(pieces)} {}
  Answers Then(const Answers& next) const {
    Answers all = *this;
    all.each.insert(all.each.end(), next.each.begin(), next.each.end());
    return all;
  }

  std::vector<std::vector<Piece>> each;
};

// Answers by the beginnings of their commands; the longest that fits counts.
using Said = std::map<std::string, Answers>;

// A scanner that hears lines, ended by CR, or each command as soon as it is whole; what it does not know it ignores.
class Talker : public simulator::Scanner {
 public:
  enum class Hears { Lines, Commands };
  explicit Talker(Said said, Hears hears = Hears::Lines) : said_(std::move(said)), hears_(hears) {}

 private:
  using Entry = Said::value_type;

  void OnByte(std::uint8_t byte, simulator::Time now) override {
    const char heard = static_cast<char>(byte);
    if (hears_ == Hears::Lines && heard == '\r') return Answer(std::exchange(heard_, {}), now);
    heard_ += heard;
    if (hears_ == Hears::Lines) return;
    if (said_.contains(heard_)) return Answer(std::exchange(heard_, {}), now);
    const auto begins = [&](const Entry& entry) { return entry.first.starts_with(heard_); };
    if (std::ranges::none_of(said_, begins)) heard_.clear();
  }
  void Answer(const std::string& command, simulator::Time now) {
    const auto fits = [&](const Entry& entry) { return command.starts_with(entry.first); };
    const auto entry = std::find_if(said_.rbegin(), said_.rend(), fits);
    if (entry == said_.rend()) return;
    const auto& each = entry->second.each;
    simulator::Milliseconds delay{0};
    for (const Piece& piece : each.at(std::min(counts_[entry->first]++, each.size() - 1))) {
      Reply(piece.text, now, delay += piece.delay);
    }
  }

  Said said_;
  Hears hears_;
  std::string heard_;
  std::map<std::string, std::size_t> counts_;
};

// `more` in place of the answers to the same commands, and beside the others.
inline Said With(Said said, const Said& more) {
  for (const auto& [command, answers] : more) said.insert_or_assign(command, answers);
  return said;
}

}  // namespace tesk::test
