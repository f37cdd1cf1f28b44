// The settings saved under a key, changed one by one.
#include "cli/storedSettings.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "cli/CommandError.h"
#include "platform/SettingsStores.h"

namespace tesk::cli {
namespace {

constexpr const char* kDevice = "ScannerDevice";  // hosts do not know it

// A port that is chosen by its number takes the place of a device.
bool Save(const SettingsKey& key, std::vector<StoredValue> values, clsTeskReader& engine) {
  const bool port = std::ranges::find(values, "ScannerPort", &StoredValue::name) != values.end();
  return values.empty() ||
         (engine.SaveValues(key.root, key.path, values) && (!port || SaveDevice(key, {}, engine)));
}

}  // namespace

std::string_view PropertyOf(std::string_view setting) {
  if (setting == kDevice) return "--port";
  const auto found = std::ranges::find_if(EngineSettings(), [&](const EngineSetting& known) {
    return known.savedAs && known.savedAs == setting;
  });
  return found == EngineSettings().end() ? setting : found->name;
}

std::vector<std::string> StoredNames() {
  std::vector<std::string> names;
  for (const EngineSetting& setting : EngineSettings()) {
    if (setting.savedAs) names.emplace_back(setting.savedAs);
  }
  names.emplace_back(kDevice);
  return names;
}

std::string StoredDevice(const SettingsKey& key) {
  return platform::CreateSettingsStore()->LoadValue(key.root, key.path, kDevice).value_or("");
}

bool SaveDevice(const SettingsKey& key, const std::string& device, clsTeskReader& engine) {
  if (device.empty()) {
    static_cast<void>(platform::CreateSettingsStore()->DeleteValues(key.root, key.path, {kDevice}));
    return true;
  }
  std::vector<StoredValue> values = {{kDevice, device}};
  return engine.SaveValues(key.root, key.path, values);
}

bool SaveAll(const SettingsKey& key, clsTeskReader& engine, const std::string& device) {
  return engine.SaveSettings(key.root, key.path) && SaveDevice(key, device, engine);
}

std::vector<StoredValue> ReadStored(const SettingsKey& key) {
  const auto store = platform::CreateSettingsStore();
  std::vector<StoredValue> values;
  for (const std::string& name : StoredNames()) {
    if (const auto text = store->LoadValue(key.root, key.path, name)) values.push_back({name, *text});
  }
  return values;
}

void RequireSettings(const std::vector<Assignment>& assignments) {
  for (const Assignment& assignment : assignments) {
    if (assignment.setting->savedAs) continue;
    throw UsageError(fmt::format("--set {0}={1}: {0} is not kept among the settings",
                                 assignment.setting->name, assignment.text));
  }
}

bool SaveAssigned(const SettingsKey& key, const std::vector<Assignment>& assignments, clsTeskReader& engine) {
  const auto assigned = [&](const StoredValue& held) {
    return std::ranges::any_of(assignments,
                               [&](const Assignment& a) { return a.setting->savedAs == held.name; });
  };
  auto values = SavedTexts(engine);
  std::erase_if(values, [&](const StoredValue& held) { return !assigned(held); });
  return Save(key, std::move(values), engine);
}

LoadedSettings::LoadedSettings(const SettingsKey& key, clsTeskReader& engine) : key_(key), engine_(engine) {
  const auto stored = ReadStored(key);
  for (const StoredValue& value : stored) {
    if (value.name != kDevice && Attempt([&] { AssignSaved(engine, value); })) unusable_.push_back(value);
  }
  Load(stored);
  for (const StoredValue& value : stored) {
    if (value.name != "ColorDepth" && value.name != "Resolution") continue;
    // What is no number here stays as it was loaded, and is not saved either.
    const EngineSetting& setting = SettingNamed(value.name);
    if (const auto meant = ValueOf(setting, value.text)) setting.set(engine, *meant);
  }
  loaded_ = SavedTexts(engine);
  for (const StoredValue& value : unusable_)
    *std::ranges::find(loaded_, value.name, &StoredValue::name) = value;
}

void LoadedSettings::Load(const std::vector<StoredValue>& stored) {
  if (unusable_.empty() && engine_.LoadSettings(key_.root, key_.path)) return;
  const auto type = engine_.ReaderType();
  if (Deref(engine_.Profiles()).Exists(NumberText(type))) engine_.LoadDefaults(type);
  engine_.SetPort(1);
  // The imprinter's setting comes behind the type in any case.
  for (const StoredValue& value : stored) {
    static_cast<void>(Attempt([&] { AssignSaved(engine_, value); }));
  }
}

bool LoadedSettings::SaveChanges() const {
  std::vector<StoredValue> changed;
  for (const StoredValue& value : SavedTexts(engine_)) {
    if (std::ranges::find(loaded_, value) == loaded_.end()) changed.push_back(value);
  }
  return Save(key_, std::move(changed), engine_);
}

}  // namespace tesk::cli
