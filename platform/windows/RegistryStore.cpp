// The registry as settings store. Values are texts in the system's ANSI code page, as hosts of old wrote
// them. Knows the registry and the rules of stores.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "platform/Platform.h"
#include "platform/SettingsStores.h"
#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

// The roots have the values of the predefined handles.
HKEY Root(teskReaderRegistryKey root) {
  static_cast<void>(RootName(root));
  return reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(root)));
}

class Key {
 public:
  Key() = default;
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() {
    if (handle_ != nullptr) RegCloseKey(handle_);
  }
  HKEY* Place() { return &handle_; }
  HKEY Get() const { return handle_; }

 private:
  HKEY handle_ = nullptr;
};

RunTimeError Refused(const std::string& key, LONG error) {
  return {kErrorFileAccess,
          "The registry key \"" + key + "\" cannot be written (error " +
              NumberText(static_cast<std::int32_t>(error)) + ").",
          {},
          "Use a key below CurrentUser, or run with the rights to write there."};
}

class RegistryStore : public SettingsStore {
 public:
  bool SaveValues(teskReaderRegistryKey root, const std::string& key,
                  const std::vector<StoredValue>& values) override {
    std::string keyClass = "1";
    Key opened;
    LONG error = RegCreateKeyExA(Root(root), Utf8ToAnsi(key).c_str(), 0, keyClass.data(), 0, KEY_WRITE,
                                 nullptr, opened.Place(), nullptr);
    if (error != ERROR_SUCCESS) throw Refused(key, error);
    for (const auto& [name, text] : values) {
      const std::string bytes = Utf8ToAnsi(text);
      // Compatibility: the length counts no terminating zero.
      error = RegSetValueExA(opened.Get(), Utf8ToAnsi(name).c_str(), 0, REG_SZ,
                             reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
      if (error != ERROR_SUCCESS) throw Refused(key, error);
    }
    return true;
  }

  std::optional<std::string> LoadValue(teskReaderRegistryKey root, const std::string& key,
                                       const std::string& name) override {
    Key opened;
    if (RegOpenKeyExA(Root(root), Utf8ToAnsi(key).c_str(), 0, KEY_READ, opened.Place()) != ERROR_SUCCESS) {
      return std::nullopt;
    }
    std::array<BYTE, kLongestValue> buffer{};
    DWORD type = 0;
    auto length = static_cast<DWORD>(buffer.size());
    if (RegQueryValueExA(opened.Get(), Utf8ToAnsi(name).c_str(), nullptr, &type, buffer.data(), &length) !=
        ERROR_SUCCESS) {
      return std::nullopt;
    }
    const auto* bytes = reinterpret_cast<const char*>(buffer.data());
    const auto text = StoredText(type, std::string_view(bytes, std::min<std::size_t>(length, buffer.size())));
    if (!text) return std::nullopt;
    return AnsiToUtf8(*text);
  }

  bool DeleteValues(teskReaderRegistryKey root, const std::string& key,
                    const std::vector<std::string>& names) override {
    bool removed = false;
    {
      Key opened;
      if (RegOpenKeyExA(Root(root), Utf8ToAnsi(key).c_str(), 0, KEY_READ | KEY_WRITE, opened.Place()) !=
          ERROR_SUCCESS) {
        return false;
      }
      for (const std::string& name : names) {
        removed = RegDeleteValueA(opened.Get(), Utf8ToAnsi(name).c_str()) == ERROR_SUCCESS || removed;
      }
      if (!IsEmpty(opened.Get())) return removed;
    }
    if (!key.empty()) RegDeleteKeyA(Root(root), Utf8ToAnsi(key).c_str());
    return removed;
  }

 private:
  static bool IsEmpty(HKEY key) {
    DWORD subKeys = 0;
    DWORD values = 0;
    const LONG error = RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &subKeys, nullptr, nullptr, &values,
                                        nullptr, nullptr, nullptr, nullptr);
    return error == ERROR_SUCCESS && subKeys == 0 && values == 0;
  }
};

constexpr int kDeepest = 16;  // levels below the root that are looked through

// Keys that may not be read hold nothing of ours.
void AddKeys(HKEY parent, const std::string& path, int level, std::vector<std::string>& keys) {
  if (RegQueryValueExA(parent, "ScannerType", nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
    keys.push_back(AnsiToUtf8(path));
  }
  std::array<char, 256> name{};
  auto size = static_cast<DWORD>(name.size());
  for (DWORD index = 0; level < kDeepest && RegEnumKeyExA(parent, index, name.data(), &size, nullptr, nullptr,
                                                          nullptr, nullptr) == ERROR_SUCCESS;
       ++index, size = static_cast<DWORD>(name.size())) {
    Key child;
    if (RegOpenKeyExA(parent, name.data(), 0, KEY_READ, child.Place()) != ERROR_SUCCESS) continue;
    AddKeys(child.Get(), path.empty() ? name.data() : path + "\\" + name.data(), level + 1, keys);
  }
}

}  // namespace

std::shared_ptr<SettingsStore> CreateSettingsStore() { return std::make_shared<RegistryStore>(); }

std::vector<std::string> SettingsKeys(teskReaderRegistryKey root) {
  std::vector<std::string> keys;
  AddKeys(Root(root), {}, 0, keys);
  std::ranges::sort(keys);
  return keys;
}

}  // namespace tesk::platform
