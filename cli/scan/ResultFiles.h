// The files that a scan writes: none may destroy what is there or be written twice. Knows the platform.
#pragma once

#include <cstdint>
#include <string>

#include "cli/scan/ScanPlan.h"

namespace tesk::cli {

// Throws UsageError where --output is there and --append is not given, where --trace or --summary would replace
// another kind of file, and where two options name one file or the port.
void CheckFiles(const ScanPlan& plan);

// In bytes; 0 where there is no file.
std::uintmax_t SizeOf(const std::string& path);

// Where an existing file of sheets ends.
struct SheetsSoFar {
  std::int32_t last = 0;  // the number of its last sheet; 0: the file is empty or missing
  std::uintmax_t bytes = 0;
};

// Throws UsageError where the file does not end with a whole sheet of this format.
SheetsSoFar ReadSheetsSoFar(const std::string& path, SheetFormat format);

}  // namespace tesk::cli
