// The list of serial ports: which there are from /sys/class/tty, their lasting names from /dev/serial/by-id, who
// holds them from /proc.
#include "platform/posix/SerialPorts.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "base/conversions.h"
#include "platform/posix/owner.h"

namespace tesk::platform {
namespace {

namespace fs = std::filesystem;

// Every look-up may fail: devices come and go, other users' processes are closed to us.
bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

std::string Canonical(const fs::path& path) {
  std::error_code error;
  return fs::canonical(path, error).string();
}

std::vector<fs::path> EntriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    entries.push_back(entry->path());
  }
  return entries;
}

// The first line of a small file; empty where it cannot be read.
std::string LineOf(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

// Terminals without a device are the system's own. The driver of PC ports shows ports that nobody built in;
// those are of type 0.
bool IsSerialPort(const fs::path& tty) { return Exists(tty / "device") && LineOf(tty / "type") != "0"; }

// "maker product" where the folder is a USB adaptor's.
std::string UsbName(const fs::path& folder) {
  if (!Exists(folder / "idVendor")) return {};
  const std::string name = LineOf(folder / "manufacturer") + " " + LineOf(folder / "product");
  const std::size_t first = name.find_first_not_of(' ');
  if (first != std::string::npos) return name.substr(first);
  return "USB " + LineOf(folder / "idVendor") + ":" + LineOf(folder / "idProduct");
}

// The USB adaptor that the port is part of, else the driver's name; newer systems put two drivers of their own,
// "port" and "ctrl", before it.
std::string AdaptorOf(const fs::path& tty, const fs::path& sys) {
  const fs::path top = Canonical(sys);
  std::string driver;
  for (fs::path at = Canonical(tty / "device"); at != top && at.has_relative_path(); at = at.parent_path()) {
    if (const std::string name = UsbName(at); !name.empty()) return name;
    const std::string own = fs::path(Canonical(at / "driver")).filename().string();
    if (driver.empty() && own != "port" && own != "ctrl") driver = own;
  }
  return driver;
}

// Device by device the name that udev made from the adaptor's serial number.
std::map<std::string, std::string> LastingNames(const fs::path& dev) {
  std::map<std::string, std::string> names;
  for (const fs::path& link : EntriesOf(dev / "serial" / "by-id")) {
    const std::string device = Canonical(link);
    if (!device.empty()) names.emplace(device, link.string());
  }
  return names;
}

// Who holds which device, as far as we may look.
class Holders {
 public:
  explicit Holders(const SystemRoots& roots) : roots_(roots) {
    for (const fs::path& process : EntriesOf(roots.proc)) {
      const std::string number = process.filename().string();
      if (number.find_first_not_of("0123456789") == std::string::npos) LookInto(process, number);
    }
    ReadLocks();
  }

  void Tell(const std::string& device, SerialPort& port) const {
    port.holder = HolderOf(device);
    if (!port.holder.empty() || sawAll_) port.free = port.holder.empty();
  }

 private:
  void LookInto(const fs::path& process, const std::string& number) {
    std::error_code error;
    fs::directory_iterator entry(process / "fd", error);
    // A process that ended meanwhile holds nothing.
    if (error) sawAll_ = sawAll_ && !Exists(process);
    for (const fs::directory_iterator end; !error && entry != end; entry.increment(error)) {
      std::error_code gone;
      const std::string target = fs::read_symlink(entry->path(), gone).string();
      if (!gone) open_.emplace(target, NameOf(number));
    }
  }

  std::string NameOf(const std::string& process) const {
    const std::string name = LineOf(fs::path(roots_.proc) / process / "comm");
    return (name.empty() ? "a program" : name) + " (process " + process + ")";
  }

  // "1: FLOCK  ADVISORY  WRITE 812 00:05:437 0 EOF": everybody may read who locked which file, though not its
  // name.
  void ReadLocks() {
    std::ifstream stream(fs::path(roots_.proc) / "locks");
    for (std::string line; std::getline(stream, line);) {
      std::istringstream words(line);
      std::string order, kind, way, mode, process, file;
      words >> order >> kind >> way >> mode >> process >> file;
      if (words && kind == "FLOCK") locks_.emplace(file, NameOf(process));
    }
  }

  std::string HolderOf(const std::string& device) const {
    if (const auto open = open_.find(device); open != open_.end()) return open->second;
    struct stat status {};
    if (::stat(device.c_str(), &status) != 0) return {};
    std::array<char, 64> file{};
    std::snprintf(file.data(), file.size(), "%02x:%02x:%ju", major(status.st_dev), minor(status.st_dev),
                  std::uintmax_t{status.st_ino});
    if (const auto lock = locks_.find(file.data()); lock != locks_.end()) return lock->second;
    return LockFileHolder(fs::path(device).filename().string());
  }

  // The older custom: a file that holds the program's process number.
  std::string LockFileHolder(const std::string& name) const {
    const std::string line = LineOf(fs::path(roots_.lock) / ("LCK.." + name));
    const std::string process = NumberText(static_cast<std::int32_t>(std::atoi(line.c_str())));
    return process != "0" && Exists(fs::path(roots_.proc) / process) ? NameOf(process) : std::string();
  }

  SystemRoots roots_;
  std::map<std::string, std::string> open_;   // by the path of what is open
  std::map<std::string, std::string> locks_;  // by file system and number
  bool sawAll_ = true;
};

bool ComesFirst(const SerialPort& one, const SerialPort& other) {
  const bool oneLasts = one.path != one.device;
  const bool otherLasts = other.path != other.device;
  return oneLasts != otherLasts ? oneLasts : one.path < other.path;
}

}  // namespace

std::vector<SerialPort> ListSerialPorts(const SystemRoots& roots) {
  const auto lasting = LastingNames(roots.dev);
  const Holders holders(roots);
  std::vector<SerialPort> ports;
  for (const fs::path& tty : EntriesOf(fs::path(roots.sys) / "class" / "tty")) {
    const std::string device = Canonical(fs::path(roots.dev) / tty.filename());
    if (!IsSerialPort(tty) || device.empty()) continue;
    const auto name = lasting.find(device);
    SerialPort port{.path = name == lasting.end() ? device : name->second,
                    .device = device,
                    .adaptor = AdaptorOf(tty, roots.sys),
                    .access = OwnerText(device),
                    .usable = ::access(device.c_str(), R_OK | W_OK) == 0,
                    .free = {},
                    .holder = {}};
    holders.Tell(device, port);
    ports.push_back(std::move(port));
  }
  std::ranges::sort(ports, ComesFirst);
  return ports;
}

std::vector<SerialPort> ListSerialPorts() { return ListSerialPorts(SystemRoots{}); }

std::string SerialPortsLine() {
  std::string paths;
  for (const SerialPort& port : ListSerialPorts()) paths += (paths.empty() ? "" : ", ") + port.path;
  return paths.empty() ? "This computer has no serial ports." : "This computer has " + paths + ".";
}

}  // namespace tesk::platform
