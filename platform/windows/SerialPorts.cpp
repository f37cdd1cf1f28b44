// The list of serial ports from the registry and from the names of devices. Who holds one cannot be told
// without opening it.
#include "platform/SerialPorts.h"

#include <algorithm>
#include <array>
#include <map>

#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

constexpr int kHighestPort = 256;  // the numbers that the system gives to ports

// By port name the driver's device, "\Device\VCP0".
using Devices = std::map<std::wstring, std::wstring>;

// What the drivers entered under HARDWARE\DEVICEMAP\SERIALCOMM.
void AddEntered(Devices& devices) {
  HKEY key = nullptr;
  if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_READ, &key) != 0) return;
  std::array<wchar_t, 256> name{};
  std::array<wchar_t, 256> port{};
  for (DWORD index = 0;; ++index) {
    auto nameSize = static_cast<DWORD>(name.size());
    auto portSize = static_cast<DWORD>((port.size() - 1) * sizeof(wchar_t));
    port.fill(L'\0');
    DWORD type = 0;
    const LSTATUS status = ::RegEnumValueW(key, index, name.data(), &nameSize, nullptr, &type,
                                           reinterpret_cast<BYTE*>(port.data()), &portSize);
    if (status == ERROR_NO_MORE_ITEMS) break;
    if (status == ERROR_SUCCESS && type == REG_SZ) devices.emplace(port.data(), name.data());
  }
  ::RegCloseKey(key);
}

// Some drivers enter nothing, but their ports have names.
void AddNamed(Devices& devices) {
  std::array<wchar_t, 1024> target{};
  for (int number = 1; number <= kHighestPort; ++number) {
    const std::wstring port = L"COM" + std::to_wstring(number);
    if (::QueryDosDeviceW(port.c_str(), target.data(), static_cast<DWORD>(target.size())) == 0) continue;
    devices.emplace(port, target.data());
  }
}

// COM9 before COM10.
bool ComesFirst(const SerialPort& one, const SerialPort& other) {
  return one.path.size() != other.path.size() ? one.path.size() < other.path.size() : one.path < other.path;
}

}  // namespace

std::vector<SerialPort> ListSerialPorts() {
  Devices devices;
  AddEntered(devices);
  AddNamed(devices);
  std::vector<SerialPort> ports;
  for (const auto& [port, device] : devices) {
    const std::string name = WideToUtf8(port);
    ports.push_back({.path = name,
                     .device = name,
                     .adaptor = WideToUtf8(device),
                     .access = {},
                     .usable = true,
                     .free = {},
                     .holder = {}});
  }
  std::ranges::sort(ports, ComesFirst);
  return ports;
}

}  // namespace tesk::platform
