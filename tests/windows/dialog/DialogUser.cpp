// Finding windows and sending messages to them.
#include "tests/windows/dialog/DialogUser.h"

#include <commctrl.h>

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "assembly/assembly.h"
#include "base/conversions.h"
#include "platform/Platform.h"
#include "platform/windows/Text.h"

namespace tesk::test {
namespace {

constexpr DWORD kPatience = 10'000;  // milliseconds
constexpr DWORD kBetweenLooks = 5;

template <class Condition>
bool WaitUntil(Condition condition) {
  for (const DWORD start = GetTickCount(); GetTickCount() - start < kPatience; ::Sleep(kBetweenLooks)) {
    if (condition()) return true;
  }
  return false;
}

struct Search {
  std::wstring title;
  HWND found;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter) {
  auto& search = *reinterpret_cast<Search*>(parameter);
  wchar_t className[16]{};
  wchar_t title[256]{};
  GetClassNameW(window, className, 16);
  GetWindowTextW(window, title, 256);
  if (std::wstring(className) != L"#32770" || title != search.title || !IsWindowVisible(window)) return TRUE;
  search.found = window;
  return FALSE;
}

// A message that does nothing but be counted when the dialog's thread comes to it.
constexpr UINT kArrival = WM_APP + 1;
std::atomic<LONG> arrivals = 0;
WNDPROC dialogProcedure = nullptr;

LRESULT CALLBACK CountArrivals(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == kArrival) ++arrivals;
  return CallWindowProcW(dialogProcedure, window, message, first, second);
}

HWND FindDialog(DWORD thread, const std::string& title, HWND except = nullptr) {
  Search search{platform::Utf8ToWide(title), nullptr};
  EnumThreadWindows(thread, &LookAt, reinterpret_cast<LPARAM>(&search));
  return search.found == except ? nullptr : search.found;
}

std::string TextOf(HWND window) {
  wchar_t text[1024]{};
  SendMessageW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text));
  return platform::WideToUtf8(text);
}

}  // namespace

std::shared_ptr<clsTeskReader> NewReader(teskReaderType type) {
  auto reader = CreateReader({.serial = platform::CreateSerialSystem(),
                              .loop = platform::CreateHostLoop(),
                              .clock = platform::CreateClock()});
  reader->LoadDefaults(type);
  reader->SetPort(3);
  return reader;
}

bool DialogUser::Use(clsTeskReader& reader, const std::function<void(DialogUser&)>& acts,
                     const std::shared_ptr<HostObject>& parent) {
  DialogUser user(GetCurrentThreadId());
  const std::string title = LoadString("Scanner Settings");
  std::thread person([&] {
    const bool opened =
        WaitUntil([&] { return (user.dialog_ = FindDialog(user.thread_, title)) != nullptr; });
    if (!opened) {
      ADD_FAILURE() << "the dialog did not open";
      return;
    }
    dialogProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(user.dialog_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountArrivals)));
    acts(user);
    if (user.IsOpen()) PostMessageW(user.dialog_, WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(user.WaitForEnd()) << "the dialog did not close";
  });
  const bool confirmed = reader.ShowOptions(parent);
  person.join();
  return confirmed;
}

HWND DialogUser::Item(int command) const {
  const HWND button = GetDlgItem(dialog_, command);
  return button != nullptr ? button : GetDlgItem(Pane(), command);
}
HWND DialogUser::Pane() const { return GetDlgItem(dialog_, kPaneCommand); }
HWND DialogUser::Window(ControlId id) const { return Item(CommandOf(id)); }
std::string DialogUser::Text(ControlId id) const { return TextOf(Window(id)); }
bool DialogUser::Visible(ControlId id) const { return IsWindowVisible(Window(id)) != FALSE; }
bool DialogUser::Enabled(ControlId id) const { return IsWindowEnabled(Window(id)) != FALSE; }
bool DialogUser::Checked(ControlId id) const {
  return SendMessageW(Window(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}
bool DialogUser::HasFocus(ControlId id) const { return FocusWindow() == Window(id); }

std::string DialogUser::FocusName() const {
  const HWND focus = FocusWindow();
  const auto id = ControlOfCommand(GetDlgCtrlID(focus));
  if (focus == nullptr) return "nothing";
  return id ? std::string(ControlName(*id)) : focus == dialog_ ? "the dialog itself" : "another window";
}

HWND DialogUser::FocusWindow() const {
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(thread_, &info);
  return info.hwndFocus;
}

void DialogUser::Choose(ControlId list, int position) {
  SendMessageW(Window(list), CB_SETCURSEL, static_cast<WPARAM>(position), 0);
  const auto parameter = MAKEWPARAM(CommandOf(list), CBN_SELCHANGE);
  SendMessageW(dialog_, WM_COMMAND, parameter, reinterpret_cast<LPARAM>(Window(list)));
}

void DialogUser::Choose(ControlId list, const std::string& text) {
  const LRESULT found = SendMessageW(Window(list), CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                     reinterpret_cast<LPARAM>(platform::Utf8ToWide(text).c_str()));
  ASSERT_NE(found, CB_ERR) << text;
  Choose(list, static_cast<int>(found));
}

void DialogUser::Type(ControlId field, const std::string& text) {
  Focus(field);
  SendMessageW(Window(field), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(platform::Utf8ToWide(text).c_str()));
}

void DialogUser::Focus(ControlId id) {
  SendMessageW(dialog_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Window(id)), TRUE);
}

void DialogUser::Wheel(HWND over, int notches) {
  SendMessageW(over, WM_MOUSEWHEEL, static_cast<WPARAM>(MAKELONG(0, notches * WHEEL_DELTA)), 0);
}

void DialogUser::Click(ControlId button) { SendMessageW(Window(button), BM_CLICK, 0, 0); }
void DialogUser::Press(ControlId button) { PostMessageW(Window(button), BM_CLICK, 0, 0); }

void DialogUser::Key(WPARAM key) {
  const HWND focus = FocusWindow();
  PostMessageW(focus, WM_KEYDOWN, key, 1);
  PostMessageW(focus, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
  Settle();
}

void DialogUser::AccessKey(char character) {
  constexpr LPARAM kAltIsDown = 1 << 29;
  PostMessageW(FocusWindow(), WM_SYSCHAR, static_cast<WPARAM>(character), kAltIsDown | 1);
  Settle();
}

void DialogUser::ClickArrow(ControlId field, bool up) {
  const HWND arrows = Item(ArrowsCommandOf(field));
  RECT area{};
  GetClientRect(arrows, &area);
  const auto at = MAKELPARAM(area.right / 2, up ? area.bottom / 4 : area.bottom * 3 / 4);
  SendMessageW(arrows, WM_LBUTTONDOWN, MK_LBUTTON, at);
  SendMessageW(arrows, WM_LBUTTONUP, 0, at);
}

std::string DialogUser::CloseBox(const std::string& title) {
  HWND box = nullptr;
  if (!WaitUntil([&] { return (box = FindDialog(thread_, title, dialog_)) != nullptr; })) return {};
  constexpr int kText = 0xFFFF;
  std::string text = TextOf(GetDlgItem(box, kText));
  PostMessageW(box, WM_COMMAND, IDOK, 0);
  WaitUntil([&] { return IsWindow(box) == FALSE; });
  Settle();
  return text;
}

// Sent messages overtake posted ones, so a posted one has to arrive.
void DialogUser::Settle() const {
  const LONG before = arrivals;
  PostMessageW(dialog_, kArrival, 0, 0);
  WaitUntil([&] { return arrivals != before || !IsWindow(dialog_); });
}

bool DialogUser::IsOpen() const { return IsWindow(dialog_) != FALSE; }

bool DialogUser::WaitForEnd() const {
  return WaitUntil([&] { return !IsWindow(dialog_); });
}

}  // namespace tesk::test
