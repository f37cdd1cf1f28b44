// One sheet as `scan` hands it out, and its line in each text format. Knows base alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/SideArray.h"

namespace tesk::cli {

struct SideRecord {
  std::int16_t timingMarks = -1;  // -1: the scanner reports none
  SideArray marks;
  std::string image;        // file name; empty where there is none
  std::string coordinates;  // item coordinates; likewise
};

struct SheetRecord {
  std::int32_t sheet = 0;   // from 1 in the batch
  std::int32_t reader = 0;  // a teskReaderType
  SideRecord side1;
  std::optional<SideRecord> side2;  // empty where no second side was read
  std::vector<std::string> barcodes;
  std::string disposed;  // "eject", "reject" or "none"
};

// The engine hands out one empty text where it read no barcode: that is no barcode here.
std::vector<std::string> BarcodesRead(const std::vector<std::string>& texts);

// One JSON object and a line feed. Bytes that are no UTF-8 come out as the replacement character.
std::string NdjsonText(const SheetRecord& record);

// The first line of a CSV file, and a sheet's lines: one per mark position that is not 0, then one per
// barcode with side 0, the barcode's number as row and its text as value.
std::string CsvHeader();
std::string CsvText(const SheetRecord& record);

}  // namespace tesk::cli
