// The seam to the platform's serial ports: an open line, and the system that opens lines by number.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/enumerations.h"
#include "transport/SerialControl.h"

namespace tesk {

struct LineSettings {
  std::int32_t bitRate = 9600;  // bits per second, a teskReaderBaudRate
  char parity = 'N';            // N E O M S
  std::int32_t dataBits = 8;    // 4..8
  float stopBits = 1;           // 1, 1.5 or 2
  teskReaderFlowControl handshaking = teskReaderFlowControlNone;
};

// An open line, held exclusively. The destructor restores the line's old settings and closes it.
class SerialLine {
 public:
  virtual ~SerialLine() = default;
  // What is waiting now, at most 64 KiB at a time; never blocks. Throws error 8020 when the device is gone.
  virtual std::string Read() = 0;
  // Writes all bytes. Throws error 8021 when the line does not take them within a few seconds (handshake
  // held) or the device is gone.
  virtual void Write(std::string_view bytes) = 0;
  virtual ArrivalHandle Arrival() const { return kNoArrivalHandle; }
};

class SerialSystem {
 public:
  virtual ~SerialSystem() = default;
  // Opens port 1..16. Throws error 8002 (no such port, no permission), 8005 (held by another program) or
  // 8015 (a setting that this line or system cannot do) with a detail that says what to try.
  virtual std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) = 0;
};

}  // namespace tesk
