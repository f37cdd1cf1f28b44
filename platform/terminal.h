// The terminal that a person sits at: what is typed there, and its size. Systems whose dialogs stand in
// windows have none.
#pragma once

#include <string>

#include "transport/HostLoop.h"

namespace tesk::platform {

// What was typed at standard input, as it came; empty where nothing came within `atMost`, or a signal did. A
// terminal that is gone is noted as a hang-up: Interrupted() from then on.
std::string ReadTyped(Milliseconds atMost);

struct TerminalSize {
  int columns = 0;
  int lines = 0;

  bool operator==(const TerminalSize&) const = default;
};

// As standard output tells it; 0 x 0 where it cannot, such as on a serial line.
TerminalSize CurrentTerminalSize();

}  // namespace tesk::platform
