// Font and distances. What knows resolutions is looked up at run time: Windows 7 has none of it.
#include "setup/windows/DialogFont.h"

#include <iterator>
#include <string>

#include "base/RunTimeError.h"
#include "platform/windows/SystemFunction.h"
#include "platform/windows/Text.h"

namespace tesk {
namespace {

constexpr unsigned kUsualDpi = 96;

unsigned SystemDpi() {
  const HDC screen = ::GetDC(nullptr);
  const int dpi = ::GetDeviceCaps(screen, LOGPIXELSY);
  ::ReleaseDC(nullptr, screen);
  return dpi > 0 ? static_cast<unsigned>(dpi) : kUsualDpi;
}

LOGFONTW MessageFont(unsigned dpi) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  auto* const forDpi =
      platform::UserFunction<BOOL WINAPI(UINT, UINT, PVOID, UINT, UINT)>("SystemParametersInfoForDpi");
  if (forDpi != nullptr && forDpi(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0, dpi)) {
    return metrics.lfMessageFont;
  }
  if (!::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0)) {
    ::GetObjectW(::GetStockObject(DEFAULT_GUI_FONT), sizeof metrics.lfMessageFont, &metrics.lfMessageFont);
  }
  metrics.lfMessageFont.lfHeight =
      ::MulDiv(metrics.lfMessageFont.lfHeight, static_cast<int>(dpi), static_cast<int>(SystemDpi()));
  return metrics.lfMessageFont;
}

}  // namespace

unsigned DpiOf(HWND window) {
  auto* const forWindow = platform::UserFunction<UINT WINAPI(HWND)>("GetDpiForWindow");
  const unsigned dpi = forWindow != nullptr ? forWindow(window) : 0;
  return dpi != 0 ? dpi : SystemDpi();
}

DialogFont::DialogFont(unsigned dpi) : dpi_(dpi) {
  const LOGFONTW face = MessageFont(dpi);
  font_ = ::CreateFontIndirectW(&face);
  screen_ = ::CreateCompatibleDC(nullptr);
  if (font_ == nullptr || screen_ == nullptr) {
    throw RunTimeError(kErrorInternal, "The font of the system's dialogs is not available");
  }
  ::SelectObject(screen_, font_);
  constexpr std::wstring_view kLetters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  ::GetTextExtentPoint32W(screen_, kLetters.data(), static_cast<int>(kLetters.size()), &unit_);
  unit_.cx = (unit_.cx / 26 + 1) / 2;
}

DialogFont::~DialogFont() {
  ::DeleteDC(screen_);
  ::DeleteObject(font_);
}

std::int32_t DialogFont::TextWidth(std::string_view text) const {
  const std::wstring wide = platform::Utf8ToWide(text);
  SIZE size{};
  ::GetTextExtentPoint32W(screen_, wide.c_str(), static_cast<int>(wide.size()), &size);
  return size.cx;
}

std::int32_t DialogFont::Across(int units) const { return ::MulDiv(units, unit_.cx, 4); }
std::int32_t DialogFont::Down(int units) const { return ::MulDiv(units, unit_.cy, 8); }
std::int32_t DialogFont::Scaled(int pixels) const {
  return ::MulDiv(pixels, static_cast<int>(dpi_), static_cast<int>(kUsualDpi));
}

std::int32_t DialogFont::SystemSize(int which) const {
  auto* const forDpi = platform::UserFunction<int WINAPI(int, UINT)>("GetSystemMetricsForDpi");
  return forDpi != nullptr ? forDpi(which, dpi_) : ::GetSystemMetrics(which);
}

std::int32_t DialogFont::ArrowWidth() const { return Scaled(18); }

LayoutMetrics DialogFont::Metrics() const {
  // Fields and lists draw their text at their upper edge, whatever their height: no room but for their edges, which do
  // not grow with the resolution. The distance between rows does.
  const std::int32_t spinHeight = unit_.cy + 2 * (SystemSize(SM_CYEDGE) + 1);
  const std::int32_t rowHeight = spinHeight + 2;
  const std::int32_t pitch = unit_.cy + Scaled(14);
  return {.text = {.width = [this](std::string_view text) { return TextWidth(text); },
                   .box = Scaled(13) + Across(6),  // the system's box, and the gap that follows it
                   .padding = Across(6)},
          .margin = Across(7),
          .frameTop = Down(11),
          .framePadding = Across(7),
          .frameGap = Across(5),
          .rowHeight = rowHeight,
          .rowGap = pitch - rowHeight,
          .labelGap = Across(5),
          .listArrow = ArrowWidth() + Across(6),
          .spinWidth = ArrowWidth() + Across(30),
          .spinHeight = spinHeight,
          .besideGap = Scaled(8),  // 120 twips
          .buttonWidth = Across(50),
          .buttonHeight = unit_.cy + Scaled(10),
          .buttonGap = Across(4),
          .scrollBar = SystemSize(SM_CXVSCROLL)};
}

}  // namespace tesk
