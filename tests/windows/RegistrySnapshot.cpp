// Reads the registry.
#include "tests/windows/RegistrySnapshot.h"

#include <array>

#include "automation/Com.h"

namespace tesk::test {
namespace {

std::set<std::wstring> clean;

void TakeValues(HKEY key, const std::wstring& path, std::set<std::wstring>& lines) {
  for (DWORD i = 0;; ++i) {
    std::array<wchar_t, 512> name{};
    std::array<BYTE, 2048> data{};
    auto nameLength = static_cast<DWORD>(name.size());
    auto dataLength = static_cast<DWORD>(data.size() - sizeof(wchar_t));
    const LSTATUS status =
        RegEnumValueW(key, i, name.data(), &nameLength, nullptr, nullptr, data.data(), &dataLength);
    if (status == ERROR_NO_MORE_ITEMS) return;
    lines.insert(path + L"|" + name.data() + L"=" + reinterpret_cast<const wchar_t*>(data.data()));
  }
}

void Take(HKEY root, const std::wstring& path, std::set<std::wstring>& lines) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  lines.insert(path);
  TakeValues(key, path, lines);
  for (DWORD i = 0;; ++i) {
    std::array<wchar_t, 512> name{};
    auto length = static_cast<DWORD>(name.size());
    if (RegEnumKeyExW(key, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      break;
    Take(root, path + L"\\" + name.data(), lines);
  }
  RegCloseKey(key);
}

}  // namespace

std::set<std::wstring> Classes() {
  std::set<std::wstring> lines;
  Take(HKEY_LOCAL_MACHINE, L"Software\\Classes", lines);
  std::set<std::wstring> ofUser;
  Take(HKEY_CURRENT_USER, L"Software\\Classes", ofUser);
  for (const std::wstring& line : ofUser) lines.insert(L"user " + line);
  return lines;
}

void NoteCleanRegistry() { clean = Classes(); }

const std::set<std::wstring>& CleanRegistry() { return clean; }

}  // namespace tesk::test
