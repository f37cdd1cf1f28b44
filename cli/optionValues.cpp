// Parsing of option values.
#include "cli/optionValues.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"

namespace tesk::cli {
namespace {

constexpr Enumerator kBarcodeTypes[] = {
    {"teskBarcodeTypeNone", teskBarcodeTypeNone},
    {"teskBarcodeTypeAuto", teskBarcodeTypeAuto},
    {"teskBarcodeTypeCode39", teskBarcodeTypeCode39},
    {"teskBarcodeTypeCodaBar", teskBarcodeTypeCodaBar},
    {"teskBarcodeTypeInterleaved2of5", teskBarcodeTypeInterleaved2of5},
    {"teskBarcodeTypeCode11", teskBarcodeTypeCode11},
    {"teskBarcodeTypeCode93", teskBarcodeTypeCode93},
    {"teskBarcodeTypeCode128", teskBarcodeTypeCode128},
    {"teskBarcodeTypeEAN13", teskBarcodeTypeEAN13},
    {"teskBarcodeTypeEAN8", teskBarcodeTypeEAN8},
    {"teskBarcodeTypeUPCA", teskBarcodeTypeUPCA},
    {"teskBarcodeTypeUPCE", teskBarcodeTypeUPCE},
    {"teskBarcodeTypePDF417", teskBarcodeTypePDF417},
    {"teskBarcodeTypeIndustrial2of5", teskBarcodeTypeIndustrial2of5},
    {"teskBarcodeTypeDatalogic2of5", teskBarcodeTypeDatalogic2of5},
    {"teskBarcodeTypeMatrix2of5", teskBarcodeTypeMatrix2of5},
    {"teskBarcodeTypeAirline2of5", teskBarcodeTypeAirline2of5},
    {"teskBarcodeTypeUcc128", teskBarcodeTypeUcc128},
    {"teskBarcodeTypePatch", teskBarcodeTypePatch},
    {"teskBarcodeTypeCode32", teskBarcodeTypeCode32},
    {"teskBarcodeTypePostnet", teskBarcodeTypePostnet},
    {"teskBarcodeTypeDataMatrix", teskBarcodeTypeDataMatrix},
    {"teskBarcodeTypeQRCode", teskBarcodeTypeQRCode},
    {"teskBarcodeTypeCode39Extended", teskBarcodeTypeCode39Extended},
};

constexpr Enumerator kBarcodeOrientations[] = {
    {"teskBarcodeOrientationUnknown", teskBarcodeOrientationUnknown},
    {"teskBarcodeOrientationVertical", teskBarcodeOrientationVertical},
    {"teskBarcodeOrientationHorizontal", teskBarcodeOrientationHorizontal},
};

std::optional<std::int64_t> WholeNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || (text[0] != '-' && (text[0] < '0' || text[0] > '9'))) return std::nullopt;
  std::int64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

std::int16_t Int16Part(std::string_view option, std::string_view whole, std::string_view part) {
  const auto value = WholeNumber(part);
  if (!value || *value < INT16_MIN || *value > INT16_MAX) {
    throw UsageError(
        fmt::format("{} {}: \"{}\" is no whole number from -32768 to 32767", option, whole, part));
  }
  return static_cast<std::int16_t>(*value);
}

[[noreturn]] void RefuseMember(std::string_view option, std::string_view text,
                               std::span<const Enumerator> enumerators) {
  std::string names;
  for (const Enumerator& enumerator : enumerators) {
    names += fmt::format("|{} ({})", enumerator.name, enumerator.value);
  }
  throw UsageError(fmt::format("{}: \"{}\" is none of{}", option, text, names));
}

// One "50x48".
void AddSize(std::string_view option, std::string_view text, SheetSizes& sizes) {
  const std::size_t at = text.find_first_of("xX");
  const auto rows = at == std::string_view::npos ? std::nullopt : WholeNumber(text.substr(0, at));
  const auto columns = at == std::string_view::npos ? std::nullopt : WholeNumber(text.substr(at + 1));
  if (!rows || !columns || *rows < 0 || *columns < 1 || *rows > INT16_MAX || *columns > INT16_MAX) {
    throw UsageError(
        fmt::format("{}: \"{}\" is no sheet size|write ROWSxCOLUMNS with 0 to 32767 rows and 1 to 32767 "
                    "columns, for example 50x48; several sheets with commas: 50x48,40x48",
                    option, text));
  }
  sizes.rows.push_back(static_cast<std::int16_t>(*rows));
  sizes.columns.push_back(static_cast<std::int16_t>(*columns));
}

std::vector<std::string> FieldParts(std::string_view option, std::string_view text, std::string_view fields,
                                    std::size_t count) {
  auto parts = SplitText(text, ',');
  if (parts.size() != count) {
    throw UsageError(fmt::format("{} {}: takes {} values with commas: {}", option, text, count, fields));
  }
  return parts;
}

}  // namespace

std::span<const Enumerator> BarcodeTypeEnumerators() { return kBarcodeTypes; }
std::span<const Enumerator> BarcodeOrientationEnumerators() { return kBarcodeOrientations; }

std::vector<std::string> SplitText(std::string_view text, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

std::int32_t ParseWholeNumber(std::string_view option, std::string_view text, std::int32_t least,
                              std::int32_t most) {
  const auto value = WholeNumber(text);
  if (!value || *value < least || *value > most) {
    throw UsageError(fmt::format("{}: \"{}\" is no whole number from {} to {}", option, text, least, most));
  }
  return static_cast<std::int32_t>(*value);
}

std::int32_t ParseEnumeration(std::string_view option, std::string_view text,
                              std::span<const Enumerator> enumerators) {
  const std::string folded = LowerCase(text);
  for (const Enumerator& enumerator : enumerators) {
    if (LowerCase(enumerator.name) == folded) return enumerator.value;
  }
  const auto value = WholeNumber(text);
  if (value && *value >= INT32_MIN && *value <= INT32_MAX) return static_cast<std::int32_t>(*value);
  RefuseMember(option, text, enumerators);
}

std::int32_t ParseMember(std::string_view option, std::string_view text,
                         std::span<const Enumerator> enumerators) {
  const std::int32_t value = ParseEnumeration(option, text, enumerators);
  if (std::ranges::find(enumerators, value, &Enumerator::value) == enumerators.end()) {
    RefuseMember(option, text, enumerators);
  }
  return value;
}

SheetSizes ParseSheetSizes(std::string_view option, std::string_view text) {
  SheetSizes sizes;
  for (const auto& part : SplitText(text, ',')) AddSize(option, part, sizes);
  const std::int32_t rows = *std::max_element(sizes.rows.begin(), sizes.rows.end());
  const std::int32_t columns = *std::max_element(sizes.columns.begin(), sizes.columns.end());
  if (rows * columns > kLargestSide) {
    throw UsageError(fmt::format("{}: {} rows of {} columns are no sheet; at most {} mark positions", option,
                                 rows, columns, kLargestSide));
  }
  return sizes;
}

WindowFields ParseWindow(std::string_view text) {
  constexpr std::string_view kFields = "StartRow,NumRows,RowGap,StartCol,NumCols,ColGap,Page,Orientation";
  WindowFields fields{};
  const auto parts = FieldParts("--window", text, kFields, fields.size());
  for (std::size_t i = 0; i < fields.size(); ++i) fields[i] = Int16Part("--window", text, parts[i]);
  return fields;
}

BarcodeFields ParseBarcode(std::string_view text) {
  const auto parts = FieldParts("--barcode", text, "Page,Field,Distance,Length,Symbology,Orientation", 6);
  const auto number = [&](std::size_t i) { return Int16Part("--barcode", text, parts[i]); };
  return {
      .page = number(0),
      .field = number(1),
      .distance = number(2),
      .length = number(3),
      .symbology = static_cast<teskBarcodeType>(ParseMember("--barcode", parts[4], BarcodeTypeEnumerators())),
      .orientation = static_cast<teskBarcodeOrientation>(
          ParseMember("--barcode", parts[5], BarcodeOrientationEnumerators()))};
}

}  // namespace tesk::cli
