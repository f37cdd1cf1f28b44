// The font of the system's own dialogs at the resolution of a screen, and the distances that go with it.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/windows/WindowsApi.h"
#include "setup/optionsLayout.h"

namespace tesk {

// Dots per inch of the screen that a window is on, as its program sees it.
unsigned DpiOf(HWND window);

class DialogFont {
 public:
  // Throws error 51 where the system can make no font.
  explicit DialogFont(unsigned dpi);
  DialogFont(const DialogFont&) = delete;
  DialogFont& operator=(const DialogFont&) = delete;
  ~DialogFont();

  HFONT Get() const { return font_; }
  std::int32_t TextWidth(std::string_view text) const;  // pixels
  // Of dialogs, by the system's guidelines. They measure with this font, which has to outlive them.
  LayoutMetrics Metrics() const;
  // Width of the arrow buttons beside a field.
  std::int32_t ArrowWidth() const;

 private:
  // Pixels of so many dialog units, which grow with the font.
  std::int32_t Across(int units) const;
  std::int32_t Down(int units) const;
  std::int32_t Scaled(int pixels) const;     // from 96 dots per inch
  std::int32_t SystemSize(int which) const;  // pixels of what the system draws (SM_...)

  unsigned dpi_;
  HFONT font_;
  HDC screen_;
  SIZE unit_{};  // four units across, eight down
};

}  // namespace tesk
