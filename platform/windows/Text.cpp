// Text between UTF-8 and the system's encodings.
#include "platform/windows/Text.h"

#include "base/conversions.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

std::wstring ToWide(UINT codePage, std::string_view text) {
  if (text.empty()) return {};
  const int size = Narrow<int>(text.size());
  std::wstring wide(
      static_cast<std::size_t>(::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0)), L'\0');
  ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string FromWide(UINT codePage, std::wstring_view wide) {
  if (wide.empty()) return {};
  const int size = Narrow<int>(wide.size());
  std::string text(static_cast<std::size_t>(
                       ::WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, nullptr)),
                   '\0');
  ::WideCharToMultiByte(codePage, 0, wide.data(), size, text.data(), static_cast<int>(text.size()), nullptr,
                        nullptr);
  return text;
}

}  // namespace

std::wstring Utf8ToWide(std::string_view text) { return ToWide(CP_UTF8, text); }
std::string WideToUtf8(std::wstring_view text) { return FromWide(CP_UTF8, text); }
std::string AnsiToUtf8(std::string_view text) { return WideToUtf8(ToWide(CP_ACP, text)); }
std::string Utf8ToAnsi(std::string_view text) { return FromWide(CP_ACP, Utf8ToWide(text)); }

std::string SystemReason(unsigned long error) {
  wchar_t buffer[512];
  const DWORD length = ::FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr,
      error, 0, buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
  std::string text = WideToUtf8({buffer, length});
  while (!text.empty() && (text.back() == ' ' || text.back() == '.')) text.pop_back();
  return text.empty() ? "error " + std::to_string(error) : text;
}

std::string Environment(std::string_view name) {
  const std::wstring wideName = Utf8ToWide(name);
  std::wstring value(::GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
  value.resize(::GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size())));
  return WideToUtf8(value);
}

}  // namespace tesk::platform
