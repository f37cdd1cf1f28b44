// The understanding of scan options.
#include "cli/scan/ScanPlan.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/ReaderChoice.h"
#include "cli/storedSettings.h"
#include "platform/SettingsStores.h"

namespace tesk::cli {
namespace {

template <class Value>
struct Choice {
  std::string_view name;
  Value value;
};

constexpr Choice<Disposal> kDisposals[] = {
    {"eject", Disposal::Eject}, {"reject", Disposal::Reject}, {"none", Disposal::None}};
constexpr Choice<SheetFormat> kFormats[] = {
    {"ndjson", SheetFormat::Ndjson}, {"csv", SheetFormat::Csv}, {"grid", SheetFormat::Grid}};

template <class Value, std::size_t kCount>
Value ParseChoice(std::string_view option, const std::string& text, const Choice<Value> (&choices)[kCount]) {
  std::string names;
  for (const auto& choice : choices) {
    if (choice.name == LowerCase(text)) return choice.value;
    names += fmt::format("{}{}", names.empty() ? "" : ", ", choice.name);
  }
  throw UsageError(fmt::format("{}: \"{}\" is none of {}", option, text, names));
}

// A control character would end the command that carries the text to the imprinter.
void CheckImprints(const std::vector<std::string>& imprints) {
  constexpr std::size_t kMost = 3;
  if (imprints.size() > kMost) throw UsageError("--imprint: may be given up to 3 times");
  for (const std::string& text : imprints) {
    if (std::any_of(text.begin(), text.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; })) {
      throw UsageError("--imprint: takes a text without control characters");
    }
  }
}

void ParseSides(const ScanOptions& options, ScanPlan& plan) {
  if (!options.side1.empty()) plan.side1 = ParseSheetSizes("--side1", options.side1);
  if (options.side2.empty()) return;
  if (!plan.side1) throw UsageError("--side2: goes with --side1, which gives the sheets' front");
  plan.side2 = ParseSheetSizes("--side2", options.side2);
  if (plan.side1->rows.size() != plan.side2->rows.size()) {
    throw UsageError(
        fmt::format("--side2: takes one size per sheet definition, as many as --side1: {}, not {}",
                    plan.side1->rows.size(), plan.side2->rows.size()));
  }
}

void ParseImprint(const ScanOptions& options, ScanPlan& plan) {
  CheckImprints(options.imprints);
  plan.imprints = options.imprints;
  if (options.imprintPosition.empty()) return;
  if (plan.imprints.empty())
    throw UsageError("--imprint-position: goes with --imprint, which gives the text");
  plan.imprintPosition = static_cast<std::int16_t>(
      ParseWholeNumber("--imprint-position", options.imprintPosition, INT16_MIN, INT16_MAX));
}

// The reader that the settings under --key are for.
teskReaderType SavedReader(const ScanPlan& plan) {
  if (!plan.key) throw UsageError("--reader: is required, or --key with the settings saved for one");
  const auto stored =
      platform::CreateSettingsStore()->LoadValue(plan.key->root, plan.key->path, "ScannerType");
  if (!stored || Val(*stored) == 0) {
    throw CommandFailure(fmt::format("--key: no settings for a reader are saved under {}", plan.key->path));
  }
  const double number = Val(*stored);
  if (number < 1 || number >= static_cast<double>(ReaderTypeNames().size())) {
    throw CommandFailure(
        fmt::format("--key: the settings under {} are for a reader \"{}\", which is none|\"{}\" "
                    "begins anew with a model's defaults",
                    plan.key->path, *stored,
                    "teskread settings save --key " + ShellWord(plan.key->path) + " --reader R"));
  }
  return static_cast<teskReaderType>(ToInt16(number));
}

// The device that the settings under --key name; empty where the port is said otherwise.
std::string SavedDevice(const ScanPlan& plan) {
  return plan.key && !plan.Assigns("Port") ? StoredDevice(*plan.key) : "";
}

}  // namespace

bool ScanPlan::Assigns(std::string_view property) const {
  return std::any_of(assignments.begin(), assignments.end(),
                     [&](const Assignment& assignment) { return assignment.setting->name == property; });
}

ScanPlan ParseScanOptions(const ScanOptions& options) {
  ScanPlan plan;
  if (!options.key.key.empty()) plan.key = ParseSettingsKey(options.key);
  plan.reader = options.reader.empty() ? SavedReader(plan) : ParseReader(options.reader);
  RequireDriver(plan.reader);
  if (LowerCase(options.port) != "sim") RequireSystem(plan.reader);
  for (const auto& text : options.assignments) plan.assignments.push_back(ParseAssignment(text));
  const std::string port = options.port.empty() ? SavedDevice(plan) : options.port;
  if (!port.empty()) plan.port = ParsePort(port);
  ParseSides(options, plan);
  for (const auto& text : options.windows) plan.windows.push_back(ParseWindow(text));
  for (const auto& text : options.barcodes) plan.barcodes.push_back(ParseBarcode(text));
  ParseImprint(options, plan);
  if (!options.maxSheets.empty()) {
    plan.maxSheets = ParseWholeNumber("--max-sheets", options.maxSheets, INT32_MIN, INT32_MAX);
  }
  if (!options.dispose.empty()) plan.disposal = ParseChoice("--dispose", options.dispose, kDisposals);
  if (!options.format.empty()) plan.format = ParseChoice("--format", options.format, kFormats);
  plan.output = options.output;
  plan.append = options.append;
  plan.strict = options.strict;
  plan.summary = options.summary;
  plan.trace = options.trace;
  return plan;
}

}  // namespace tesk::cli
