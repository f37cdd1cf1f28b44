// A pseudo-terminal and the symbolic link to it.
#include "platform/posix/PseudoTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace tesk::platform {
namespace {

constexpr std::size_t kReadLimit = std::size_t{64} * 1024;  // bytes

void Check(bool done) {
  if (done) return;
  throw RunTimeError(kErrorPort, "No pseudo-terminal can be made: " + SystemReason(errno) + ".", {},
                     "Check that /dev/pts is mounted, and end programs that hold many terminals.");
}

Descriptor OpenMaster() {
  Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  Check(master.Open() && ::grantpt(master.Get()) == 0 && ::unlockpt(master.Get()) == 0);
  return master;
}

std::string SlaveName(const Descriptor& master) {
  std::array<char, 256> name{};
  Check(::ptsname_r(master.Get(), name.data(), name.size()) == 0);
  return name.data();
}

// Raw from the start: what is sent before a host comes must be neither echoed nor changed.
Descriptor OpenSlave(const std::string& device) {
  Descriptor slave(::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios modes{};
  Check(slave.Open() && ::tcgetattr(slave.Get(), &modes) == 0);
  ::cfmakeraw(&modes);
  Check(::tcsetattr(slave.Get(), TCSANOW, &modes) == 0);
  return slave;
}

constexpr std::string_view kTerminals = "/dev/pts/";

// Whether the path leads to this or another simulated scanner, also one that is gone. Anything else is somebody
// else's.
void CheckMayReplace(const std::string& link) {
  namespace fs = std::filesystem;
  std::error_code error;
  const auto kind = fs::symlink_status(link, error).type();
  if (kind == fs::file_type::not_found || kind == fs::file_type::none) return;
  if (kind != fs::file_type::symlink) {
    throw RunTimeError(kErrorFileExists, "\"" + link + "\" exists and is no symbolic link.", {},
                       "Remove that file, or choose another path for the link.");
  }
  const std::string target = fs::read_symlink(link, error).string();
  const bool terminal = target.starts_with(kTerminals) &&
                        target.find_first_not_of("0123456789", kTerminals.size()) == std::string::npos;
  if (terminal) return;
  throw RunTimeError(kErrorFileExists, "\"" + link + "\" is a link to \"" + target + "\".", {},
                     "Only a link to a simulated scanner (" + std::string(kTerminals) +
                         "...) is replaced.|Remove the link, or choose another path.");
}

// The terminal that the path led to, as long as there is one.
std::string MakeLink(const std::string& device, const std::string& link) {
  namespace fs = std::filesystem;
  CheckMayReplace(link);
  std::error_code error;
  const std::string before = fs::exists(link, error) ? fs::read_symlink(link, error).string() : std::string();
  fs::remove(link, error);
  fs::create_symlink(device, link, error);
  if (!error) return before == device ? std::string() : before;
  throw RunTimeError(kErrorFileAccess, "The link \"" + link + "\" cannot be made: " + error.message() + ".",
                     {}, "Choose a path in a folder that exists and may be written.");
}

}  // namespace

PosixPseudoTerminal::PosixPseudoTerminal(std::string link)
    : master_(OpenMaster()), device_(SlaveName(master_)) {
  slave_ = OpenSlave(device_);
  if (link.empty()) return;
  replaced_ = MakeLink(device_, link);
  link_ = std::move(link);
}

PosixPseudoTerminal::~PosixPseudoTerminal() {
  std::error_code error;
  if (!link_.empty() && std::filesystem::read_symlink(link_, error) == device_) {
    std::filesystem::remove(link_, error);
  }
}

std::string PosixPseudoTerminal::Read() {
  std::string bytes;
  std::array<char, 4096> buffer;
  while (bytes.size() < kReadLimit) {
    const ssize_t count = ::read(master_.Get(), buffer.data(), buffer.size());
    if (count <= 0) {
      if (count < 0 && errno != EAGAIN && errno != EINTR) {
        throw RunTimeError(kErrorLineRead, "The terminal " + device_ + ": " + SystemReason(errno) + ".");
      }
      break;
    }
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return bytes;
}

std::size_t PosixPseudoTerminal::Write(std::string_view bytes) {
  std::size_t taken = 0;
  while (taken < bytes.size()) {
    const ssize_t count = ::write(master_.Get(), bytes.data() + taken, bytes.size() - taken);
    if (count < 0 && errno != EAGAIN && errno != EINTR) {
      throw RunTimeError(kErrorLineWrite, "The terminal " + device_ + ": " + SystemReason(errno) + ".");
    }
    if (count <= 0) break;
    taken += static_cast<std::size_t>(count);
  }
  return taken;
}

void PosixPseudoTerminal::Wait(Milliseconds atMost, bool forRoom) {
  constexpr Milliseconds kLongest(60'000);
  pollfd state{master_.Get(), static_cast<short>(forRoom ? POLLIN | POLLOUT : POLLIN), 0};
  ::poll(&state, 1, static_cast<int>(std::clamp(atMost, Milliseconds(0), kLongest).count()));
}

std::unique_ptr<PseudoTerminal> CreatePseudoTerminal(const std::string& link) {
  return std::make_unique<PosixPseudoTerminal>(link);
}

}  // namespace tesk::platform
