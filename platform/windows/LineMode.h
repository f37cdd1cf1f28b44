// The device control block behind a line's settings. What was found is put back at the end.
#pragma once

#include <string>

#include "platform/windows/WindowsApi.h"
#include "transport/SerialLine.h"

namespace tesk::platform {

class LineMode {
 public:
  // Remembers the state of `port`, which must outlive the object. Throws error 8002 where it is no serial
  // port. device: its name for messages.
  LineMode(HANDLE port, std::string device);
  LineMode(const LineMode&) = delete;
  LineMode& operator=(const LineMode&) = delete;
  ~LineMode();

  // Sets everything, reads that return at once included, and reads it back; throws error 8015 for a setting
  // that the line refuses.
  void Set(const LineSettings& settings);

 private:
  HANDLE port_;
  std::string device_;
  DCB found_{};
  COMMTIMEOUTS foundTimeouts_{};
};

}  // namespace tesk::platform
