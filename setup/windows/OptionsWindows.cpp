// Making, filling and placing the child windows.
#include "setup/windows/OptionsWindows.h"

#include <commctrl.h>

#include <cstdint>
#include <string>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "platform/windows/Text.h"
#include "platform/windows/VisualStyles.h"
#include "setup/spinField.h"

namespace tesk {
namespace {

constexpr int kFirstCommand = 1000;
constexpr int kFirstArrows = 2000;
constexpr WPARAM kLongestText = 20;      // characters of a spin field
constexpr int kListRows = 16;            // entries that a list shows at once
constexpr UINT kSetMinVisible = 0x1701;  // CB_SETMINVISIBLE

struct WindowKind {
  ControlKind kind;
  const wchar_t* className;
  DWORD style;
  DWORD extendedStyle;
};

constexpr WindowKind kWindowKinds[] = {
    {ControlKind::Label, L"STATIC", SS_LEFT | SS_CENTERIMAGE, 0},
    {ControlKind::CheckBox, L"BUTTON", BS_CHECKBOX | BS_NOTIFY | WS_TABSTOP, 0},
    {ControlKind::OptionButton, L"BUTTON", BS_RADIOBUTTON | BS_NOTIFY | WS_TABSTOP, 0},
    {ControlKind::Frame, L"BUTTON", BS_GROUPBOX, 0},
    {ControlKind::Button, L"BUTTON", BS_PUSHBUTTON | BS_NOTIFY | WS_TABSTOP, 0},
    {ControlKind::DropDownList, L"COMBOBOX", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 0},
    {ControlKind::SpinField, L"EDIT", ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE},
};

const WindowKind& KindOf(const Control& control) {
  return kWindowKinds[static_cast<std::size_t>(control.kind)];
}

// Never without a size: an edit field as wide as nothing scrolls its text out of sight and leaves it there.
HWND NewWindow(HWND parent, const WindowKind& kind, DWORD style, int command) {
  constexpr int kSomeWidth = 200;
  constexpr int kSomeHeight = 20;
  const auto id = reinterpret_cast<HMENU>(static_cast<INT_PTR>(command));
  const HWND window =
      ::CreateWindowExW(kind.extendedStyle, kind.className, L"", kind.style | style | WS_CHILD, 0, 0,
                        kSomeWidth, kSomeHeight, parent, id, platform::OwnModule(), nullptr);
  if (window == nullptr) throw RunTimeError(kErrorInternal, "The system made no window for the setup dialog");
  return window;
}

LPARAM AsParameter(const wchar_t* text) { return reinterpret_cast<LPARAM>(text); }

std::wstring WindowText(HWND window) {
  std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

// The closed list's: it is set without the list's border, whose width is the system's secret.
void SetListHeight(HWND list, std::int32_t height) {
  constexpr auto kClosed = static_cast<WPARAM>(-1);
  ::SendMessageW(list, CB_SETITEMHEIGHT, kClosed, height);
  RECT outside{};
  ::GetWindowRect(list, &outside);
  const std::int32_t border = outside.bottom - outside.top - height;
  if (border > 0 && border < height) ::SendMessageW(list, CB_SETITEMHEIGHT, kClosed, height - border);
}

// A window that is there already does not flicker.
void Move(HWND window, const ControlPlace& place) {
  RECT now{};
  ::GetWindowRect(window, &now);
  ::MapWindowPoints(nullptr, ::GetParent(window), reinterpret_cast<POINT*>(&now), 2);
  if (ControlPlace{now.left, now.top, now.right - now.left, now.bottom - now.top} == place) return;
  ::SetWindowPos(window, nullptr, place.left, place.top, place.width, place.height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
  ::InvalidateRect(window, nullptr, TRUE);
}

}  // namespace

int CommandOf(ControlId id) {
  if (id == ControlId::cmdOK) return IDOK;
  return id == ControlId::cmdCancel ? IDCANCEL : kFirstCommand + static_cast<int>(id);
}

int ArrowsCommandOf(ControlId id) { return kFirstArrows + static_cast<int>(id); }

std::optional<ControlId> ControlOfCommand(int command) {
  for (std::size_t i = 0; i < kControlCount; ++i) {
    if (CommandOf(static_cast<ControlId>(i)) == command) return static_cast<ControlId>(i);
  }
  return std::nullopt;
}

std::optional<ControlId> ControlOfArrows(int command) {
  const bool ours = command >= kFirstArrows && command < kFirstArrows + static_cast<int>(kControlCount);
  return ours ? std::optional(static_cast<ControlId>(command - kFirstArrows)) : std::nullopt;
}

// ---- Making

void OptionsWindows::Create(HWND dialog) {
  const platform::VisualStyles styles;
  pane_.Create(dialog);
  for (const LayoutFrame& frame : OptionFrames()) {
    Add(pane_.Window(), frame.frame, true);
    for (const LayoutRow& row : frame.rows) {
      if (row.label) Add(pane_.Window(), *row.label, false);
      Add(pane_.Window(), row.field, false);
      if (row.beside) Add(pane_.Window(), *row.beside, false);
    }
  }
  bool first = true;
  for (const ControlId button : OptionButtons()) Add(dialog, button, std::exchange(first, false));
  ::SendMessageW(dialog, DM_SETDEFID, IDOK, 0);
}

void OptionsWindows::Add(HWND parent, ControlId id, bool startsGroup) {
  const Control& control = shown_[id];
  DWORD style = startsGroup ? WS_GROUP : 0;
  if (id == ControlId::cmdOK) style |= BS_DEFPUSHBUTTON;
  At(id) = NewWindow(parent, KindOf(control), style, CommandOf(id));
  ::SetWindowTextW(At(id), platform::Utf8ToWide(control.caption).c_str());
  for (const ListEntry& entry : control.entries) {
    ::SendMessageW(At(id), CB_ADDSTRING, 0, AsParameter(platform::Utf8ToWide(entry.text).c_str()));
  }
  if (control.kind == ControlKind::DropDownList) ::SendMessageW(At(id), kSetMinVisible, kListRows, 0);
  if (control.kind == ControlKind::SpinField) {
    ::SendMessageW(At(id), EM_SETLIMITTEXT, kLongestText, 0);
    arrows_[static_cast<std::size_t>(id)] = AddArrows(parent, id);
  }
  if (parent == pane_.Window()) pane_.TakeWheelOf(At(id));
}

HWND OptionsWindows::AddArrows(HWND parent, ControlId id) {
  constexpr WindowKind kArrows{ControlKind::SpinField, UPDOWN_CLASSW, UDS_ARROWKEYS | UDS_NOTHOUSANDS, 0};
  const HWND arrows = NewWindow(parent, kArrows, 0, ArrowsCommandOf(id));
  ::SendMessageW(arrows, UDM_SETBUDDY, reinterpret_cast<WPARAM>(At(id)), 0);
  pane_.TakeWheelOf(arrows);
  return arrows;
}

void OptionsWindows::SetFont(const DialogFont& font) {
  font_ = &font;
  for (const HWND window : windows_) {
    ::SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), TRUE);
  }
  const std::int32_t height = font.Metrics().rowHeight;
  for (std::size_t i = 0; i < kControlCount; ++i) {
    if (shown_[static_cast<ControlId>(i)].kind == ControlKind::DropDownList)
      SetListHeight(windows_[i], height);
  }
}

// ---- Filling

std::string OptionsWindows::Text(ControlId field) const {
  return platform::WideToUtf8(WindowText(Window(field)));
}

LayoutSize OptionsWindows::Show(OptionControls& controls, const LayoutRoom& room) {
  const LayoutMetrics metrics = font_->Metrics();
  const DialogLayout layout = RepositionControls(controls, metrics, room);
  pane_.Fit(layout, metrics);
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const auto id = static_cast<ControlId>(i);
    if (IsShown(controls, id)) Place(id, controls[id]);
    ShowValues(id, controls[id]);
    ShowStates(controls, id);
  }
  shown_ = controls;
  return layout.inside;
}

void OptionsWindows::ShowValues(ControlId id, const Control& control) {
  if (control.kind == ControlKind::DropDownList) return ShowList(id, control);
  if (control.kind == ControlKind::SpinField) return ShowSpin(id, control);
  if (control.caption != shown_[id].caption) {
    ::SetWindowTextW(Window(id), platform::Utf8ToWide(control.caption).c_str());
  }
  const WPARAM check = control.checked ? BST_CHECKED : BST_UNCHECKED;
  if (control.kind == ControlKind::CheckBox) ::SendMessageW(Window(id), BM_SETCHECK, check, 0);
}

void OptionsWindows::ShowList(ControlId id, const Control& list) {
  const HWND window = Window(id);
  if (list.entries != shown_[id].entries) {
    ::SendMessageW(window, CB_RESETCONTENT, 0, 0);
    for (const ListEntry& entry : list.entries) {
      ::SendMessageW(window, CB_ADDSTRING, 0, AsParameter(platform::Utf8ToWide(entry.text).c_str()));
    }
  }
  if (::SendMessageW(window, CB_GETCURSEL, 0, 0) != list.chosen) {
    ::SendMessageW(window, CB_SETCURSEL, static_cast<WPARAM>(list.chosen), 0);
  }
}

void OptionsWindows::ShowSpin(ControlId id, const Control& field) {
  const HWND window = Window(id);
  const bool digitsAlone = !TakesCharacter(field, '-') && !TakesCharacter(field, field.separator);
  const LONG style = ::GetWindowLongW(window, GWL_STYLE);
  ::SetWindowLongW(window, GWL_STYLE, digitsAlone ? style | ES_NUMBER : style & ~ES_NUMBER);
  const std::wstring text = platform::Utf8ToWide(field.text);
  if (WindowText(window) != text) {
    ::SetWindowTextW(window, text.c_str());
    if (::GetFocus() == window) ::SendMessageW(window, EM_SETSEL, 0, -1);
  }
  const HWND arrows = arrows_[static_cast<std::size_t>(id)];
  ::SendMessageW(arrows, UDM_SETRANGE32, static_cast<WPARAM>(field.minimum), field.maximum);
  // Where the arrows believe to stand; a text that is no number yet leaves them there.
  Control settled = field;
  CorrectSpinText(settled);
  if (HoldsNumber(field)) ::SendMessageW(arrows, UDM_SETPOS32, 0, static_cast<LPARAM>(SpinNumber(settled)));
}

void OptionsWindows::ShowStates(const OptionControls& controls, ControlId id) {
  const bool shown = IsShown(controls, id);
  const bool usable = IsUsable(controls, id);
  for (const HWND window : {Window(id), arrows_[static_cast<std::size_t>(id)]}) {
    if (window == nullptr) continue;
    if ((::IsWindowEnabled(window) != FALSE) != usable) ::EnableWindow(window, usable);
    const bool visible = (::GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0;
    if (visible != shown) ::ShowWindow(window, shown ? SW_SHOWNA : SW_HIDE);
  }
}

// ---- Placing

void OptionsWindows::Reveal(ControlId id) {
  if (::GetParent(Window(id)) == pane_.Window()) pane_.Reveal(shown_[id].place);
}

void OptionsWindows::Place(ControlId id, const Control& control) {
  const bool scrolls = ::GetParent(Window(id)) == pane_.Window();
  ControlPlace place = scrolls ? pane_.Scrolled(control.place) : control.place;
  if (control.kind == ControlKind::DropDownList) {
    // The system takes the height that the list has when it is dropped down.
    place.height *= kListRows;
  }
  if (const HWND arrows = arrows_[static_cast<std::size_t>(id)]; arrows != nullptr) {
    const std::int32_t width = font_->ArrowWidth();
    place.width -= width;
    Move(arrows, {place.left + place.width, place.top, width, place.height});
  }
  Move(Window(id), place);
}

}  // namespace tesk
