// The engine's settings: defaults from the catalogue, and the values saved and loaded under a key of the
// settings store. Every value is stored as text.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

// One stored value: its name, the text that stands for a missing one, and the two conversions.
struct Setting {
  const char* name;
  const char* missing;
  std::string (*text)(const clsTeskReader&);
  void (*assign)(clsTeskReader&, const std::string&);
};

std::int16_t Number16(const std::string& text) { return ToInt16(Val(text)); }

std::int32_t Number32(const std::string& text) { return ToInt32(Val(text)); }

// Kept: hosts rely on these two values going through the Boolean rule, so every number but 0 becomes -1.
std::int16_t ThroughBoolean(const std::string& text) { return TextToBoolean(text) ? -1 : 0; }

using R = const clsTeskReader;
using W = clsTeskReader;
using T = const std::string;

// In the order in which they are saved.
constexpr Setting kSettings[] = {
    {"ImagingEnabled", "True", [](R& r) { return BooleanText(r.ImagingEnabled()); },
     [](W& r, T& t) { r.SetImagingEnabled(TextToBoolean(t)); }},
    {"ReaderGrade", "False", [](R& r) { return BooleanText(r.ReaderGrade()); },
     [](W& r, T& t) { r.SetReaderGrade(TextToBoolean(t)); }},
    {"Barcode", "False", [](R& r) { return BooleanText(r.Barcode()); },
     [](W& r, T& t) { r.SetBarcode(TextToBoolean(t)); }},
    {"Duplex", "False", [](R& r) { return BooleanText(r.Duplex()); },
     [](W& r, T& t) { r.SetDuplex(TextToBoolean(t)); }},
    {"Feeder", "False", [](R& r) { return BooleanText(r.Feeder()); },
     [](W& r, T& t) { r.SetFeeder(TextToBoolean(t)); }},
    {"FlowControl", "0", [](R& r) { return NumberText(r.FlowControl()); },
     [](W& r, T& t) { r.SetFlowControl(static_cast<teskReaderFlowControl>(Number16(t))); }},
    {"Image", "False", [](R& r) { return BooleanText(r.Image()); },
     [](W& r, T& t) { r.SetImage(TextToBoolean(t)); }},
    {"MarkCutOff", "0", [](R& r) { return NumberText(r.MarkCutOff()); },
     [](W& r, T& t) { r.SetMarkCutOff(Number16(t)); }},
    {"MarkDiscrimination", "0", [](R& r) { return NumberText(r.MarkDiscrimination()); },
     [](W& r, T& t) { r.SetMarkDiscrimination(Number16(t)); }},
    {"Printer", "False", [](R& r) { return BooleanText(Deref(r.Printer()).Enabled()); },
     [](W& r, T& t) { Deref(r.Printer()).SetEnabled(TextToBoolean(t)); }},
    {"ScannerType", "0", [](R& r) { return NumberText(r.ReaderType()); },
     [](W& r, T& t) { r.SetReaderType(static_cast<teskReaderType>(Number16(t))); }},
    {"ErasureThreshold", "0", [](R& r) { return NumberText(r.ErasureThreshold()); },
     [](W& r, T& t) { r.SetErasureThreshold(Number16(t)); }},
    {"RecognitionThreshold", "0", [](R& r) { return NumberText(r.RecognitionThreshold()); },
     [](W& r, T& t) { r.SetRecognitionThreshold(Number16(t)); }},
    {"RecognitionThresholdMax", "0", [](R& r) { return NumberText(r.RecognitionThresholdMax()); },
     [](W& r, T& t) { r.SetRecognitionThresholdMax(Number16(t)); }},
    {"Reject", "False", [](R& r) { return BooleanText(r.Rejecter()); },
     [](W& r, T& t) { r.SetRejecter(TextToBoolean(t)); }},
    {"ScannerBaud", "9600", [](R& r) { return NumberText(r.BaudRate()); },
     [](W& r, T& t) { r.SetBaudRate(static_cast<teskReaderBaudRate>(Number32(t))); }},
    {"ScannerDataBits", "7", [](R& r) { return NumberText(r.DataBits()); },
     [](W& r, T& t) { r.SetDataBits(static_cast<teskReaderDataBits>(Number16(t))); }},
    {"ScannerParity", "N", [](R& r) { return r.Parity(); }, [](W& r, T& t) { r.SetParity(t); }},
    {"ScannerPort", "1", [](R& r) { return NumberText(r.Port()); },
     [](W& r, T& t) { r.SetPort(Number16(t)); }},
    {"ScannerStopBits", "1", [](R& r) { return NumberText(r.StopBits()); },
     [](W& r, T& t) { r.SetStopBits(ToSingle(Val(t))); }},
    {"SleepTime", "50", [](R& r) { return NumberText(r.SleepTime()); },
     [](W& r, T& t) { r.SetSleepTime(Number32(t)); }},
    {"TimeOut", "10", [](R& r) { return NumberText(r.TimeOut()); },
     [](W& r, T& t) { r.SetTimeOut(Number32(t)); }},
    {"Continuous", "False", [](R& r) { return BooleanText(r.Continuous()); },
     [](W& r, T& t) { r.SetContinuous(TextToBoolean(t)); }},
    {"Windowing", "False", [](R& r) { return BooleanText(r.Windowing()); },
     [](W& r, T& t) { r.SetWindowing(TextToBoolean(t)); }},
    {"ColorDepth", "0", [](R& r) { return NumberText(r.ColorDepth()); },
     [](W& r, T& t) { r.SetColorDepth(static_cast<teskReaderColorDepth>(ThroughBoolean(t))); }},
    {"Resolution", "200", [](R& r) { return NumberText(r.Resolution()); },
     [](W& r, T& t) { r.SetResolution(ThroughBoolean(t)); }},
};

// Loading assigns the type first, since it re-types the imprinter that "Printer" then sets.
bool IsLoadedFirst(const Setting& setting) { return setting.name == std::string_view("ScannerType"); }

SettingsStore& Store(const EngineSeams& seams) {
  if (!seams.settings) throw RunTimeError(kErrorNotSupported, "There is no settings store on this system");
  return *seams.settings;
}

}  // namespace

std::vector<std::string> SettingNames() {
  std::vector<std::string> names;
  for (const Setting& setting : kSettings) names.emplace_back(setting.name);
  return names;
}

bool clsTeskReader::LoadDefaults(teskReaderType type) {
  return Guarded("clsTeskReader.LoadDefaults", [&] {
    SetReaderType(type);
    const auto found = Deref(profiles_).Item(NumberText(type));
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
  return Guarded("clsTeskReader.SaveValue", [&] {
    // Kept, in the caller's text too: stores have been seen that cannot tell an empty value from none.
    const std::string stored = text.empty() ? std::string(1, ' ') : text;
    const bool saved = Store(seams_).SaveValue(root, subKey, name, stored);
    if (saved) text = stored;
    return saved;
  });
}

std::optional<std::string> clsTeskReader::LoadValue(teskReaderRegistryKey root, const std::string& subKey,
                                                    const std::string& name, const std::string& missing) {
  return Guarded("clsTeskReader.LoadValue", [&] {
    return std::optional(Store(seams_).LoadValue(root, subKey, name).value_or(missing));
  });
}

bool clsTeskReader::SaveSettings(teskReaderRegistryKey root, const std::string& subKey) {
  return Guarded("clsTeskReader.SaveSettings", [&] {
    return std::ranges::all_of(kSettings, [&](const Setting& setting) {
      std::string text = setting.text(*this);
      return SaveValue(root, subKey, setting.name, text);
    });
  });
}

bool clsTeskReader::LoadSettings(teskReaderRegistryKey root, const std::string& subKey) {
  const auto load = [&](const Setting& setting) {
    const auto text = LoadValue(root, subKey, setting.name, setting.missing);
    if (text) setting.assign(*this, *text);
    return text.has_value();
  };
  return Guarded("clsTeskReader.LoadSettings", [&] {
    return std::ranges::all_of(kSettings, [&](const Setting& s) { return !IsLoadedFirst(s) || load(s); }) &&
           std::ranges::all_of(kSettings, [&](const Setting& s) { return IsLoadedFirst(s) || load(s); });
  });
}

}  // namespace tesk
