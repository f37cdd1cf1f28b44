// The setup dialog in a terminal: one column of fields that scrolls, lists that pop up. Knows setup/ and the
// terminal library.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/HostServices.h"
#include "setup/frmOptions.h"
#include "setup/optionsLayout.h"
#include "setup/terminal/TerminalScreen.h"

namespace tesk {

// One dialog, from its opening to its end.
class TerminalOptions : public OptionsView {
 public:
  TerminalOptions(TerminalScreen& screen, clsTeskReader& reader);
  TerminalOptions(const TerminalOptions&) = delete;
  TerminalOptions& operator=(const TerminalOptions&) = delete;
  ~TerminalOptions() override;

  // Shows the messages first. True when the user confirmed; an interrupt is a No.
  bool Run(const std::vector<OperatorMessage>& first = {});
  // For waits of the engine's: Escape and interrupts end a port search.
  bool RunMessages();

  void Unload() override { closed_ = true; }
  void Refresh() override { stale_ = true; }
  void SetFocus(ControlId id) override;
  void Beep() override;
  void SetHourglass(bool on) override;
  void ShowInformation(const std::string& title, const std::string& text) override;
  void ShowWarning(const std::string& title, const std::string& text) override;

 private:
  struct Columns {
    int label = 0;
    int value = 0;  // where values begin
    int width = 0;  // of the whole
  };

  Columns Measure() const;
  void Rebuild();
  void AddText(const std::string& text, int line, int column, chtype look);
  void AddField(ControlId id, int line, int column, int width);
  int AddFrames(const Columns& columns);
  void AddRow(const LayoutRow& row, int line, const Columns& columns);
  void AddButtons(int line, const Columns& columns);
  std::string Shown(ControlId id, int width = 0) const;
  void ClearForm();

  bool TooSmall() const;
  int LeastWidth() const;
  void Draw();
  void Compose(const std::string& hint);
  void ComposeTooSmall(bool covered);
  void ComposeFrame(const std::string& hint);
  void ScrollTo(int line);
  std::string Hint() const;

  ControlId Current() const;
  ControlKind CurrentKind() const;
  void Handle(int key);
  void HandleField(int key);
  void HandleSpin(int key);
  void Move(int request);
  void LeaveField();
  void Step(ControlId list, int step);
  bool IsChanged() const;
  void GiveUp();
  void Activate();
  void Pick(ControlId list);
  void TakeText();

  TerminalScreen& screen_;
  frmOptions form_;
  OptionControls opened_;  // as they were shown first
  FORM* fields_ = nullptr;
  std::vector<FIELD*> all_;
  std::map<FIELD*, ControlId> ids_;
  Window pad_;
  Columns columns_;
  int lines_ = 0;   // of the pad
  int scroll_ = 0;  // the pad's first line that is seen
  std::optional<ControlId> focus_;
  bool stale_ = true;
  bool closed_ = false;
  bool searching_ = false;
};

}  // namespace tesk
