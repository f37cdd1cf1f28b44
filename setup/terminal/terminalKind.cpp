// The description of the terminal. Apart from the screen: the header's macros have names such as "lines".
#include "setup/terminal/terminalKind.h"

#include <term.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "setup/terminal/Curses.h"

namespace tesk {
namespace {

constexpr struct {
  const char* name;
  int key;
} kKeys[] = {
    {"kcuu1", KEY_UP},   {"kcud1", KEY_DOWN}, {"kcub1", KEY_LEFT}, {"kcuf1", KEY_RIGHT},
    {"khome", KEY_HOME}, {"kend", KEY_END},   {"kpp", KEY_PPAGE},  {"knp", KEY_NPAGE},
    {"kdch1", KEY_DC},   {"kcbt", KEY_BTAB},  {"kf10", KEY_F(10)}, {"kent", KEY_ENTER},
};

std::string KindText() {
  const char* kind = std::getenv("TERM");
  if (kind == nullptr || *kind == '\0') return "TERM in the environment is not set";
  return "TERM in the environment is \"" + std::string(kind) + "\", which cannot be drawn on here";
}

}  // namespace

std::string WhyNotDrawable() {
  int status = 0;
  const bool known = setupterm(nullptr, fileno(stdout), &status) == OK;
  const bool drawable = known && cursor_address != nullptr;
  if (known) del_curterm(cur_term);
  if (drawable) return {};
  return "setup needs a terminal that can be drawn on|" + KindText() +
         "|set it to the terminal's kind, such as TERM=xterm, or use \"teskread settings save\"";
}

std::vector<DescribedKey> DescribedKeys() {
  std::vector<DescribedKey> keys;
  for (const auto& [name, key] : kKeys) {
    const char* sequence = tigetstr(name);
    // A name that is none has an address that is none.
    const bool known = sequence != nullptr && reinterpret_cast<std::intptr_t>(sequence) != -1;
    if (known) keys.push_back({sequence, key});
  }
  return keys;
}

bool IgnoresUnknownModes() {
  return cursor_address != nullptr && std::string_view(cursor_address).starts_with("\x1b[");
}

}  // namespace tesk
