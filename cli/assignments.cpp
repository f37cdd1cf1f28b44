// What operators are told of the settings, and the conversions of their texts.
#include "cli/assignments.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/NearestNames.h"
#include "cli/values.h"

namespace tesk::cli {
namespace {

constexpr SettingWords kWords[] = {
    {"ImagingEnabled", "the scanner takes pictures of the sheets"},
    {"ReaderGrade", "the scanner grades by its own scoring option"},
    {"Duplex", "the scanner reads both sides"},
    {"DuplexForm", "the sheets have a back to read; --side2 sets it"},
    {"Barcode", "barcodes are read; --barcode sets it"},
    {"Image", "pictures of the sheets are wanted"},
    {"Feeder", "sheets come from a hopper, not one by one by hand"},
    {"Rejecter", "the scanner has a reject stacker"},
    {"Windowing", "the form's read windows are in use"},
    {"Continuous", "the scanner feeds without waiting for the program"},
    {"BaudRate", "bits per second on the line",
     "a bit rate: 110 300 600 1200 2400 9600 14400 19200 28800 38400 56000 128000 256000"},
    {"DataBits", "data bits of a character on the line", "4 to 8"},
    {"FlowControl", "who may hold the line up", "0 none, 1 XON/XOFF, 2 hardware, 3 both, or its name"},
    {"Parity", "parity of a character on the line", "one letter: N E O M S"},
    {"StopBits", "stop bits of a character on the line"},
    {"Port", "the serial port; --port P also takes device paths"},
    {"SleepTime", "pause between two looks at the line, in milliseconds"},
    {"TimeOut", "how long an answer is awaited, in seconds"},
    {"ColorDepth", "of the pictures", "0 monochrome, 1 grayscale, 2 color, or its name"},
    {"Resolution", "of the pictures, in dots per inch"},
    {"MarkCutOff", "marks lighter than this are none"},
    {"MarkDiscrimination", "how much darker a mark is than its neighbours"},
    {"RecognitionThreshold", "from which darkness on a mark counts"},
    {"ErasureThreshold", "up to which darkness a mark counts as erased"},
    {"RecognitionThresholdMax", "the top of the darkness scale"},
    {"RecognitionMode", "whole pages, or the windows of --window", "1 page, 2 window, or its name"},
    {"ReaderType", "the scanner model; --reader also takes names",
     "a number of the list of models (teskread readers)"},
    {"CancelScan", "ends a scan that runs"},
    {"HelpFile", "help file of the setup dialog"},
    {"Side1Image", "file name of the front's picture"},
    {"Side2Image", "file name of the back's picture"},
    {"Side1Coordinates", "where items lie in the front's picture"},
    {"Side2Coordinates", "where items lie in the back's picture"},
    {"Printer", "the imprinter is fitted and switched on; --imprint sets it"},
};

std::optional<SettingValue> BooleanOf(const std::string& text) {
  constexpr std::string_view kTaken[] = {"true", "false", "1", "0", "-1"};
  if (std::ranges::find(kTaken, LowerCase(text)) == std::end(kTaken)) return std::nullopt;
  return TextToBoolean(text);
}

std::optional<SettingValue> WholeOf(const std::string& text, std::int32_t least, std::int32_t most) {
  const auto number = WholeNumber(text, least, most);
  return number ? std::optional<SettingValue>(*number) : std::nullopt;
}

std::optional<SettingValue> SingleOf(const std::string& text) {
  const auto number = DecimalNumber(text);
  if (!number || !(std::abs(*number) <= FLT_MAX)) return std::nullopt;
  return static_cast<float>(*number);
}

std::optional<SettingValue> MemberOf(std::span<const Enumerator> members, const std::string& text) {
  const auto* found = FindEnumerator(members, text);
  return found ? found->value : WholeOf(text, INT32_MIN, INT32_MAX);
}

std::string NearestSettingsText(std::string_view name) {
  std::vector<std::string_view> names;
  for (const SettingWords& words : kWords) names.push_back(words.name);
  auto nearest = NearestNames(name, names);
  if (nearest.empty()) nearest.assign(names.begin(), names.end());
  return AlternativesText(nearest);
}

const EngineSetting* FindSetting(const std::string& name) {
  const auto found = std::ranges::find(EngineSettings(), LowerCase(name),
                                       [](const EngineSetting& setting) { return LowerCase(setting.name); });
  return found == EngineSettings().end() ? nullptr : &*found;
}

}  // namespace

std::span<const SettingWords> WordsOfSettings() { return kWords; }

std::string_view TakesText(const EngineSetting& setting) {
  const auto* words = std::ranges::find(kWords, setting.name, &SettingWords::name);
  if (words != std::end(kWords) && !words->takes.empty()) return words->takes;
  switch (setting.kind) {
    case SettingKind::Boolean:
      return "True or False";
    case SettingKind::Whole16:
      return "a whole number from -32768 to 32767";
    case SettingKind::Whole32:
      return "a whole number from -2147483648 to 2147483647";
    case SettingKind::Single:
      return "a number with a decimal point";
    case SettingKind::Text:
      break;
  }
  return "a text";
}

std::optional<SettingValue> ValueOf(const EngineSetting& setting, const std::string& text) {
  if (setting.members) return MemberOf(setting.members(), text);
  switch (setting.kind) {
    case SettingKind::Boolean:
      return BooleanOf(text);
    case SettingKind::Whole16:
      return WholeOf(text, INT16_MIN, INT16_MAX);
    case SettingKind::Whole32:
      return WholeOf(text, INT32_MIN, INT32_MAX);
    case SettingKind::Single:
      return SingleOf(text);
    case SettingKind::Text:
      break;
  }
  return text;
}

Assignment ParseAssignment(const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::string name = text.substr(0, equals);
  const EngineSetting* setting = FindSetting(name);
  if (!setting) {
    throw UsageError(
        fmt::format("--set {}: the engine has no property \"{}\" that can be set|did you mean {}?|\"teskread "
                    "help settings\" lists what can be set",
                    text, name, NearestSettingsText(name)));
  }
  if (equals == std::string::npos) {
    throw UsageError(fmt::format("--set {}: write NAME=VALUE; {} takes {}", text, name, TakesText(*setting)));
  }
  const std::string value = text.substr(equals + 1);
  if (const auto taken = ValueOf(*setting, value)) return {setting, *taken, value};
  throw UsageError(fmt::format("--set {0}={1}: {0} takes {2}", setting->name, value, TakesText(*setting)));
}

}  // namespace tesk::cli
