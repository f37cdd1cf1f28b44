// Users, groups and modes as texts.
#include "platform/posix/owner.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>

#include <vector>

namespace tesk::platform {
namespace {

constexpr std::size_t kEntrySize = 16'384;  // bytes; longer user and group entries go by number

// "crw-rw----"
std::string ModeText(mode_t mode) {
  std::string text = "?rwxrwxrwx";
  text[0] = S_ISCHR(mode) ? 'c' : S_ISDIR(mode) ? 'd' : S_ISREG(mode) ? '-' : '?';
  for (unsigned bit = 0; bit < 9; ++bit) {
    if ((mode & (0400U >> bit)) == 0) text[bit + 1] = '-';
  }
  return text;
}

}  // namespace

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

std::string OwnerText(const std::string& device) {
  struct stat status {};
  if (::stat(device.c_str(), &status) != 0) return {};
  return UserText(status.st_uid) + ", " + GroupText(status.st_gid) + ", mode " + ModeText(status.st_mode);
}

}  // namespace tesk::platform
