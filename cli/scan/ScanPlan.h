// What a scan is to do: the options as typed, and as understood. Knows the engine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/PortChoice.h"
#include "cli/assignments.h"
#include "cli/optionValues.h"
#include "cli/settingsKey.h"

namespace tesk::cli {

// The texts of the command line; empty where an option was not given.
struct ScanOptions {
  std::string reader;
  SettingsKeyOptions key;
  std::string port;
  std::vector<std::string> assignments;
  std::string side1;
  std::string side2;
  std::vector<std::string> windows;
  std::vector<std::string> barcodes;
  std::vector<std::string> imprints;
  std::string imprintPosition;
  std::string maxSheets;
  std::string dispose;
  std::string format;
  std::string output;
  bool append = false;
  bool strict = false;
  std::string summary;
  std::string trace;
};

enum class Disposal { Eject, Reject, None };
enum class SheetFormat { Ndjson, Csv, Grid };

struct ScanPlan {
  teskReaderType reader = teskReaderTypeNone;
  std::optional<SettingsKey> key;  // saved settings, loaded over the reader's defaults
  std::optional<PortChoice> port;
  std::vector<Assignment> assignments;
  std::optional<SheetSizes> side1;
  std::optional<SheetSizes> side2;
  std::vector<WindowFields> windows;
  std::vector<BarcodeFields> barcodes;
  std::vector<std::string> imprints;
  std::optional<std::int16_t> imprintPosition;
  std::int32_t maxSheets = -1;  // below 0: no limit
  Disposal disposal = Disposal::Eject;
  std::optional<SheetFormat> format;  // empty: as the output asks for
  std::string output;                 // file; empty: standard output
  bool append = false;                // to `output`
  bool strict = false;                // a sheet with a warning ends the batch
  std::string summary;                // file; empty: none
  std::string trace;                  // file; empty: none

  bool Assigns(std::string_view property) const;
};

// Throws UsageError, which names the option and says what it accepts. Without --reader the settings under
// --key name the reader; CommandFailure where they do not.
ScanPlan ParseScanOptions(const ScanOptions& options);

// Sets the engine up: the model's defaults first, then the options in the order of their documentation.
// Touches no wire. Throws UsageError where an option does not fit the model, CommandFailure where the model
// cannot be scanned with.
void ConfigureEngine(const ScanPlan& plan, clsTeskReader& engine);

}  // namespace tesk::cli
