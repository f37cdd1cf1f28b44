// A person in front of the setup dialog: a second thread that opens it through the engine, finds its windows
// and sends them what keyboard and mouse would.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "engine/clsTeskReader.h"
#include "platform/windows/WindowsApi.h"
#include "setup/windows/OptionsWindows.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {

// A reader with this machine's parts, and the proposals of a type.
std::shared_ptr<clsTeskReader> NewReader(teskReaderType type = teskReaderTypeScantronScanMark5500);

class DialogUser {
 public:
  // Opens the dialog, lets `acts` act, cancels what it left open, and yields what ShowOptions returned. Fails
  // the test where no dialog appears.
  static bool Use(clsTeskReader& reader, const std::function<void(DialogUser&)>& acts,
                  const std::shared_ptr<HostObject>& parent = nullptr);

  HWND Dialog() const { return dialog_; }
  HWND Pane() const;  // what scrolls
  HWND Window(ControlId id) const;
  std::string Text(ControlId id) const;
  bool Visible(ControlId id) const;
  bool Enabled(ControlId id) const;
  bool Checked(ControlId id) const;
  bool HasFocus(ControlId id) const;
  std::string FocusName() const;  // for messages

  void Choose(ControlId list, int position);
  // The entry with this text; fails the test where there is none.
  void Choose(ControlId list, const std::string& text);
  void Type(ControlId field, const std::string& text);
  void Focus(ControlId id);
  void Wheel(HWND over, int notches);
  void Click(ControlId button);
  // For a button that opens a message box, or closes the dialog.
  void Press(ControlId button);
  void Key(WPARAM key);            // to what has the focus
  void AccessKey(char character);  // with the Alt key
  // Clicks on the upper or lower arrow of a spin field.
  void ClickArrow(ControlId field, bool up);
  // Waits for a message box with this title, closes it, and yields its text; empty where none appears.
  std::string CloseBox(const std::string& title);
  // Returns once the dialog's thread has worked off what was posted.
  void Settle() const;
  bool IsOpen() const;
  bool WaitForEnd() const;

 private:
  explicit DialogUser(DWORD thread) : thread_(thread) {}
  HWND FocusWindow() const;
  HWND Item(int command) const;

  DWORD thread_;  // of the dialog
  HWND dialog_ = nullptr;
};

// A dialog, its host and its reader.
class DialogTest : public testing::Test {
 protected:
  bool Use(const std::function<void(DialogUser&)>& acts,
           const std::shared_ptr<HostObject>& parent = nullptr) {
    return DialogUser::Use(*reader, acts, parent);
  }

  RecordingHost host;
  std::shared_ptr<clsTeskReader> reader = NewReader();
};

}  // namespace tesk::test
