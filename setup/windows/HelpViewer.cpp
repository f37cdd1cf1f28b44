// The HTML help viewer is loaded from the system's own folder, never by the search path.
#include "setup/windows/HelpViewer.h"

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "base/conversions.h"
#include "platform/windows/Text.h"

namespace tesk {
namespace {

constexpr UINT kDisplayTopic = 0x0000;  // HH_DISPLAY_TOPIC
constexpr UINT kHelpContext = 0x000F;   // HH_HELP_CONTEXT

bool OpenCompiledHelp(HWND owner, const std::wstring& file, std::int32_t topic) {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(::GetSystemDirectoryW(path.data(), MAX_PATH));
  const HMODULE viewer =
      ::LoadLibraryExW((path + L"\\hhctrl.ocx").c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (viewer == nullptr) return false;
  using HtmlHelp = HWND WINAPI(HWND, LPCWSTR, UINT, DWORD_PTR);
  // Stays loaded: the viewer's window outlives this call.
  auto* const htmlHelp =
      reinterpret_cast<HtmlHelp*>(reinterpret_cast<void*>(::GetProcAddress(viewer, "HtmlHelpW")));
  if (htmlHelp == nullptr) return false;
  return htmlHelp(owner, file.c_str(), topic != 0 ? kHelpContext : kDisplayTopic,
                  static_cast<DWORD_PTR>(topic)) != nullptr;
}

bool OpenOldHelp(HWND owner, const std::wstring& file, std::int32_t topic) {
  return ::WinHelpW(owner, file.c_str(), topic != 0 ? HELP_CONTEXT : HELP_FINDER,
                    static_cast<ULONG_PTR>(topic)) != FALSE;
}

bool OpenDocument(HWND owner, const std::wstring& file, std::int32_t) {
  constexpr INT_PTR kLastError = 32;
  const HINSTANCE opened = ::ShellExecuteW(owner, L"open", file.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(opened) > kLastError;
}

struct HelpKind {
  std::string_view extension;
  bool (*open)(HWND, const std::wstring&, std::int32_t);
};

constexpr std::array<HelpKind, 6> kKinds = {{{".chm", OpenCompiledHelp},
                                             {".hlp", OpenOldHelp},
                                             {".htm", OpenDocument},
                                             {".html", OpenDocument},
                                             {".pdf", OpenDocument},
                                             {".txt", OpenDocument}}};

bool IsLocalFile(const std::string& file, const std::wstring& path) {
  if (file.size() < 4 || file[1] != ':' || (file[2] != '\\' && file[2] != '/')) return false;
  if (::GetDriveTypeW(path.substr(0, 3).c_str()) == DRIVE_REMOTE) return false;
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace

bool ShowHelp(HWND owner, const std::string& file, std::int32_t topic) {
  const std::wstring path = platform::Utf8ToWide(file);
  if (!IsLocalFile(file, path)) return false;
  const auto kind = std::ranges::find_if(
      kKinds, [&](const HelpKind& each) { return LowerCase(file).ends_with(each.extension); });
  return kind != kKinds.end() && kind->open(owner, path, topic);
}

}  // namespace tesk
