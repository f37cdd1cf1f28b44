// The terminal modes behind a line's settings. The modes found are put back at the end.
#pragma once

#include <memory>
#include <string>

#include "transport/SerialLine.h"

struct termios2;

namespace tesk::platform {

class LineMode {
 public:
  // Remembers the modes of `descriptor`, which must outlive the object. Throws error 8002 where it is
  // no terminal. device: its name for messages.
  LineMode(int descriptor, std::string device);
  LineMode(const LineMode&) = delete;
  LineMode& operator=(const LineMode&) = delete;
  ~LineMode();

  // Sets raw modes and reads them back; throws error 8015 for a setting that the line refuses.
  void Set(const LineSettings& settings);

 private:
  int descriptor_;
  std::string device_;
  std::unique_ptr<termios2> found_;
};

// Pseudo-terminals know neither character sizes nor modem lines.
bool IsPseudoTerminal(int descriptor);

}  // namespace tesk::platform
