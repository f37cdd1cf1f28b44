// What one read yields: a driver fills a sheet and gives it back whole, or gives none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/SideArray.h"

namespace tesk {

using BarcodeArray = std::vector<std::string>;  // one text per barcode, hosts index it from 1

struct Sheet {
  SideArray side1 = {};
  SideArray side2 = {};  // empty or all 0 where side 2 was not read
  // Empty: the count stays what the driver has told the engine while it read, -1 where it told none.
  std::optional<std::int16_t> side1TimingMarks = {};
  std::optional<std::int16_t> side2TimingMarks = {};
  // Mark positions that were asked for and did not come; they stay 0. Where a scanner may send less.
  std::int32_t missing = 0;
  BarcodeArray texts = BarcodeArray(1);  // a sheet without barcodes has one empty text
  // The image files and the item coordinates of each side. Empty: what the engine has stays.
  std::optional<std::string> side1Image = {};
  std::optional<std::string> side2Image = {};
  std::optional<std::string> side1Coordinates = {};
  std::optional<std::string> side2Coordinates = {};
};

// What a driver keeps between calls. It belongs to the engine that called the driver, one record at a time,
// and goes with that engine.
class DriverState {
 public:
  virtual ~DriverState() = default;
};

}  // namespace tesk
