// The serial-port control that serial scanners are driven through, as the drivers see it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tesk {

// What a wait can block on: a file descriptor or an event handle of the platform.
using ArrivalHandle = std::intptr_t;
inline constexpr ArrivalHandle kNoArrivalHandle = -1;

// Properties of a closed port may be set at any time; CommPort must not change while it is open. Bytes are
// raw (a std::string of any byte values). Faults are RunTimeError; a device that is gone is one at once.
class SerialControl {
 public:
  virtual ~SerialControl() = default;

  virtual std::int16_t CommPort() const = 0;  // 1..16
  virtual void SetCommPort(std::int16_t port) = 0;

  virtual std::string Settings() const = 0;  // "9600,N,8,1"
  virtual void SetSettings(const std::string& settings) = 0;

  virtual std::int32_t Handshaking() const = 0;  // a teskReaderFlowControl value
  virtual void SetHandshaking(std::int32_t handshaking) = 0;

  virtual bool PortOpen() const = 0;
  virtual void SetPortOpen(bool open) = 0;

  virtual std::int16_t InputLen() const = 0;  // bytes that one Input takes; 0: everything waiting
  virtual void SetInputLen(std::int16_t length) = 0;

  virtual std::int32_t InBufferCount() = 0;  // bytes waiting
  virtual std::string Input() = 0;           // at most InputLen of the waiting bytes; empty where none wait
  virtual void Output(std::string_view bytes) = 0;

  // Becomes ready when bytes arrive; kNoArrivalHandle where the control has none and must be polled.
  virtual ArrivalHandle Arrival() const { return kNoArrivalHandle; }
};

}  // namespace tesk
