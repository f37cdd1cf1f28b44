// What kind of terminal this is. Apart from the screen: the header's macros have names such as "lines".
#include <term.h>

#include <cstdio>

#include "cli/CommandError.h"
#include "cli/TerminalScreen.h"

namespace tesk::cli {

void RequireDrawableTerminal() {
  int status = 0;
  const bool known = setupterm(nullptr, fileno(stdout), &status) == OK;
  const bool drawable = known && cursor_address != nullptr;
  if (known) del_curterm(cur_term);
  if (!drawable) {
    throw UsageError("setup needs a terminal that can be drawn on|TERM in the environment names none");
  }
}

}  // namespace tesk::cli
