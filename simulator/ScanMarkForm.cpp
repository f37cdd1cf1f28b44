// The form definition of a ScanMark scanner.
#include "simulator/ScanMarkForm.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "simulator/CommandFields.h"

namespace tesk::simulator {
namespace {

constexpr std::int32_t kHeadColumns = 48;  // the width of the read head

// Whether `count` positions lie evenly from first to last.
bool Fits(std::int32_t first, std::int32_t last, std::int32_t count) {
  if (count == 1) return first == last;
  return count > 1 && first < last && (last - first) % (count - 1) == 0;
}

std::int32_t Step(std::int32_t first, std::int32_t last, std::int32_t count) {
  return count > 1 ? (last - first) / (count - 1) : 1;
}

std::int16_t ValueAt(const SideArray& side, std::int32_t row, std::int32_t column) {
  return row <= side.Rows() && column <= side.Columns() ? side.At(row, column) : std::int16_t{0};
}

}  // namespace

std::string ScanMarkForm::Start(std::string_view fields) {
  CommandFields parsed(fields);
  Definition definition{};
  definition.rows[0] = parsed.Number();
  parsed.Text(" ");
  definition.rows[1] = parsed.Number();
  parsed.Text(" ");
  definition.columns = parsed.Number();
  parsed.Text(" N N N");
  if (!parsed.Complete()) return "ill-formed form start";
  const bool anything = definition.rows[0] > 0 || definition.rows[1] > 0;
  if (definition.columns < (anything ? 1 : 0) || definition.columns > kHeadColumns) {
    return "form start with columns outside 1 to 48";
  }
  if (definition.rows[1] > 0 && !duplex_) return "form start with a side 2 for a scanner of one side";
  if (!open_) definitions_.clear();
  open_ = true;
  definitions_.push_back(std::move(definition));
  return {};
}

std::string ScanMarkForm::MarkColumns(std::string_view fields) {
  if (!wholeSides_) return "mark columns for a scanner that takes regions";
  CommandFields parsed(fields);
  parsed.Text("Y N 1 ");
  const std::int32_t side = parsed.OneOf("12") - '0';
  parsed.Text(" 1 1 ");
  const std::int32_t lastRow = parsed.Number();
  parsed.Text(" ");
  const std::int32_t lastColumn = parsed.Number();
  parsed.Text(" L ");
  const std::int32_t rows = parsed.Number();
  parsed.Text(" ");
  const std::int32_t columns = parsed.Number();
  parsed.Text(" ");
  const std::string_view mask = parsed.Rest();
  if (!parsed.Complete()) return "ill-formed mark columns";
  if (columns < 1 || mask != std::string(static_cast<std::size_t>(columns), '1')) {
    return "mark columns whose mask is not one \"1\" per column";
  }
  if (lastRow != rows || lastColumn != columns) return "mark columns of less than a whole side";
  return Take({side, 1, 1, lastRow, lastColumn, rows, columns, false, true});
}

std::string ScanMarkForm::Region(std::string_view fields) {
  CommandFields parsed(fields);
  Area area{};
  area.side = parsed.OneOf("12") - '0';
  for (std::int32_t* field : {&area.firstRow, &area.firstColumn, &area.lastRow, &area.lastColumn}) {
    parsed.Text(" ");
    *field = parsed.Number();
  }
  parsed.Text(" ");
  area.byColumn = parsed.OneOf("LC") == 'C';
  for (std::int32_t* field : {&area.rows, &area.columns}) {
    parsed.Text(" ");
    *field = parsed.Number();
  }
  if (!parsed.Complete()) return "ill-formed region";
  if (area.byColumn) std::swap(area.rows, area.columns);
  return Take(area);
}

std::string ScanMarkForm::Take(Area area) {
  if (!open_) return "region outside a form";
  Definition& definition = definitions_.back();
  const std::int32_t sideRows = definition.rows[area.side - 1];
  if (sideRows <= 0) return "region on a side that the form has not";
  if (area.wholeSide && area.lastRow != sideRows) return "mark columns of less than a whole side";
  if (area.firstRow > area.lastRow || area.firstColumn > area.lastColumn) {
    return "region whose first position lies past its last";
  }
  // The form start gives the columns of side 1 alone.
  const std::int32_t sideColumns = area.side == 1 ? definition.columns : kHeadColumns;
  if (area.firstRow < 1 || area.firstColumn < 1 || area.lastRow > sideRows || area.lastColumn > sideColumns) {
    return "region that does not lie inside the sheet";
  }
  if (!Fits(area.firstRow, area.lastRow, area.rows) ||
      !Fits(area.firstColumn, area.lastColumn, area.columns)) {
    return "region whose counts do not fit its first and last positions";
  }
  definition.areas.push_back(area);
  return {};
}

bool ScanMarkForm::IsPage(const Definition& definition, const Area& area) const {
  if (wholeSides_) return area.wholeSide;
  const auto sameSide = [&](const Area& other) { return other.side == area.side; };
  const bool alone = std::count_if(definition.areas.begin(), definition.areas.end(), sameSide) == 1;
  const bool gapless = area.rows == area.lastRow && area.columns == area.lastColumn;
  const bool fullHeight = area.lastRow == definition.rows[area.side - 1];
  if (!alone || !gapless || !fullHeight || area.byColumn) return false;
  // The back of a page may have other columns than the form start says.
  return area.lastColumn == definition.columns || (area.side == 2 && definition.areas.front().side == 1 &&
                                                   IsPage(definition, definition.areas.front()));
}

std::string ScanMarkForm::End() {
  if (!open_) return "end of a form that was not started";
  open_ = false;
  return {};
}

void ScanMarkForm::Clear() {
  open_ = false;
  definitions_.clear();
}

const ScanMarkForm::Definition& ScanMarkForm::DefinitionFor(const Sheet& sheet) const {
  const auto found =
      std::find_if(definitions_.begin(), definitions_.end(),
                   [&](const Definition& definition) { return definition.rows[0] == sheet.side1.Rows(); });
  return found == definitions_.end() ? definitions_.front() : *found;
}

std::vector<std::int16_t> ScanMarkForm::Values(const Sheet& sheet) const {
  std::vector<std::int16_t> values;
  const Definition& definition = DefinitionFor(sheet);
  for (const Area& area : definition.areas) {
    const SideArray& side = area.side == 1 ? sheet.side1 : sheet.side2;
    const std::int32_t columns = IsPage(definition, area) ? kHeadColumns : area.columns;
    const std::int32_t rowStep = Step(area.firstRow, area.lastRow, area.rows);
    const std::int32_t columnStep = Step(area.firstColumn, area.lastColumn, area.columns);
    for (std::int32_t i = 0; i < area.rows * columns; ++i) {
      const std::int32_t row = area.byColumn ? i % area.rows : i / columns;
      const std::int32_t column = area.byColumn ? i / area.rows : i % columns;
      const bool inForm = column < area.columns;
      values.push_back(
          inForm ? ValueAt(side, area.firstRow + row * rowStep, area.firstColumn + column * columnStep)
                 : std::int16_t{0});
    }
  }
  return values;
}

}  // namespace tesk::simulator
