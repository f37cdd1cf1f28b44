// The table of the engine's settings: defaults from the catalogue, and the values saved and loaded under a key of
// the settings store. Every saved value is a text.
#include "engine/settings.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <ranges>
#include <type_traits>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"

namespace tesk {
namespace {

using Reader = clsTeskReader;
using Profile = clsTeskReaderProfile;

template <auto kGet, class Owner>
using ValueOf = std::remove_cvref_t<decltype((std::declval<const Owner&>().*kGet)())>;

template <class Value>
constexpr SettingKind KindOf() {
  // Bit rates are beyond 16 bits.
  if (std::is_same_v<Value, std::int32_t> || std::is_same_v<Value, teskReaderBaudRate>) {
    return SettingKind::Whole32;
  }
  if (std::is_same_v<Value, bool>) return SettingKind::Boolean;
  if (std::is_same_v<Value, float>) return SettingKind::Single;
  return std::is_same_v<Value, std::string> ? SettingKind::Text : SettingKind::Whole16;
}

template <class Value>
inline constexpr bool kWhole = std::is_enum_v<Value> ||
                               (std::is_integral_v<Value> && !std::is_same_v<Value, bool>);

template <class Value>
SettingValue Held(const Value& value) {
  if constexpr (kWhole<Value>) {
    return static_cast<std::int32_t>(value);
  } else {
    return value;
  }
}

template <class Value>
Value Taken(const SettingValue& value) {
  if constexpr (std::is_enum_v<Value>) {
    return static_cast<Value>(std::get<std::int32_t>(value));
  } else if constexpr (kWhole<Value>) {
    return Narrow<Value>(std::get<std::int32_t>(value));
  } else {
    return std::get<Value>(value);
  }
}

template <auto kGet, auto kSet>
constexpr EngineSetting Unsaved(const char* name) {
  using Value = ValueOf<kGet, Reader>;
  EngineSetting setting = {.name = name,
                           .kind = KindOf<Value>(),
                           .get = [](const Reader& r) { return Held((r.*kGet)()); },
                           .set = [](Reader& r, const SettingValue& v) { (r.*kSet)(Taken<Value>(v)); }};
  if constexpr (std::is_enum_v<Value>) setting.members = EnumeratorsOf<Value>;
  return setting;
}

// savedAs: none where it is saved under the name of its property.
template <auto kGet, auto kSet>
constexpr EngineSetting HostsOwn(const char* name, const char* missing, const char* savedAs = nullptr) {
  EngineSetting setting = Unsaved<kGet, kSet>(name);
  setting.savedAs = savedAs ? savedAs : name;
  setting.missing = missing;
  return setting;
}

template <auto kGet, auto kSet, auto kProposed>
constexpr EngineSetting Proposed(const char* name, const char* missing, const char* savedAs = nullptr) {
  EngineSetting setting = HostsOwn<kGet, kSet>(name, missing, savedAs);
  setting.proposed = [](const Profile& p) { return Held((p.*kProposed)()); };
  return setting;
}

// Compatibility: hosts rely on two numbers going through the Boolean rule, so every number but 0 becomes -1.
constexpr EngineSetting LoadedAsBoolean(EngineSetting setting) {
  setting.loadedAsBoolean = true;
  return setting;
}

constexpr EngineSetting kImprinter = {
    .name = "Printer",
    .kind = SettingKind::Boolean,
    .get = [](const Reader& r) { return Held(Deref(r.Printer()).Enabled()); },
    .set = [](Reader& r, const SettingValue& v) { Deref(r.Printer()).SetEnabled(std::get<bool>(v)); },
    .savedAs = "Printer",
    .missing = "False",
    .proposed = [](const Profile& p) { return Held(p.Printer()); }};

constexpr EngineSetting kSettings[] = {
    Proposed<&Reader::ImagingEnabled, &Reader::SetImagingEnabled, &Profile::ImagingEnabled>("ImagingEnabled",
                                                                                            "True"),
    Proposed<&Reader::ReaderGrade, &Reader::SetReaderGrade, &Profile::ReaderGrade>("ReaderGrade", "False"),
    Proposed<&Reader::Barcode, &Reader::SetBarcode, &Profile::Barcode>("Barcode", "False"),
    Proposed<&Reader::Duplex, &Reader::SetDuplex, &Profile::Duplex>("Duplex", "False"),
    Proposed<&Reader::Feeder, &Reader::SetFeeder, &Profile::Feeder>("Feeder", "False"),
    Proposed<&Reader::FlowControl, &Reader::SetFlowControl, &Profile::FlowControl>("FlowControl", "0"),
    Proposed<&Reader::Image, &Reader::SetImage, &Profile::Imaging>("Image", "False"),
    Proposed<&Reader::MarkCutOff, &Reader::SetMarkCutOff, &Profile::MarkCutOff>("MarkCutOff", "0"),
    Proposed<&Reader::MarkDiscrimination, &Reader::SetMarkDiscrimination, &Profile::MarkDiscrimination>(
        "MarkDiscrimination", "0"),
    kImprinter,
    HostsOwn<&Reader::ReaderType, &Reader::SetReaderType>("ReaderType", "0", "ScannerType"),
    Proposed<&Reader::ErasureThreshold, &Reader::SetErasureThreshold, &Profile::ErasureThreshold>(
        "ErasureThreshold", "0"),
    Proposed<&Reader::RecognitionThreshold, &Reader::SetRecognitionThreshold, &Profile::RecognitionThreshold>(
        "RecognitionThreshold", "0"),
    Proposed<&Reader::RecognitionThresholdMax, &Reader::SetRecognitionThresholdMax,
             &Profile::RecognitionThresholdMaximum>("RecognitionThresholdMax", "0"),
    Proposed<&Reader::Rejecter, &Reader::SetRejecter, &Profile::Rejecter>("Rejecter", "False", "Reject"),
    Proposed<&Reader::BaudRate, &Reader::SetBaudRate, &Profile::BaudRate>("BaudRate", "9600", "ScannerBaud"),
    Proposed<&Reader::DataBits, &Reader::SetDataBits, &Profile::DataBits>("DataBits", "7", "ScannerDataBits"),
    Proposed<&Reader::Parity, &Reader::SetParity, &Profile::Parity>("Parity", "N", "ScannerParity"),
    HostsOwn<&Reader::Port, &Reader::SetPort>("Port", "1", "ScannerPort"),
    Proposed<&Reader::StopBits, &Reader::SetStopBits, &Profile::StopBits>("StopBits", "1", "ScannerStopBits"),
    Proposed<&Reader::SleepTime, &Reader::SetSleepTime, &Profile::SleepTime>("SleepTime", "50"),
    Proposed<&Reader::TimeOut, &Reader::SetTimeOut, &Profile::TimeOut>("TimeOut", "10"),
    HostsOwn<&Reader::Continuous, &Reader::SetContinuous>("Continuous", "False"),
    HostsOwn<&Reader::Windowing, &Reader::SetWindowing>("Windowing", "False"),
    LoadedAsBoolean(
        Proposed<&Reader::ColorDepth, &Reader::SetColorDepth, &Profile::ColorDepth>("ColorDepth", "0")),
    LoadedAsBoolean(
        Proposed<&Reader::Resolution, &Reader::SetResolution, &Profile::Resolution>("Resolution", "200")),
    Unsaved<&Reader::DuplexForm, &Reader::SetDuplexForm>("DuplexForm"),
    Unsaved<&Reader::RecognitionMode, &Reader::SetRecognitionMode>("RecognitionMode"),
    Unsaved<&Reader::CancelScan, &Reader::SetCancelScan>("CancelScan"),
    Unsaved<&Reader::HelpFile, &Reader::SetHelpFile>("HelpFile"),
    Unsaved<&Reader::Side1Image, &Reader::SetSide1Image>("Side1Image"),
    Unsaved<&Reader::Side2Image, &Reader::SetSide2Image>("Side2Image"),
    Unsaved<&Reader::Side1Coordinates, &Reader::SetSide1Coordinates>("Side1Coordinates"),
    Unsaved<&Reader::Side2Coordinates, &Reader::SetSide2Coordinates>("Side2Coordinates"),
};

auto SavedSettings() {
  return std::views::filter(kSettings,
                            [](const EngineSetting& setting) { return setting.savedAs != nullptr; });
}

const char* TakesText(const EngineSetting& setting) {
  switch (setting.loadedAsBoolean ? SettingKind::Boolean : setting.kind) {
    case SettingKind::Boolean:
      return "True, False or a number";
    case SettingKind::Whole16:
      return "a whole number from -32768 to 32767";
    case SettingKind::Whole32:
      return "a whole number from -2147483648 to 2147483647";
    case SettingKind::Single:
      return "a number within single precision";
    case SettingKind::Text:
      break;
  }
  return "a text";
}

SettingValue LoadedValue(const EngineSetting& setting, const std::string& text) {
  if (setting.loadedAsBoolean) return TextToBoolean(text) ? -1 : 0;
  switch (setting.kind) {
    case SettingKind::Boolean:
      return TextToBoolean(text);
    case SettingKind::Whole16:
      return std::int32_t{ToInt16(Val(text))};
    case SettingKind::Whole32:
      return ToInt32(Val(text));
    case SettingKind::Single:
      return ToSingle(Val(text));
    case SettingKind::Text:
      break;
  }
  return text;
}

SettingsStore& Store(const EngineSeams& seams) {
  if (!seams.settings) throw RunTimeError(kErrorNotSupported, "There is no settings store on this system");
  return *seams.settings;
}

// As much of a stored text as a message can show, cut between characters.
std::string Shown(const std::string& text) {
  constexpr std::size_t kLongest = 60;  // bytes
  if (text.size() <= kLongest) return text;
  std::size_t end = kLongest;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end) + "...";
}

// The bare error would say neither which setting it is nor what stands there.
bool AssignOrReport(const EngineSetting& setting, clsTeskReader& reader, const std::string& text) {
  const auto error = Attempt([&] { setting.set(reader, LoadedValue(setting, text)); });
  if (!error) return true;
  // Not the text's fault: the object that takes the value is gone.
  if (error->Number() == kErrorObjectNotSet) throw *error;
  std::string message =
      LoadString("The saved setting %1 cannot be used: it takes %2, but its text is \"%3\".");
  message = Replace(Replace(message, "%1", setting.savedAs), "%2", LoadString(TakesText(setting)));
  ReportError(
      ErrorReport{.number = error->Number(),
                  .source = "clsTeskReader.LoadSettings",
                  .message = Replace(message, "%3", Shown(text)),
                  .title = LoadString("Application Error"),
                  .detail = LoadString("Choose the scanner's settings again in its setup, and save them.")});
  return false;
}

}  // namespace

std::span<const EngineSetting> EngineSettings() { return kSettings; }

const EngineSetting& SettingNamed(std::string_view property) {
  const auto* found = std::ranges::find(kSettings, property, &EngineSetting::name);
  if (found == std::end(kSettings)) throw InvalidCall();
  return *found;
}

std::string SettingText(const SettingValue& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) return BooleanText(*boolean);
  if (const auto* number = std::get_if<std::int32_t>(&value)) return NumberText(*number);
  if (const auto* number = std::get_if<float>(&value)) return NumberText(*number);
  return std::get<std::string>(value);
}

std::vector<StoredValue> SavedTexts(const clsTeskReader& reader) {
  std::vector<StoredValue> texts;
  for (const EngineSetting& setting : SavedSettings()) {
    texts.push_back({setting.savedAs, SettingText(setting.get(reader))});
  }
  return texts;
}

void AssignSaved(clsTeskReader& reader, const StoredValue& value) {
  for (const EngineSetting& setting : SavedSettings()) {
    if (setting.savedAs == value.name) return setting.set(reader, LoadedValue(setting, value.text));
  }
  throw InvalidCall();
}

bool clsTeskReader::LoadDefaults(teskReaderType type) {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.LoadDefaults", [&] {
    SetReaderType(type);
    const auto found = Deref(profiles_).Item(NumberText(type));
    const clsTeskReaderProfile& profile = Deref(found);
    for (const EngineSetting& setting : kSettings) {
      if (setting.proposed) setting.set(*this, setting.proposed(profile));
    }
    return true;
  });
}

bool clsTeskReader::SaveValue(teskReaderRegistryKey root, const std::string& subKey, const std::string& name,
                              std::string& text) {
  std::vector<StoredValue> values = {{name, text}};
  const bool saved = SaveValues(root, subKey, values);
  if (saved) text = values[0].text;
  return saved;
}

bool clsTeskReader::SaveValues(teskReaderRegistryKey root, const std::string& subKey,
                               std::vector<StoredValue>& values) {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.SaveValue", [&] {
    auto stored = values;
    // Kept, in the caller's text too: stores have been seen that cannot tell an empty value from none.
    for (StoredValue& value : stored) {
      if (value.text.empty()) value.text.assign(1, ' ');
    }
    const bool saved = Store(seams_).SaveValues(root, subKey, stored);
    if (saved) values = std::move(stored);
    return saved;
  });
}

std::optional<std::string> clsTeskReader::LoadValue(teskReaderRegistryKey root, const std::string& subKey,
                                                    const std::string& name, const std::string& missing) {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.LoadValue", [&] {
    return std::optional(Store(seams_).LoadValue(root, subKey, name).value_or(missing));
  });
}

bool clsTeskReader::SaveSettings(teskReaderRegistryKey root, const std::string& subKey) {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.SaveSettings", [&] {
    auto values = SavedTexts(*this);
    return SaveValues(root, subKey, values);
  });
}

bool clsTeskReader::LoadSettings(teskReaderRegistryKey root, const std::string& subKey) {
  const auto self = shared_from_this();
  const auto load = [&](const EngineSetting& setting) {
    const auto text = LoadValue(root, subKey, setting.savedAs, setting.missing);
    return text && AssignOrReport(setting, *this, *text);
  };
  return Guarded("clsTeskReader.LoadSettings", [&] {
    // The type first, since it re-types the imprinter that "Printer" then sets.
    return load(SettingNamed("ReaderType")) &&
           std::ranges::all_of(SavedSettings(),
                               [&](const EngineSetting& s) { return s.name == "ReaderType" || load(s); });
  });
}

}  // namespace tesk
