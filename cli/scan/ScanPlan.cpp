#include "cli/scan/ScanPlan.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/ReaderChoice.h"
#include "cli/options.h"
#include "cli/storedSettings.h"
#include "platform/SettingsStores.h"

namespace tesk::cli {
namespace {

// A control character would end the command that carries the text to the imprinter.
std::string ReadImprint(std::string_view option, const std::string& text) {
  const auto controls = [](unsigned char c) { return c < 32 || c == 127; };
  if (std::ranges::none_of(text, controls)) return text;
  throw UsageError(fmt::format("{}: takes a text without control characters", option));
}

void AddReaderOptions(CLI::App& command, ScanPlan& plan) {
  AddOption(
      command,
      {"--reader", "R", "the scanner model: its number or name in the list of models (teskread readers)",
       "--reader \"Scantron Scanmark 5500\""},
      plan.reader, ParseReader);
  AddSettingsKeyOptions(command, plan.key, false);
  AddOption(command,
            {"--port", "P", "1 to 16, a device path, or sim: a simulated scanner of the chosen model",
             "--port /dev/ttyUSB0"},
            plan.port, [&plan](std::string_view option, const std::string& text) {
              // What no port would help comes before what is wrong with this one.
              if (LowerCase(text) != "sim") RequireSystem(plan.reader);
              return ParsePort(option, text);
            });
  AddOption(
      command,
      {"--set", "NAME=VALUE", "sets a value by its name (teskread help settings lists them); may be repeated",
       "--set TimeOut=3 --set Duplex=False"},
      plan.assignments, ParseAssignment);
}

void AddFormOptions(CLI::App& command, ScanPlan& plan) {
  AddOption(command,
            {"--side1", "RxC[,RxC...]",
             "rows and columns of the sheets' front, one size per sheet definition", "--side1 50x48"},
            plan.side1, ParseSheetSizes);
  AddOption(command,
            {"--side2", "RxC[,RxC...]", "the same of the back, as many sizes as --side1", "--side2 50x48"},
            plan.side2, ParseSheetSizes);
  AddOption(command,
            {"--window", "FIELDS",
             "adds a read window and reads windows instead of pages: StartRow,NumRows,RowGap,"
             "StartCol,NumCols,ColGap,Page,Orientation; may be repeated",
             "--window 1,10,1,1,5,1,1,0"},
            plan.windows, ParseWindow);
  AddOption(command,
            {"--barcode", "FIELDS",
             "adds a barcode definition and switches barcodes on: Page,Field,Distance,Length,"
             "Symbology,Orientation; may be repeated",
             "--barcode 1,1,30,8,teskBarcodeTypeCode39,1"},
            plan.barcodes, ParseBarcode);
  AddOption(command,
            {"--imprint", "TEXT", "a text to print on every sheet; up to 3 times", "--imprint \"Room 7\""},
            plan.imprints, ReadImprint);
  AddOption(command,
            {"--imprint-position", "N", "where the imprint stands, in the model's own units",
             "--imprint-position 12"},
            plan.imprintPosition, WholeFrom<std::int16_t>(INT16_MIN, INT16_MAX));
}

void AddBatchOptions(CLI::App& command, ScanPlan& plan) {
  AddOption(command,
            {"--max-sheets", "N", "ends after so many sheets; none or negative: no limit", "--max-sheets 30"},
            plan.maxSheets, WholeFrom<std::int32_t>(INT32_MIN, INT32_MAX));
  AddOption(
      command,
      {"--dispose", "WHAT", "what is done with each sheet after it was read: eject (default), reject or none",
       "--dispose reject"},
      plan.disposal,
      OneOf<Disposal>({{"eject", Disposal::Eject}, {"reject", Disposal::Reject}, {"none", Disposal::None}}));
  AddOption(command,
            {"--format", "FORMAT",
             "ndjson (one JSON object per line and sheet), csv (sheet,side,row,column,value), or grid (a "
             "picture); default grid on a terminal, else ndjson",
             "--format csv"},
            plan.format,
            OneOf<SheetFormat>(
                {{"ndjson", SheetFormat::Ndjson}, {"csv", SheetFormat::Csv}, {"grid", SheetFormat::Grid}}));
}

void AddFileOptions(CLI::App& command, ScanPlan& plan) {
  AddOption(command,
            {"--output", "FILE",
             "writes the sheets to a new file instead of standard output; a file that is there is "
             "refused, unless --append",
             "--output class7.ndjson"},
            plan.output);
  AddFlag(command,
          {"--append", "", "goes on in the file of --output, behind its last sheet and with its numbering",
           "--output class7.ndjson --append"},
          plan.append);
  AddFlag(command,
          {"--strict", "",
           "a sheet with a warning (rows that did not come, timing marks that differ) ends the batch",
           "--strict"},
          plan.strict);
  AddOption(command,
            {"--summary", "FILE", "writes how the batch ended as one JSON object", "--summary class7.json"},
            plan.summary);
  AddOption(command,
            {"--trace", "FILE", "records every byte on the wire and every wait with its time",
             "--trace scan.trace"},
            plan.trace);
}

// The reader that the settings under --key are for.
teskReaderType SavedReader(const ScanPlan& plan) {
  if (plan.key.path.empty())
    throw UsageError("--reader: is required, or --key with the settings saved for one");
  const auto stored = platform::CreateSettingsStore()->LoadValue(plan.key.root, plan.key.path, "ScannerType");
  if (!stored || Val(*stored) == 0) {
    throw CommandFailure(fmt::format("--key: no settings for a reader are saved under {}", plan.key.path));
  }
  const double number = Val(*stored);
  if (number < 1 || number >= static_cast<double>(ReaderTypeNames().size())) {
    throw CommandFailure(fmt::format(
        "--key: the settings under {} are for a reader \"{}\", which is none|\"{}\" "
        "begins anew with a model's defaults",
        plan.key.path, *stored, "teskread settings save --key " + ShellWord(plan.key.path) + " --reader R"));
  }
  return static_cast<teskReaderType>(ToInt16(number));
}

void CheckSides(const ScanPlan& plan) {
  if (!plan.side2) return;
  if (!plan.side1) throw UsageError("--side2: goes with --side1, which gives the sheets' front");
  if (plan.side1->rows.size() == plan.side2->rows.size()) return;
  throw UsageError(fmt::format("--side2: takes one size per sheet definition, as many as --side1: {}, not {}",
                               plan.side1->rows.size(), plan.side2->rows.size()));
}

void CheckImprints(const ScanPlan& plan) {
  constexpr std::size_t kMost = 3;
  if (plan.imprints.size() > kMost) throw UsageError("--imprint: may be given up to 3 times");
  if (plan.imprintPosition && plan.imprints.empty()) {
    throw UsageError("--imprint-position: goes with --imprint, which gives the text");
  }
}

}  // namespace

bool ScanPlan::Assigns(std::string_view property) const {
  return std::ranges::any_of(assignments,
                             [&](const Assignment& assigned) { return assigned.setting->name == property; });
}

void AddScanOptions(CLI::App& command, ScanPlan& plan) {
  AddReaderOptions(command, plan);
  AddFormOptions(command, plan);
  AddBatchOptions(command, plan);
  AddFileOptions(command, plan);
}

void CompleteScanPlan(ScanPlan& plan) {
  if (plan.reader == teskReaderTypeNone) plan.reader = SavedReader(plan);
  RequireDriver(plan.reader);
  if (!plan.port || plan.port->kind != PortChoice::Kind::Simulated) RequireSystem(plan.reader);
  if (!plan.port && !plan.key.path.empty() && !plan.Assigns("Port")) {
    const std::string device = StoredDevice(plan.key);
    if (!device.empty()) plan.port = ParsePort("--port", device);
  }
  CheckSides(plan);
  CheckImprints(plan);
}

}  // namespace tesk::cli
