// The terminal as a screen: its life, its keys, and what pops up over what is shown. Knows the terminal
// library.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/terminal.h"
#include "setup/terminal/Curses.h"
#include "setup/terminal/TerminalKeys.h"

namespace tesk {

// Characters of a UTF-8 text.
int Cells(std::string_view text);
// Folded at blanks, and at "|"; a word that is too long is cut into pieces.
std::vector<std::string> Folded(const std::string& text, int width);

struct WindowCloser {
  void operator()(WINDOW* window) const { delwin(window); }
};
using Window = std::unique_ptr<WINDOW, WindowCloser>;

void Write(WINDOW* window, int line, int column, const std::string& text);

// Something that stands over the rest of the screen and gets all keys until it is done.
class Popup {
 public:
  virtual ~Popup() = default;
  // What the keys do, for the screen's last line.
  virtual std::string Hint() const = 0;
  // To the virtual screen, wherever the size of the screen lets it stand.
  virtual void Draw() = 0;
  // False: done.
  virtual bool Take(int key) = 0;
};

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
  // The next key, or ERR when none came in a fraction of a second, so that an interrupt is noticed; KEY_RESIZE
  // after a change of size.
  int ReadKey();
  // The same without waiting.
  int PendingKey();

  // draw: brings what stands behind popups to the virtual screen, with a hint of theirs.
  void SetBackground(std::function<void(const std::string& hint)> draw) { background_ = std::move(draw); }
  // Until it is done, or an interrupt.
  void Run(Popup& popup);

  // Until the operator has read it.
  void ShowBox(const std::string& title, const std::string& text);
  // True for a Yes; the No is proposed.
  bool Ask(const std::string& title, const std::string& question);
  // The position that was chosen from `entries`, or `chosen` where the choice was given up. It stands at
  // `line` and `column` where there is room.
  int PickFrom(const std::vector<std::string>& entries, int chosen, int line, int column);

 private:
  int NextKey(Milliseconds atMost);
  bool TakeSize();
  void MarkPastedText(bool on) const;

  SCREEN* screen_;
  KeyDecoder keys_;
  platform::TerminalSize size_;
  std::function<void(const std::string&)> background_;
};

}  // namespace tesk
