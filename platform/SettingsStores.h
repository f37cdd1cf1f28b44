// The settings store of this system, and the rules that every store follows. Needs no system header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/enumerations.h"
#include "engine/Seams.h"

namespace tesk::platform {

// The registry on Windows; elsewhere a file in the user's configuration folder.
std::shared_ptr<SettingsStore> CreateSettingsStore();

// The keys below a root under which a scanner's settings are saved, as --key takes them, in order. Throws where
// the store cannot be read.
std::vector<std::string> SettingsKeys(teskReaderRegistryKey root);

// The longest value that is read, in bytes; a longer one counts as missing.
inline constexpr std::size_t kLongestValue = 1024;

// The types of stored values that are read as text.
inline constexpr std::uint32_t kTypeText = 1;            // REG_SZ
inline constexpr std::uint32_t kTypeExpandableText = 2;  // REG_EXPAND_SZ, taken as it is
inline constexpr std::uint32_t kTypeNumber = 4;          // REG_DWORD

// The text that a value's bytes stand for: cut at the first zero, numbers by the old rule (see the source),
// nothing for every other type.
std::optional<std::string> StoredText(std::uint32_t type, std::string_view bytes);

// "CurrentUser" and so on. Throws error 5 for a value that is no root.
std::string_view RootName(teskReaderRegistryKey root);

// A key path as a person types it, made canonical for the settings file: "School/Lab\" is "School\Lab". Throws
// error 5 for control characters and for a part of over 255 characters.
std::string CanonicalKey(std::string_view key);

}  // namespace tesk::platform
