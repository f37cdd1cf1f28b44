// The values of options as texts: numbers, sheet sizes, windows, barcode definitions. Knows base alone.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/enumerations.h"

namespace tesk::cli {

// An enumeration's member as hosts write it.
struct Enumerator {
  std::string_view name;  // "teskReaderFlowControlNone"
  std::int32_t value;
};

std::span<const Enumerator> BarcodeTypeEnumerators();
std::span<const Enumerator> BarcodeOrientationEnumerators();

// The rows and columns of a sheet's side, one element per sheet definition; never empty.
struct SheetSizes {
  std::vector<std::int16_t> rows;
  std::vector<std::int16_t> columns;
};

// StartRow, NumRows, RowGap, StartCol, NumCols, ColGap, Page, Orientation.
using WindowFields = std::array<std::int16_t, 8>;

struct BarcodeFields {
  std::int16_t page;
  std::int16_t field;
  std::int16_t distance;
  std::int16_t length;
  teskBarcodeType symbology;
  teskBarcodeOrientation orientation;
};

// All throw UsageError, which names `option` and says what it accepts.

// Decimal digits with an optional sign and nothing else, from `least` to `most`.
std::int32_t ParseWholeNumber(std::string_view option, std::string_view text, std::int32_t least,
                              std::int32_t most);
// A member's name in any case, or any 32-bit number: hosts may store values that are no member.
std::int32_t ParseEnumeration(std::string_view option, std::string_view text,
                              std::span<const Enumerator> enumerators);
// The same, but the number must be a member's.
std::int32_t ParseMember(std::string_view option, std::string_view text,
                         std::span<const Enumerator> enumerators);
// "50x48" or "50x48,40x48": 0 to 32767 rows and 1 to 32767 columns each, at most kLargestSide positions.
SheetSizes ParseSheetSizes(std::string_view option, std::string_view text);
WindowFields ParseWindow(std::string_view text);
// Symbology and orientation by number or by enumerator.
BarcodeFields ParseBarcode(std::string_view text);

inline constexpr std::int32_t kLargestSide = 4'000'000;  // mark positions; no sheet comes near it

// The parts of a text between separators; an empty text is one empty part.
std::vector<std::string> SplitText(std::string_view text, char separator);

}  // namespace tesk::cli
