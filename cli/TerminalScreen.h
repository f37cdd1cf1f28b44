// The terminal as a screen: its life, its keys, message boxes and pop-up lists. Knows the terminal library.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Curses.h"

namespace tesk::cli {

inline constexpr int kEscape = 27;
inline constexpr int kTab = '\t';
inline constexpr int kBlank = ' ';
bool IsEnter(int key);

// Characters of a UTF-8 text.
int Cells(std::string_view text);
// Folded at blanks, and at "|".
std::vector<std::string> Folded(const std::string& text, int width);

struct WindowCloser {
  void operator()(WINDOW* window) const { delwin(window); }
};
using Window = std::unique_ptr<WINDOW, WindowCloser>;

// Throws UsageError where TERM in the environment names no terminal that can be drawn on.
void RequireDrawableTerminal();

// Takes the terminal over and gives it back. One at a time.
class TerminalScreen {
 public:
  // Throws CommandFailure for a terminal that cannot be drawn on.
  TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;
  ~TerminalScreen();

  int Width() const;
  int Height() const;
  // The next key, or ERR when none came in a fraction of a second, so that an interrupt is noticed.
  int ReadKey();
  // The same without waiting.
  int PendingKey();

  // Until a key is pressed, or an interrupt.
  void ShowBox(const std::string& title, const std::string& text);
  // The position that was chosen from `entries`, or `chosen` where the choice was given up.
  int PickFrom(const std::vector<std::string>& entries, int chosen, int line, int column);

 private:
  Window Framed(int height, int width, int line, int column) const;

  SCREEN* screen_;
};

}  // namespace tesk::cli
