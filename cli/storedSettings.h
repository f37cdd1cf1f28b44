// Changes to the settings saved under a key that leave everything else there as it is.
#pragma once

#include <string>
#include <vector>

#include "cli/engineProperties.h"
#include "cli/settingsKey.h"

namespace tesk::cli {

// What the store holds under the key, in the order of saving.
std::vector<StoredValue> ReadStored(const SettingsKey& key);

// Throws UsageError where a property is assigned that is no setting.
void RequireSettings(const std::vector<Assignment>& assignments);

// Saves the settings that the assignments name, as the engine holds them now.
bool SaveAssigned(const SettingsKey& key, const std::vector<Assignment>& assignments, clsTeskReader& engine);

// Settings that were loaded into an engine to be changed there.
class LoadedSettings {
 public:
  // Loads them. ColorDepth and Resolution come as they are stored, not as LoadSettings makes them. Throws
  // CommandFailure where they cannot be read.
  LoadedSettings(const SettingsKey& key, clsTeskReader& engine);
  // Saves what the engine holds otherwise than it did then.
  bool SaveChanges() const;

 private:
  const SettingsKey& key_;
  clsTeskReader& engine_;
  std::vector<StoredValue> loaded_;
};

}  // namespace tesk::cli
