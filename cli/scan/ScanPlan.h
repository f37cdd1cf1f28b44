// What a scan is to do. Knows the engine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/assignments.h"
#include "cli/settingsKey.h"
#include "cli/values.h"

namespace CLI {
class App;
}  // namespace CLI

namespace tesk::cli {

enum class Disposal { Eject, Reject, None };
enum class SheetFormat { Ndjson, Csv, Grid };

struct ScanPlan {
  teskReaderType reader = teskReaderTypeNone;  // None: the saved settings name it
  SettingsKey key;  // saved settings, loaded over the reader's defaults; without a path: none
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

// The options of a scan, in the order in which they take effect.
void AddScanOptions(CLI::App& command, ScanPlan& plan);

// To be called once all options are read: takes from the saved settings what no option says. Throws UsageError where
// options do not go together, CommandFailure where no saved settings name the reader, or the system cannot read with
// it.
void CompleteScanPlan(ScanPlan& plan);

}  // namespace tesk::cli
