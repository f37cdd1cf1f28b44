// The Sekonic serial models and their mark records.
#include "simulator/SekonicMarks.h"

#include <algorithm>
#include <array>

namespace tesk::simulator {
namespace {

constexpr std::array<SekonicModel, 6> kModels{{
    // reader                              cards mode duplex rejecter columns darkest
    {teskReaderTypeScanningSystemsSR601, false, 0, false, true, 48, 15},
    {teskReaderTypeScanningSystemsSR607, false, 1, true, true, 48, 15},
    {teskReaderTypeScanningSystemsSR700351, false, 2, false, true, 48, 15},
    {teskReaderTypeScanningSystemsSR700352, false, 3, true, true, 48, 15},
    {teskReaderTypeScanningSystemsSR410, true, 0, false, false, 12, 8},
    {teskReaderTypeSekonicSR430, true, 0, false, false, 12, 16},
}};

char Darkness(const SekonicModel& model, std::int16_t value) {
  return static_cast<char>('0' + std::clamp<std::int16_t>(value, 0, model.darkest));
}

char ColumnName(std::int32_t column, bool card) {
  constexpr std::string_view kPunches = "9876543210XYABC";
  return card ? kPunches.at(static_cast<std::size_t>(column - 1)) : static_cast<char>('0' + column - 1);
}

std::int16_t ValueAt(const SideArray& side, std::int32_t row, std::int32_t column) {
  return row <= side.Rows() && column <= side.Columns() ? side.At(row, column) : std::int16_t{0};
}

std::string Item(const SekonicModel& model, const SideArray& side, const SekonicWindow& window,
                 std::int32_t row) {
  std::string item;
  for (std::int32_t k = 0; k < window.columns; ++k) {
    const std::int16_t value = ValueAt(side, row, window.firstColumn + k * window.columnGap);
    if (value <= 0) continue;
    if (!item.empty()) item += ',';
    item += {static_cast<char>('1' + k), Darkness(model, value)};
  }
  return item.empty() ? " " : item;
}

}  // namespace

const SekonicModel* FindSekonicModel(teskReaderType reader) {
  const auto* const found = std::find_if(kModels.begin(), kModels.end(),
                                         [&](const SekonicModel& model) { return model.reader == reader; });
  return found == kModels.end() ? nullptr : found;
}

std::optional<SekonicWindow> SekonicWindow::Parse(std::string_view line, std::int32_t lastColumn) {
  if (!line.starts_with('\x02') || line.size() != 16 || !line.ends_with("112")) return std::nullopt;
  std::array<std::int32_t, 6> v{};
  for (std::size_t i = 0; i < v.size(); ++i) v.at(i) = SekonicDigits(line, 1 + 2 * i, 2);
  const SekonicWindow window{v[0], v[1], v[2], v[3], v[4], v[5]};
  const bool rows = window.firstRow >= 1 && window.rows >= 1 && (window.rows == 1 || window.rowGap >= 1);
  const bool columns =
      window.firstColumn >= 1 && window.columns >= 1 && (window.columns == 1 || window.columnGap >= 1);
  if (!rows || !columns || window.rowGap < 0 || window.columnGap < 0) return std::nullopt;
  if (window.firstColumn + (window.columns - 1) * window.columnGap > lastColumn) return std::nullopt;
  return window;
}

std::string SekonicPageRows(const SekonicModel& model, const SideArray& side, std::int32_t rows, bool card) {
  std::string data;
  for (std::int32_t row = 1; row <= rows; ++row) {
    for (std::int32_t column = 1; column <= model.columns; ++column) {
      const std::int16_t value = ValueAt(side, row, column);
      if (value > 0) data += {ColumnName(column, card), Darkness(model, value)};
    }
    data += " \r";
  }
  return data;
}

std::string SekonicWindowItems(const SekonicModel& model, const SideArray& side,
                               const std::vector<SekonicWindow>& windows) {
  std::string data;
  for (const SekonicWindow& window : windows) {
    for (std::int32_t i = 0; i < window.rows; ++i) {
      data += Item(model, side, window, window.firstRow + i * window.rowGap) + '\r';
    }
  }
  return data;
}

std::int32_t SekonicDigits(std::string_view text, std::size_t from, std::size_t digits) {
  if (text.size() < from + digits) return -1;
  std::int32_t value = 0;
  for (const char c : text.substr(from, digits)) {
    if (c < '0' || c > '9') return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

}  // namespace tesk::simulator
