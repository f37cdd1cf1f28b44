// The part of the setup dialog that holds its frames. It scrolls where the screen is smaller than they are; the
// buttons, outside of it, are always seen.
#pragma once

#include "platform/windows/WindowsApi.h"
#include "setup/optionsLayout.h"

namespace tesk {

// A dialog without controls, for the system's calls that take one from memory.
struct EmptyDialog {
  DLGTEMPLATE header{};
  WORD menu = 0;
  WORD className = 0;
  WORD title = 0;
};

// We lay the windows out for a new resolution ourselves.
void KeepSystemFromScaling(HWND dialog);

// The number of the pane among the dialog's windows.
inline constexpr int kPaneCommand = 999;

class OptionsPane {
 public:
  OptionsPane() = default;
  OptionsPane(const OptionsPane&) = delete;
  OptionsPane& operator=(const OptionsPane&) = delete;

  // Throws error 51 where the system refuses a window, which dies with the dialog. What its controls tell goes on
  // to the dialog.
  void Create(HWND dialog);
  HWND Window() const { return window_; }

  // Shows as much of the frames as the layout says, which was made with these metrics. Moves no control: the caller
  // places them all.
  void Fit(const DialogLayout& layout, const LayoutMetrics& metrics);
  // Where a place within the frames is now.
  ControlPlace Scrolled(ControlPlace place) const;
  // Scrolls as little as brings a place within the frames into view.
  void Reveal(const ControlPlace& place);
  // The wheel over a control scrolls the frames; it must not change a setting that happens to be below the pointer.
  void TakeWheelOf(HWND control);
  // A wheel message; False for any other.
  bool Wheel(UINT message, WPARAM first);

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second);
  static LRESULT CALLBACK WithoutWheel(HWND window, UINT message, WPARAM first, LPARAM second);
  bool Handle(UINT message, WPARAM first, LPARAM second);
  void Bar(int bar, int request);
  void ScrollTo(LONG left, LONG top);
  void ShowBars();

  HWND window_ = nullptr;
  LayoutSize frames_{};
  LayoutSize seen_{};
  std::int32_t step_ = 1;
  POINT corner_{};  // of the frames, what is seen at the upper left
};

}  // namespace tesk
