// The rules that every settings store follows.
#include "platform/SettingsStores.h"

#include <algorithm>
#include <array>

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::platform {
namespace {

constexpr std::array<std::string_view, 6> kRootNames = {"ClassesRoot", "CurrentUser",     "LocalMachine",
                                                        "Users",       "PerformanceData", "CurrentConfig"};

constexpr std::size_t kLongestPart = 255;

}  // namespace

std::optional<std::string> StoredText(std::uint32_t type, std::string_view bytes) {
  const std::string text(bytes.substr(0, bytes.find('\0')));
  if (type == kTypeText || type == kTypeExpandableText) return text;
  if (type != kTypeNumber) return std::nullopt;
  if (text.empty()) return text;
  // Compatibility: each byte becomes hexadecimal without a leading zero, and the zero that ends the text ends the
  // number too, so numbers above 255 do not come back as they were.
  std::string digits;
  for (auto c = text.rbegin(); c != text.rend(); ++c) digits += HexText(static_cast<unsigned char>(*c));
  return NumberText(ToInt32(Val("&h" + digits)));
}

std::string_view RootName(teskReaderRegistryKey root) {
  const std::int64_t index = std::int64_t{root} - teskReaderRegistryKeyClassesRoot;
  if (index < 0 || index >= static_cast<std::int64_t>(kRootNames.size())) throw InvalidCall();
  return kRootNames[static_cast<std::size_t>(index)];
}

std::string CanonicalKey(std::string_view key) {
  std::string canonical;
  std::size_t part = 0;
  for (const char c : key) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '\\' || c == '/') {
      if (part > 0) canonical += '\\';
      part = 0;
      continue;
    }
    if (code < 0x20 || code == 0x7F || ++part > kLongestPart) {
      throw RunTimeError(kErrorInvalidCall, "Invalid settings key", {},
                         "A key is a path such as School\\Lab, without control characters.");
    }
    canonical += c;
  }
  if (canonical.ends_with('\\')) canonical.pop_back();
  return canonical;
}

}  // namespace tesk::platform
