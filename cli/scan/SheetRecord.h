// One sheet as `scan` hands it out, and its line in each text format. Knows base alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
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
  std::string disposed;               // what happened: "ejected", "rejected", "none" or "failed"
  std::vector<std::string> warnings;  // what looks wrong
};

// The barcodes among the texts of a sheet: empty texts are none. nothing: what the model's driver hands out for
// a sheet without texts; may be empty.
std::vector<std::string> BarcodesRead(const std::vector<std::string>& texts, std::string_view nothing = {});

// One JSON object and a line feed. Bytes that are no UTF-8 come out as the replacement character.
std::string NdjsonText(const SheetRecord& record);

// The first line of a CSV file, and a sheet's lines: one per mark position that is not 0 (side 1, row, column and
// value 0 where there is none), then one per barcode with side 0, the barcode's number as row and its text as
// value. A text that a spreadsheet would run as a formula, or that begins with an apostrophe, has an apostrophe
// in front: take one away to read it back.
std::string CsvHeader();
std::string CsvText(const SheetRecord& record);

}  // namespace tesk::cli
