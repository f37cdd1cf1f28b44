// The controls of the setup dialog by name, and their fixed texts. Knows base/ and the control values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "setup/Control.h"

namespace tesk {

enum class ControlId {
  frmReader,
  lblReaderType,
  cboReaderType,
  frmComPort,
  lblPort,
  cboPort,
  cmdLocate,
  lblBaud,
  cboBaud,
  lblDataBits,
  cboDataBits,
  lblParity,
  cboParity,
  lblStopBits,
  cboStopBits,
  lblFlowControl,
  cboFlowControl,
  fraImageSettings,
  lblColorDepth,
  cboColorDepth,
  lblResolution,
  cboResolution,
  fraOptions,
  chkReaderGrade,
  chkBarcode,
  chkDuplex,
  chkFeeder,
  chkPrinter,
  chkRejecter,
  chkWindowing,
  chkContinuous,
  fraRecognition,
  lblRecognitionThreshold,
  txtRecognitionThreshold,
  lblErasureThreshold,
  txtErasureThreshold,
  lblMarkDiscrimination,
  txtMarkDiscrimination,
  lblMarkCutOff,
  txtMarkCutOff,
  fraTiming,
  lblReaderTimeout,
  txtReaderTimeout,
  lblSystemPause,
  txtSystemPause,
  cmdDefaults,
  cmdOK,
  cmdCancel,
};

inline constexpr std::size_t kControlCount = static_cast<std::size_t>(ControlId::cmdCancel) + 1;

// All controls of one dialog.
class OptionControls {
 public:
  Control& operator[](ControlId id) { return controls_[static_cast<std::size_t>(id)]; }
  const Control& operator[](ControlId id) const { return controls_[static_cast<std::size_t>(id)]; }

 private:
  std::array<Control, kControlCount> controls_;
};

// The controls with their translated captions, the lists filled but for the readers, nothing chosen.
OptionControls CreateOptionControls();

// What the engine takes, in seconds, and what nobody waits longer than, in milliseconds.
inline constexpr std::int32_t kLeastTimeOut = 1;
inline constexpr std::int32_t kMostTimeOut = 600;
inline constexpr std::int32_t kMostPause = 60'000;

// The name of a control ("cboPort").
std::string_view ControlName(ControlId id);

// ---- Lists

// The chosen entry; null where nothing is chosen.
const ListEntry* ChosenEntry(const Control& list);
// Chooses the entry that carries `value`; where there is none, nothing. True when an entry is chosen.
bool ChooseValue(Control& list, std::string_view value);
// The same for a number above 0, which becomes an entry of its own, shown with `unit`, where there is none:
// what is set is to be seen.
void ChooseNumber(Control& list, const std::string& value, const std::string& unit = {});

inline constexpr const char* kResolutionUnit = " DPI";

// ---- The reader-grade box, whose caption depends on the reader

inline constexpr const char* kSelfScoreCaption = "SelfSco&re option installed";
inline constexpr const char* kReaderGradeCaption = "Use scanne&r grade features";

}  // namespace tesk
