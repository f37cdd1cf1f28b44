// The settings store as one file. Knows POSIX and the rules of stores.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/SettingsStores.h"
#include "platform/settingsText.h"

namespace tesk::platform {

// Every change is made under a lock, to a new file that then takes the old one's place: a crash or a full
// disk loses nothing, nor do two programs that write at once. A damaged file is refused and never written.
class SettingsFile : public SettingsStore {
 public:
  explicit SettingsFile(std::string path);

  bool SaveValues(teskReaderRegistryKey root, const std::string& key,
                  const std::vector<StoredValue>& values) override;
  std::optional<std::string> LoadValue(teskReaderRegistryKey root, const std::string& key,
                                       const std::string& name) override;
  bool DeleteValues(teskReaderRegistryKey root, const std::string& key,
                    const std::vector<std::string>& names) override;
  // Below the root; see SettingsKeys.
  std::vector<std::string> Keys(teskReaderRegistryKey root) const;

 private:
  SettingsText Read() const;
  // `change` says whether there is anything to write.
  bool Change(const std::function<bool(SettingsText&)>& change);
  void Replace(const std::string& text) const;

  std::string path_;
};

}  // namespace tesk::platform
