// Scroll bars, wheel and focus move the same corner.
#include "setup/windows/OptionsPane.h"

#include <algorithm>
#include <cstdlib>

#include "base/RunTimeError.h"
#include "platform/windows/SystemFunction.h"
#include "platform/windows/VisualStyles.h"

#ifndef WM_MOUSEHWHEEL
#define WM_MOUSEHWHEEL 0x020E
#endif

namespace tesk {
namespace {

LONG Clamped(LONG at, LONG whole, LONG seen) { return std::max(std::min(at, whole - seen), 0L); }

// The nearest corner from which [start, start + length) is seen; of what is longer, the beginning.
LONG Revealing(LONG corner, LONG start, LONG length, LONG seen) {
  return std::min(std::max(corner, start + length - seen), start);
}

void SetBar(HWND window, int bar, LONG whole, LONG seen, LONG at) {
  SCROLLINFO info{};
  info.cbSize = sizeof info;
  info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
  info.nMax = whole - 1;
  info.nPage = static_cast<UINT>(seen);
  info.nPos = at;
  ::SetScrollInfo(window, bar, &info, TRUE);
}

LONG ThumbOf(HWND window, int bar) {
  SCROLLINFO info{};
  info.cbSize = sizeof info;
  info.fMask = SIF_TRACKPOS;
  ::GetScrollInfo(window, bar, &info);
  return info.nTrackPos;
}

// Pixels that one notch of the wheel moves.
LONG WheelStep(LONG step, LONG page) {
  UINT lines = 3;
  ::SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
  return lines == WHEEL_PAGESCROLL ? page : std::min(static_cast<LONG>(lines) * step, page);
}

bool IsWheel(UINT message) { return message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL; }

}  // namespace

void KeepSystemFromScaling(HWND dialog) {
  constexpr int kDisableAll = 1;  // DDC_DISABLE_ALL
  auto* const set = platform::UserFunction<BOOL WINAPI(HWND, int, int)>("SetDialogDpiChangeBehavior");
  if (set != nullptr) set(dialog, kDisableAll, kDisableAll);
}

void OptionsPane::Create(HWND dialog) {
  EmptyDialog empty;
  empty.header.style = WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | DS_CONTROL;
  empty.header.dwExtendedStyle = WS_EX_CONTROLPARENT;
  window_ = ::CreateDialogIndirectParamW(platform::OwnModule(), &empty.header, dialog, &Procedure,
                                         reinterpret_cast<LPARAM>(this));
  if (window_ == nullptr)
    throw RunTimeError(kErrorInternal, "The system made no window for the setup dialog");
  ::SetWindowLongPtrW(window_, GWLP_ID, kPaneCommand);
  KeepSystemFromScaling(window_);
}

void OptionsPane::Fit(const DialogLayout& layout, const LayoutMetrics& metrics) {
  frames_ = layout.frames;
  seen_ = layout.seen;
  step_ = metrics.rowHeight + metrics.rowGap;
  corner_.x = Clamped(corner_.x, frames_.width, seen_.width);
  corner_.y = Clamped(corner_.y, frames_.height, seen_.height);
  const int width = seen_.width + (layout.ScrollsDown() ? metrics.scrollBar : 0);
  const int height = seen_.height + (layout.ScrollsAcross() ? metrics.scrollBar : 0);
  ::SetWindowPos(window_, nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
  ShowBars();
}

void OptionsPane::ShowBars() {
  SetBar(window_, SB_VERT, frames_.height, seen_.height, corner_.y);
  SetBar(window_, SB_HORZ, frames_.width, seen_.width, corner_.x);
}

ControlPlace OptionsPane::Scrolled(ControlPlace place) const {
  place.left -= corner_.x;
  place.top -= corner_.y;
  return place;
}

void OptionsPane::Reveal(const ControlPlace& place) {
  ScrollTo(Revealing(corner_.x, place.left, place.width, seen_.width),
           Revealing(corner_.y, place.top, place.height, seen_.height));
}

void OptionsPane::ScrollTo(LONG left, LONG top) {
  const POINT to{Clamped(left, frames_.width, seen_.width), Clamped(top, frames_.height, seen_.height)};
  const POINT by{corner_.x - to.x, corner_.y - to.y};
  if (by.x == 0 && by.y == 0) return;
  corner_ = to;
  ShowBars();
  ::ScrollWindowEx(window_, by.x, by.y, nullptr, nullptr, nullptr, nullptr,
                   SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
  ::UpdateWindow(window_);
}

// ---- Messages

INT_PTR CALLBACK OptionsPane::Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_INITDIALOG) {
    ::SetWindowLongPtrW(window, DWLP_USER, second);
    return FALSE;
  }
  auto* const pane = reinterpret_cast<OptionsPane*>(::GetWindowLongPtrW(window, DWLP_USER));
  return pane != nullptr && pane->Handle(message, first, second) ? TRUE : FALSE;
}

bool OptionsPane::Handle(UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_COMMAND:
    case WM_NOTIFY: {
      const HWND dialog = ::GetParent(window_);
      const LRESULT result = ::SendMessageW(dialog, message, first, second);
      ::SetWindowLongPtrW(window_, DWLP_MSGRESULT, result);
      return true;
    }
    case WM_VSCROLL:
      Bar(SB_VERT, LOWORD(first));
      return true;
    case WM_HSCROLL:
      Bar(SB_HORZ, LOWORD(first));
      return true;
    default:
      return Wheel(message, first);
  }
}

void OptionsPane::Bar(int bar, int request) {
  const bool down = bar == SB_VERT;
  const LONG page = down ? seen_.height : seen_.width;
  LONG to = down ? corner_.y : corner_.x;
  switch (request) {
    case SB_LINEUP:
      to -= step_;
      break;
    case SB_LINEDOWN:
      to += step_;
      break;
    case SB_PAGEUP:
      to -= page;
      break;
    case SB_PAGEDOWN:
      to += page;
      break;
    case SB_TOP:
      to = 0;
      break;
    case SB_BOTTOM:
      to = down ? frames_.height : frames_.width;
      break;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
      to = ThumbOf(window_, bar);
      break;
    default:
      return;
  }
  down ? ScrollTo(corner_.x, to) : ScrollTo(to, corner_.y);
}

bool OptionsPane::Wheel(UINT message, WPARAM first) {
  if (!IsWheel(message)) return false;
  const LONG notches = GET_WHEEL_DELTA_WPARAM(first);
  const bool across = message == WM_MOUSEHWHEEL || (LOWORD(first) & MK_SHIFT) != 0;
  const LONG way = ::MulDiv(WheelStep(step_, across ? seen_.width : seen_.height), notches, WHEEL_DELTA);
  if (message == WM_MOUSEHWHEEL) {
    ScrollTo(corner_.x + way, corner_.y);
  } else {
    across ? ScrollTo(corner_.x - way, corner_.y) : ScrollTo(corner_.x, corner_.y - way);
  }
  return true;
}

void OptionsPane::TakeWheelOf(HWND control) {
  const LONG_PTR before =
      ::SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WithoutWheel));
  ::SetWindowLongPtrW(control, GWLP_USERDATA, before);
}

// A list that is dropped down scrolls its own entries.
LRESULT CALLBACK OptionsPane::WithoutWheel(HWND window, UINT message, WPARAM first, LPARAM second) {
  const auto before = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  const bool dropped = IsWheel(message) && ::SendMessageW(window, CB_GETDROPPEDSTATE, 0, 0) != 0;
  if (!IsWheel(message) || dropped) return ::CallWindowProcW(before, window, message, first, second);
  return ::SendMessageW(::GetParent(window), message, first, second);
}

}  // namespace tesk
