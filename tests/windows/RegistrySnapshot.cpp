// Reads the registry.
#include "tests/windows/RegistrySnapshot.h"

#include <algorithm>
#include <array>

#include "automation/Com.h"
#include "platform/windows/Text.h"
#include "tests/windows/Host.h"

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

std::wstring UpperCase(std::wstring text) {
  CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
  return text;
}

// What every entry of the server's names: the library, or one of the identifiers in it.
std::vector<std::wstring> Marks() {
  std::vector<std::wstring> marks = {L"TESKREADER99"};
  ComPtr<ITypeLib> library;
  if (FAILED(LoadTypeLibEx(ServerPath().c_str(), REGKIND_NONE, &library))) return {};
  const auto add = [&marks](REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    marks.push_back(UpperCase(text));
  };
  TLIBATTR* attributes = nullptr;
  library->GetLibAttr(&attributes);
  add(attributes->guid);
  library->ReleaseTLibAttr(attributes);
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    TYPEATTR* type = nullptr;
    library->GetTypeInfo(i, &info);
    info->GetTypeAttr(&type);
    add(type->guid);
    info->ReleaseTypeAttr(type);
  }
  return marks;
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

std::vector<std::string> LeftInRegistry() {
  static const auto marks = Marks();
  std::vector<std::string> left;
  for (const std::wstring& line : Classes()) {
    if (CleanRegistry().contains(line)) continue;
    const std::wstring upper = UpperCase(line);
    const auto isIn = [&](const std::wstring& mark) { return upper.find(mark) != std::wstring::npos; };
    if (std::any_of(marks.begin(), marks.end(), isIn)) left.push_back(platform::WideToUtf8(line));
  }
  return left;
}

}  // namespace tesk::test
