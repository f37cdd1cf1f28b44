// Changes to the settings saved under a key that leave everything else there as it is.
#pragma once

#include <string>
#include <vector>

#include "cli/assignments.h"
#include "cli/settingsKey.h"

namespace tesk::cli {

// What the store holds under the key, in the order of saving.
std::vector<StoredValue> ReadStored(const SettingsKey& key);

// A device path that the settings name beside the number of the port, for scans of this program alone; empty
// where there is none.
std::string StoredDevice(const SettingsKey& key);
// An empty path forgets the one that is there.
bool SaveDevice(const SettingsKey& key, const std::string& device, clsTeskReader& engine);
// The names of everything that is stored under a key.
std::vector<std::string> StoredNames();
// What --set calls the setting: its own name but for a few.
std::string_view PropertyOf(std::string_view setting);

// Throws UsageError where a property is assigned that is no setting.
void RequireSettings(const std::vector<Assignment>& assignments);

// Saves all settings of the engine, and the device ("": none).
bool SaveAll(const SettingsKey& key, clsTeskReader& engine, const std::string& device = {});

// Saves the settings that the assignments name, as the engine holds them now.
bool SaveAssigned(const SettingsKey& key, const std::vector<Assignment>& assignments, clsTeskReader& engine);

// Settings that were loaded into an engine to be changed there.
class LoadedSettings {
 public:
  // Loads them. ColorDepth and Resolution come as they are stored, not as LoadSettings makes them. Where a stored text
  // is nothing that its setting can be, the reader's proposal stands instead, and is a change.
  LoadedSettings(const SettingsKey& key, clsTeskReader& engine);
  // What could not be used, as it is stored.
  const std::vector<StoredValue>& Unusable() const { return unusable_; }
  // Saves what the engine holds otherwise than is stored.
  bool SaveChanges() const;

 private:
  void Load(const std::vector<StoredValue>& stored);

  const SettingsKey& key_;
  clsTeskReader& engine_;
  std::vector<StoredValue> unusable_;
  std::vector<StoredValue> loaded_;
};

}  // namespace tesk::cli
