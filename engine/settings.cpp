// The engine's settings: defaults from the catalogue, and the values saved and loaded under a key of the
// settings store. Every value is stored as text.
#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

constexpr const char* kBoolean = "True, False or a number";
constexpr const char* kWhole16 = "a whole number from -32768 to 32767";
constexpr const char* kWhole32 = "a whole number from -2147483648 to 2147483647";
constexpr const char* kSingle = "a number within single precision";
constexpr const char* kText = "a text";

// One stored value: its name, the text that stands for a missing one, what it takes, and the two conversions.
struct Setting {
  const char* name;
  const char* missing;
  const char* takes;
  std::string (*text)(const clsTeskReader&);
  void (*assign)(clsTeskReader&, const std::string&);
};

using R = const clsTeskReader;
using W = clsTeskReader;
using T = const std::string;

template <auto kGet>
using ValueOf = decltype((std::declval<R&>().*kGet)());

template <auto kGet, auto kSet>
constexpr Setting Boolean(const char* name, const char* missing) {
  return {name, missing, kBoolean, [](R& r) { return BooleanText((r.*kGet)()); },
          [](W& r, T& t) { (r.*kSet)(TextToBoolean(t)); }};
}

template <auto kGet, auto kSet>
constexpr Setting Whole16(const char* name, const char* missing) {
  return {name, missing, kWhole16, [](R& r) { return NumberText((r.*kGet)()); },
          [](W& r, T& t) { (r.*kSet)(static_cast<ValueOf<kGet>>(ToInt16(Val(t)))); }};
}

template <auto kGet, auto kSet>
constexpr Setting Whole32(const char* name, const char* missing) {
  return {name, missing, kWhole32, [](R& r) { return NumberText((r.*kGet)()); },
          [](W& r, T& t) { (r.*kSet)(static_cast<ValueOf<kGet>>(ToInt32(Val(t)))); }};
}

// Compatibility: hosts rely on two numbers going through the Boolean rule, so every number but 0 becomes -1.
template <auto kGet, auto kSet>
constexpr Setting NumberReadAsBoolean(const char* name, const char* missing) {
  return {name, missing, kBoolean, [](R& r) { return NumberText((r.*kGet)()); },
          [](W& r, T& t) { (r.*kSet)(static_cast<ValueOf<kGet>>(TextToBoolean(t) ? -1 : 0)); }};
}

// In the order in which they are saved.
constexpr Setting kSettings[] = {
    Boolean<&W::ImagingEnabled, &W::SetImagingEnabled>("ImagingEnabled", "True"),
    Boolean<&W::ReaderGrade, &W::SetReaderGrade>("ReaderGrade", "False"),
    Boolean<&W::Barcode, &W::SetBarcode>("Barcode", "False"),
    Boolean<&W::Duplex, &W::SetDuplex>("Duplex", "False"),
    Boolean<&W::Feeder, &W::SetFeeder>("Feeder", "False"),
    Whole16<&W::FlowControl, &W::SetFlowControl>("FlowControl", "0"),
    Boolean<&W::Image, &W::SetImage>("Image", "False"),
    Whole16<&W::MarkCutOff, &W::SetMarkCutOff>("MarkCutOff", "0"),
    Whole16<&W::MarkDiscrimination, &W::SetMarkDiscrimination>("MarkDiscrimination", "0"),
    {"Printer", "False", kBoolean, [](R& r) { return BooleanText(Deref(r.Printer()).Enabled()); },
     [](W& r, T& t) { Deref(r.Printer()).SetEnabled(TextToBoolean(t)); }},
    Whole16<&W::ReaderType, &W::SetReaderType>("ScannerType", "0"),
    Whole16<&W::ErasureThreshold, &W::SetErasureThreshold>("ErasureThreshold", "0"),
    Whole16<&W::RecognitionThreshold, &W::SetRecognitionThreshold>("RecognitionThreshold", "0"),
    Whole16<&W::RecognitionThresholdMax, &W::SetRecognitionThresholdMax>("RecognitionThresholdMax", "0"),
    Boolean<&W::Rejecter, &W::SetRejecter>("Reject", "False"),
    Whole32<&W::BaudRate, &W::SetBaudRate>("ScannerBaud", "9600"),
    Whole16<&W::DataBits, &W::SetDataBits>("ScannerDataBits", "7"),
    {"ScannerParity", "N", kText, [](R& r) { return r.Parity(); }, [](W& r, T& t) { r.SetParity(t); }},
    Whole16<&W::Port, &W::SetPort>("ScannerPort", "1"),
    {"ScannerStopBits", "1", kSingle, [](R& r) { return NumberText(r.StopBits()); },
     [](W& r, T& t) { r.SetStopBits(ToSingle(Val(t))); }},
    Whole32<&W::SleepTime, &W::SetSleepTime>("SleepTime", "50"),
    Whole32<&W::TimeOut, &W::SetTimeOut>("TimeOut", "10"),
    Boolean<&W::Continuous, &W::SetContinuous>("Continuous", "False"),
    Boolean<&W::Windowing, &W::SetWindowing>("Windowing", "False"),
    NumberReadAsBoolean<&W::ColorDepth, &W::SetColorDepth>("ColorDepth", "0"),
    NumberReadAsBoolean<&W::Resolution, &W::SetResolution>("Resolution", "200"),
};

// Loading assigns the type first, since it re-types the imprinter that "Printer" then sets.
bool IsLoadedFirst(const Setting& setting) { return setting.name == std::string_view("ScannerType"); }

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
bool AssignOrReport(const Setting& setting, clsTeskReader& reader, const std::string& text) {
  const auto error = Attempt([&] { setting.assign(reader, text); });
  if (!error) return true;
  // Not the text's fault: the object that takes the value is gone.
  if (error->Number() == kErrorObjectNotSet) throw *error;
  std::string message =
      LoadString("The saved setting %1 cannot be used: it takes %2, but its text is \"%3\".");
  message = Replace(Replace(message, "%1", setting.name), "%2", LoadString(setting.takes));
  ReportError(
      ErrorReport{.number = error->Number(),
                  .source = "clsTeskReader.LoadSettings",
                  .message = Replace(message, "%3", Shown(text)),
                  .title = LoadString("Application Error"),
                  .detail = LoadString("Choose the scanner's settings again in its setup, and save them.")});
  return false;
}

}  // namespace

std::vector<std::string> SettingNames() {
  std::vector<std::string> names;
  for (const Setting& setting : kSettings) names.emplace_back(setting.name);
  return names;
}

std::vector<StoredValue> SettingTexts(const clsTeskReader& reader) {
  std::vector<StoredValue> texts;
  for (const Setting& setting : kSettings) texts.push_back({setting.name, setting.text(reader)});
  return texts;
}

void AssignSetting(clsTeskReader& reader, const StoredValue& value) {
  for (const Setting& setting : kSettings) {
    if (setting.name == value.name) return setting.assign(reader, value.text);
  }
  throw InvalidCall();
}

bool clsTeskReader::LoadDefaults(teskReaderType type) {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.LoadDefaults", [&] {
    SetReaderType(type);
    const auto found = Profile();
    const clsTeskReaderProfile& profile = Deref(found);
    SetImagingEnabled(profile.ImagingEnabled());
    SetReaderGrade(profile.ReaderGrade());
    SetBarcode(profile.Barcode());
    SetImage(profile.Imaging());
    SetDuplex(profile.Duplex());
    SetFeeder(profile.Feeder());
    SetFlowControl(profile.FlowControl());
    SetMarkCutOff(profile.MarkCutOff());
    SetMarkDiscrimination(profile.MarkDiscrimination());
    Deref(printer_).SetEnabled(profile.Printer());
    SetErasureThreshold(profile.ErasureThreshold());
    SetRecognitionThreshold(profile.RecognitionThreshold());
    SetRecognitionThresholdMax(profile.RecognitionThresholdMaximum());
    SetRejecter(profile.Rejecter());
    SetBaudRate(profile.BaudRate());
    SetDataBits(profile.DataBits());
    SetParity(profile.Parity());
    SetStopBits(profile.StopBits());
    SetSleepTime(profile.SleepTime());
    SetTimeOut(profile.TimeOut());
    SetColorDepth(profile.ColorDepth());
    SetResolution(profile.Resolution());
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
    auto values = SettingTexts(*this);
    return SaveValues(root, subKey, values);
  });
}

bool clsTeskReader::LoadSettings(teskReaderRegistryKey root, const std::string& subKey) {
  const auto self = shared_from_this();
  const auto load = [&](const Setting& setting) {
    const auto text = LoadValue(root, subKey, setting.name, setting.missing);
    return text && AssignOrReport(setting, *this, *text);
  };
  return Guarded("clsTeskReader.LoadSettings", [&] {
    return std::ranges::all_of(kSettings, [&](const Setting& s) { return !IsLoadedFirst(s) || load(s); }) &&
           std::ranges::all_of(kSettings, [&](const Setting& s) { return IsLoadedFirst(s) || load(s); });
  });
}

}  // namespace tesk
