// Boxes and lists.
#include "setup/terminal/TerminalPopups.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "base/ShownText.h"
#include "base/conversions.h"

namespace tesk {
namespace {

constexpr int kFrame = 2;     // lines, or columns, of both edges
constexpr int kMargin = 2;    // columns between an edge and what is inside
constexpr int kHintLine = 1;  // stays free
constexpr int kBoxWidth = 60;
constexpr int kButtonLines = 2;  // with the blank one above
constexpr int kButtonGap = 2;

// As near to the place as the screen allows, above the hint.
Window Framed(int height, int width, int line, int column) {
  const int lines = std::clamp(height, 1, LINES);
  const int columns = std::clamp(width, 1, COLS);
  Window window(newwin(lines, columns, std::clamp(line, 0, std::max(LINES - kHintLine - lines, 0)),
                       std::clamp(column, 0, COLS - columns)));
  if (window) box(window.get(), 0, 0);
  return window;
}

std::string ButtonText(const std::string& caption) { return "< " + caption + " >"; }

void WriteLit(WINDOW* window, int line, int column, const std::string& text, bool lit) {
  if (lit) wattron(window, A_REVERSE);
  Write(window, line, column, text);
  if (lit) wattroff(window, A_REVERSE);
}

}  // namespace

// ---- Boxes

BoxPopup::BoxPopup(const std::string& title, std::string text, std::vector<std::string> buttons,
                   std::size_t pressed)
    : title_(ShownText(title)),
      text_(std::move(text)),
      buttons_(std::move(buttons)),
      proposed_(pressed),
      current_(pressed) {}

std::string BoxPopup::Hint() const {
  const std::string reading = static_cast<int>(Lines().size()) > Room() ? "Up/Down: read on   " : "";
  if (buttons_.size() == 1) return reading + "Enter: " + buttons_.front();
  return reading + "Left/Right: choose   Enter: press   Esc: " + buttons_[proposed_];
}

// For lines of the text.
int BoxPopup::Room() const { return std::max(LINES - kHintLine - kFrame - kButtonLines, 1); }

std::vector<std::string> BoxPopup::Lines() const {
  const int widest = std::max(COLS - kFrame - kMargin, 1);
  auto lines = Folded(text_, std::min(widest, kBoxWidth));
  if (static_cast<int>(lines.size()) > Room()) lines = Folded(text_, widest);
  return lines;
}

void BoxPopup::Draw() {
  const auto lines = Lines();
  int width = Cells(title_) + kMargin;
  for (const std::string& line : lines) width = std::max(width, Cells(line));
  const int all = static_cast<int>(lines.size());
  const int seen = std::min(Room(), all);
  scroll_ = std::clamp(scroll_, 0, all - seen);
  const int height = seen + kFrame + kButtonLines;
  width += kFrame + kMargin;
  const Window window = Framed(height, width, (LINES - height) / 2, (COLS - width) / 2);
  if (!window) return;
  Write(window.get(), 0, kMargin, " " + title_ + " ");
  for (int row = 0; row < seen; ++row) {
    const int line = scroll_ + row;
    Write(window.get(), row + 1, kMargin, lines[static_cast<std::size_t>(line)]);
  }
  DrawButtons(window.get());
  curs_set(0);
  wnoutrefresh(window.get());
}

void BoxPopup::DrawButtons(WINDOW* window) const {
  int width = -kButtonGap;
  for (const std::string& button : buttons_) width += Cells(ButtonText(button)) + kButtonGap;
  int column = (getmaxx(window) - width) / 2;
  for (std::size_t at = 0; at < buttons_.size(); ++at) {
    const std::string text = ButtonText(buttons_[at]);
    WriteLit(window, getmaxy(window) - 2, column, text, at == current_);
    column += Cells(text) + kButtonGap;
  }
}

bool BoxPopup::PressInitial(char typed) {
  if (buttons_.size() == 1) return false;
  const auto pressed = std::ranges::find_if(buttons_, [typed](const std::string& button) {
    return std::toupper(static_cast<unsigned char>(typed)) == button.front();
  });
  if (pressed == buttons_.end()) return false;
  current_ = static_cast<std::size_t>(pressed - buttons_.begin());
  return true;
}

bool BoxPopup::Take(int key) {
  const std::size_t count = buttons_.size();
  if (key == KEY_UP) --scroll_;
  if (key == KEY_DOWN) ++scroll_;
  if (key == KEY_RIGHT || key == kTab) current_ = (current_ + 1) % count;
  if (key == KEY_LEFT || key == KEY_BTAB) current_ = (current_ + count - 1) % count;
  if (key == kEscape) current_ = proposed_;
  const bool typed = key > kBlank && key < 127 && PressInitial(static_cast<char>(key));
  return !typed && key != kEscape && key != kBlank && !IsEnter(key);
}

// ---- Lists

ListPopup::ListPopup(const std::vector<std::string>& entries, int chosen, int line, int column)
    : entries_(entries), picked_(chosen), current_(std::max(chosen, 0)), line_(line), column_(column) {}

std::string ListPopup::Hint() const { return "Type a name   Up/Down: move   Enter: choose   Esc: back"; }

int ListPopup::Rows() const { return std::clamp(LINES - kHintLine - kFrame, 1, Last() + 1); }

void ListPopup::Draw() {
  int width = 0;
  for (const std::string& entry : entries_) width = std::max(width, Cells(entry));
  const int rows = Rows();
  const Window window = Framed(rows + kFrame, width + kFrame + kMargin, line_, column_);
  if (!window) return;
  first_ = std::clamp(first_, std::max(current_ - rows + 1, 0), current_);
  first_ = std::min(first_, Last() + 1 - rows);
  for (int row = 0; row < rows; ++row) {
    const int position = first_ + row;
    std::string text = ' ' + entries_[static_cast<std::size_t>(position)];
    const int blanks = width + kMargin - Cells(text);
    text.append(static_cast<std::size_t>(blanks), ' ');
    WriteLit(window.get(), row + 1, 1, text, position == current_);
  }
  if (!typed_.empty()) Write(window.get(), rows + 1, kMargin, ' ' + typed_ + ' ');
  curs_set(0);
  wnoutrefresh(window.get());
}

// How far a key moves; the ends stop it.
int ListPopup::StepOf(int key) const {
  switch (key) {
    case KEY_UP:
      return -1;
    case KEY_DOWN:
      return 1;
    case KEY_PPAGE:
      return -Rows();
    case KEY_NPAGE:
      return Rows();
    case KEY_HOME:
      return -Last();
    case KEY_END:
      return Last();
    default:
      return 0;
  }
}

void ListPopup::MoveTo(int position) {
  current_ = std::clamp(position, 0, Last());
  typed_.clear();
}

// From the current entry on, and around: names that begin with what is typed, then names that contain it.
void ListPopup::Search(const std::string& typed) {
  const std::string wanted = LowerCase(typed);
  for (const bool begins : {true, false}) {
    for (int step = 0; step <= Last(); ++step) {
      const int position = (current_ + step) % (Last() + 1);
      const std::size_t found = LowerCase(entries_[static_cast<std::size_t>(position)]).find(wanted);
      if (found == std::string::npos || (begins && found > 0)) continue;
      current_ = position;
      typed_ = typed;
      return;
    }
  }
  beep();
}

bool ListPopup::Take(int key) {
  const char text = TextOf(key);
  const bool picks = IsEnter(key) || (key == kBlank && typed_.empty());
  if (picks) picked_ = current_;
  if (picks || key == kEscape) return false;
  if (StepOf(key) != 0) {
    MoveTo(current_ + StepOf(key));
  } else if (IsBackspace(key)) {
    if (!typed_.empty()) typed_.pop_back();
  } else if (text != '\0') {
    Search(typed_ + text);
  }
  return true;
}

}  // namespace tesk
