// How a command ends: the exit statuses, and the two errors that carry one. Knows nobody.
#pragma once

#include <stdexcept>

namespace tesk::cli {

inline constexpr int kStatusDone = 0;
inline constexpr int kStatusFailed = 1;         // the scanner, the port or a file failed
inline constexpr int kStatusWrongUsage = 2;     // the command line is wrong
inline constexpr int kStatusInterrupted = 130;  // ended by Ctrl-C

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
