// A sheet as a picture in block characters, for people at a terminal. Knows base alone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cli/scan/SheetRecord.h"

namespace tesk::cli {

// False where TERM does not name a terminal with colors, or the person has set NO_COLOR.
bool TerminalShowsColor();

struct GridStyle {
  std::int16_t threshold = 1;  // from here on a value is a mark, below it is faint
  std::int16_t darkest = 1;    // the top of the model's darkness scale
  bool color = false;          // shades of grey as a terminal shows them; else blocks alone
};

// Two rows of marks per line of text, a column of marks per character: a sheet of 50 rows and 48 columns
// takes 56 characters by 28 lines per side. UTF-8.
std::string GridText(const SheetRecord& record, std::string_view readerName, const GridStyle& style);

}  // namespace tesk::cli
