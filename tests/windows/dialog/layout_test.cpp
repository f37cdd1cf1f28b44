// What the dialog looks like, in numbers: nothing clipped, nothing on top of another, at every resolution and
// in a language half again as long.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"
#include "tests/windows/dialog/DialogUser.h"

namespace tesk::test {
namespace {

using enum ControlId;

constexpr const char* kResolution = "TESKREAD_TEST_DPI";

struct Drawn {
  ControlId id;
  ControlKind kind;
  RECT area;  // within the dialog
  std::string text;
  SIZE textSize;
};

int Dpi() {
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dpi;
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

std::vector<Drawn> VisibleControls(const DialogUser& user, const OptionControls& kinds) {
  std::vector<Drawn> drawn;
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const auto id = static_cast<ControlId>(i);
    if (!user.Visible(id)) continue;
    RECT area{};
    GetWindowRect(user.Window(id), &area);
    MapWindowPoints(nullptr, user.Dialog(), reinterpret_cast<POINT*>(&area), 2);
    const std::string text = user.Text(id);
    drawn.push_back({id, kinds[id].kind, area, text, Measured(user.Window(id), text)});
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

void ExpectGoodLayout(const DialogUser& user, const OptionControls& kinds) {
  RECT inside{};
  GetClientRect(user.Dialog(), &inside);
  const auto controls = VisibleControls(user, kinds);
  for (const Drawn& control : controls) {
    SCOPED_TRACE(std::string(ControlName(control.id)));
    EXPECT_TRUE(Contains(inside, control.area)) << "outside the dialog";
    ExpectTextFits(control);
    for (const Drawn& other : controls) {
      if (control.id < other.id) ExpectApart(control, other);
    }
  }
}

constexpr const char* kReaders[] = {
    "Scantron Scanmark 5500", "Scantron OpScan 4/4U",        "Scantron EZData",
    "Sekonic SR3500 (USB)",   "Sekonic SR3500 Hybrid (USB)", "Chatsworth Data ALS AccelScan OMR"};

TEST(SetupDialogLayout, NothingIsCutAndNothingOverlapsInAnyLanguage) {
  const char* expected = std::getenv(kResolution);
  ASSERT_TRUE(expected == nullptr || std::to_string(Dpi()) == expected) << Dpi();
  for (const bool longTexts : {false, true}) {
    SCOPED_TRACE(longTexts ? "long texts" : "short texts");
    const InstalledHost host(longTexts);
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

TEST(SetupDialogLayout, HiddenRowsCloseUpAndTheDialogShrinksWithThem) {
  const InstalledHost host;
  const auto reader = NewReader();
  DialogUser::Use(*reader, [](DialogUser& user) {
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

// ---- Other resolutions, each in a program of its own: a program learns it when it starts

constexpr const wchar_t* kDesktopKey = L"Control Panel\\Desktop";

class Resolution {
 public:
  explicit Resolution(DWORD dpi) {
    RegSetKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels", REG_DWORD, &dpi, sizeof dpi);
    SetEnvironmentVariableA(kResolution, std::to_string(dpi).c_str());
  }
  Resolution(const Resolution&) = delete;
  Resolution& operator=(const Resolution&) = delete;
  ~Resolution() {
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktopKey, L"LogPixels");
    SetEnvironmentVariableA(kResolution, nullptr);
  }
};

DWORD StatusOfLayoutTests() {
  wchar_t path[MAX_PATH]{};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(path) + L"\" --gtest_filter=SetupDialogLayout.*";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(path, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
    return GetLastError();
  }
  constexpr DWORD kPatience = 120'000;  // milliseconds
  DWORD status = 1;
  if (WaitForSingleObject(process.hProcess, kPatience) != WAIT_OBJECT_0)
    TerminateProcess(process.hProcess, 1);
  WaitForSingleObject(process.hProcess, kPatience);
  GetExitCodeProcess(process.hProcess, &status);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return status;
}

class SetupDialogResolution : public testing::TestWithParam<DWORD> {};

TEST_P(SetupDialogResolution, TheLayoutHolds) {
  const Resolution resolution(GetParam());
  EXPECT_EQ(StatusOfLayoutTests(), 0U) << "see above";
}

INSTANTIATE_TEST_SUITE_P(Dpi, SetupDialogResolution, testing::Values(120, 144, 192));

}  // namespace
}  // namespace tesk::test
