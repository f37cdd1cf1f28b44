#include "cli/values.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

std::int16_t Int16Part(std::string_view option, std::string_view whole, std::string_view part) {
  const auto value = WholeNumber(part, INT16_MIN, INT16_MAX);
  if (!value) {
    throw UsageError(
        fmt::format("{} {}: \"{}\" is no whole number from -32768 to 32767", option, whole, part));
  }
  return static_cast<std::int16_t>(*value);
}

// A member of a barcode's by its name or its number.
template <class Enumeration>
Enumeration Member(std::string_view option, std::string_view text) {
  const auto members = EnumeratorsOf<Enumeration>();
  if (const auto* named = FindEnumerator(members, text)) return static_cast<Enumeration>(named->value);
  const auto number = WholeNumber(text, INT16_MIN, INT16_MAX);
  if (number && std::ranges::find(members, *number, &Enumerator::value) != members.end()) {
    return static_cast<Enumeration>(*number);
  }
  std::string names;
  for (const Enumerator& member : members) names += fmt::format("|{} ({})", member.name, member.value);
  throw UsageError(fmt::format("{}: \"{}\" is none of{}", option, text, names));
}

// One "50x48".
void AddSize(std::string_view option, std::string_view text, SheetSizes& sizes) {
  const std::size_t at = text.find_first_of("xX");
  const auto rows = WholeNumber(text.substr(0, at), 0, INT16_MAX);
  const auto columns =
      at == std::string_view::npos ? std::nullopt : WholeNumber(text.substr(at + 1), 1, INT16_MAX);
  if (!rows || !columns) {
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

std::optional<std::int32_t> WholeNumber(std::string_view text, std::int32_t least, std::int32_t most) {
  if (text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || (text[0] != '-' && (text[0] < '0' || text[0] > '9'))) return std::nullopt;
  std::int64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  if (value < least || value > most) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

std::optional<double> DecimalNumber(std::string_view text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

const Enumerator* FindEnumerator(std::span<const Enumerator> members, std::string_view name) {
  const auto found = std::ranges::find(members, LowerCase(name),
                                       [](const Enumerator& member) { return LowerCase(member.name); });
  return found == members.end() ? nullptr : &*found;
}

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
  if (const auto value = WholeNumber(text, least, most)) return *value;
  throw UsageError(fmt::format("{}: \"{}\" is no whole number from {} to {}", option, text, least, most));
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

WindowFields ParseWindow(std::string_view option, std::string_view text) {
  constexpr std::string_view kFields = "StartRow,NumRows,RowGap,StartCol,NumCols,ColGap,Page,Orientation";
  WindowFields fields{};
  const auto parts = FieldParts(option, text, kFields, fields.size());
  for (std::size_t i = 0; i < fields.size(); ++i) fields[i] = Int16Part(option, text, parts[i]);
  return fields;
}

BarcodeFields ParseBarcode(std::string_view option, std::string_view text) {
  const auto parts = FieldParts(option, text, "Page,Field,Distance,Length,Symbology,Orientation", 6);
  const auto number = [&](std::size_t i) { return Int16Part(option, text, parts[i]); };
  return {.page = number(0),
          .field = number(1),
          .distance = number(2),
          .length = number(3),
          .symbology = Member<teskBarcodeType>(option, parts[4]),
          .orientation = Member<teskBarcodeOrientation>(option, parts[5])};
}

PortChoice ParsePort(std::string_view option, const std::string& text) {
  if (LowerCase(text) == "sim") return {.kind = PortChoice::Kind::Simulated, .number = 1, .device = {}};
  const std::size_t digits = text[0] == '-' || text[0] == '+' ? 1 : 0;
  if (text.size() == digits || text.find_first_not_of("0123456789", digits) != std::string::npos) {
    return {.kind = PortChoice::Kind::Device, .number = 1, .device = platform::DeviceOfName(text)};
  }
  return {.kind = PortChoice::Kind::Number,
          .number = static_cast<std::int16_t>(ParseWholeNumber(option, text, 1, 16)),
          .device = {}};
}

}  // namespace tesk::cli
