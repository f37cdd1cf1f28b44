// Whether the terminal shows shades. Knows nobody.
#pragma once

namespace tesk::cli {

// False where TERM does not name a terminal with colors, or the person has set NO_COLOR.
bool TerminalShowsColor();

}  // namespace tesk::cli
