// The generator of answer sheets.
#include "simulator/Sheet.h"

#include <algorithm>
#include <cstddef>

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr std::int32_t kChoices = 5;
constexpr std::int32_t kItemsPerGroup = 5;  // a blank row follows each group
constexpr std::int32_t kMostDigits = 8;

// Percent of the darkest mark.
struct Shade {
  std::int32_t lightest;
  std::int32_t darkest;
};
constexpr Shade kMark{60, 100};
constexpr Shade kErasure{22, 34};
constexpr Shade kSmudge{7, 15};
// Darker scales are sent raw, where a darkness of 13 would end the data: scanners avoid it.
constexpr std::int16_t kDarkestDigit = 15;

// How an item is filled, in cases of a thousand; the rest carry one clean mark.
constexpr std::int32_t kBlankItems = 40;
constexpr std::int32_t kDoubleMarks = 25;
constexpr std::int32_t kCorrections = 45;
constexpr std::int32_t kSmudges = 4;  // of a thousand positions

class Pencil {
 public:
  Pencil(Random& random, SideArray& side, std::int16_t darkest)
      : random_(random), side_(side), darkest_(darkest) {}

  void Fill(const AnswerLayout& layout, std::string& studentNumber) {
    for (std::int32_t digit = 0; digit < layout.digits; ++digit) {
      const std::int32_t value = random_.Between(0, 9);
      Draw(layout.numberRow + value, layout.numberColumn + digit, kMark);
      studentNumber += static_cast<char>('0' + value);
    }
    for (const AnswerLayout::Item& item : layout.items) FillItem(item);
    Smudge();
  }

 private:
  void FillItem(const AnswerLayout::Item& item) {
    const std::int32_t fate = random_.Between(0, 999);
    const std::int32_t choice = random_.Between(0, kChoices - 1);
    const std::int32_t other = (choice + random_.Between(1, kChoices - 1)) % kChoices;
    if (fate < kBlankItems) return;
    Draw(item.row, item.firstColumn + choice, kMark);
    if (fate < kBlankItems + kDoubleMarks) {
      Draw(item.row, item.firstColumn + other, kMark);
    } else if (fate < kBlankItems + kDoubleMarks + kCorrections) {
      Draw(item.row, item.firstColumn + other, kErasure);
    }
  }

  void Smudge() {
    for (std::int32_t row = 1; row <= side_.Rows(); ++row) {
      for (std::int32_t column = 1; column <= side_.Columns(); ++column) {
        const bool smudged = random_.Chance(kSmudges);
        if (smudged && side_.At(row, column) == 0) Draw(row, column, kSmudge);
      }
    }
  }

  void Draw(std::int32_t row, std::int32_t column, const Shade& shade) {
    const std::int32_t percent = random_.Between(shade.lightest, shade.darkest);
    const std::int32_t darkness = std::max(1, darkest_ * percent / 100);
    const bool looksLikeAnEnd = darkest_ > kDarkestDigit && darkness == '\r';
    side_.At(row, column) = static_cast<std::int16_t>(looksLikeAnEnd ? darkness - 1 : darkness);
  }

  Random& random_;
  SideArray& side_;
  std::int16_t darkest_;
};

Sheet GenerateSheet(Random& random, const Geometry& geometry, std::int16_t darkest) {
  Sheet sheet;
  sheet.side1 = SideArray(geometry.rows, geometry.columns);
  std::string studentNumber;
  Pencil(random, sheet.side1, darkest).Fill(LayoutOf(geometry, true), studentNumber);
  if (geometry.twoSided) {
    std::string none;
    sheet.side2 = SideArray(geometry.rows, geometry.columns);
    Pencil(random, sheet.side2, darkest).Fill(LayoutOf(geometry, false), none);
  }
  if (!studentNumber.empty()) sheet.barcodes.push_back(studentNumber);
  return sheet;
}

}  // namespace

AnswerLayout LayoutOf(const Geometry& geometry, bool front) {
  constexpr std::int32_t kNumberBottom = 11;
  AnswerLayout layout;
  std::int32_t row = 2;
  if (front && geometry.rows > kNumberBottom && geometry.columns >= layout.numberColumn) {
    layout.digits = std::min(kMostDigits, geometry.columns - layout.numberColumn + 1);
    row = kNumberBottom + 3;
  }
  const std::int32_t gap = geometry.columns < 24 ? 2 : 3;
  for (std::int32_t inGroup = 0; row <= geometry.rows; ++row) {
    if (inGroup == kItemsPerGroup) {
      inGroup = 0;
      continue;
    }
    ++inGroup;
    for (std::int32_t column = 1; column + kChoices - 1 <= geometry.columns; column += kChoices + gap) {
      layout.items.push_back({row, column});
    }
  }
  return layout;
}

std::vector<Sheet> GenerateSheets(std::int32_t count, std::uint64_t seed, const Geometry& geometry,
                                  std::int16_t darkest) {
  Random random(seed);
  std::vector<Sheet> sheets;
  sheets.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (std::int32_t i = 0; i < count; ++i) {
    // Each sheet draws from a generator of its own, so that the first ten of a hundred are the ten.
    Random own(random.Next());
    sheets.push_back(GenerateSheet(own, geometry, darkest));
  }
  return sheets;
}

}  // namespace tesk::simulator
