// The words for a port that cannot be opened.
#include "platform/openError.h"

#include <array>

#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

constexpr int kHighestPort = 256;  // the numbers that the system gives to ports

std::string UserLine() {
  std::array<wchar_t, 257> name{};
  auto size = static_cast<DWORD>(name.size());
  if (!::GetEnvironmentVariableW(L"USERNAME", name.data(), size)) return {};
  return "This program runs as user " + WideToUtf8(name.data()) + ".|";
}

std::string PortsLine() {
  std::string ports;
  std::array<wchar_t, 1024> target{};
  for (int port = 1; port <= kHighestPort; ++port) {
    const std::wstring name = L"COM" + std::to_wstring(port);
    if (::QueryDosDeviceW(name.c_str(), target.data(), static_cast<DWORD>(target.size())) == 0) continue;
    ports += (ports.empty() ? "" : ", ") + WideToUtf8(name);
  }
  return ports.empty() ? "This computer has no serial ports." : "This computer has " + ports + ".";
}

constexpr std::array kThingsToTry = {
    "Things to try:", "- Is the scanner switched on, and are its cable and the adaptor plugged in?",
    "- Is the adaptor's driver installed? The Device Manager shows it under Ports (COM & LPT).",
    "- Does another program use the port?",
    "- Is it the right port? TESKREADER_PORT_<N>=COMm in the environment names the port behind number N."};

}  // namespace

RunTimeError CannotOpen(const std::string& device, const std::string& reason) {
  std::string detail = UserLine() + PortsLine();
  for (const char* line : kThingsToTry) detail += std::string("|") + line;
  return {kErrorPort, "The port " + device + " cannot be opened: " + reason + ".", {}, detail};
}

RunTimeError InUse(const std::string& device) {
  return {kErrorPortInUse,
          "The port " + device + " is in use by another program.",
          {},
          "End the other program, or choose another port."};
}

}  // namespace tesk::platform
