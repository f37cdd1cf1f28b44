// The child windows of the setup dialog: one per control, a second one for the arrows of a spin field; the frames and
// what is in them on a pane that scrolls. They are made in the order of the tab key, each label before its field, so that access keys and screen readers
// find what belongs together.
#pragma once

#include <array>
#include <optional>

#include "platform/windows/WindowsApi.h"
#include "setup/optionControls.h"
#include "setup/optionsLayout.h"
#include "setup/windows/DialogFont.h"
#include "setup/windows/OptionsPane.h"

namespace tesk {

// The number under which a control's window reports; OK and Cancel have the system's.
int CommandOf(ControlId id);
int ArrowsCommandOf(ControlId id);
// Empty for a number that is none of ours.
std::optional<ControlId> ControlOfCommand(int command);
std::optional<ControlId> ControlOfArrows(int command);

class OptionsWindows {
 public:
  // Throws error 51 where the system refuses a window. The windows die with the dialog.
  void Create(HWND dialog);
  // `font` outlives its use by the windows.
  void SetFont(const DialogFont& font);
  // Brings every window to what its control says, and every control to its place in this room. Yields the size of
  // the dialog's inside.
  LayoutSize Show(OptionControls& controls, const LayoutRoom& room);
  // Scrolls to a control.
  void Reveal(ControlId id);
  OptionsPane& Pane() { return pane_; }

  HWND Window(ControlId id) const { return windows_[static_cast<std::size_t>(id)]; }
  std::string Text(ControlId field) const;

 private:
  HWND& At(ControlId id) { return windows_[static_cast<std::size_t>(id)]; }
  void Add(HWND parent, ControlId id, bool startsGroup);
  HWND AddArrows(HWND parent, ControlId id);
  void ShowValues(ControlId id, const Control& control);
  void ShowList(ControlId id, const Control& list);
  void ShowSpin(ControlId id, const Control& field);
  void ShowStates(const OptionControls& controls, ControlId id);
  void Place(ControlId id, const Control& control);

  OptionsPane pane_;
  std::array<HWND, kControlCount> windows_{};
  std::array<HWND, kControlCount> arrows_{};
  OptionControls shown_ = CreateOptionControls();  // of which the windows tell already
  const DialogFont* font_ = nullptr;
};

}  // namespace tesk
