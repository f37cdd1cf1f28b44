// The setup dialog as a window: draws the controls of frmOptions with the system's own, and tells it what the
// user does.
#pragma once

#include <memory>

#include "setup/frmOptions.h"
#include "setup/windows/OptionsWindows.h"

namespace tesk {

// One dialog, from its opening to its end.
class OptionsDialog : public OptionsView {
 public:
  OptionsDialog(clsTeskReader& reader, std::int32_t helpTopic);
  OptionsDialog(const OptionsDialog&) = delete;
  OptionsDialog& operator=(const OptionsDialog&) = delete;

  // Returns when the dialog is closed: by the user, with its owner, or because the program is to end (the
  // request stays in the queue). True when the user confirmed. Throws error 51 where no window can be made.
  bool Run(HWND owner);

  void Unload() override;
  void Refresh() override;
  void SetFocus(ControlId id) override;
  void Beep() override;
  void SetHourglass(bool on) override;
  void ShowInformation(const std::string& title, const std::string& text) override;
  void ShowWarning(const std::string& title, const std::string& text) override;

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second);
  // True where the message is dealt with.
  bool Handle(UINT message, WPARAM first, LPARAM second);
  void Open(HWND window);
  void Command(int command, int notification);
  void ListCommand(ControlId list, int notification);
  void FieldCommand(ControlId field, int notification);
  bool Notify(const NMHDR& header);
  void Help();
  void ChangeFont(unsigned dpi);
  void ChangeScreen(unsigned dpi, const RECT& proposed);
  void FitScreen();
  void NoteMove();
  SIZE Edges() const;
  LayoutRoom Room() const;
  void FitTo(LayoutSize inside);
  void ShowBox(const std::string& title, const std::string& text, UINT icon);

  clsTeskReader& reader_;
  std::int32_t helpTopic_;
  frmOptions form_;
  HWND window_ = nullptr;
  HWND owner_ = nullptr;
  std::unique_ptr<DialogFont> font_;
  OptionsWindows windows_;
  HWND focusBefore_ = nullptr;
  bool refreshing_ = false;
  bool hourglass_ = false;
  bool listCancelled_ = false;
  bool placed_ = false;
  bool dragged_ = false;
  bool moved_ = false;  // by a person: it is then left where it is
  POINT corner_{};      // where it was put last
};

}  // namespace tesk
