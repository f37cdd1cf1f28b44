// The tables that pair controls with properties, and the code that walks them.
#include "setup/optionValues.h"

#include <algorithm>
#include <array>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "profiles/models.h"
#include "setup/optionsLayout.h"
#include "setup/spinField.h"

namespace tesk {
namespace {

using enum ControlId;
using Profile = clsTeskReaderProfile;
using Reader = clsTeskReader;
using Flag = bool (Profile::*)() const;

// ---- Check boxes

struct CheckBoxRow {
  ControlId id;
  Flag value;
  Flag enabled;
  Flag visible;
  bool (*engine)(const Reader&);
  void (*save)(Reader&, bool);
};

constexpr CheckBoxRow kCheckBoxes[] = {
    {chkReaderGrade, &Profile::ReaderGrade, &Profile::ReaderGradeEnabled, &Profile::ReaderGradeVisible,
     [](const Reader& r) { return r.ReaderGrade(); }, [](Reader& r, bool v) { r.SetReaderGrade(v); }},
    {chkDuplex, &Profile::Duplex, &Profile::DuplexEnabled, &Profile::DuplexVisible,
     [](const Reader& r) { return r.Duplex(); }, [](Reader& r, bool v) { r.SetDuplex(v); }},
    {chkBarcode, &Profile::Barcode, &Profile::BarcodeEnabled, &Profile::BarcodeVisible,
     [](const Reader& r) { return r.Barcode(); }, [](Reader& r, bool v) { r.SetBarcode(v); }},
    {chkFeeder, &Profile::Feeder, &Profile::FeederEnabled, &Profile::FeederVisible,
     [](const Reader& r) { return r.Feeder(); }, [](Reader& r, bool v) { r.SetFeeder(v); }},
    {chkPrinter, &Profile::Printer, &Profile::PrinterEnabled, &Profile::PrinterVisible,
     [](const Reader& r) { return Deref(r.Printer()).Enabled(); },
     [](Reader& r, bool v) { Deref(r.Printer()).SetEnabled(v); }},
    {chkRejecter, &Profile::Rejecter, &Profile::RejecterEnabled, &Profile::RejecterVisible,
     [](const Reader& r) { return r.Rejecter(); }, [](Reader& r, bool v) { r.SetRejecter(v); }},
    {chkWindowing, &Profile::Windowing, &Profile::WindowingEnabled, &Profile::WindowingVisible,
     [](const Reader& r) { return r.Windowing(); }, [](Reader& r, bool v) { r.SetWindowing(v); }},
    {chkContinuous, &Profile::Continuous, &Profile::ContinuousEnabled, &Profile::ContinuousVisible,
     [](const Reader& r) { return r.Continuous(); }, [](Reader& r, bool v) { r.SetContinuous(v); }},
};

// ---- Lists and spin fields

struct StateRow {
  ControlId id;
  Flag enabled;
  Flag visible;
};

constexpr StateRow kStates[] = {
    {cboPort, &Profile::PortEnabled, &Profile::PortVisible},
    {cboBaud, &Profile::BaudRateEnabled, &Profile::BaudRateVisible},
    {cboDataBits, &Profile::DataBitsEnabled, &Profile::DataBitsVisible},
    {cboParity, &Profile::ParityEnabled, &Profile::ParityVisible},
    {cboStopBits, &Profile::StopBitsEnabled, &Profile::StopBitsVisible},
    {cboFlowControl, &Profile::FlowControlEnabled, &Profile::FlowControlVisible},
    {cboColorDepth, &Profile::ColorDepthEnabled, &Profile::ColorDepthVisible},
    {cboResolution, &Profile::ResolutionEnabled, &Profile::ResolutionVisible},
    {txtRecognitionThreshold, &Profile::RecognitionThresholdEnabled, &Profile::RecognitionThresholdVisible},
    {txtErasureThreshold, &Profile::RecognitionThresholdEnabled, &Profile::RecognitionThresholdVisible},
    {txtMarkDiscrimination, &Profile::MarkDiscriminationEnabled, &Profile::MarkDiscriminationVisible},
    {txtMarkCutOff, &Profile::MarkDiscriminationEnabled, &Profile::MarkDiscriminationVisible},
    {txtReaderTimeout, &Profile::TimeOutEnabled, &Profile::TimeOutVisible},
    {txtSystemPause, &Profile::SleepTimeEnabled, &Profile::SleepTimeVisible},
};

void Enable(OptionControls& controls, const Profile& profile, ControlId id) {
  const auto row = std::ranges::find(kStates, id, &StateRow::id);
  controls[id].enabled = (profile.*row->enabled)();
}

// Set by the scanner's own scoring; the erasure threshold is not.
constexpr std::array kScoredBySelf = {txtRecognitionThreshold, txtMarkDiscrimination, txtMarkCutOff};

// ---- Values

constexpr std::array kLine = {cboBaud, cboDataBits, cboParity, cboStopBits, cboFlowControl};

// The value under which the list carries a parity: serial lines take small letters, and "S" for a blank, too.
std::string ParityValue(const std::string& parity) {
  constexpr std::string_view kLetters = "NOEM";
  for (const char letter : kLetters) {
    if (LowerCase(parity) == LowerCase({&letter, 1})) return {letter};
  }
  return LowerCase(parity) == "s" ? " " : parity;
}

// What the list does not have leaves the choice as it was.
void ChooseKnown(Control& list, const std::string& value) {
  const std::int32_t before = list.chosen;
  if (!ChooseValue(list, value)) list.chosen = before;
}

void ShowLine(OptionControls& controls, teskReaderBaudRate baudRate, teskReaderDataBits dataBits,
              const std::string& parity, float stopBits, teskReaderFlowControl flowControl) {
  ChooseKnown(controls[cboBaud], NumberText(baudRate));
  ChooseKnown(controls[cboDataBits], NumberText(dataBits));
  ChooseKnown(controls[cboParity], ParityValue(parity));
  ChooseKnown(controls[cboStopBits], NumberText(stopBits));
  ChooseKnown(controls[cboFlowControl], NumberText(flowControl));
}

// Engine and profile name the rest of their settings alike.
template <class Source>
void ShowSettings(OptionControls& controls, const Source& from) {
  ShowLine(controls, from.BaudRate(), from.DataBits(), from.Parity(), from.StopBits(), from.FlowControl());
  controls[txtRecognitionThreshold].text = NumberText(from.RecognitionThreshold());
  controls[txtErasureThreshold].text = NumberText(from.ErasureThreshold());
  controls[txtMarkDiscrimination].text = NumberText(from.MarkDiscrimination());
  controls[txtMarkCutOff].text = NumberText(from.MarkCutOff());
  controls[txtReaderTimeout].text = NumberText(from.TimeOut());
  controls[txtSystemPause].text = NumberText(from.SleepTime());
}

void ShowImages(OptionControls& controls, teskReaderColorDepth colorDepth, std::int16_t resolution) {
  ChooseValue(controls[cboColorDepth], NumberText(colorDepth));
  ChooseNumber(controls[cboResolution], NumberText(resolution), LoadString(kResolutionUnit));
}

void ApplyBounds(OptionControls& controls, const Profile& profile) {
  const std::int32_t minimum = profile.RecognitionThresholdMinimum();
  const std::int32_t maximum = profile.RecognitionThresholdMaximum();
  for (const ControlId id : {txtRecognitionThreshold, txtErasureThreshold, txtMarkCutOff}) {
    SetSpinMinMax(controls[id], minimum, maximum);
  }
  SetSpinMinMax(controls[txtMarkDiscrimination], controls[txtMarkDiscrimination].minimum, maximum);
}

// ---- Saving

// What is typed, as the engine takes it.
struct TypedNumbers {
  std::int16_t markCutOff;
  std::int16_t markDiscrimination;
  std::int16_t erasureThreshold;
  std::int16_t recognitionThreshold;
  std::int32_t sleepTime;
  std::int32_t timeOut;
};

TypedNumbers NumbersIn(const OptionControls& controls) {
  const auto number = [&](ControlId id) { return SpinNumber(controls[id]); };
  return {.markCutOff = Narrow<std::int16_t>(number(txtMarkCutOff)),
          .markDiscrimination = Narrow<std::int16_t>(number(txtMarkDiscrimination)),
          .erasureThreshold = Narrow<std::int16_t>(number(txtErasureThreshold)),
          .recognitionThreshold = Narrow<std::int16_t>(number(txtRecognitionThreshold)),
          .sleepTime = number(txtSystemPause),
          .timeOut = number(txtReaderTimeout)};
}

void SaveNumbers(const TypedNumbers& numbers, Reader& reader) {
  reader.SetMarkCutOff(numbers.markCutOff);
  reader.SetMarkDiscrimination(numbers.markDiscrimination);
  reader.SetErasureThreshold(numbers.erasureThreshold);
  reader.SetRecognitionThreshold(numbers.recognitionThreshold);
  reader.SetSleepTime(numbers.sleepTime);
  reader.SetTimeOut(numbers.timeOut);
}

void SaveImages(const OptionControls& controls, Reader& reader) {
  if (const auto* resolution = ChosenEntry(controls[cboResolution])) {
    reader.SetResolution(ToInt16(Val(resolution->value)));
  }
  if (const auto* colorDepth = ChosenEntry(controls[cboColorDepth])) {
    reader.SetColorDepth(static_cast<teskReaderColorDepth>(ToInt32(Val(colorDepth->value))));
  }
}

// Settings that LoadDefaults leaves alone, and the reader that is chosen anyway.
constexpr std::array kBeyondDefaults = {cboReaderType, cboPort, chkWindowing, chkContinuous};

bool SameValue(const Control& a, const Control& b) {
  const ListEntry* entryA = ChosenEntry(a);
  const ListEntry* entryB = ChosenEntry(b);
  const bool sameEntry =
      entryA == nullptr || entryB == nullptr ? entryA == entryB : entryA->value == entryB->value;
  return sameEntry && a.checked == b.checked && a.text == b.text;
}

}  // namespace

void ApplyProfile(OptionControls& controls, const clsTeskReaderProfile& profile) {
  const bool selfScore = ModelOf(profile.ReaderType()).scoresItself;
  controls[chkReaderGrade].caption = LoadString(selfScore ? kSelfScoreCaption : kReaderGradeCaption);
  controls[fraImageSettings].visible = profile.ImagingVisible();
  controls[fraImageSettings].enabled = profile.ImagingEnabled();
  controls[cmdLocate].visible = profile.LocateEnabled();
  controls[cmdLocate].enabled = profile.LocateEnabled();
  for (const CheckBoxRow& row : kCheckBoxes) {
    Control& box = controls[row.id];
    box.checked = (profile.*row.value)();
    box.enabled = (profile.*row.enabled)();
    box.visible = (profile.*row.visible)();
  }
  for (const StateRow& row : kStates) {
    controls[row.id].enabled = (profile.*row.enabled)();
    controls[row.id].visible = (profile.*row.visible)();
  }
  ApplyBounds(controls, profile);
  // No other reader's line where this one proposes none.
  for (const ControlId id : kLine) controls[id].chosen = Control::kNothingChosen;
  ShowSettings(controls, profile);
  ShowImages(controls, profile.ColorDepth(), profile.Resolution());
  ApplyReaderGrade(controls, profile);
  controls[cmdDefaults].enabled = true;
}

void ApplyNoProfile(OptionControls& controls) {
  for (const ControlId id : TabOrder()) {
    controls[id].enabled = id == cboReaderType || id == cmdOK || id == cmdCancel;
  }
  controls[cmdLocate].visible = false;
  controls[fraImageSettings].visible = false;
  FollowContents(controls);
}

void ApplyReaderGrade(OptionControls& controls, const clsTeskReaderProfile& profile) {
  // A hidden or disabled box has no say: nobody could clear it.
  const Control& box = controls[chkReaderGrade];
  const bool clearable = box.visible && box.enabled;
  const bool scores = ModelOf(profile.ReaderType()).scoresItself && clearable && box.checked;
  for (const ControlId id : kScoredBySelf) {
    Enable(controls, profile, id);
    if (scores) controls[id].enabled = false;
  }
  FollowContents(controls);
}

void ShowEngine(OptionControls& controls, const clsTeskReader& reader) {
  ChooseValue(controls[cboPort], NumberText(reader.Port()));
  for (const CheckBoxRow& row : kCheckBoxes) controls[row.id].checked = row.engine(reader);
  ShowSettings(controls, reader);
  // A resolution that no scanner has is what a loaded setting becomes; the profile's stands instead.
  const ListEntry* proposed = ChosenEntry(controls[cboResolution]);
  const auto fallback = proposed == nullptr ? reader.Resolution() : ToInt16(Val(proposed->value));
  ShowImages(controls, reader.ColorDepth(), reader.Resolution() > 0 ? reader.Resolution() : fallback);
}

OptionControls Proposals(const OptionControls& controls, const clsTeskReaderProfile& profile) {
  OptionControls proposals = controls;
  ApplyProfile(proposals, profile);
  return proposals;
}

bool ShowsProposals(const OptionControls& controls, const clsTeskReaderProfile& profile) {
  const OptionControls proposals = Proposals(controls, profile);
  return std::ranges::all_of(TabOrder(), [&](ControlId id) {
    const bool beyond = std::ranges::find(kBeyondDefaults, id) != kBeyondDefaults.end();
    return beyond || SameValue(controls[id], proposals[id]);
  });
}

void SaveSerialLine(const OptionControls& controls, clsTeskReader& reader) {
  const auto save = [&](ControlId id, auto set) {
    if (const ListEntry* entry = ChosenEntry(controls[id])) set(Val(entry->value));
  };
  save(cboBaud, [&](double v) { reader.SetBaudRate(static_cast<teskReaderBaudRate>(ToInt32(v))); });
  save(cboDataBits, [&](double v) { reader.SetDataBits(static_cast<teskReaderDataBits>(ToInt32(v))); });
  save(cboPort, [&](double v) { reader.SetPort(ToInt16(v)); });
  save(cboStopBits, [&](double v) { reader.SetStopBits(ToSingle(v)); });
  save(cboFlowControl,
       [&](double v) { reader.SetFlowControl(static_cast<teskReaderFlowControl>(ToInt32(v))); });
  const ListEntry* parity = ChosenEntry(controls[cboParity]);
  if (parity != nullptr && parity->value != ParityValue(reader.Parity())) reader.SetParity(parity->value);
}

void SaveEngine(const OptionControls& controls, const clsTeskReaderProfile& profile, clsTeskReader& reader) {
  const TypedNumbers numbers = NumbersIn(controls);
  Deref(reader.Printer());
  const bool changed = profile.ReaderType() != reader.ReaderType();
  const bool onlyTheReader = changed && ShowsProposals(controls, profile);
  // Setting it anew would move the host's imprint position.
  if (changed) reader.SetReaderType(profile.ReaderType());
  if (profile.InterfaceType() == teskReaderInterfaceTypeSerial) SaveSerialLine(controls, reader);
  if (profile.ImagingEnabled()) SaveImages(controls, reader);
  for (const CheckBoxRow& row : kCheckBoxes) row.save(reader, controls[row.id].checked);
  reader.SetImage(profile.Imaging());
  SaveNumbers(numbers, reader);
  if (!changed) return;
  // What has no control must not stay the old reader's.
  reader.SetImagingEnabled(profile.ImagingEnabled());
  reader.SetRecognitionThresholdMax(profile.RecognitionThresholdMaximum());
  if (onlyTheReader) reader.LoadDefaults(profile.ReaderType());
}

RememberedLine::RememberedLine(clsTeskReader& reader)
    : reader_(reader),
      port_(reader.Port()),
      type_(reader.ReaderType()),
      flowControl_(reader.FlowControl()),
      baudRate_(reader.BaudRate()),
      parity_(reader.Parity()),
      dataBits_(reader.DataBits()),
      stopBits_(reader.StopBits()),
      printer_(reader.Printer()) {
  if (printer_) distance_ = printer_->Distance();
}

RememberedLine::~RememberedLine() {
  reader_.SetPort(port_);
  reader_.SetReaderType(type_);
  reader_.SetFlowControl(flowControl_);
  reader_.SetBaudRate(baudRate_);
  reader_.SetParity(parity_);
  reader_.SetDataBits(dataBits_);
  reader_.SetStopBits(stopBits_);
  if (printer_) printer_->SetDistance(distance_);
}

}  // namespace tesk
