// Keys out of the bytes that a terminal sends, however the line cuts them up. Knows the terminal library's
// key numbers.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tesk {

inline constexpr int kEscape = 27;
inline constexpr int kTab = '\t';
inline constexpr int kBlank = ' ';
bool IsEnter(int key);
bool IsBackspace(int key);
// The printable ASCII character of a key that was typed or pasted; 0 for any other.
char TextOf(int key);

class KeyDecoder {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::milliseconds;

  // What this terminal says that it sends for `key`. It wins over what most terminals send; what is no escape
  // sequence is ignored.
  void Describe(const std::string& sequence, int key);

  // To be called with everything that has arrived by `now`, before keys are taken.
  void Receive(std::string_view bytes, TimePoint now);
  // The next key, or ERR. Escape is a key once nothing has followed it for a while; a sequence that is not
  // known, or not finished in time, is no key.
  int Next(TimePoint now);
  // How long nothing may arrive until Next has more to say; at most `atMost`.
  Duration Patience(TimePoint now, Duration atMost) const;

 private:
  std::size_t Extent() const;
  std::size_t SequenceExtent() const;
  std::size_t PastedExtent() const;
  int KeyOf(const std::string& sequence);
  int PastedKeyOf(const std::string& sequence);
  int GiveUp();
  Duration Allowed() const;
  bool IsLoneEscape() const;

  std::map<std::string, int> described_;
  std::string waiting_;  // arrived, not taken
  TimePoint last_;       // when something arrived
  bool pasting_ = false;
};

}  // namespace tesk
