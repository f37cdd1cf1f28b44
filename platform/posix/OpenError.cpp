// The words for a device that cannot be opened.
#include "platform/posix/OpenError.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace tesk::platform {
namespace {

constexpr std::size_t kEntrySize = 16'384;  // bytes; longer user and group entries go by number

std::string UserText(uid_t user) {
  std::vector<char> storage(kEntrySize);
  passwd entry{};
  passwd* found = nullptr;
  ::getpwuid_r(user, &entry, storage.data(), storage.size(), &found);
  return "user " + (found != nullptr ? std::string(entry.pw_name) : std::to_string(user));
}

std::string GroupText(gid_t group) {
  std::vector<char> storage(kEntrySize);
  struct group entry {};
  struct group* found = nullptr;
  ::getgrgid_r(group, &entry, storage.data(), storage.size(), &found);
  return "group " + (found != nullptr ? std::string(entry.gr_name) : std::to_string(group));
}

// "crw-rw----"
std::string ModeText(mode_t mode) {
  std::string text = "?rwxrwxrwx";
  text[0] = S_ISCHR(mode) ? 'c' : S_ISDIR(mode) ? 'd' : S_ISREG(mode) ? '-' : '?';
  for (unsigned bit = 0; bit < 9; ++bit) {
    if ((mode & (0400U >> bit)) == 0) text[bit + 1] = '-';
  }
  return text;
}

std::string OwnerLine(const std::string& device) {
  struct stat status {};
  if (::stat(device.c_str(), &status) != 0) return device + ": " + SystemReason(errno) + ".";
  return device + " belongs to " + UserText(status.st_uid) + ", " + GroupText(status.st_gid) + ", mode " +
         ModeText(status.st_mode) + ".";
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
