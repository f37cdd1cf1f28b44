// The table of settable properties and the conversions of their values.
#include "cli/engineProperties.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

#include <fmt/format.h>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/NearestNames.h"
#include "cli/optionValues.h"

namespace tesk::cli {
namespace {

constexpr Enumerator kBaudRates[] = {
    {"teskReaderBaudRate110", teskReaderBaudRate110},
    {"teskReaderBaudRate300", teskReaderBaudRate300},
    {"teskReaderBaudRate600", teskReaderBaudRate600},
    {"teskReaderBaudRate1200", teskReaderBaudRate1200},
    {"teskReaderBaudRate2400", teskReaderBaudRate2400},
    {"teskReaderBaudRate9600", teskReaderBaudRate9600},
    {"teskReaderBaudRate14400", teskReaderBaudRate14400},
    {"teskReaderBaudRate19200", teskReaderBaudRate19200},
    {"teskReaderBaudRate28800", teskReaderBaudRate28800},
    {"teskReaderBaudRate38400", teskReaderBaudRate38400},
    {"teskReaderBaudRate56000", teskReaderBaudRate56000},
    {"teskReaderBaudRate128000", teskReaderBaudRate128000},
    {"teskReaderBaudRate256000", teskReaderBaudRate256000},
};
constexpr Enumerator kDataBits[] = {
    {"teskReaderDataBits4", teskReaderDataBits4}, {"teskReaderDataBits5", teskReaderDataBits5},
    {"teskReaderDataBits6", teskReaderDataBits6}, {"teskReaderDataBits7", teskReaderDataBits7},
    {"teskReaderDataBits8", teskReaderDataBits8},
};
constexpr Enumerator kFlowControls[] = {
    {"teskReaderFlowControlNone", teskReaderFlowControlNone},
    {"teskReaderFlowControlXonXoff", teskReaderFlowControlXonXoff},
    {"teskReaderFlowControlHardware", teskReaderFlowControlHardware},
    {"teskReaderFlowControlBoth", teskReaderFlowControlBoth},
};
constexpr Enumerator kColorDepths[] = {
    {"teskReaderColorDepthMonochrome", teskReaderColorDepthMonochrome},
    {"teskReaderColorDepthGrayscale", teskReaderColorDepthGrayscale},
    {"teskReaderColorDepthColor", teskReaderColorDepthColor},
};
constexpr Enumerator kRecognitionModes[] = {
    {"teskRecognitionTypePage", teskRecognitionTypePage},
    {"teskRecognitionTypeWindow", teskRecognitionTypeWindow},
};

std::span<const Enumerator> ReaderTypes() {
  static const std::vector<Enumerator> enumerators = [] {
    std::vector<Enumerator> list;
    for (const auto& reader : ReaderTypeNames()) list.push_back({reader.enumerator, reader.type});
    return list;
  }();
  return enumerators;
}

template <class Enumeration>
std::span<const Enumerator> EnumeratorsOf();
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderBaudRate>() {
  return kBaudRates;
}
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderDataBits>() {
  return kDataBits;
}
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderFlowControl>() {
  return kFlowControls;
}
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderColorDepth>() {
  return kColorDepths;
}
template <>
std::span<const Enumerator> EnumeratorsOf<teskRecognitionType>() {
  return kRecognitionModes;
}
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderType>() {
  return ReaderTypes();
}

bool BooleanOf(const std::string& text) {
  const std::string folded = LowerCase(text);
  if (folded != "true" && folded != "false" && folded != "1" && folded != "0" && folded != "-1") {
    throw TypeMismatch();
  }
  return TextToBoolean(text);
}

template <auto kSetter>
void SetBoolean(clsTeskReader& engine, const std::string& text) {
  (engine.*kSetter)(BooleanOf(text));
}

void SetImprinter(clsTeskReader& engine, const std::string& text) {
  Deref(engine.Printer()).SetEnabled(BooleanOf(text));
}

template <auto kSetter>
void SetInt16(clsTeskReader& engine, const std::string& text) {
  (engine.*kSetter)(static_cast<std::int16_t>(ParseWholeNumber("", text, INT16_MIN, INT16_MAX)));
}

template <auto kSetter>
void SetInt32(clsTeskReader& engine, const std::string& text) {
  (engine.*kSetter)(ParseWholeNumber("", text, INT32_MIN, INT32_MAX));
}

template <auto kSetter>
void SetSingle(clsTeskReader& engine, const std::string& text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) throw TypeMismatch();
  (engine.*kSetter)(ToSingle(value));
}

template <auto kSetter>
void SetText(clsTeskReader& engine, const std::string& text) {
  (engine.*kSetter)(text);
}

template <auto kSetter, class Enumeration>
void SetEnumeration(clsTeskReader& engine, const std::string& text) {
  (engine.*kSetter)(static_cast<Enumeration>(ParseEnumeration("", text, EnumeratorsOf<Enumeration>())));
}

constexpr std::string_view kBoolean = "True or False";
constexpr std::string_view kInt16 = "a whole number from -32768 to 32767";
constexpr std::string_view kInt32 = "a whole number from -2147483648 to 2147483647";
constexpr std::string_view kSingle = "a number with a decimal point";
constexpr std::string_view kText = "a text";

using Engine = clsTeskReader;

constexpr EngineProperty kProperties[] = {
    {"ImagingEnabled", "the scanner takes pictures of the sheets", kBoolean,
     SetBoolean<&Engine::SetImagingEnabled>},
    {"ReaderGrade", "the scanner grades by its own scoring option", kBoolean,
     SetBoolean<&Engine::SetReaderGrade>},
    {"Duplex", "the scanner reads both sides", kBoolean, SetBoolean<&Engine::SetDuplex>},
    {"DuplexForm", "the sheets have a back to read; --side2 sets it", kBoolean,
     SetBoolean<&Engine::SetDuplexForm>},
    {"Barcode", "barcodes are read; --barcode sets it", kBoolean, SetBoolean<&Engine::SetBarcode>},
    {"Image", "pictures of the sheets are wanted", kBoolean, SetBoolean<&Engine::SetImage>},
    {"Feeder", "sheets come from a hopper, not one by one by hand", kBoolean, SetBoolean<&Engine::SetFeeder>},
    {"Rejecter", "the scanner has a reject stacker", kBoolean, SetBoolean<&Engine::SetRejecter>},
    {"Windowing", "the form's read windows are in use", kBoolean, SetBoolean<&Engine::SetWindowing>},
    {"Continuous", "the scanner feeds without waiting for the program", kBoolean,
     SetBoolean<&Engine::SetContinuous>},
    {"BaudRate", "bits per second on the line",
     "a bit rate: 110 300 600 1200 2400 9600 14400 19200 28800 38400 56000 128000 256000",
     SetEnumeration<&Engine::SetBaudRate, teskReaderBaudRate>, EnumeratorsOf<teskReaderBaudRate>},
    {"DataBits", "data bits of a character on the line", "4 to 8",
     SetEnumeration<&Engine::SetDataBits, teskReaderDataBits>, EnumeratorsOf<teskReaderDataBits>},
    {"FlowControl", "who may hold the line up", "0 none, 1 XON/XOFF, 2 hardware, 3 both, or its name",
     SetEnumeration<&Engine::SetFlowControl, teskReaderFlowControl>, EnumeratorsOf<teskReaderFlowControl>},
    {"Parity", "parity of a character on the line", "one letter: N E O M S", SetText<&Engine::SetParity>},
    {"StopBits", "stop bits of a character on the line", kSingle, SetSingle<&Engine::SetStopBits>},
    {"Port", "the serial port; --port P also takes device paths", kInt16, SetInt16<&Engine::SetPort>},
    {"SleepTime", "pause between two looks at the line, in milliseconds", kInt32,
     SetInt32<&Engine::SetSleepTime>},
    {"TimeOut", "how long an answer is awaited, in seconds", kInt32, SetInt32<&Engine::SetTimeOut>},
    {"ColorDepth", "of the pictures", "0 monochrome, 1 grayscale, 2 color, or its name",
     SetEnumeration<&Engine::SetColorDepth, teskReaderColorDepth>, EnumeratorsOf<teskReaderColorDepth>},
    {"Resolution", "of the pictures, in dots per inch", kInt16, SetInt16<&Engine::SetResolution>},
    {"MarkCutOff", "marks lighter than this are none", kInt16, SetInt16<&Engine::SetMarkCutOff>},
    {"MarkDiscrimination", "how much darker a mark is than its neighbours", kInt16,
     SetInt16<&Engine::SetMarkDiscrimination>},
    {"RecognitionThreshold", "from which darkness on a mark counts", kInt16,
     SetInt16<&Engine::SetRecognitionThreshold>},
    {"ErasureThreshold", "up to which darkness a mark counts as erased", kInt16,
     SetInt16<&Engine::SetErasureThreshold>},
    {"RecognitionThresholdMax", "the top of the darkness scale", kInt16,
     SetInt16<&Engine::SetRecognitionThresholdMax>},
    {"RecognitionMode", "whole pages, or the windows of --window", "1 page, 2 window, or its name",
     SetEnumeration<&Engine::SetRecognitionMode, teskRecognitionType>, EnumeratorsOf<teskRecognitionType>},
    {"ReaderType", "the scanner model; --reader also takes names",
     "a number of the list of models (teskread readers)",
     SetEnumeration<&Engine::SetReaderType, teskReaderType>, EnumeratorsOf<teskReaderType>},
    {"CancelScan", "ends a scan that runs", kBoolean, SetBoolean<&Engine::SetCancelScan>},
    {"HelpFile", "help file of the setup dialog", kText, SetText<&Engine::SetHelpFile>},
    {"Side1Image", "file name of the front's picture", kText, SetText<&Engine::SetSide1Image>},
    {"Side2Image", "file name of the back's picture", kText, SetText<&Engine::SetSide2Image>},
    {"Side1Coordinates", "where items lie in the front's picture", kText,
     SetText<&Engine::SetSide1Coordinates>},
    {"Side2Coordinates", "where items lie in the back's picture", kText,
     SetText<&Engine::SetSide2Coordinates>},
    {"Printer", "the imprinter is fitted and switched on; --imprint sets it", kBoolean, SetImprinter},
};

std::string NearestPropertiesText(std::string_view name) {
  std::vector<std::string_view> names;
  for (const auto& property : kProperties) names.push_back(property.name);
  auto nearest = NearestNames(name, names);
  if (nearest.empty()) nearest.assign(names.begin(), names.end());
  return AlternativesText(nearest);
}

[[noreturn]] void RefuseValue(const Assignment& assignment) {
  throw UsageError(fmt::format("--set {0}={1}: {0} takes {2}", assignment.property->name, assignment.value,
                               assignment.property->takes));
}

}  // namespace

std::span<const EngineProperty> EngineProperties() { return kProperties; }

const EngineProperty* FindEngineProperty(std::string_view name) {
  const std::string folded = LowerCase(name);
  const auto found = std::find_if(std::begin(kProperties), std::end(kProperties),
                                  [&](const EngineProperty& p) { return LowerCase(p.name) == folded; });
  return found == std::end(kProperties) ? nullptr : found;
}

Assignment ParseAssignment(const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::string name = text.substr(0, equals);
  const EngineProperty* property = FindEngineProperty(name);
  if (!property) {
    throw UsageError(
        fmt::format("--set {}: the engine has no property \"{}\" that can be set|did you mean {}?|\"teskread "
                    "help settings\" lists what can be set",
                    text, name, NearestPropertiesText(name)));
  }
  if (equals == std::string::npos) {
    throw UsageError(fmt::format("--set {}: write NAME=VALUE; {} takes {}", text, name, property->takes));
  }
  return {property, text.substr(equals + 1)};
}

void Apply(const Assignment& assignment, clsTeskReader& engine) {
  try {
    assignment.property->set(engine, assignment.value);
  } catch (const RunTimeError&) {
    RefuseValue(assignment);
  } catch (const UsageError&) {
    RefuseValue(assignment);
  }
}

}  // namespace tesk::cli
