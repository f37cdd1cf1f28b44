// The serial ports as Linux shows them in its file systems.
#pragma once

#include <string>
#include <vector>

#include "platform/SerialPorts.h"

namespace tesk::platform {

// Where the system's file systems stand.
struct SystemRoots {
  std::string sys = "/sys";
  std::string dev = "/dev";
  std::string proc = "/proc";
  std::string lock = "/run/lock";
};

std::vector<SerialPort> ListSerialPorts(const SystemRoots& roots);

// Their paths in one line, for a message about a port that is not there.
std::string SerialPortsLine();

}  // namespace tesk::platform
