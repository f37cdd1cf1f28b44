// The words for a device that cannot be opened.
#include "platform/openError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/posix/Descriptor.h"
#include "platform/posix/SerialPorts.h"
#include "platform/posix/owner.h"

namespace tesk::platform {
namespace {

std::string OwnerLine(const std::string& device) {
  const std::string owner = OwnerText(device);
  if (owner.empty()) return device + ": " + SystemReason(errno) + ".|" + SerialPortsLine();
  return device + " belongs to " + owner + ".";
}

constexpr std::array kThingsToTry = {
    "Things to try:", "- Is the scanner switched on, and are its cable and the adaptor plugged in?",
    "- Does another program use the port?",
    "- Is the user a member of the group that the device belongs to, mostly dialout (usermod -a -G dialout "
    "USER, then log in again)?",
    "- Is it the right port? TESKREADER_PORT_<N>=PATH in the environment names the device of port N."};

}  // namespace

RunTimeError CannotOpen(const std::string& device, const std::string& reason) {
  std::string detail = "This program runs as " + UserText(::geteuid()) + ", " + GroupText(::getegid()) + ".";
  detail += "|" + OwnerLine(device);
  for (const char* line : kThingsToTry) detail += std::string("|") + line;
  return {kErrorPort, "The device " + device + " cannot be opened: " + reason + ".", {}, detail};
}

RunTimeError InUse(const std::string& device) {
  return {kErrorPortInUse,
          "The device " + device + " is in use by another program.",
          {},
          "End the other program, or choose another port.|\"fuser -v " + device + "\" shows who holds it."};
}

}  // namespace tesk::platform
