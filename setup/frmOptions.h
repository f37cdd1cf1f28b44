// The setup dialog without its window: what its controls show, and what happens when the user acts. A view
// draws the controls and calls in; both views, of windows and of terminals, stand on this one. Knows the
// engine and below.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "engine/clsTeskReader.h"
#include "setup/basPublic.h"
#include "setup/optionControls.h"

namespace tesk {

// What the dialog asks of its view. Titles and texts are translated.
class OptionsView : public basPublic::Form {
 public:
  // Controls have changed: shows all of them anew.
  virtual void Refresh() = 0;
  virtual void SetFocus(ControlId id) = 0;
  virtual void Beep() = 0;
  virtual void SetHourglass(bool on) = 0;
  virtual void ShowInformation(const std::string& title, const std::string& text) = 0;
  virtual void ShowWarning(const std::string& title, const std::string& text) = 0;
};

// Lives no longer than its engine and its view. No call throws: an error is reported under "frmOptions" and
// the routine's name, and the dialog stays open.
class frmOptions {
 public:
  frmOptions(clsTeskReader& reader, OptionsView& view);
  frmOptions(const frmOptions&) = delete;
  frmOptions& operator=(const frmOptions&) = delete;

  // The engine's settings into the controls. To be called once, before the dialog is shown.
  void LoadValues();
  // The controls into the engine; the stored settings are the host's business. False after an error, with the
  // engine as it was.
  bool SaveValues();

  const std::string& Caption() const { return caption_; }
  // A view may read them at any time, and write places and nothing else.
  OptionControls& Controls() { return controls_; }
  const OptionControls& Controls() const { return controls_; }
  // True once OK has saved.
  bool Confirmed() const { return confirmed_; }

  // ---- What the user does, as a view hears it. What is hidden or disabled does not react; while a port search
  // runs only Cancel does, which ends the search; and once the dialog is closed nothing does.

  void Select(ControlId list, std::int32_t position);   // position from 0; another one chooses nothing
  void Type(ControlId field, const std::string& text);  // what stands in the field now, still unchecked
  // The field loses the focus to `next`, or to another control that needs no saying. Its value is checked,
  // typed or not; but who goes to Cancel wants nothing checked.
  void Leave(ControlId field, std::optional<ControlId> next = std::nullopt);
  void Spin(ControlId field, std::int32_t steps);  // its buttons
  void Click(ControlId box);                       // a check box or a button

  // ---- The handlers behind them

  void cboReaderType_SelChangeEx();
  void chkReaderGrade_Click();
  void cmdOK_Click();
  void cmdCancel_Click();
  void cmdDefaults_Click();
  void cmdLocate_Click();
  // Corrects what stands in a spin field; the beep says so unless `silent`. What is typed and no number gives
  // way to what stood there before.
  void ValidateSpinValue(ControlId field, bool silent);

 private:
  // The chosen reader's profile; empty where none is chosen.
  std::shared_ptr<clsTeskReaderProfile> ChosenProfile() const;
  bool Reacts(ControlId id) const;
  bool PortIsMissing() const;
  bool NeedsChecking(ControlId field) const;
  void FillReaders();
  void ValidateAll();
  void Close();
  void Search(const clsTeskReaderProfile& profile);
  void ShowLocated();

  clsTeskReader& reader_;
  OptionsView& view_;
  OptionControls controls_;
  std::string caption_;
  std::map<ControlId, std::string> typedOver_;  // what stood in a field that is being typed into
  bool loading_ = false;
  bool searching_ = false;
  bool searchCancelled_ = false;
  bool confirmed_ = false;
  bool closed_ = false;
};

}  // namespace tesk
