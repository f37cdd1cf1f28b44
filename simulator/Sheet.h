// The sheets of a simulated scanner, and a generator of answer sheets as people fill them. Knows base alone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/SideArray.h"

namespace tesk::simulator {

// One sheet of paper: the darkness of every mark position on both sides, on the scanner model's own scale,
// and the barcodes printed on it. A blank back is an empty array.
struct Sheet {
  SideArray side1;
  SideArray side2;
  std::vector<std::string> barcodes;

  bool operator==(const Sheet&) const = default;
};

// Mark positions of the sheets to generate.
struct Geometry {
  std::int32_t rows = 50;
  std::int32_t columns = 48;
  bool twoSided = false;
};

// `count` answer sheets: a student number at the top of the front, below it and on the back blocks of items
// with five choices each. A few items are blank, marked twice or corrected. The darkest mark is `darkest`.
// The same arguments give the same sheets everywhere.
std::vector<Sheet> GenerateSheets(std::int32_t count, std::uint64_t seed, const Geometry& geometry,
                                  std::int16_t darkest);

// Where the generator prints, for whoever wants to read a sheet back. Rows and columns from 1.
struct AnswerLayout {
  // 0 where the side has no room for a student number; else digit d of column i is at
  // (numberRow + d, numberColumn + i).
  std::int32_t digits = 0;
  std::int32_t numberRow = 2;
  std::int32_t numberColumn = 3;

  struct Item {
    std::int32_t row;
    std::int32_t firstColumn;  // of its five choices
  };
  std::vector<Item> items;
};

// The layout of the front (with a student number where there is room) or the back.
AnswerLayout LayoutOf(const Geometry& geometry, bool front);

}  // namespace tesk::simulator
