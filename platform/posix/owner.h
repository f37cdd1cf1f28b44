// Whose a device is, in words.
#pragma once

#include <sys/types.h>

#include <string>

namespace tesk::platform {

// "user anna", "group dialout"; by number where the system knows no name.
std::string UserText(uid_t user);
std::string GroupText(gid_t group);

// "user root, group dialout, mode crw-rw----"; empty where there is no such device.
std::string OwnerText(const std::string& device);

}  // namespace tesk::platform
