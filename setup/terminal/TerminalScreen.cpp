// The terminal's life and its keys.
#include "setup/terminal/TerminalScreen.h"

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <utility>

#include "base/RunTimeError.h"
#include "base/ShownText.h"
#include "platform/Platform.h"
#include "setup/terminal/TerminalPopups.h"
#include "setup/terminal/terminalKind.h"

namespace tesk {
namespace {

using Steady = std::chrono::steady_clock;

constexpr Milliseconds kPatience(200);  // that a key is waited for

bool Continues(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// The bytes of the first `cells` characters.
std::size_t BytesOf(const std::string& text, int cells) {
  std::size_t bytes = 0;
  while (bytes < text.size() && cells-- > 0) {
    do ++bytes;
    while (bytes < text.size() && Continues(text[bytes]));
  }
  return bytes;
}

}  // namespace

void Write(WINDOW* window, int line, int column, const std::string& text) {
  mvwaddnstr(window, line, column, text.c_str(), static_cast<int>(text.size()));
}

int Cells(std::string_view text) {
  return static_cast<int>(std::ranges::count_if(text, [](char c) { return !Continues(c); }));
}

std::vector<std::string> Folded(const std::string& text, int width) {
  std::vector<std::string> lines(1);
  std::string word;
  const auto take = [&] {
    const bool fits = lines.back().empty() || Cells(lines.back()) + 1 + Cells(word) <= width;
    if (!fits) lines.emplace_back();
    if (!lines.back().empty()) lines.back() += ' ';
    for (; Cells(word) > width; lines.emplace_back()) {
      const std::size_t piece = BytesOf(word, width);
      lines.back() += word.substr(0, piece);
      word.erase(0, piece);
    }
    lines.back() += std::exchange(word, {});
  };
  for (const char c : text) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '|' || c == '\n') {
      take();
      if (c == '|' || c == '\n') lines.emplace_back();
    } else {
      word += c;
    }
  }
  take();
  for (std::string& line : lines) line = ShownText(line);
  return lines;
}

TerminalScreen::TerminalScreen() : size_(platform::CurrentTerminalSize()) {
  std::setlocale(LC_CTYPE, "");
  screen_ = newterm(nullptr, stdout, stdin);
  if (screen_ == nullptr) {
    throw RunTimeError(kErrorInternal, "this terminal cannot be drawn on");
  }
  cbreak();
  noecho();
  nonl();
  // Keys that are typed ahead must not keep the screen from being drawn: it is drawn once for each.
  typeahead(-1);
  for (const auto& [sequence, key] : DescribedKeys()) keys_.Describe(sequence, key);
  MarkPastedText(true);
}

TerminalScreen::~TerminalScreen() {
  MarkPastedText(false);
  endwin();
  delscreen(screen_);
}

// Terminals that can put marks around what is pasted: it comes as keys otherwise, and would press buttons.
void TerminalScreen::MarkPastedText(bool on) const {
  if (!IgnoresUnknownModes()) return;
  std::fputs(on ? "\x1b[?2004h" : "\x1b[?2004l", stdout);
  std::fflush(stdout);
}

int TerminalScreen::Width() const { return COLS; }
int TerminalScreen::Height() const { return LINES; }

int TerminalScreen::ReadKey() { return NextKey(kPatience); }
int TerminalScreen::PendingKey() { return NextKey(Milliseconds::zero()); }

int TerminalScreen::NextKey(Milliseconds atMost) {
  if (TakeSize()) return KEY_RESIZE;
  // First what is there: an Escape that has waited long may have been followed at once.
  keys_.Receive(platform::ReadTyped(Milliseconds::zero()), Steady::now());
  const int key = keys_.Next(Steady::now());
  if (key != ERR || platform::Interrupted()) return key;
  keys_.Receive(platform::ReadTyped(keys_.Patience(Steady::now(), atMost)), Steady::now());
  return keys_.Next(Steady::now());
}

bool TerminalScreen::TakeSize() {
  const platform::TerminalSize size = platform::CurrentTerminalSize();
  if (size == size_ || size.columns < 1 || size.lines < 1) return false;
  size_ = size;
  resizeterm(size.lines, size.columns);
  return true;
}

void TerminalScreen::Run(Popup& popup) {
  while (!platform::Interrupted()) {
    if (background_) background_(popup.Hint());
    popup.Draw();
    doupdate();
    const int key = ReadKey();
    if (key != ERR && key != KEY_RESIZE && !popup.Take(key)) return;
  }
}

void TerminalScreen::ShowBox(const std::string& title, const std::string& text) {
  BoxPopup popup(title, text, {"OK"}, 0);
  Run(popup);
}

bool TerminalScreen::Ask(const std::string& title, const std::string& question) {
  constexpr std::size_t kYes = 0;
  constexpr std::size_t kNo = 1;
  BoxPopup popup(title, question, {"Yes", "No"}, kNo);
  Run(popup);
  return !platform::Interrupted() && popup.Pressed() == kYes;
}

int TerminalScreen::PickFrom(const std::vector<std::string>& entries, int chosen, int line, int column) {
  if (entries.empty()) return chosen;
  ListPopup popup(entries, chosen, line, column);
  Run(popup);
  return popup.Picked();
}

}  // namespace tesk
