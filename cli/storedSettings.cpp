// The settings saved under a key, changed one by one.
#include "cli/storedSettings.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "base/HostServices.h"
#include "cli/CommandError.h"
#include "platform/SettingsStores.h"

namespace tesk::cli {
namespace {

// Properties whose settings have a name of their own.
constexpr struct {
  std::string_view property;
  std::string_view setting;
} kRenamed[] = {
    {"ReaderType", "ScannerType"},   {"Rejecter", "Reject"},      {"BaudRate", "ScannerBaud"},
    {"DataBits", "ScannerDataBits"}, {"Parity", "ScannerParity"}, {"Port", "ScannerPort"},
    {"StopBits", "ScannerStopBits"},
};

std::string_view SettingOf(std::string_view property) {
  for (const auto& renamed : kRenamed) {
    if (renamed.property == property) return renamed.setting;
  }
  return property;
}

bool Save(const SettingsKey& key, std::vector<StoredValue> values, clsTeskReader& engine) {
  return values.empty() || engine.SaveValues(key.root, key.path, values);
}

}  // namespace

std::vector<StoredValue> ReadStored(const SettingsKey& key) {
  const auto store = platform::CreateSettingsStore();
  std::vector<StoredValue> values;
  for (const std::string& name : SettingNames()) {
    if (const auto text = store->LoadValue(key.root, key.path, name)) values.push_back({name, *text});
  }
  return values;
}

void RequireSettings(const std::vector<Assignment>& assignments) {
  const auto names = SettingNames();
  for (const auto& [property, value] : assignments) {
    if (std::ranges::find(names, SettingOf(property->name)) != names.end()) continue;
    throw UsageError(fmt::format("--set {0}={1}: {0} is not kept among the settings", property->name, value));
  }
}

bool SaveAssigned(const SettingsKey& key, const std::vector<Assignment>& assignments, clsTeskReader& engine) {
  const auto assigned = [&](const StoredValue& held) {
    return std::ranges::any_of(assignments,
                               [&](const Assignment& a) { return SettingOf(a.property->name) == held.name; });
  };
  auto values = SettingTexts(engine);
  std::erase_if(values, [&](const StoredValue& held) { return !assigned(held); });
  return Save(key, std::move(values), engine);
}

LoadedSettings::LoadedSettings(const SettingsKey& key, clsTeskReader& engine) : key_(key), engine_(engine) {
  if (!engine.LoadSettings(key.root, key.path)) {
    throw CommandFailure(fmt::format("the settings under the key {} cannot be read", key.path));
  }
  for (const StoredValue& value : ReadStored(key)) {
    if (value.name != "ColorDepth" && value.name != "Resolution") continue;
    // What is no number here stays as it was loaded, and is not saved either.
    static_cast<void>(Attempt([&] { FindEngineProperty(value.name)->set(engine, value.text); }));
  }
  loaded_ = SettingTexts(engine);
}

bool LoadedSettings::SaveChanges() const {
  std::vector<StoredValue> changed;
  for (const StoredValue& value : SettingTexts(engine_)) {
    if (std::ranges::find(loaded_, value) == loaded_.end()) changed.push_back(value);
  }
  return Save(key_, std::move(changed), engine_);
}

}  // namespace tesk::cli
