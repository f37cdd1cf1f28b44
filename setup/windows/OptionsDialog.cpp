// The dialog's messages. The system's own modal loop runs it.
#include "setup/windows/OptionsDialog.h"

#include <commctrl.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "platform/windows/Text.h"
#include "platform/windows/VisualStyles.h"
#include "setup/windows/HelpViewer.h"

#ifndef WM_DPICHANGED
#define WM_DPICHANGED 0x02E0
#endif

namespace tesk {
namespace {

RECT RectangleOf(HWND window) {
  RECT rectangle{};
  ::GetWindowRect(window, &rectangle);
  return rectangle;
}

// Of the screen that the window is on, without the task bar.
RECT WorkArea(HWND window) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  ::GetMonitorInfoW(::MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
  return monitor.rcWork;
}

// Within [low, high]; where it does not fit, its beginning is what is seen.
LONG Within(LONG start, LONG length, LONG low, LONG high) {
  return std::max(std::min(start, high - length), low);
}

POINT CentreOf(const RECT& area, SIZE size) {
  return {(area.left + area.right - size.cx) / 2, (area.top + area.bottom - size.cy) / 2};
}

// The host's window, or its active one where it named none or one that is gone.
HWND OwnerOf(const std::shared_ptr<HostObject>& parent) {
  const auto named = reinterpret_cast<HWND>(parent ? parent->WindowHandle() : 0);
  const HWND window = ::IsWindow(named) ? named : ::GetActiveWindow();
  return window != nullptr ? ::GetAncestor(window, GA_ROOT) : nullptr;
}

bool GetsFocus(ControlKind kind, int notification) {
  if (kind == ControlKind::DropDownList) return notification == CBN_SETFOCUS;
  return notification == (kind == ControlKind::SpinField ? EN_SETFOCUS : BN_SETFOCUS);
}

// Empty for a window that is none of the dialog's controls.
std::optional<ControlId> ControlOfWindow(HWND dialog, HWND window) {
  if (window == nullptr || !::IsChild(dialog, window)) return std::nullopt;
  return ControlOfCommand(::GetDlgCtrlID(window));
}

class WindowSetupDialog : public SetupDialog {
 public:
  bool Show(clsTeskReader& reader, std::int32_t helpTopic,
            const std::shared_ptr<HostObject>& parent) override {
    OptionsDialog dialog(reader, helpTopic);
    return dialog.Run(OwnerOf(parent));
  }
};

}  // namespace

std::shared_ptr<SetupDialog> CreateSetupDialog() { return std::make_shared<WindowSetupDialog>(); }

OptionsDialog::OptionsDialog(clsTeskReader& reader, std::int32_t helpTopic)
    : reader_(reader), helpTopic_(helpTopic), form_(reader, *this) {}

bool OptionsDialog::Run(HWND owner) {
  form_.LoadValues();
  owner_ = owner;
  EmptyDialog empty;
  empty.header.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFOREGROUND;
  const INT_PTR result = ::DialogBoxIndirectParamW(platform::OwnModule(), &empty.header, owner, &Procedure,
                                                   reinterpret_cast<LPARAM>(this));
  if (result == -1) throw RunTimeError(kErrorInternal, "The window of the setup dialog cannot be made");
  return form_.Confirmed();
}

// ---- What the form asks for

void OptionsDialog::Unload() {
  if (window_ != nullptr) ::EndDialog(window_, 0);
}

void OptionsDialog::Refresh() {
  if (window_ == nullptr || font_ == nullptr) return;
  const HWND focus = ::GetFocus();
  refreshing_ = true;
  NoteMove();
  FitTo(windows_.Show(form_.Controls(), Room()));
  refreshing_ = false;
  // A control that is hidden or disabled under the user's hands would take the keyboard with it.
  const bool ours = focus != nullptr && ::IsChild(window_, focus) && ::IsWindowVisible(window_);
  if (ours && (!::IsWindowVisible(focus) || !::IsWindowEnabled(focus))) SetFocus(ControlId::cboReaderType);
}

// Through the dialog, which moves the mark of the default button along.
void OptionsDialog::SetFocus(ControlId id) {
  const HWND window = windows_.Window(id);
  if (window_ != nullptr) ::SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(window), TRUE);
}

void OptionsDialog::Beep() { ::MessageBeep(MB_OK); }

// While the pointer shows it the dialog itself has the focus: no key reaches a control, and the Escape key
// reaches us although the messages run in the engine's loop, which knows no dialogs.
void OptionsDialog::SetHourglass(bool on) {
  hourglass_ = on;
  ::SetCursor(::LoadCursorW(nullptr, on ? IDC_WAIT : IDC_ARROW));
  if (window_ == nullptr) return;
  if (on) focusBefore_ = ::SetFocus(window_);
  if (!on && focusBefore_ != nullptr && ::GetFocus() == window_) ::SetFocus(focusBefore_);
}

void OptionsDialog::ShowInformation(const std::string& title, const std::string& text) {
  ShowBox(title, text, MB_ICONINFORMATION);
}

void OptionsDialog::ShowWarning(const std::string& title, const std::string& text) {
  ShowBox(title, text, MB_ICONWARNING);
}

void OptionsDialog::ShowBox(const std::string& title, const std::string& text, UINT icon) {
  const platform::VisualStyles styles;
  ::SetCursor(::LoadCursorW(nullptr, IDC_ARROW));
  const bool hourglass = std::exchange(hourglass_, false);
  ::MessageBoxW(window_, platform::Utf8ToWide(text).c_str(), platform::Utf8ToWide(title).c_str(),
                MB_OK | icon);
  hourglass_ = hourglass;
}

// ---- Messages

INT_PTR CALLBACK OptionsDialog::Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_INITDIALOG) ::SetWindowLongPtrW(window, DWLP_USER, second);
  auto* const dialog = reinterpret_cast<OptionsDialog*>(::GetWindowLongPtrW(window, DWLP_USER));
  if (dialog == nullptr) return FALSE;
  if (message == WM_INITDIALOG) {
    // An error leaves an empty window, which nobody could close by a button.
    const auto error = Attempt([&] { dialog->Open(window); });
    if (error) ::EndDialog(window, -1);
    return FALSE;  // the focus is where we put it
  }
  return Guarded("frmOptions.Message", [&] { return dialog->Handle(message, first, second); }) ? TRUE : FALSE;
}

bool OptionsDialog::Handle(UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_COMMAND:
      if (!refreshing_) Command(LOWORD(first), HIWORD(first));
      return true;
    case WM_NOTIFY:
      return Notify(*reinterpret_cast<const NMHDR*>(second));
    case WM_HELP:
      Help();
      return true;
    case WM_KEYDOWN:
      if (hourglass_ && first == VK_ESCAPE) form_.Click(ControlId::cmdCancel);
      return hourglass_;
    case WM_SETFOCUS:
      return hourglass_;
    case WM_SETCURSOR:
      if (!hourglass_) return false;
      ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT));
      ::SetWindowLongPtrW(window_, DWLP_MSGRESULT, TRUE);
      return true;
    case WM_DPICHANGED:
      ChangeScreen(HIWORD(first), *reinterpret_cast<const RECT*>(second));
      return true;
    case WM_ENTERSIZEMOVE:
    case WM_EXITSIZEMOVE:
      dragged_ = message == WM_ENTERSIZEMOVE;
      return false;
    case WM_DISPLAYCHANGE:
      FitScreen();
      return false;
    case WM_SETTINGCHANGE:
      if (first == SPI_SETNONCLIENTMETRICS) ChangeFont(DpiOf(window_));
      if (first == SPI_SETWORKAREA) FitScreen();
      return false;
    case WM_DESTROY:
      window_ = nullptr;
      return false;
    default:
      return windows_.Pane().Wheel(message, first);
  }
}

void OptionsDialog::Open(HWND window) {
  window_ = window;
  KeepSystemFromScaling(window);
  ::SetWindowTextW(window, platform::Utf8ToWide(form_.Caption()).c_str());
  refreshing_ = true;  // new fields tell that they are empty
  windows_.Create(window);
  refreshing_ = false;
  ChangeFont(DpiOf(window));
  ::SetFocus(windows_.Window(ControlId::cboReaderType));
}

void OptionsDialog::Command(int command, int notification) {
  const auto id = ControlOfCommand(command);
  if (!id) return;
  const ControlKind kind = form_.Controls()[*id].kind;
  // What the mouse is on is seen, and must not slip away below it.
  if (GetsFocus(kind, notification) && ::GetKeyState(VK_LBUTTON) >= 0) windows_.Reveal(*id);
  switch (kind) {
    case ControlKind::DropDownList:
      return ListCommand(*id, notification);
    case ControlKind::SpinField:
      return FieldCommand(*id, notification);
    default:
      if (notification != BN_CLICKED) return;
      form_.Click(*id);
      Refresh();
  }
}

// While a list is dropped down its choice is not yet the user's: the Escape key takes it back.
void OptionsDialog::ListCommand(ControlId list, int notification) {
  const HWND window = windows_.Window(list);
  if (notification == CBN_SELENDCANCEL) listCancelled_ = true;
  if (notification == CBN_DROPDOWN || notification == CBN_SELENDOK) listCancelled_ = false;
  const bool dropped = ::SendMessageW(window, CB_GETDROPPEDSTATE, 0, 0) != FALSE;
  const bool closing = notification == CBN_CLOSEUP && !listCancelled_;
  if (!closing && (notification != CBN_SELCHANGE || dropped)) {
    if (notification == CBN_CLOSEUP) Refresh();
    return;
  }
  const auto position = static_cast<std::int32_t>(::SendMessageW(window, CB_GETCURSEL, 0, 0));
  // Choosing a reader again must not undo what was changed since.
  if (position != form_.Controls()[list].chosen) form_.Select(list, position);
  Refresh();
}

void OptionsDialog::FieldCommand(ControlId field, int notification) {
  if (notification == EN_CHANGE) form_.Type(field, windows_.Text(field));
  // A program that comes to the front, and a dialog that closes, are nothing that the user did to the field.
  const auto next = ControlOfWindow(window_, ::GetFocus());
  if (notification == EN_KILLFOCUS && next) form_.Leave(field, next);
}

bool OptionsDialog::Notify(const NMHDR& header) {
  const auto field = ControlOfArrows(static_cast<int>(header.idFrom));
  if (!field || header.code != static_cast<UINT>(UDN_DELTAPOS)) return false;
  form_.Spin(*field, reinterpret_cast<const NMUPDOWN&>(header).iDelta);
  ::SetWindowLongPtrW(window_, DWLP_MSGRESULT, TRUE);  // the arrows stand where Spin put them
  return true;
}

void OptionsDialog::Help() {
  if (!ShowHelp(window_, reader_.HelpFile(), helpTopic_)) Beep();
}

// ---- Size and place

void OptionsDialog::ChangeFont(unsigned dpi) {
  auto font = std::make_unique<DialogFont>(dpi);
  windows_.SetFont(*font);
  font_ = std::move(font);
  Refresh();
}

// While a person drags the dialog, the system's proposal keeps it below the pointer.
void OptionsDialog::ChangeScreen(unsigned dpi, const RECT& proposed) {
  ::SetWindowPos(window_, nullptr, proposed.left, proposed.top, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  corner_ = {proposed.left, proposed.top};
  moved_ = dragged_;
  ChangeFont(dpi);
}

// The screen is another, or has less room: nobody wants the dialog where nobody can reach it.
void OptionsDialog::FitScreen() {
  NoteMove();  // what was moved until now is forgiven, too
  moved_ = false;
  Refresh();
}

void OptionsDialog::NoteMove() {
  const RECT now = RectangleOf(window_);
  moved_ = moved_ || (placed_ && (now.left != corner_.x || now.top != corner_.y));
  corner_ = {now.left, now.top};
}

// What the window takes around its inside.
SIZE OptionsDialog::Edges() const {
  RECT client{};
  ::GetClientRect(window_, &client);
  const RECT now = RectangleOf(window_);
  return {now.right - now.left - client.right, now.bottom - now.top - client.bottom};
}

LayoutRoom OptionsDialog::Room() const {
  const RECT area = WorkArea(placed_ || owner_ == nullptr ? window_ : owner_);
  const SIZE edges = Edges();
  const RECT now = RectangleOf(window_);
  const LONG whole = area.bottom - area.top;
  const LONG below = std::max(area.bottom - now.top, now.bottom - now.top);
  return {.screen = {area.right - area.left - edges.cx, whole - edges.cy},
          .height = (moved_ ? std::min(whole, below) : whole) - edges.cy};
}

// At first in the owner's middle. The upper left corner stays unless the dialog would leave the screen; where a person
// put it, it stays in any case.
void OptionsDialog::FitTo(LayoutSize inside) {
  const SIZE edges = Edges();
  const SIZE size{inside.width + edges.cx, inside.height + edges.cy};
  if (!moved_) {
    const RECT area = WorkArea(placed_ || owner_ == nullptr ? window_ : owner_);
    const bool overOwner = owner_ != nullptr && ::IsWindowVisible(owner_) && !::IsIconic(owner_);
    if (!placed_) corner_ = CentreOf(overOwner ? RectangleOf(owner_) : area, size);
    corner_ = {Within(corner_.x, size.cx, area.left, area.right),
               Within(corner_.y, size.cy, area.top, area.bottom)};
  }
  ::SetWindowPos(window_, nullptr, corner_.x, corner_.y, size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
  placed_ = true;
}

}  // namespace tesk
