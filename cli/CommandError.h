// How a command ends: the exit statuses, and the two errors that carry one. Knows nobody.
#pragma once

#include <stdexcept>

namespace tesk::cli {

inline constexpr int kStatusDone = 0;
inline constexpr int kStatusFailed = 1;      // the scanner, the port or a file failed
inline constexpr int kStatusWrongUsage = 2;  // the command line is wrong
// Ended by a signal: 128 and its number, 129 hang-up, 130 Ctrl-C, 143 the request to end.
inline constexpr int kStatusBySignal = 128;

// The command line is wrong; the text names the option and what it accepts. Lines are joined with "|".
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The scanner, the port or a file failed; the text says what. Lines are joined with "|".
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tesk::cli
