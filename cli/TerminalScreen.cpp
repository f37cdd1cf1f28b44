// Windows over the terminal.
#include "cli/TerminalScreen.h"

#include <algorithm>
#include <clocale>
#include <cstdio>

#include "cli/CommandError.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

constexpr int kPatience = 200;  // milliseconds that a key is waited for
constexpr int kEscapeDelay = 50;

void Write(WINDOW* window, int line, int column, const std::string& text) {
  mvwaddnstr(window, line, column, text.c_str(), static_cast<int>(text.size()));
}

// What a key asks of a menu: letters search, what means nothing is refused by the menu.
int RequestOf(int key) {
  switch (key) {
    case KEY_UP:
      return REQ_UP_ITEM;
    case KEY_DOWN:
      return REQ_DOWN_ITEM;
    case KEY_PPAGE:
      return REQ_SCR_UPAGE;
    case KEY_NPAGE:
      return REQ_SCR_DPAGE;
    case KEY_HOME:
      return REQ_FIRST_ITEM;
    case KEY_END:
      return REQ_LAST_ITEM;
    default:
      return key > kBlank && key < 127 ? key : 0;
  }
}

}  // namespace

bool IsEnter(int key) { return key == '\n' || key == '\r' || key == KEY_ENTER; }

int Cells(std::string_view text) {
  return static_cast<int>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::vector<std::string> Folded(const std::string& text, int width) {
  std::vector<std::string> lines(1);
  std::string word;
  const auto take = [&] {
    std::string& line = lines.back();
    const bool fits = line.empty() || Cells(line) + 1 + Cells(word) <= width;
    if (!fits) lines.emplace_back();
    if (!lines.back().empty()) lines.back() += ' ';
    lines.back() += word;
    word.clear();
  };
  for (const char c : text) {
    if (c == ' ' || c == '|') {
      take();
      if (c == '|') lines.emplace_back();
    } else {
      word += c;
    }
  }
  take();
  return lines;
}

TerminalScreen::TerminalScreen() {
  std::setlocale(LC_CTYPE, "");
  screen_ = newterm(nullptr, stdout, stdin);
  if (screen_ == nullptr) {
    throw CommandFailure("this terminal cannot be drawn on");
  }
  cbreak();
  noecho();
  nonl();
  keypad(stdscr, TRUE);
  set_escdelay(kEscapeDelay);
  wtimeout(stdscr, kPatience);
}

TerminalScreen::~TerminalScreen() {
  endwin();
  delscreen(screen_);
}

int TerminalScreen::Width() const { return COLS; }
int TerminalScreen::Height() const { return LINES; }

int TerminalScreen::ReadKey() { return wgetch(stdscr); }

int TerminalScreen::PendingKey() {
  wtimeout(stdscr, 0);
  const int key = wgetch(stdscr);
  wtimeout(stdscr, kPatience);
  return key;
}

Window TerminalScreen::Framed(int height, int width, int line, int column) const {
  Window window(newwin(std::min(height, LINES), std::min(width, COLS),
                       std::clamp(line, 0, std::max(LINES - height, 0)),
                       std::clamp(column, 0, std::max(COLS - width, 0))));
  if (window) box(window.get(), 0, 0);
  return window;
}

void TerminalScreen::ShowBox(const std::string& title, const std::string& text) {
  constexpr int kWidth = 60;
  const auto lines = Folded(text, std::min(kWidth, COLS - 4));
  int width = Cells(title) + 4;
  for (const std::string& line : lines) width = std::max(width, Cells(line));
  const int height = static_cast<int>(lines.size()) + 4;
  const Window window = Framed(height, width + 4, (LINES - height) / 2, (COLS - width - 4) / 2);
  if (!window) return;
  Write(window.get(), 0, 2, " " + title + " ");
  int line = 1;
  for (const std::string& each : lines) Write(window.get(), line++, 2, each);
  wattron(window.get(), A_REVERSE);
  Write(window.get(), height - 2, (width + 4 - 6) / 2, "< OK >");
  wattroff(window.get(), A_REVERSE);
  curs_set(0);
  touchwin(window.get());
  wrefresh(window.get());
  for (int key = ERR; !platform::Interrupted() && !IsEnter(key) && key != kEscape && key != kBlank;) {
    key = ReadKey();
  }
}

int TerminalScreen::PickFrom(const std::vector<std::string>& entries, int chosen, int line, int column) {
  if (entries.empty()) return chosen;
  std::vector<ITEM*> items;
  int width = 0;
  for (const std::string& entry : entries) {
    items.push_back(new_item(entry.c_str(), nullptr));
    width = std::max(width, Cells(entry));
  }
  items.push_back(nullptr);
  MENU* menu = new_menu(items.data());
  const int rows = std::min(static_cast<int>(entries.size()), LINES - 4);
  set_menu_format(menu, rows, 1);
  set_menu_mark(menu, " ");
  const Window window = Framed(rows + 2, width + 4, line, column);
  const Window inside(derwin(window.get(), rows, width + 2, 1, 1));
  set_menu_win(menu, window.get());
  set_menu_sub(menu, inside.get());
  if (chosen >= 0) set_current_item(menu, items[static_cast<std::size_t>(chosen)]);
  post_menu(menu);
  curs_set(0);
  int picked = chosen;
  for (bool open = true; open && !platform::Interrupted();) {
    wrefresh(window.get());
    const int key = ReadKey();
    open = !IsEnter(key) && key != kBlank && key != kEscape && key != KEY_RESIZE;
    if (IsEnter(key) || key == kBlank) picked = item_index(current_item(menu));
    menu_driver(menu, RequestOf(key));
  }
  unpost_menu(menu);
  free_menu(menu);
  for (ITEM* item : items) {
    if (item != nullptr) free_item(item);
  }
  return picked;
}

}  // namespace tesk::cli
