// The serial ports of this machine, found without opening one: opening a port raises its control lines, and
// what is connected may start to move. Needs no system header.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tesk::platform {

struct SerialPort {
  std::string path;     // what --port takes; it stays the same wherever the adaptor is plugged in, if it can
  std::string device;   // the port's present name, "/dev/ttyUSB0" or "COM3"
  std::string adaptor;  // maker and product, or the driver's name; empty where nothing is known
  std::string access;   // who may use it: "user root, group dialout, mode crw-rw----"; empty: everybody
  bool usable = true;   // this program may open it
  std::optional<bool> free;  // no other program holds it; empty: cannot be told
  std::string holder;        // the program that holds it, "minicom (process 812)"; may be unknown

  bool operator==(const SerialPort&) const = default;
};

// Those with a path of their own first, then by name.
std::vector<SerialPort> ListSerialPorts();

}  // namespace tesk::platform
