// What the environment says about the terminal.
#include "cli/terminalStyle.h"

#include <cstdlib>
#include <string_view>

namespace tesk::cli {

bool TerminalShowsColor() {
  const char* refused = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool wanted = refused == nullptr || *refused == '\0';
  return wanted && terminal != nullptr && *terminal != '\0' && std::string_view(terminal) != "dumb";
}

}  // namespace tesk::cli
