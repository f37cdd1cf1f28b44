// What options are about: numbers, ports, sheet sizes, windows, barcode definitions, and their texts. Knows the
// platform.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/enumerators.h"

namespace tesk::cli {

// The rows and columns of a sheet's side, one element per sheet definition; never empty.
struct SheetSizes {
  std::vector<std::int16_t> rows;
  std::vector<std::int16_t> columns;
};

// A number of the engine's, a device, or the built-in simulated scanner.
struct PortChoice {
  enum class Kind { Number, Device, Simulated };
  Kind kind = Kind::Number;
  std::int16_t number = 1;  // the engine's Port; a device stands behind port 1
  std::string device;       // Device only
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

// Decimal digits with an optional sign and nothing else; nothing where the text is none or lies outside.
std::optional<std::int32_t> WholeNumber(std::string_view text, std::int32_t least, std::int32_t most);
// The same with a decimal point or an exponent.
std::optional<double> DecimalNumber(std::string_view text);
// A member by its name in any case; nullptr where there is none.
const Enumerator* FindEnumerator(std::span<const Enumerator> members, std::string_view name);

// All below throw UsageError, which names `option` and says what it accepts.

std::int32_t ParseWholeNumber(std::string_view option, std::string_view text, std::int32_t least,
                              std::int32_t most);
// "50x48" or "50x48,40x48": 0 to 32767 rows and 1 to 32767 columns each, at most kLargestSide positions.
SheetSizes ParseSheetSizes(std::string_view option, std::string_view text);
WindowFields ParseWindow(std::string_view option, std::string_view text);
// Symbology and orientation by number or by enumerator.
BarcodeFields ParseBarcode(std::string_view option, std::string_view text);
// "1" to "16", "sim" in any case, or a device path.
PortChoice ParsePort(std::string_view option, const std::string& text);

inline constexpr std::int32_t kLargestSide = 4'000'000;  // mark positions; no sheet comes near it

// The parts of a text between separators; an empty text is one empty part.
std::vector<std::string> SplitText(std::string_view text, char separator);

}  // namespace tesk::cli
