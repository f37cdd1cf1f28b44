// Reads the traces that `scan --trace` writes. docs/cli.md gives the grammar. Knows the simulator.
#pragma once

#include <chrono>
#include <istream>
#include <string>
#include <utility>
#include <vector>

#include "base/enumerations.h"
#include "simulator/Replay.h"

namespace tesk::cli {

struct RecordedTrace {
  std::vector<std::string> comments;  // without "#" and the blank behind it
  teskReaderType reader = teskReaderTypeNone;
  // NAME and VALUE of the line "settings"; a value's blanks and semicolons are written as %20 and %3B.
  std::vector<std::pair<std::string, std::string>> settings;
  // What was sent and received, with the scanner's recorded delays.
  std::vector<simulator::Recorded> session;
};

// How long a replayed scanner is silent at most where the host did not wait in vain: nobody wants to wait
// again for the person who inserted a sheet.
inline constexpr simulator::Milliseconds kLongestReplayedDelay{10'000};

// Every line is checked against the grammar, the order of its events and times included. Throws
// CommandFailure that names `file` and the line.
RecordedTrace ReadTrace(std::istream& stream, const std::string& file);
RecordedTrace ReadTraceFile(const std::string& file);

// A value as the line "settings" holds it, and back. A "%" that begins no pair of digits stays as it is.
std::string EscapedSetting(std::string_view value);
std::string UnescapedSetting(std::string_view text);

}  // namespace tesk::cli
