// Serial ports as the communications devices of Windows: opened for us alone, never blocking, left as found.
#include "platform/windows/SerialLine.h"

#include <algorithm>
#include <utility>

#include "base/conversions.h"
#include "platform/LineDamage.h"
#include "platform/Platform.h"
#include "platform/openError.h"
#include "platform/windows/Handle.h"
#include "platform/windows/LineMode.h"
#include "platform/windows/Overlapped.h"
#include "platform/windows/Text.h"
#include "platform/windows/commErrors.h"

namespace tesk::platform {
namespace {

constexpr const char* kNoun = "port";
constexpr DWORD kReadLimit = 64 * 1024;    // bytes; more than the longest record
constexpr DWORD kSendQueue = 4 * 1024;     // bytes
constexpr std::size_t kWriteChunk = 1024;  // bytes that one operation sends
constexpr std::int64_t kBitsPerByte = 12;  // start, 8 data, parity and 2 stop bits
constexpr DWORD kReadPatience = 1000;      // milliseconds; a read takes only what is there already

// Only in the device namespace are port numbers above 9 names of ports.
std::wstring DeviceName(const std::string& device) {
  return Utf8ToWide(device.starts_with("\\\\") ? device : "\\\\.\\" + device);
}

Handle OpenDevice(const std::string& device) {
  Handle opened(::CreateFileW(DeviceName(device).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                              OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
  if (opened.Open()) return opened;
  const DWORD error = ::GetLastError();
  const bool held = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION || error == ERROR_BUSY;
  throw held ? InUse(device) : CannotOpen(device, SystemReason(error));
}

class WindowsSerialLine : public SerialLine {
 public:
  WindowsSerialLine(const std::string& device, Milliseconds patience)
      : device_(device),
        patience_(patience),
        port_(OpenDevice(device)),
        mode_(port_.Get(), device),
        reading_(port_.Get()),
        writing_(port_.Get()),
        arrival_(port_.Get()) {}
  ~WindowsSerialLine() override;

  // What came while nobody listened, and what became of it, belongs to no conversation.
  void Start(const LineSettings& settings) {
    // A driver that has no such queues keeps its own.
    ::SetupComm(port_.Get(), kReadLimit, kSendQueue);
    mode_.Set(settings);
    bitRate_ = settings.bitRate;
    ::PurgeComm(port_.Get(), PURGE_RXCLEAR);
    DWORD before = 0;
    ::ClearCommError(port_.Get(), &before, nullptr);
    ::SetCommMask(port_.Get(), EV_RXCHAR);
    WatchArrival();
  }

  std::string Read() override;
  void Write(std::string_view bytes) override;
  ArrivalHandle Arrival() const override;

 private:
  COMSTAT Status(std::int32_t errorNumber);
  void WatchArrival();
  std::size_t WriteSome(std::string_view bytes);
  DWORD ChunkPatience(std::size_t size) const;
  std::int64_t Unsent() const;

  std::string device_;
  Milliseconds patience_;
  std::int32_t bitRate_ = 9600;
  bool watchable_ = true;
  // In the order of opening: operations end first, then the settings are put back, then the port closes.
  Handle port_;
  LineMode mode_;
  Overlapped reading_;
  Overlapped writing_;
  Overlapped arrival_;
};

WindowsSerialLine::~WindowsSerialLine() {
  ::SetCommMask(port_.Get(), 0);
  Drain([this] { return Unsent(); }, [this] { ::PurgeComm(port_.Get(), PURGE_TXABORT | PURGE_TXCLEAR); });
}

COMSTAT WindowsSerialLine::Status(std::int32_t errorNumber) {
  DWORD errors = 0;
  COMSTAT status{};
  if (!::ClearCommError(port_.Get(), &errors, &status))
    throw Gone(errorNumber, kNoun, device_, SystemReason(::GetLastError()));
  if (const auto damage = DamageIn(errors)) throw Damaged(device_, *damage);
  return status;
}

// The driver remembers what came between two watches, so a watch that begins before the queue is read
// misses nothing; at worst it wakes once for bytes that were taken already. A watch that fails is the last
// one: the next would end at once too, and waits would spin.
void WindowsSerialLine::WatchArrival() {
  const auto ended = arrival_.Wait(0);
  if (!ended || !watchable_) return;
  watchable_ = ended->error == ERROR_SUCCESS;
  if (!watchable_) return;
  auto& state = arrival_.Shared();
  ::ResetEvent(arrival_.Event());
  arrival_.Begin(::WaitCommEvent(port_.Get(), &state.mask, &state.overlapped));
}

// A driver without such events is polled.
ArrivalHandle WindowsSerialLine::Arrival() const {
  return arrival_.Pending() ? reinterpret_cast<ArrivalHandle>(arrival_.Event()) : kNoArrivalHandle;
}

std::string WindowsSerialLine::Read() {
  WatchArrival();
  const DWORD waiting = std::min<DWORD>(Status(kErrorLineRead).cbInQue, kReadLimit);
  if (waiting == 0) return {};
  auto& buffer = reading_.Shared().buffer;
  buffer.resize(waiting);
  reading_.Begin(::ReadFile(port_.Get(), buffer.data(), waiting, nullptr, &reading_.Shared().overlapped));
  auto outcome = reading_.Wait(kReadPatience);
  if (!outcome) outcome = reading_.Cancel();
  if (outcome->error != ERROR_SUCCESS)
    throw Gone(kErrorLineRead, kNoun, device_, SystemReason(outcome->error));
  return reading_.Shared().buffer.substr(0, outcome->bytes);
}

void WindowsSerialLine::Write(std::string_view bytes) {
  while (!bytes.empty()) bytes.remove_prefix(WriteSome(bytes.substr(0, kWriteChunk)));
}

// At least one byte, or an error.
std::size_t WindowsSerialLine::WriteSome(std::string_view bytes) {
  auto& state = writing_.Shared();
  state.buffer = bytes;
  writing_.Begin(::WriteFile(port_.Get(), state.buffer.data(), static_cast<DWORD>(state.buffer.size()),
                             nullptr, &state.overlapped));
  auto outcome = writing_.Wait(ChunkPatience(bytes.size()));
  if (!outcome) outcome = writing_.Cancel();
  if (outcome->bytes > 0) return outcome->bytes;
  if (outcome->error == ERROR_SUCCESS || outcome->error == ERROR_OPERATION_ABORTED ||
      outcome->error == ERROR_TIMEOUT) {
    Status(kErrorLineWrite);
    throw NotTaken(device_);
  }
  throw Gone(kErrorLineWrite, kNoun, device_, SystemReason(outcome->error));
}

// Patience begins where the line's own time for the bytes ends.
DWORD WindowsSerialLine::ChunkPatience(std::size_t size) const {
  const std::int64_t line = static_cast<std::int64_t>(size) * kBitsPerByte * 1000 / bitRate_;
  return static_cast<DWORD>(line + patience_.count());
}

// Bytes that were written and have not left yet; none of a port that is gone.
std::int64_t WindowsSerialLine::Unsent() const {
  DWORD errors = 0;
  COMSTAT status{};
  return ::ClearCommError(port_.Get(), &errors, &status) ? std::int64_t{status.cbOutQue} : 0;
}

// "com23:" is how some write COM23.
std::string PortName(std::string name) {
  if (name.ends_with(':')) name.pop_back();
  return name;
}

}  // namespace

DevicePaths DefaultDevicePaths(std::string explicitPort) {
  return [explicitPort = std::move(explicitPort)](std::int16_t port) {
    if (port == 1 && !explicitPort.empty()) return PortName(explicitPort);
    const std::string number = NumberText(std::int32_t{port});
    const std::string named = Environment("TESKREADER_PORT_" + number);
    return named.empty() ? "COM" + number : PortName(named);
  };
}

std::string DeviceOfPort(std::int16_t port) { return DefaultDevicePaths({})(port); }
std::string DeviceOfName(const std::string& name) { return PortName(name); }
bool SameDevice(const std::string& one, const std::string& other) {
  return LowerCase(one) == LowerCase(other);
}

WindowsSerialSystem::WindowsSerialSystem(DevicePaths paths, Milliseconds patience)
    : paths_(std::move(paths)), patience_(patience) {}

std::unique_ptr<SerialLine> WindowsSerialSystem::Open(std::int16_t port, const LineSettings& settings) {
  CheckPortNumber(port);
  auto line = std::make_unique<WindowsSerialLine>(paths_(port), patience_);
  line->Start(settings);
  return line;
}

std::shared_ptr<SerialSystem> CreateSerialSystem(std::string explicitPort) {
  return std::make_shared<WindowsSerialSystem>(DefaultDevicePaths(std::move(explicitPort)));
}

}  // namespace tesk::platform
