// What pops up over the setup dialog in a terminal: boxes with a text and buttons, and lists. Knows the
// terminal's screen.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "setup/terminal/TerminalScreen.h"

namespace tesk {

// A text and one or two buttons. What does not fit is scrolled.
class BoxPopup : public Popup {
 public:
  // pressed: the button that is proposed, and the one that Escape presses.
  BoxPopup(const std::string& title, std::string text, std::vector<std::string> buttons, std::size_t pressed);

  std::string Hint() const override;
  void Draw() override;
  bool Take(int key) override;

  std::size_t Pressed() const { return current_; }

 private:
  std::vector<std::string> Lines() const;
  int Room() const;
  void DrawButtons(WINDOW* window) const;
  bool PressInitial(char typed);

  std::string title_;
  std::string text_;
  std::vector<std::string> buttons_;
  std::size_t proposed_;
  std::size_t current_;
  int scroll_ = 0;
};

// A list that is searched by typing.
class ListPopup : public Popup {
 public:
  // chosen: a position, or below 0 for none. line, column: of its upper left corner.
  ListPopup(const std::vector<std::string>& entries, int chosen, int line, int column);

  std::string Hint() const override;
  void Draw() override;
  bool Take(int key) override;

  // The position that was chosen; `chosen` where it was given up.
  int Picked() const { return picked_; }

 private:
  int Last() const { return static_cast<int>(entries_.size()) - 1; }
  int Rows() const;
  int StepOf(int key) const;
  void MoveTo(int position);
  void Search(const std::string& typed);

  const std::vector<std::string>& entries_;
  int picked_;
  int current_;
  int line_;
  int column_;
  int first_ = 0;      // the entry in the first row
  std::string typed_;  // of a name that is searched
};

}  // namespace tesk
