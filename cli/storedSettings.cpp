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

// Properties whose settings have a name of their own.
constexpr struct {
  std::string_view property;
  std::string_view setting;
} kRenamed[] = {
    {"ReaderType", "ScannerType"},   {"Rejecter", "Reject"},      {"BaudRate", "ScannerBaud"},
    {"DataBits", "ScannerDataBits"}, {"Parity", "ScannerParity"}, {"Port", "ScannerPort"},
    {"StopBits", "ScannerStopBits"},
};

constexpr const char* kDevice = "ScannerDevice";  // hosts do not know it

std::string_view SettingOf(std::string_view property) {
  for (const auto& renamed : kRenamed) {
    if (renamed.property == property) return renamed.setting;
  }
  return property;
}

// A port that is chosen by its number takes the place of a device.
bool Save(const SettingsKey& key, std::vector<StoredValue> values, clsTeskReader& engine) {
  const bool port = std::ranges::find(values, "ScannerPort", &StoredValue::name) != values.end();
  return values.empty() ||
         (engine.SaveValues(key.root, key.path, values) && (!port || SaveDevice(key, {}, engine)));
}

}  // namespace

std::string_view PropertyOf(std::string_view setting) {
  if (setting == kDevice) return "--port";
  for (const auto& renamed : kRenamed) {
    if (renamed.setting == setting) return renamed.property;
  }
  return setting;
}

std::vector<std::string> StoredNames() {
  auto names = SettingNames();
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
  const auto stored = ReadStored(key);
  for (const StoredValue& value : stored) {
    if (value.name != kDevice && Attempt([&] { AssignSetting(engine, value); })) unusable_.push_back(value);
  }
  Load(stored);
  for (const StoredValue& value : stored) {
    if (value.name != "ColorDepth" && value.name != "Resolution") continue;
    // What is no number here stays as it was loaded, and is not saved either.
    static_cast<void>(Attempt([&] { FindEngineProperty(value.name)->set(engine, value.text); }));
  }
  loaded_ = SettingTexts(engine);
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
    static_cast<void>(Attempt([&] { AssignSetting(engine_, value); }));
  }
}

bool LoadedSettings::SaveChanges() const {
  std::vector<StoredValue> changed;
  for (const StoredValue& value : SettingTexts(engine_)) {
    if (std::ranges::find(loaded_, value) == loaded_.end()) changed.push_back(value);
  }
  return Save(key_, std::move(changed), engine_);
}

}  // namespace tesk::cli
