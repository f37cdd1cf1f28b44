// The handlers of the setup dialog.
#include "setup/frmOptions.h"

#include <algorithm>
#include <optional>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "profiles/models.h"
#include "setup/optionValues.h"
#include "setup/optionsLayout.h"
#include "setup/spinField.h"

namespace tesk {
namespace {

using enum ControlId;

// A flag that is set for the time of a routine.
class During {
 public:
  explicit During(bool& flag) : flag_(flag) { flag_ = true; }
  During(const During&) = delete;
  During& operator=(const During&) = delete;
  ~During() { flag_ = false; }

 private:
  bool& flag_;
};

class Hourglass {
 public:
  explicit Hourglass(OptionsView& view) : view_(view) { view_.SetHourglass(true); }
  Hourglass(const Hourglass&) = delete;
  Hourglass& operator=(const Hourglass&) = delete;
  ~Hourglass() { view_.SetHourglass(false); }

 private:
  OptionsView& view_;
};

constexpr const char* kSelfScoreNote =
    "Note: SelfScore uses predefined values for recognition threshold, mark discrimination, and "
    "discrimination "
    "cut-off. To return the scanner settings to the default values, click the Defaults button.";
constexpr const char* kNotLocated =
    "The scanner was not located. Please check to ensure that the scanner has power and is properly "
    "connected to "
    "the computer.";

}  // namespace

frmOptions::frmOptions(clsTeskReader& reader, OptionsView& view)
    : reader_(reader),
      view_(view),
      controls_(CreateOptionControls()),
      caption_(LoadString("Scanner Settings")) {}

// ---- Loading and saving

void frmOptions::LoadValues() {
  Guarded("frmOptions.LoadValues", [&] {
    const During loading(loading_);
    FillReaders();
    ChooseValue(controls_[cboReaderType], NumberText(reader_.ReaderType()));
    cboReaderType_SelChangeEx();
    ShowEngine(controls_, reader_);
    if (const auto profile = ChosenProfile()) ApplyReaderGrade(controls_, *profile);
    view_.Refresh();
  });
}

void frmOptions::FillReaders() {
  const clsTeskReaderProfiles& profiles = Deref(reader_.Profiles());
  auto& entries = controls_[cboReaderType].entries;
  entries.clear();
  for (std::int32_t position = 1; position <= profiles.Count(); ++position) {
    const auto profile = profiles.Item(static_cast<double>(position));
    if (profile) entries.push_back({profile->ReaderName(), NumberText(profile->ReaderType())});
  }
}

bool frmOptions::SaveValues() {
  return Guarded("frmOptions.SaveValues", [&] {
    if (const auto profile = ChosenProfile()) SaveEngine(controls_, *profile, reader_);
    return true;
  });
}

std::shared_ptr<clsTeskReaderProfile> frmOptions::ChosenProfile() const {
  const ListEntry* entry = ChosenEntry(controls_[cboReaderType]);
  return entry == nullptr ? nullptr : Deref(reader_.Profiles()).Item(entry->value);
}

// ---- What the user does

bool frmOptions::Reacts(ControlId id) const { return !searching_ && !closed_ && IsUsable(controls_, id); }

void frmOptions::Select(ControlId list, std::int32_t position) {
  if (!Reacts(list)) return;
  controls_[list].chosen = position;
  if (ChosenEntry(controls_[list]) == nullptr) controls_[list].chosen = Control::kNothingChosen;
  if (list == cboReaderType) cboReaderType_SelChangeEx();
}

void frmOptions::Type(ControlId field, const std::string& text) {
  if (!Reacts(field)) return;
  typedOver_.try_emplace(field, controls_[field].text);
  controls_[field].text = text;
}

void frmOptions::Leave(ControlId field, std::optional<ControlId> next) {
  if (next == cmdCancel || !Reacts(field) || !NeedsChecking(field)) return;
  ValidateSpinValue(field, false);
}

void frmOptions::Spin(ControlId field, std::int32_t steps) {
  if (!Reacts(field)) return;
  Guarded("frmOptions.ValidateSpinValue", [&] {
    ValidateSpinValue(field, true);
    Control& control = controls_[field];
    const auto value = std::int64_t{SpinNumber(control)} + steps;
    const auto within =
        std::min<std::int64_t>(std::max<std::int64_t>(value, control.minimum), control.maximum);
    Type(field, NumberText(Narrow<std::int32_t>(within)));
    view_.Refresh();
  });
}

void frmOptions::Click(ControlId box) {
  if (box == cmdCancel) return cmdCancel_Click();
  if (!Reacts(box)) return;
  if (controls_[box].kind == ControlKind::CheckBox) controls_[box].checked = !controls_[box].checked;
  if (box == chkReaderGrade) chkReaderGrade_Click();
  if (box == cmdOK) cmdOK_Click();
  if (box == cmdDefaults) cmdDefaults_Click();
  if (box == cmdLocate) cmdLocate_Click();
}

// ---- Readers

void frmOptions::cboReaderType_SelChangeEx() {
  Guarded("frmOptions.cboReaderType_SelChangeEx", [&] {
    typedOver_.clear();
    if (const auto profile = ChosenProfile()) {
      ApplyProfile(controls_, *profile);
    } else {
      ApplyNoProfile(controls_);
    }
    if (!loading_) view_.Refresh();
  });
}

void frmOptions::cmdDefaults_Click() {
  Guarded("frmOptions.cmdDefaults_Click", [&] {
    if (ChosenProfile()) cboReaderType_SelChangeEx();
  });
}

void frmOptions::chkReaderGrade_Click() {
  Guarded("frmOptions.chkReaderGrade_Click", [&] {
    const auto profile = ChosenProfile();
    if (!profile || !ModelOf(profile->ReaderType()).scoresItself) return;
    ApplyReaderGrade(controls_, *profile);
    view_.Refresh();
    if (!controls_[chkReaderGrade].checked || loading_) return;
    view_.ShowInformation(LoadString("Scanner Settings"), LoadString(kSelfScoreNote));
  });
}

// ---- Spin fields

void frmOptions::ValidateSpinValue(ControlId field, bool silent) {
  Guarded("frmOptions.ValidateSpinValue", [&] {
    Control& control = controls_[field];
    const std::string before = control.text;
    const auto typedOver = typedOver_.extract(field);
    if (!HoldsNumber(control) && !typedOver.empty()) control.text = typedOver.mapped();
    CorrectSpinText(control);
    if (control.text == before) return;
    view_.Refresh();
    if (!silent) view_.Beep();
  });
}

// What the reader proposes is right as it stands, also where its bounds leave it out. A scale without extent
// bounds nothing: the number is the reader's own, and nobody can change it.
bool frmOptions::NeedsChecking(ControlId field) const {
  const Control& control = controls_[field];
  if (control.kind != ControlKind::SpinField) return false;
  if (typedOver_.contains(field)) return true;
  const auto profile = ChosenProfile();
  const bool bounded = control.enabled || control.minimum < control.maximum;
  return profile && bounded && control.text != Proposals(controls_, *profile)[field].text;
}

// Also what nobody left: the Enter key confirms the dialog while a field still has the focus, and a stored value
// may be out of bounds. What the user cannot see is corrected without a beep.
void frmOptions::ValidateAll() {
  for (const ControlId id : TabOrder()) {
    if (NeedsChecking(id)) ValidateSpinValue(id, !IsUsable(controls_, id));
  }
}

// ---- Closing

bool frmOptions::PortIsMissing() const {
  const auto profile = ChosenProfile();
  const bool isReader = profile && IsReader(profile->ReaderType());
  return isReader && controls_[cboPort].enabled && ChosenEntry(controls_[cboPort]) == nullptr;
}

void frmOptions::cmdOK_Click() {
  Guarded("frmOptions.cmdOK_Click", [&] {
    ValidateAll();
    if (PortIsMissing()) {
      ShowMessage("Scanner Port", "Please select a port for your OMR Scanner.");
      view_.SetFocus(cboPort);
      return;
    }
    if (!SaveValues()) return;
    confirmed_ = true;
    Close();
  });
}

// Taking the window away moves the focus, which is nothing that the user did.
void frmOptions::Close() {
  closed_ = true;
  basPublic::UnloadForm(view_);
}

void frmOptions::cmdCancel_Click() {
  Guarded("frmOptions.cmdCancel_Click", [&] {
    if (!searching_) return Close();
    searchCancelled_ = true;
    reader_.SetCancelScan(true);
  });
}

// ---- The port search

void frmOptions::cmdLocate_Click() {
  Guarded("frmOptions.cmdLocate_Click", [&] {
    const auto profile = ChosenProfile();
    if (!profile || searching_) return;
    const Hourglass hourglass(view_);
    Search(*profile);
  });
}

void frmOptions::Search(const clsTeskReaderProfile& profile) {
  std::optional<RememberedLine> remembered(reader_);
  reader_.SetReaderType(profile.ReaderType());
  SaveSerialLine(controls_, reader_);
  const ListEntry* port = ChosenEntry(controls_[cboPort]);
  bool located = false;
  {
    searchCancelled_ = false;
    const During searching(searching_);
    located = reader_.Locate(port == nullptr ? std::int16_t{0} : ToInt16(Val(port->value)));
  }
  if (located) return ShowLocated();
  remembered.reset();
  if (!searchCancelled_) view_.ShowWarning(LoadString("Scanner Not Located"), LoadString(kNotLocated));
}

void frmOptions::ShowLocated() {
  if (!ChooseValue(controls_[cboPort], NumberText(reader_.Port()))) return;
  view_.Refresh();
  view_.ShowInformation(LoadString("Scanner Located"), LoadString("The scanner was located on port: ") +
                                                           ChosenEntry(controls_[cboPort])->text);
}

}  // namespace tesk
