// Serial ports as the terminal devices of Linux: opened for us alone, never blocking, left as found.
#include "platform/posix/SerialLine.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "base/conversions.h"
#include "platform/LineDamage.h"
#include "platform/Platform.h"
#include "platform/openError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/LineCounters.h"
#include "platform/posix/LineMode.h"
#include "platform/posix/ParityMarks.h"

namespace tesk::platform {
namespace {

using Steady = std::chrono::steady_clock;

constexpr const char* kNoun = "device";
constexpr std::size_t kReadLimit = std::size_t{64} * 1024;  // bytes
// Advisory lock first: it is released with the descriptor, however the program ends.
void Claim(int descriptor, const std::string& device) {
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    throw errno == EWOULDBLOCK ? InUse(device) : CannotOpen(device, SystemReason(errno));
  }
  // The exclusive mode of a pseudo-terminal would outlive a host that crashed, since the other end keeps
  // the terminal alive; there the lock alone counts.
  if (IsPseudoTerminal(descriptor)) return;
  int exclusive = 0;
  if (::ioctl(descriptor, TIOCGEXCL, &exclusive) == 0 && exclusive != 0) throw InUse(device);
  ::ioctl(descriptor, TIOCEXCL);
}

Descriptor OpenDevice(const std::string& device) {
  struct stat status {};
  if (::stat(device.c_str(), &status) == 0 && !S_ISCHR(status.st_mode)) {
    throw CannotOpen(device, "It is not a serial port");
  }
  Descriptor opened(::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!opened.Open()) throw errno == EBUSY ? InUse(device) : CannotOpen(device, SystemReason(errno));
  return opened;
}

class PosixSerialLine : public SerialLine {
 public:
  PosixSerialLine(const std::string& device, Milliseconds patience, CounterSource counters)
      : device_(device),
        patience_(patience),
        counters_(std::move(counters)),
        descriptor_(OpenDevice(device)),
        claim_(descriptor_.Get(), device),
        mode_(descriptor_.Get(), device) {}
  ~PosixSerialLine() override {
    Drain([this] { return Unsent(); }, [this] { ::ioctl(descriptor_.Get(), TCFLSH, TCOFLUSH); });
  }

  // What came while nobody listened belongs to no conversation.
  void Start(const LineSettings& settings) {
    mode_.Set(settings);
    ::ioctl(descriptor_.Get(), TCFLSH, TCIFLUSH);
    counted_.Start(counters_(descriptor_.Get()));
  }

  std::string Read() override;
  void Write(std::string_view bytes) override;
  ArrivalHandle Arrival() const override { return descriptor_.Get(); }

 private:
  class Held {
   public:
    Held(int descriptor, const std::string& device) : descriptor_(descriptor) { Claim(descriptor, device); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
      if (!IsPseudoTerminal(descriptor_)) ::ioctl(descriptor_, TIOCNXCL);
    }

   private:
    int descriptor_;
  };

  void CheckAlive();
  void CheckDamage();
  std::size_t WriteSome(std::string_view bytes);
  void WaitForRoom(Steady::time_point deadline);
  int Unsent() const;

  std::string device_;
  Milliseconds patience_;
  CounterSource counters_;
  // In the order of opening: the modes are put back first, then others are let in, then the device closes.
  ParityMarks marks_;
  CounterWatch counted_;
  Descriptor descriptor_;
  Held claim_;
  LineMode mode_;
};

std::string PosixSerialLine::Read() {
  std::string bytes;
  std::array<char, 4096> buffer;
  while (bytes.size() < kReadLimit) {
    const ssize_t count = ::read(descriptor_.Get(), buffer.data(), buffer.size());
    if (count > 0) {
      bytes += marks_.Take({buffer.data(), static_cast<std::size_t>(count)});
      CheckDamage();
      if (static_cast<std::size_t>(count) < buffer.size()) break;
      continue;
    }
    if (count < 0 && errno == EINTR) continue;
    // Bytes that came before the end are handed over first; the next call finds the end again.
    if (!bytes.empty()) break;
    if (count == 0) throw Gone(kErrorLineRead, kNoun, device_, "End of file");
    if (errno != EAGAIN) throw Gone(kErrorLineRead, kNoun, device_, SystemReason(errno));
    CheckAlive();
    // The last bytes of an answer may be the lost ones, and silence would pass for its end.
    CheckDamage();
    break;
  }
  return bytes;
}

// A lost byte leaves no mark, only a count; the counts tell the kind of a marked one as well.
void PosixSerialLine::CheckDamage() {
  // A device that has no counters at first never gets any.
  const auto counted = counted_.Counts() ? counted_.Look(counters_(descriptor_.Get())) : std::nullopt;
  const bool marked = marks_.TakeDamage();
  if (counted || marked) throw Damaged(device_, counted.value_or(LineDamage::Marked));
}

void PosixSerialLine::CheckAlive() {
  pollfd state{descriptor_.Get(), POLLIN, 0};
  if (::poll(&state, 1, 0) <= 0 || (state.revents & POLLIN) != 0) return;
  if ((state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0)
    throw Gone(kErrorLineRead, kNoun, device_, "Hung up");
}

void PosixSerialLine::Write(std::string_view bytes) {
  auto deadline = Steady::now() + patience_;
  while (!bytes.empty()) {
    const std::size_t taken = WriteSome(bytes);
    bytes.remove_prefix(taken);
    if (taken > 0) {
      deadline = Steady::now() + patience_;
    } else {
      WaitForRoom(deadline);
    }
  }
}

std::size_t PosixSerialLine::WriteSome(std::string_view bytes) {
  const ssize_t count = ::write(descriptor_.Get(), bytes.data(), bytes.size());
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno == EAGAIN || errno == EINTR) return 0;
  throw Gone(kErrorLineWrite, kNoun, device_, SystemReason(errno));
}

// The device may promise room and then take nothing; the pause keeps that from being a spin.
void PosixSerialLine::WaitForRoom(Steady::time_point deadline) {
  const auto left = std::chrono::duration_cast<Milliseconds>(deadline - Steady::now());
  if (left.count() <= 0) throw NotTaken(device_);
  pollfd state{descriptor_.Get(), POLLOUT, 0};
  if (::poll(&state, 1, static_cast<int>(left.count())) > 0) std::this_thread::sleep_for(Milliseconds(1));
}

// Bytes that were written and have not left yet, as far as the driver can tell.
int PosixSerialLine::Unsent() const {
  int queued = 0;
  if (::ioctl(descriptor_.Get(), TIOCOUTQ, &queued) != 0) return 0;
  unsigned state = TIOCSER_TEMT;
  if (::ioctl(descriptor_.Get(), TIOCSERGETLSR, &state) != 0) state = TIOCSER_TEMT;
  return queued + ((state & TIOCSER_TEMT) == 0 ? 1 : 0);
}

}  // namespace

DevicePaths DefaultDevicePaths(std::string explicitPort) {
  return [explicitPort = std::move(explicitPort)](std::int16_t port) -> std::string {
    if (port == 1 && !explicitPort.empty()) return explicitPort;
    const char* path = std::getenv(("TESKREADER_PORT_" + NumberText(std::int32_t{port})).c_str());
    if (path != nullptr && *path != '\0') return path;
    return port <= 8 ? "/dev/ttyS" + NumberText(port - 1) : "/dev/ttyUSB" + NumberText(port - 9);
  };
}

std::string DeviceOfPort(std::int16_t port) { return DefaultDevicePaths({})(port); }

std::string DeviceOfName(const std::string& name) {
  std::error_code error;
  if (name.find('/') == std::string::npos && !std::filesystem::exists(name, error)) return "/dev/" + name;
  const auto absolute = std::filesystem::absolute(name, error);
  return error ? name : absolute.lexically_normal().string();
}

bool SameDevice(const std::string& one, const std::string& other) {
  std::error_code error;
  return one == other || std::filesystem::equivalent(one, other, error);
}

std::optional<LineCounters> CountersOf(int descriptor) {
  serial_icounter_struct counts{};
  if (::ioctl(descriptor, TIOCGICOUNT, &counts) != 0) return std::nullopt;
  return LineCounters{counts.parity, counts.frame, counts.brk, counts.overrun, counts.buf_overrun};
}

PosixSerialSystem::PosixSerialSystem(DevicePaths paths, Milliseconds patience, CounterSource counters)
    : paths_(std::move(paths)), patience_(patience), counters_(std::move(counters)) {}

std::unique_ptr<SerialLine> PosixSerialSystem::Open(std::int16_t port, const LineSettings& settings) {
  CheckPortNumber(port);
  auto line = std::make_unique<PosixSerialLine>(paths_(port), patience_, counters_);
  line->Start(settings);
  return line;
}

std::shared_ptr<SerialSystem> CreateSerialSystem(std::string explicitPort) {
  return std::make_shared<PosixSerialSystem>(DefaultDevicePaths(std::move(explicitPort)));
}

}  // namespace tesk::platform
