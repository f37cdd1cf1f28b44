// The limits of settings as tables.
#include "cli/settingLimits.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/optionValues.h"
#include "setup/optionControls.h"

namespace tesk::cli {
namespace {

using Profile = clsTeskReaderProfile;

struct Range {
  std::string_view property;
  double least, most;
  std::string_view unit;
};

constexpr Range kRanges[] = {
    {"Port", 1, 16, ""},
    {"TimeOut", kLeastTimeOut, kMostTimeOut, " seconds"},
    {"SleepTime", 0, kMostPause, " milliseconds"},
    {"ReaderType", 1, kLastReaderType, ""},
    {"Resolution", 50, 1200, " dots per inch"},
};

struct Choice {
  std::string_view property;
  std::string_view values;  // parted by blanks
};

constexpr Choice kChoices[] = {
    {"StopBits", "1 1.5 2"},
    {"Parity", "N E O M S"},
};

// The darkness scale of the model bounds these.
constexpr std::string_view kOnScale[] = {"RecognitionThreshold", "ErasureThreshold", "MarkCutOff",
                                         "MarkDiscrimination"};

struct Option {
  std::string_view property;
  bool (Profile::*has)() const;
  bool (Profile::*offered)() const;
  std::string_view what;
};

constexpr Option kOptions[] = {
    {"Duplex", &Profile::Duplex, &Profile::DuplexEnabled, "reads one side only"},
    {"Barcode", &Profile::Barcode, &Profile::BarcodeEnabled, "reads no barcodes"},
    {"Feeder", &Profile::Feeder, &Profile::FeederEnabled, "has no hopper"},
    {"Rejecter", &Profile::Rejecter, &Profile::RejecterEnabled, "has no reject stacker"},
    {"Printer", &Profile::Printer, &Profile::PrinterEnabled, "has no imprinter"},
    {"Windowing", &Profile::Windowing, &Profile::WindowingEnabled, "reads no windows"},
    {"ReaderGrade", &Profile::ReaderGrade, &Profile::ReaderGradeEnabled, "has no scoring option"},
    {"Continuous", &Profile::Continuous, &Profile::ContinuousEnabled, "does not feed continuously"},
    {"Image", &Profile::Imaging, &Profile::ImagingEnabled, "takes no pictures"},
};

[[noreturn]] void Refuse(const Assignment& assignment, const std::string& why) {
  throw UsageError(fmt::format("--set {}={}: {}", assignment.property->name, assignment.value, why));
}

std::optional<double> NumberOf(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

// Of a member the value. Booleans are no numbers, and were checked when they were converted.
std::optional<double> NumberOf(const Assignment& assignment) {
  const auto members = assignment.property->members;
  return members ? ParseEnumeration("", assignment.value, members()) : NumberOf(assignment.value);
}

void CheckMember(const Assignment& assignment) {
  const auto& [property, value] = assignment;
  if (!property->members) return;
  const std::int32_t number = ParseEnumeration("", value, property->members());
  if (std::ranges::find(property->members(), number, &Enumerator::value) != property->members().end()) return;
  Refuse(assignment, fmt::format("{} takes {}", property->name, property->takes));
}

void CheckRange(const Assignment& assignment, double least, double most, const std::string& unit) {
  const auto number = NumberOf(assignment);
  if (!number || (*number >= least && *number <= most)) return;
  Refuse(assignment, fmt::format("{} takes {} to {}{}", assignment.property->name, least, most, unit));
}

void CheckChoice(const Assignment& assignment, const Choice& choice) {
  constexpr std::string_view kSpaceParity = " ";  // as hosts store it
  const std::string& text = assignment.value;
  const auto means = [&](const std::string& value) {
    const auto number = NumberOf(value);
    return LowerCase(value) == LowerCase(text) || (number && number == NumberOf(text));
  };
  if (text == kSpaceParity || std::ranges::any_of(SplitText(choice.values, ' '), means)) return;
  Refuse(assignment, fmt::format("{} takes one of {}", choice.property, choice.values));
}

void CheckModel(const Assignment& assignment, const clsTeskReader& engine, const Profile& profile) {
  const std::string_view name = assignment.property->name;
  const std::int16_t darkest = profile.RecognitionThresholdMaximum();
  if (darkest > 0 && std::ranges::find(kOnScale, name) != std::end(kOnScale)) {
    const bool threshold = name == "RecognitionThreshold";
    CheckRange(assignment, threshold ? profile.RecognitionThresholdMinimum() : 0, darkest,
               ", the darkness scale of the " + engine.ReaderName());
  }
  for (const Option& option : kOptions) {
    if (option.property != name || (profile.*option.has)() || (profile.*option.offered)()) continue;
    if (TextToBoolean(assignment.value)) {
      Refuse(assignment, fmt::format("the {} {}", engine.ReaderName(), option.what));
    }
  }
}

}  // namespace

std::string LimitsText(std::string_view property) {
  for (const Range& range : kRanges) {
    if (range.property == property) return fmt::format("{} to {}{}", range.least, range.most, range.unit);
  }
  for (const Choice& choice : kChoices) {
    if (choice.property == property) return fmt::format("one of {}", choice.values);
  }
  const bool onScale = std::ranges::find(kOnScale, property) != std::end(kOnScale);
  return onScale ? "a darkness on the model's scale, 0 to RecognitionThresholdMax" : "";
}

void CheckSaved(const Assignment& assignment, const clsTeskReader& engine) {
  CheckMember(assignment);
  for (const Range& range : kRanges) {
    if (range.property == assignment.property->name) {
      CheckRange(assignment, range.least, range.most, std::string(range.unit));
    }
  }
  for (const Choice& choice : kChoices) {
    if (choice.property == assignment.property->name) CheckChoice(assignment, choice);
  }
  const auto profile = engine.Profile();
  if (profile && IsReader(engine.ReaderType())) CheckModel(assignment, engine, *profile);
}

}  // namespace tesk::cli
