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

template <auto kSetter>
void SetBoolean(clsTeskReader& engine, const std::string& text) {
  const std::string folded = LowerCase(text);
  if (folded != "true" && folded != "false" && folded != "1" && folded != "0" && folded != "-1") {
    throw TypeMismatch();
  }
  (engine.*kSetter)(TextToBoolean(text));
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
    {"ImagingEnabled", kBoolean, SetBoolean<&Engine::SetImagingEnabled>},
    {"ReaderGrade", kBoolean, SetBoolean<&Engine::SetReaderGrade>},
    {"Duplex", kBoolean, SetBoolean<&Engine::SetDuplex>},
    {"DuplexForm", kBoolean, SetBoolean<&Engine::SetDuplexForm>},
    {"Barcode", kBoolean, SetBoolean<&Engine::SetBarcode>},
    {"Image", kBoolean, SetBoolean<&Engine::SetImage>},
    {"Feeder", kBoolean, SetBoolean<&Engine::SetFeeder>},
    {"Rejecter", kBoolean, SetBoolean<&Engine::SetRejecter>},
    {"Windowing", kBoolean, SetBoolean<&Engine::SetWindowing>},
    {"Continuous", kBoolean, SetBoolean<&Engine::SetContinuous>},
    {"BaudRate", "a bit rate: 110 300 600 1200 2400 9600 14400 19200 28800 38400 56000 128000 256000",
     SetEnumeration<&Engine::SetBaudRate, teskReaderBaudRate>},
    {"DataBits", "4 to 8", SetEnumeration<&Engine::SetDataBits, teskReaderDataBits>},
    {"FlowControl", "0 none, 1 XON/XOFF, 2 hardware, 3 both, or the enumerator",
     SetEnumeration<&Engine::SetFlowControl, teskReaderFlowControl>},
    {"Parity", "one letter: N E O M S", SetText<&Engine::SetParity>},
    {"StopBits", kSingle, SetSingle<&Engine::SetStopBits>},
    {"Port", kInt16, SetInt16<&Engine::SetPort>},
    {"SleepTime", kInt32, SetInt32<&Engine::SetSleepTime>},
    {"TimeOut", kInt32, SetInt32<&Engine::SetTimeOut>},
    {"ColorDepth", "0 monochrome, 1 grayscale, 2 color, or the enumerator",
     SetEnumeration<&Engine::SetColorDepth, teskReaderColorDepth>},
    {"Resolution", kInt16, SetInt16<&Engine::SetResolution>},
    {"MarkCutOff", kInt16, SetInt16<&Engine::SetMarkCutOff>},
    {"MarkDiscrimination", kInt16, SetInt16<&Engine::SetMarkDiscrimination>},
    {"RecognitionThreshold", kInt16, SetInt16<&Engine::SetRecognitionThreshold>},
    {"ErasureThreshold", kInt16, SetInt16<&Engine::SetErasureThreshold>},
    {"RecognitionThresholdMax", kInt16, SetInt16<&Engine::SetRecognitionThresholdMax>},
    {"RecognitionMode", "1 page, 2 window, or the enumerator",
     SetEnumeration<&Engine::SetRecognitionMode, teskRecognitionType>},
    {"ReaderType", "a reader's number or enumerator", SetEnumeration<&Engine::SetReaderType, teskReaderType>},
    {"CancelScan", kBoolean, SetBoolean<&Engine::SetCancelScan>},
    {"HelpFile", kText, SetText<&Engine::SetHelpFile>},
    {"Side1Image", kText, SetText<&Engine::SetSide1Image>},
    {"Side2Image", kText, SetText<&Engine::SetSide2Image>},
    {"Side1Coordinates", kText, SetText<&Engine::SetSide1Coordinates>},
    {"Side2Coordinates", kText, SetText<&Engine::SetSide2Coordinates>},
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
        fmt::format("--set {}: the engine has no property \"{}\" that can be set|did you mean {}?", text,
                    name, NearestPropertiesText(name)));
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
