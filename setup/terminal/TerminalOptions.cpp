// Fields, keys and scrolling.
#include "setup/terminal/TerminalOptions.h"

#include <algorithm>
#include <iterator>
#include <ranges>

#include "base/HostServices.h"
#include "platform/Platform.h"
#include "setup/spinField.h"

namespace tesk {
namespace {

constexpr int kTop = 2;           // lines above the fields: the title and a blank one
constexpr int kBottom = 2;        // lines below: a blank one and the hint
constexpr int kFewestLines = 12;  // of a terminal
constexpr int kIndent = 2;
constexpr int kSpinWidth = 12;
constexpr int kListArrow = 2;

// What keys do, by the kind of control that has the focus. The keys for the whole follow.
struct HintRow {
  ControlKind kind;
  const char* keys;
};

constexpr const char* kWholeHint = "   F10: OK   Esc: cancel";
constexpr const char* kSearchHint = "Searching the ports ... Esc ends the search";
constexpr HintRow kHints[] = {
    {ControlKind::DropDownList, "Enter: list   Left/Right: change"},
    {ControlKind::SpinField, "Type a number, or Left/Right: change"},
    {ControlKind::CheckBox, "Space: tick or clear"},
    {ControlKind::Button, "Enter: press   Tab: next"},
};

std::string Boxed(const Control& box) {
  return (box.checked ? "[x] " : "[ ] ") + basPublic::ShownCaption(box.caption);
}

std::string Padded(const std::string& text, int width) {
  const int cells = Cells(text);
  return cells < width ? text + std::string(static_cast<std::size_t>(width - cells), ' ') : text;
}

int StepOf(int key) { return key == KEY_RIGHT || key == '+' ? 1 : key == KEY_LEFT ? -1 : 0; }

std::string Trimmed(const char* text) {
  const std::string all = text == nullptr ? "" : text;
  const std::size_t first = all.find_first_not_of(' ');
  return first == std::string::npos ? "" : all.substr(first, all.find_last_not_of(' ') - first + 1);
}

}  // namespace

TerminalOptions::TerminalOptions(TerminalScreen& screen, clsTeskReader& reader)
    : screen_(screen), form_(reader, *this) {
  screen_.SetBackground([this](const std::string& hint) { Compose(hint); });
}

TerminalOptions::~TerminalOptions() {
  screen_.SetBackground(nullptr);
  ClearForm();
}

bool TerminalOptions::Run(const std::vector<OperatorMessage>& first) {
  form_.LoadValues();
  opened_ = form_.Controls();
  for (const OperatorMessage& message : first) ShowInformation(message.title, message.text);
  while (!closed_ && !platform::Interrupted()) {
    Draw();
    const int key = screen_.ReadKey();
    if (key != ERR) Handle(key);
  }
  return closed_ && form_.Confirmed();
}

bool TerminalOptions::RunMessages() {
  if (!searching_) return false;
  const int key = screen_.PendingKey();
  if (key == KEY_RESIZE) Draw();
  if (key == kEscape || platform::Interrupted()) form_.Click(ControlId::cmdCancel);
  return key != ERR;
}

// ---- What the form asks for

void TerminalOptions::SetFocus(ControlId id) {
  focus_ = id;
  stale_ = true;
}

void TerminalOptions::Beep() { beep(); }

void TerminalOptions::SetHourglass(bool on) {
  searching_ = on;
  Draw();
}

void TerminalOptions::ShowInformation(const std::string& title, const std::string& text) {
  screen_.ShowBox(title, text);
}

void TerminalOptions::ShowWarning(const std::string& title, const std::string& text) {
  ShowInformation(title, text);
}

// ---- Making the fields

TerminalOptions::Columns TerminalOptions::Measure() const {
  Columns columns;
  int widest = kSpinWidth;
  for (const LayoutFrame& frame : OptionFrames()) {
    for (const LayoutRow& row : frame.rows) {
      const Control& field = form_.Controls()[row.field];
      if (row.label) {
        const std::string& label = form_.Controls()[*row.label].caption;
        columns.label = std::max(columns.label, Cells(basPublic::ShownCaption(label)));
      }
      if (field.kind == ControlKind::CheckBox) widest = std::max(widest, Cells(Boxed(field)));
      for (const ListEntry& entry : field.entries) widest = std::max(widest, Cells(entry.text) + kListArrow);
    }
  }
  columns.value = kIndent + columns.label + 1;
  columns.width = columns.value + widest + kIndent;
  return columns;
}

void TerminalOptions::ClearForm() {
  if (fields_ != nullptr) {
    unpost_form(fields_);
    free_form(fields_);
  }
  for (FIELD* field : all_) {
    if (field != nullptr) free_field(field);
  }
  fields_ = nullptr;
  all_.clear();
  ids_.clear();
}

void TerminalOptions::Rebuild() {
  const std::optional<ControlId> wanted = fields_ != nullptr && !focus_ ? Current() : focus_;
  focus_.reset();
  stale_ = false;
  ClearForm();
  columns_ = Measure();
  const int line = AddFrames(columns_);
  AddButtons(line, columns_);
  lines_ = line + 1;
  all_.push_back(nullptr);
  fields_ = new_form(all_.data());
  form_opts_off(fields_, O_BS_OVERLOAD);
  pad_.reset(newpad(lines_, columns_.width));
  set_form_win(fields_, pad_.get());
  set_form_sub(fields_, pad_.get());
  post_form(fields_);
  for (const auto& [field, id] : ids_) {
    if (id == wanted && (field_opts(field) & O_ACTIVE) != 0) set_current_field(fields_, field);
  }
  if (CurrentKind() == ControlKind::SpinField) form_driver(fields_, REQ_END_LINE);
}

void TerminalOptions::AddText(const std::string& text, int line, int column, chtype look) {
  FIELD* field = new_field(1, std::max(Cells(text), 1), line, column, 0, 0);
  set_field_buffer(field, 0, text.c_str());
  field_opts_off(field, O_ACTIVE);
  set_field_back(field, look);
  all_.push_back(field);
}

void TerminalOptions::AddField(ControlId id, int line, int column, int width) {
  const bool usable = IsUsable(form_.Controls(), id);
  const ControlKind kind = form_.Controls()[id].kind;
  FIELD* field = new_field(1, width, line, column, 0, 0);
  set_field_buffer(field, 0, Shown(id, width).c_str());
  if (kind != ControlKind::SpinField) field_opts_off(field, O_EDIT);
  if (!usable) field_opts_off(field, O_ACTIVE);
  const bool valued = kind == ControlKind::SpinField || kind == ControlKind::DropDownList;
  set_field_back(field, !usable ? A_DIM : valued ? A_UNDERLINE : A_NORMAL);
  all_.push_back(field);
  ids_[field] = id;
}

// In `width` columns, where that matters.
std::string TerminalOptions::Shown(ControlId id, int width) const {
  const Control& control = form_.Controls()[id];
  switch (control.kind) {
    case ControlKind::CheckBox:
      return Boxed(control);
    case ControlKind::Button:
      return "< " + basPublic::ShownCaption(control.caption) + " >";
    case ControlKind::DropDownList: {
      const ListEntry* entry = ChosenEntry(control);
      const std::string text = entry == nullptr ? "" : entry->text;
      return Padded(text, width - 1) + "v";
    }
    default:
      return control.text;
  }
}

// Yields the line behind the last frame.
int TerminalOptions::AddFrames(const Columns& columns) {
  int line = 0;
  for (const LayoutFrame& frame : OptionFrames()) {
    if (!IsShown(form_.Controls(), frame.frame)) continue;
    AddText(basPublic::ShownCaption(form_.Controls()[frame.frame].caption), line++, 0, A_BOLD);
    for (const LayoutRow& row : frame.rows) {
      if (IsShown(form_.Controls(), row.field)) AddRow(row, line++, columns);
    }
  }
  return line + 1;
}

void TerminalOptions::AddRow(const LayoutRow& row, int line, const Columns& columns) {
  const Control& field = form_.Controls()[row.field];
  if (row.label) {
    const chtype look = IsUsable(form_.Controls(), row.field) ? A_NORMAL : A_DIM;
    AddText(basPublic::ShownCaption(form_.Controls()[*row.label].caption), line, kIndent, look);
  }
  int width = columns.width - kIndent - columns.value;
  if (field.kind == ControlKind::SpinField) width = kSpinWidth;
  if (field.kind == ControlKind::CheckBox) return AddField(row.field, line, kIndent, Cells(Shown(row.field)));
  const bool beside = row.beside && IsShown(form_.Controls(), *row.beside);
  const int button = beside ? Cells(Shown(*row.beside)) : 0;
  if (beside) width -= button + 1;
  AddField(row.field, line, columns.value, width);
  if (beside) AddField(*row.beside, line, columns.value + width + 1, button);
}

void TerminalOptions::AddButtons(int line, const Columns& columns) {
  int right = columns.width - kIndent;
  std::vector<std::pair<ControlId, int>> places;
  for (const ControlId id : {ControlId::cmdCancel, ControlId::cmdOK}) {
    right -= Cells(Shown(id));
    places.emplace_back(id, right--);
  }
  AddField(ControlId::cmdDefaults, line, kIndent, Cells(Shown(ControlId::cmdDefaults)));
  for (const auto& [id, column] : std::views::reverse(places)) AddField(id, line, column, Cells(Shown(id)));
}

// ---- Drawing

int TerminalOptions::LeastWidth() const {
  int hint = 0;
  for (const HintRow& row : kHints) hint = std::max(hint, Cells(row.keys) + Cells(kWholeHint));
  return std::max(columns_.width, kIndent + hint + 1);
}

bool TerminalOptions::TooSmall() const {
  return screen_.Height() < kFewestLines || screen_.Width() < LeastWidth();
}

void TerminalOptions::ScrollTo(int line) {
  const int seen = screen_.Height() - kTop - kBottom;
  scroll_ = std::clamp(scroll_, std::max(line - seen + 1, 0), std::max(line - 1, 0));
  scroll_ = std::clamp(scroll_, 0, std::max(lines_ - seen, 0));
}

std::string TerminalOptions::Hint() const {
  if (searching_) return kSearchHint;
  const auto* row = std::ranges::find(kHints, CurrentKind(), &HintRow::kind);
  return row == std::end(kHints) ? "" : std::string(row->keys) + kWholeHint;
}

void TerminalOptions::Draw() {
  Compose({});
  doupdate();
}

// hint: of what stands over the form; empty for the form's own.
void TerminalOptions::Compose(const std::string& hint) {
  if (stale_) Rebuild();
  if (TooSmall()) return ComposeTooSmall(!hint.empty());
  int line = 0;
  int rest = 0;
  FIELD* const current = current_field(fields_);
  field_info(current, &rest, &rest, &line, &rest, &rest, &rest);
  ScrollTo(line);
  const chtype before = field_back(current);
  set_field_back(current, A_REVERSE);
  ComposeFrame(hint.empty() ? Hint() : hint);
  curs_set(CurrentKind() == ControlKind::SpinField ? 1 : 0);
  pos_form_cursor(fields_);
  const int lowest = screen_.Height() - 1 - kBottom;
  pnoutrefresh(pad_.get(), scroll_, 0, kTop, 0, lowest, columns_.width - 1);
  set_field_back(current, before);
}

void TerminalOptions::ComposeFrame(const std::string& hint) {
  const int last = screen_.Height() - 1;
  const int seen = last + 1 - kTop - kBottom;
  const int aside = screen_.Width() - 6;
  werase(stdscr);
  wattron(stdscr, A_BOLD);
  Write(stdscr, 0, kIndent, form_.Caption());
  wattroff(stdscr, A_BOLD);
  Write(stdscr, last, kIndent, hint);
  if (scroll_ > 0) Write(stdscr, kTop - 1, aside, "more");
  if (scroll_ + seen < lines_) Write(stdscr, last - 1, aside, "more");
  wnoutrefresh(stdscr);
}

void TerminalOptions::ComposeTooSmall(bool covered) {
  const std::string text = "This terminal is too small: the settings need " + std::to_string(LeastWidth()) +
                           " columns and " + std::to_string(kFewestLines) +
                           " lines. Make it larger, or press Esc to " +
                           (searching_ ? "end the search." : "cancel.");
  int line = 0;
  werase(stdscr);
  for (const std::string& each : Folded(covered ? "" : text, std::max(screen_.Width() - 1, 1))) {
    Write(stdscr, line++, 0, each);
  }
  curs_set(0);
  wnoutrefresh(stdscr);
}

// ---- Keys

ControlId TerminalOptions::Current() const { return ids_.at(current_field(fields_)); }

ControlKind TerminalOptions::CurrentKind() const { return form_.Controls()[Current()].kind; }

void TerminalOptions::Handle(int key) {
  if (key == kEscape) return GiveUp();
  if (TooSmall()) return;
  switch (key) {
    case KEY_RESIZE:
      return;
    case KEY_F(10):
      return form_.Click(ControlId::cmdOK);
    case kTab:
    case KEY_DOWN:
      return Move(REQ_NEXT_FIELD);
    case KEY_BTAB:
    case KEY_UP:
      return Move(REQ_PREV_FIELD);
    default:
      HandleField(key);
  }
}

bool TerminalOptions::IsChanged() const {
  for (const ControlId id : TabOrder()) {
    const Control& before = opened_[id];
    const Control& now = form_.Controls()[id];
    if (before.chosen != now.chosen || before.checked != now.checked || before.text != now.text) return true;
  }
  return false;
}

// The button for it asks nothing: it is not pressed by mistake.
void TerminalOptions::GiveUp() {
  const bool leaves =
      !IsChanged() || screen_.Ask(form_.Caption(), LoadString("The settings were changed and are not saved. "
                                                              "Leave without saving them?"));
  if (leaves) form_.Click(ControlId::cmdCancel);
}

void TerminalOptions::Move(int request) {
  LeaveField();
  form_driver(fields_, request);
  if (CurrentKind() == ControlKind::SpinField) form_driver(fields_, REQ_END_LINE);
}

void TerminalOptions::LeaveField() {
  const ControlId id = Current();
  if (form_.Controls()[id].kind == ControlKind::SpinField) form_.Leave(id);
  if (stale_) Rebuild();
}

void TerminalOptions::HandleField(int key) {
  const ControlKind kind = CurrentKind();
  if (kind == ControlKind::SpinField) return HandleSpin(key);
  if (kind == ControlKind::DropDownList && StepOf(key) != 0) return Step(Current(), StepOf(key));
  if (IsEnter(key) || key == kBlank) Activate();
}

void TerminalOptions::HandleSpin(int key) {
  const ControlId id = Current();
  if (StepOf(key) != 0) return form_.Spin(id, StepOf(key));
  if (IsEnter(key)) return Move(REQ_NEXT_FIELD);
  const char text = TextOf(key);
  if (IsBackspace(key)) {
    form_driver(fields_, REQ_DEL_PREV);
  } else if (key == KEY_DC) {
    form_driver(fields_, REQ_DEL_CHAR);
  } else if (text == kBlank || text == '\0') {
    return;
  } else if (!TakesCharacter(form_.Controls()[id], text) || form_driver(fields_, text) != E_OK) {
    return Beep();
  }
  TakeText();
}

// At the ends of the list nothing happens: choosing a reader again would undo what was changed since.
void TerminalOptions::Step(ControlId list, int step) {
  const Control& control = form_.Controls()[list];
  const int position = control.chosen + step;
  if (position < 0 || position >= static_cast<int>(control.entries.size())) return;
  form_.Select(list, position);
  stale_ = true;
}

void TerminalOptions::TakeText() {
  form_driver(fields_, REQ_VALIDATION);
  form_.Type(Current(), Trimmed(field_buffer(current_field(fields_), 0)));
}

void TerminalOptions::Activate() {
  const ControlId id = Current();
  if (CurrentKind() == ControlKind::DropDownList) {
    Pick(id);
  } else {
    form_.Click(id);
  }
  stale_ = true;
}

void TerminalOptions::Pick(ControlId list) {
  const Control& control = form_.Controls()[list];
  std::vector<std::string> entries;
  for (const ListEntry& entry : control.entries) entries.push_back(entry.text);
  int line = 0;
  int column = 0;
  int rest = 0;
  field_info(current_field(fields_), &rest, &rest, &line, &column, &rest, &rest);
  const int picked = screen_.PickFrom(entries, control.chosen, kTop + line - scroll_, column);
  // Choosing a reader again must not undo what was changed since.
  if (picked != control.chosen) form_.Select(list, picked);
}

}  // namespace tesk
