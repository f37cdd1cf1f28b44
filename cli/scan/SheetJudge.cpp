#include "cli/scan/SheetJudge.h"

#include <algorithm>

#include <fmt/format.h>

#include "profiles/catalogue.h"
#include "profiles/models.h"

namespace tesk::cli {
namespace {

std::optional<std::string> RefusalOf(int number, const SideArray& side, std::int32_t darkest) {
  for (std::int32_t row = 1; row <= side.Rows(); ++row) {
    for (std::int32_t column = 1; column <= side.Columns(); ++column) {
      const std::int16_t value = side.At(row, column);
      if (value >= 0 && value <= darkest) continue;
      return fmt::format("side {}, row {}, column {} has the value {}; this scanner's marks go from 0 to {}",
                         number, row, column, value, darkest);
    }
  }
  return std::nullopt;
}

std::string RowsText(const SheetSizes& sizes) {
  std::string text;
  for (const std::int16_t rows : sizes.rows) text += fmt::format("{}{}", text.empty() ? "" : " or ", rows);
  return text;
}

// count: -1 where the scanner reports none.
void WarnOfRows(int number, std::int16_t count, const std::optional<SheetSizes>& asked,
                std::vector<std::string>& warnings) {
  if (!asked || count < 0 || std::ranges::find(asked->rows, count) != asked->rows.end()) return;
  warnings.push_back(fmt::format("side {}: {} rows (timing marks) came, {} were asked for (--side{})", number,
                                 count, RowsText(*asked), number));
}

// What a smaller sheet definition leaves out of the largest one's positions.
std::int32_t LeftOut(std::int16_t count, std::int16_t extent, std::int32_t columns) {
  return count < 0 || count > extent ? 0 : (extent - count) * columns;
}

}  // namespace

std::int32_t DarkestValue(const clsTeskReader& engine) {
  const std::int32_t darkest = DarkestMark(engine.ReaderType());
  const bool marksAlone = FamilyOf(engine.ReaderType()).marksAlone;
  return marksAlone ? std::max(darkest, engine.RecognitionThreshold() + 1) : darkest;
}

std::optional<std::string> SheetJudge::Refusal(const clsTeskReader& engine) const {
  const std::int32_t darkest = DarkestValue(engine);
  const auto refusal = RefusalOf(1, engine.Side1Array(), darkest);
  return refusal ? refusal : RefusalOf(2, engine.Side2Array(), darkest);
}

std::vector<std::string> SheetJudge::Warnings(const clsTeskReader& engine) const {
  std::vector<std::string> warnings;
  WarnOfRows(1, engine.Side1TimingMarks(), side1_, warnings);
  if (engine.TwoSided()) WarnOfRows(2, engine.Side2TimingMarks(), side2_, warnings);
  const std::int32_t missing = engine.MissingPositions();
  std::int32_t left =
      LeftOut(engine.Side1TimingMarks(), engine.Side1RowExtent(), engine.Side1Array().Columns());
  if (engine.TwoSided()) {
    left += LeftOut(engine.Side2TimingMarks(), engine.Side2RowExtent(), engine.Side2Array().Columns());
  }
  // A whole sheet of another definition misses nothing.
  if (missing > 0 && (!warnings.empty() || missing != left)) {
    warnings.push_back(
        fmt::format("{} mark positions that were asked for did not come; they are 0", missing));
  }
  return warnings;
}

}  // namespace tesk::cli
