// The limits of settings as tables.
#include "cli/settingLimits.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/values.h"
#include "setup/optionControls.h"

namespace tesk::cli {
namespace {

using Profile = clsTeskReaderProfile;

struct Range {
  std::string_view property;
  std::int32_t least, most;
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
  throw UsageError(fmt::format("--set {}={}: {}", assignment.setting->name, assignment.text, why));
}

void CheckMember(const Assignment& assignment) {
  const EngineSetting& setting = *assignment.setting;
  if (!setting.members) return;
  const auto members = setting.members();
  const auto number = std::get<std::int32_t>(assignment.value);
  if (std::ranges::find(members, number, &Enumerator::value) != members.end()) return;
  Refuse(assignment, fmt::format("{} takes {}", setting.name, TakesText(setting)));
}

void CheckRange(const Assignment& assignment, std::int32_t least, std::int32_t most,
                const std::string& unit) {
  const auto number = std::get<std::int32_t>(assignment.value);
  if (number >= least && number <= most) return;
  Refuse(assignment, fmt::format("{} takes {} to {}{}", assignment.setting->name, least, most, unit));
}

void CheckChoice(const Assignment& assignment, const Choice& choice) {
  constexpr std::string_view kSpaceParity = " ";  // as hosts store it
  const std::string value = LowerCase(SettingText(assignment.value));
  const auto typed = DecimalNumber(assignment.text);
  // What was typed counts, since a number may have been rounded to one that is taken.
  const auto means = [&](const std::string& taken) {
    return typed ? typed == DecimalNumber(taken) : LowerCase(taken) == value;
  };
  if (value == kSpaceParity || std::ranges::any_of(SplitText(choice.values, ' '), means)) return;
  Refuse(assignment, fmt::format("{} takes one of {}", choice.property, choice.values));
}

void CheckModel(const Assignment& assignment, const clsTeskReader& engine, const Profile& profile) {
  const std::string_view name = assignment.setting->name;
  const std::int16_t darkest = profile.RecognitionThresholdMaximum();
  if (darkest > 0 && std::ranges::find(kOnScale, name) != std::end(kOnScale)) {
    const bool threshold = name == "RecognitionThreshold";
    CheckRange(assignment, threshold ? profile.RecognitionThresholdMinimum() : 0, darkest,
               ", the darkness scale of the " + engine.ReaderName());
  }
  for (const Option& option : kOptions) {
    if (option.property != name || (profile.*option.has)() || (profile.*option.offered)()) continue;
    if (std::get<bool>(assignment.value)) {
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

std::string ValuesText(const EngineSetting& setting) {
  const std::string limits = LimitsText(setting.name);
  const bool number = setting.kind != SettingKind::Boolean && setting.kind != SettingKind::Text;
  return number && !setting.members && !limits.empty() ? limits : std::string(TakesText(setting));
}

void CheckSaved(const Assignment& assignment, const clsTeskReader& engine) {
  CheckMember(assignment);
  for (const Range& range : kRanges) {
    if (range.property == assignment.setting->name) {
      CheckRange(assignment, range.least, range.most, std::string(range.unit));
    }
  }
  for (const Choice& choice : kChoices) {
    if (choice.property == assignment.setting->name) CheckChoice(assignment, choice);
  }
  const auto profile = engine.Profile();
  if (profile && IsReader(engine.ReaderType())) CheckModel(assignment, engine, *profile);
}

}  // namespace tesk::cli
