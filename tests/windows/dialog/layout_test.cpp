// What the dialog looks like, in numbers: on the screen, nothing clipped, nothing on top of another, everything within
// reach, at every resolution and in a language twice as long.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"
#include "tests/windows/dialog/DialogUser.h"

#ifndef WM_DPICHANGED
#define WM_DPICHANGED 0x02E0
#endif

namespace tesk::test {
namespace {

using enum ControlId;

constexpr const char* kScreenWanted = "TESKREAD_TEST_SCREEN";  // "120 DPI 1366x768"

struct Drawn {
  ControlId id;
  ControlKind kind;
  RECT area;  // on the screen
  std::string text;
  SIZE textSize;
};

int Dpi() {
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dpi;
}

std::string Screen() {
  return std::to_string(Dpi()) + " DPI " + std::to_string(GetSystemMetrics(SM_CXSCREEN)) + "x" +
         std::to_string(GetSystemMetrics(SM_CYSCREEN));
}

int Dots(int at96) { return MulDiv(at96, Dpi(), 96); }

SIZE Measured(HWND window, const std::string& text) {
  const HDC screen = GetDC(nullptr);
  const auto font = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
  const HGDIOBJ before = SelectObject(screen, font);
  RECT area{};
  DrawTextW(screen, platform::Utf8ToWide(text).c_str(), -1, &area, DT_CALCRECT | DT_SINGLELINE);
  SelectObject(screen, before);
  ReleaseDC(nullptr, screen);
  return {area.right, area.bottom};
}

RECT RectangleOf(HWND window) {
  RECT area{};
  GetWindowRect(window, &area);
  return area;
}

RECT InsideOf(HWND window) {
  RECT area{};
  GetClientRect(window, &area);
  MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&area), 2);
  return area;
}

RECT WorkArea() {
  RECT area{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  return area;
}

std::vector<Drawn> VisibleControls(const DialogUser& user, const OptionControls& kinds) {
  std::vector<Drawn> drawn;
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const auto id = static_cast<ControlId>(i);
    if (!user.Visible(id)) continue;
    const std::string text = user.Text(id);
    drawn.push_back(
        {id, kinds[id].kind, RectangleOf(user.Window(id)), text, Measured(user.Window(id), text)});
  }
  return drawn;
}

// What a control needs beside its text.
LONG Beside(ControlKind kind) {
  switch (kind) {
    case ControlKind::CheckBox:
      return Dots(13) + Dots(3);
    case ControlKind::Button:
      return Dots(8);
    case ControlKind::Frame:
      return Dots(16);
    case ControlKind::DropDownList:
      return GetSystemMetrics(SM_CXVSCROLL) + Dots(6);
    case ControlKind::SpinField:
      return Dots(6);
    default:
      return 0;
  }
}

bool Contains(const RECT& outer, const RECT& inner) {
  return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
         inner.bottom <= outer.bottom;
}

void ExpectTextFits(const Drawn& control) {
  EXPECT_LE(control.textSize.cx + Beside(control.kind), control.area.right - control.area.left)
      << "\"" << control.text << "\" is cut";
  if (control.kind == ControlKind::Frame) return;
  EXPECT_LE(control.textSize.cy, control.area.bottom - control.area.top) << control.text;
}

void ExpectApart(const Drawn& a, const Drawn& b) {
  const bool framed = (a.kind == ControlKind::Frame) != (b.kind == ControlKind::Frame);
  RECT common{};
  if (!IntersectRect(&common, &a.area, &b.area)) return;
  if (framed) {
    const RECT& frame = a.kind == ControlKind::Frame ? a.area : b.area;
    const RECT& inner = a.kind == ControlKind::Frame ? b.area : a.area;
    EXPECT_TRUE(Contains(frame, inner)) << ControlName(a.id) << " and " << ControlName(b.id);
  } else {
    ADD_FAILURE() << ControlName(a.id) << " and " << ControlName(b.id) << " overlap";
  }
}

// The middle of the line that a label, a list or a field shows its text on, on the screen. A list shows it at the upper
// edge of its item.
LONG LineOf(const DialogUser& user, const Drawn& control) {
  if (control.kind == ControlKind::Label) {
    return control.area.top + (control.area.bottom - control.area.top) / 2;
  }
  if (control.kind == ControlKind::DropDownList) {
    COMBOBOXINFO list{};
    list.cbSize = sizeof list;
    GetComboBoxInfo(user.Window(control.id), &list);
    return InsideOf(user.Window(control.id)).top + list.rcItem.top + 1 + control.textSize.cy / 2;
  }
  const HWND field = user.Window(control.id);
  return InsideOf(field).top + HIWORD(SendMessageW(field, EM_POSFROMCHAR, 0, 0)) + control.textSize.cy / 2;
}

// All of a control is seen, or is where a scroll bar leads.
void ExpectWithin(HWND parent, const RECT& area) {
  const RECT seen = InsideOf(parent);
  const LONG style = GetWindowLongW(parent, GWL_STYLE);
  const bool across = area.left >= seen.left && area.right <= seen.right;
  const bool down = area.top >= seen.top && area.bottom <= seen.bottom;
  EXPECT_TRUE(across || (style & WS_HSCROLL) != 0) << area.right << " beyond " << seen.right;
  EXPECT_TRUE(down || (style & WS_VSCROLL) != 0) << area.bottom << " beyond " << seen.bottom;
}

// Whoever brings the keyboard to a control sees all of it.
void ExpectReached(DialogUser& user, const Drawn& control) {
  const HWND window = user.Window(control.id);
  const HWND parent = GetParent(window);
  ExpectWithin(parent, RectangleOf(window));
  const bool passive = control.kind == ControlKind::Label || control.kind == ControlKind::Frame;
  if (passive || !IsWindowEnabled(window)) return;
  user.Focus(control.id);
  EXPECT_TRUE(Contains(InsideOf(parent), RectangleOf(window))) << "out of reach";
}

void ExpectGoodLayout(DialogUser& user, const OptionControls& kinds) {
  EXPECT_TRUE(Contains(WorkArea(), RectangleOf(user.Dialog()))) << "outside the screen";
  const auto controls = VisibleControls(user, kinds);
  const auto find = [&](ControlId id) { return *std::ranges::find(controls, id, &Drawn::id); };
  for (const Drawn& control : controls) {
    SCOPED_TRACE(std::string(ControlName(control.id)));
    ExpectTextFits(control);
    for (const Drawn& other : controls) {
      const bool together = GetParent(user.Window(control.id)) == GetParent(user.Window(other.id));
      if (control.id < other.id && together) ExpectApart(control, other);
    }
    if (LabelOf(control.id)) {
      EXPECT_NEAR(LineOf(user, control), LineOf(user, find(*LabelOf(control.id))), 1);
    }
  }
  EXPECT_TRUE(Contains(InsideOf(user.Dialog()), RectangleOf(user.Pane())));
  EXPECT_LT(RectangleOf(user.Pane()).bottom, find(cmdOK).area.top) << "the buttons do not scroll";
  for (const Drawn& control : controls) {
    SCOPED_TRACE(std::string(ControlName(control.id)));
    ExpectReached(user, control);
  }
}

struct LongTextHost : RecordingHost {
  std::string LoadString(const std::string& text) override { return text + text; }
};

// The tallest one, one with the search button, one that hides most rows.
constexpr const char* kReaders[] = {"Sekonic SR8000 Hybrid (USB)", "Chatsworth Data ALS AccelScan OMR",
                                    "Scantron EZData"};

using SetupDialogLayout = DialogTest;

TEST(SetupDialogArea, FitsTheScreenUncutInAnyLanguage) {
  const char* wanted = std::getenv(kScreenWanted);
  ASSERT_TRUE(wanted == nullptr || Screen() == wanted) << Screen();
  for (const bool longTexts : {false, true}) {
    SCOPED_TRACE(longTexts ? "long texts" : "short texts");
    const std::unique_ptr<RecordingHost> host(longTexts ? new LongTextHost : new RecordingHost);
    const auto reader = NewReader();
    const OptionControls kinds = CreateOptionControls();
    DialogUser::Use(*reader, [&](DialogUser& user) {
      for (const char* name : kReaders) {
        SCOPED_TRACE(name);
        user.Choose(cboReaderType, name);
        ExpectGoodLayout(user, kinds);
      }
    });
  }
}

TEST_F(SetupDialogLayout, HiddenRowsCloseUpAndTheDialogShrinksWithThem) {
  Use([](DialogUser& user) {
    RECT tall{};
    RECT low{};
    GetWindowRect(user.Dialog(), &tall);
    user.Choose(cboReaderType, "Scantron EZData");
    GetWindowRect(user.Dialog(), &low);
    EXPECT_LT(low.bottom - low.top, (tall.bottom - tall.top) * 3 / 4);
    EXPECT_EQ(low.right - low.left, tall.right - tall.left);
    EXPECT_EQ(low.left, tall.left);
  });
}

void MoveTo(HWND window, LONG left, LONG top) {
  SetWindowPos(window, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void ExpectCorner(const DialogUser& user, LONG left, LONG top) {
  const RECT now = RectangleOf(user.Dialog());
  EXPECT_EQ(now.left, left);
  EXPECT_EQ(now.top, top);
}

TEST_F(SetupDialogLayout, StaysWhereAPersonPutItAndGrowsNoLowerThanTheScreen) {
  Use([](DialogUser& user) {
    for (const POINT& corner : {POINT{-150, 40}, POINT{WorkArea().right - 100, WorkArea().bottom - 60}}) {
      MoveTo(user.Dialog(), corner.x, corner.y);
      for (const char* name : {"Scantron EZData", "Sekonic SR8000 Hybrid (USB)", "Scantron OpScan 2"}) {
        user.Choose(cboReaderType, name);
        ExpectCorner(user, corner.x, corner.y);
      }
    }
    MoveTo(user.Dialog(), 50, 10);
    user.Choose(cboReaderType, "Scantron EZData");
    const RECT low = RectangleOf(user.Dialog());
    const LONG top = WorkArea().bottom - (low.bottom - low.top) - 20;
    MoveTo(user.Dialog(), 50, top);
    user.Choose(cboReaderType, "Scantron Scanmark 5500");
    ExpectCorner(user, 50, top);
    EXPECT_LE(RectangleOf(user.Dialog()).bottom, WorkArea().bottom);
    EXPECT_LE(RectangleOf(user.Window(cmdOK)).bottom, WorkArea().bottom);
    user.Focus(txtSystemPause);
    EXPECT_TRUE(Contains(InsideOf(user.Pane()), RectangleOf(user.Window(txtSystemPause))));
    EXPECT_GT(GetScrollPos(user.Pane(), SB_VERT), 0);
  });
}

TEST_F(SetupDialogLayout, TheWheelScrollsAndChangesNoSetting) {
  Use([](DialogUser& user) {
    user.Choose(cboReaderType, "Scantron EZData");
    const RECT low = RectangleOf(user.Dialog());
    MoveTo(user.Dialog(), 50, WorkArea().bottom - (low.bottom - low.top) - 20);
    user.Choose(cboReaderType, "Scantron Scanmark 5500");
    const auto values = [&] {
      return user.Text(cboReaderType) + user.Text(cboBaud) + user.Text(txtReaderTimeout) + user.Text(cboPort);
    };
    const std::string before = values();
    const HWND over[] = {user.Window(cboReaderType), user.Window(cboBaud), user.Window(txtReaderTimeout),
                         user.Window(chkRejecter), user.Dialog()};
    for (const HWND window : over) {
      user.Wheel(window, -1);
      EXPECT_GT(GetScrollPos(user.Pane(), SB_VERT), 0);
      user.Wheel(window, 5);
      EXPECT_EQ(GetScrollPos(user.Pane(), SB_VERT), 0);
    }
    for (const WPARAM request : {SB_LINEDOWN, SB_BOTTOM, SB_LINEUP, SB_TOP}) {
      SendMessageW(user.Pane(), WM_VSCROLL, request, 0);
      EXPECT_EQ(GetScrollPos(user.Pane(), SB_VERT) > 0, request != SB_TOP) << request;
    }
    EXPECT_EQ(values(), before);
  });
}

TEST_F(SetupDialogLayout, TakesTheResolutionOfTheScreenThatItIsDraggedTo) {
  Use([](DialogUser& user) {
    const RECT before = RectangleOf(user.Window(cmdOK));
    const auto dpi = static_cast<WORD>(2 * Dpi());
    const auto change = [&](LONG left, LONG top) {
      RECT proposed{left, top, left + 500, top + 500};
      SendMessageW(user.Dialog(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&proposed));
    };
    change(30, 20);
    ExpectCorner(user, 30, 20);
    const RECT after = RectangleOf(user.Window(cmdOK));
    EXPECT_NEAR(after.bottom - after.top, 2 * (before.bottom - before.top), 4);
    change(WorkArea().right - 20, 20);
    EXPECT_TRUE(Contains(WorkArea(), RectangleOf(user.Dialog()))) << "nobody drags it";
    SendMessageW(user.Dialog(), WM_ENTERSIZEMOVE, 0, 0);
    change(WorkArea().right - 20, 20);
    ExpectCorner(user, WorkArea().right - 20, 20);
    SendMessageW(user.Dialog(), WM_EXITSIZEMOVE, 0, 0);
    user.Choose(cboReaderType, "Scantron EZData");
    ExpectCorner(user, WorkArea().right - 20, 20);
    for (const bool movedSince : {false, true}) {
      if (movedSince) MoveTo(user.Dialog(), WorkArea().right - 40, 60);
      SendMessageW(user.Dialog(), WM_DISPLAYCHANGE, 32, 0);
      EXPECT_TRUE(Contains(WorkArea(), RectangleOf(user.Dialog()))) << "the screen is another";
    }
  });
}

// ---- Other screens, each seen by a program of its own: a program learns its resolution when it starts

constexpr const wchar_t* kDesktopKey = L"Control Panel\\Desktop";
constexpr const wchar_t* kMetricsKey = L"Control Panel\\Desktop\\WindowMetrics";
constexpr const char* kReport = "dialog_screen_report.json";

// With dialogs in 9 points, as current Windows has them: 12 dots high at 96 to the inch.
class Resolution {
 public:
  explicit Resolution(DWORD dpi) {
    LOGFONTW font{};
    font.lfHeight = -12;
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    wcscpy(font.lfFaceName, L"Tahoma");
    RegSetKeyValueW(HKEY_CURRENT_USER, kMetricsKey, L"MessageFont", REG_BINARY, &font, sizeof font);
    RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &dpi, sizeof dpi);
  }
  Resolution(const Resolution&) = delete;
  Resolution& operator=(const Resolution&) = delete;
  ~Resolution() {
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels");
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kMetricsKey, L"MessageFont");
  }
};

// Runs the test that measures the dialog on a desktop of this size. The desktop's program keeps the test's exit status
// to itself, hence the report.
std::string ReportFromDesktop(const std::string& size) {
  char path[MAX_PATH]{};
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  std::string command = "explorer.exe /desktop=T" + size + "," + size + " \"" + path +
                        "\" --gtest_brief=1 --gtest_filter=*FitsTheScreen* --gtest_output=json:" + kReport;
  std::remove(kReport);
  STARTUPINFOA start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                      &process)) {
    return "explorer.exe does not start";
  }
  constexpr DWORD kPatience = 60'000;  // milliseconds
  if (WaitForSingleObject(process.hProcess, kPatience) != WAIT_OBJECT_0)
    TerminateProcess(process.hProcess, 1);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  std::stringstream report;
  report << std::ifstream(kReport).rdbuf();
  std::remove(kReport);
  return report.str();
}

TEST(SetupDialogScreen, ShowsAllOfTheDialogAtEveryResolution) {
  const std::pair<DWORD, const char*> screens[] = {{120, "1024x768"}, {144, "1366x768"}, {192, "3840x2160"}};
  for (const auto& [dpi, size] : screens) {
    const Resolution resolution(dpi);
    const std::string name = std::to_string(dpi) + " DPI " + size;
    SetEnvironmentVariableA(kScreenWanted, name.c_str());
    const std::string report = ReportFromDesktop(size);
    SetEnvironmentVariableA(kScreenWanted, nullptr);
    EXPECT_THAT(report, testing::HasSubstr("\"tests\": 1,\n  \"failures\": 0")) << name;
  }
}

}  // namespace
}  // namespace tesk::test
