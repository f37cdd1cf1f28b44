// Captions and list entries as tables. Every access key is its control's own; controls that are never seen
// together may share one.
#include "setup/optionControls.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "base/tables.h"

namespace tesk {
namespace {

struct ControlRow {
  ControlId id;
  const char* name;
  ControlKind kind;
  const char* caption;
};

using enum ControlKind;

#define TESK_CONTROL(Name, Kind, Caption) {ControlId::Name, #Name, Kind, Caption},

// clang-format off
constexpr ControlRow kControls[] = {
    TESK_CONTROL(frmReader,               Frame,        "Scanner")
    TESK_CONTROL(lblReaderType,           Label,        "Scanner &type:")
    TESK_CONTROL(cboReaderType,           DropDownList, "")
    TESK_CONTROL(frmComPort,              Frame,        "Serial port")
    TESK_CONTROL(lblPort,                 Label,        "&Port:")
    TESK_CONTROL(cboPort,                 DropDownList, "")
    TESK_CONTROL(cmdLocate,               Button,       "&Locate")
    TESK_CONTROL(lblBaud,                 Label,        "&Baud rate:")
    TESK_CONTROL(cboBaud,                 DropDownList, "")
    TESK_CONTROL(lblDataBits,             Label,        "&Data bits:")
    TESK_CONTROL(cboDataBits,             DropDownList, "")
    TESK_CONTROL(lblParity,               Label,        "Parit&y:")
    TESK_CONTROL(cboParity,               DropDownList, "")
    TESK_CONTROL(lblStopBits,             Label,        "&Stop bits:")
    TESK_CONTROL(cboStopBits,             DropDownList, "")
    TESK_CONTROL(lblFlowControl,          Label,        "&Flow control:")
    TESK_CONTROL(cboFlowControl,          DropDownList, "")
    TESK_CONTROL(fraImageSettings,        Frame,        "Images")
    TESK_CONTROL(lblColorDepth,           Label,        "Co&lor depth:")
    TESK_CONTROL(cboColorDepth,           DropDownList, "")
    TESK_CONTROL(lblResolution,           Label,        "Resol&ution:")
    TESK_CONTROL(cboResolution,           DropDownList, "")
    TESK_CONTROL(fraOptions,              Frame,        "Options")
    TESK_CONTROL(chkReaderGrade,          CheckBox,     kReaderGradeCaption)
    TESK_CONTROL(chkBarcode,              CheckBox,     "Read bar&codes")
    TESK_CONTROL(chkDuplex,               CheckBox,     "Duple&x: read both sides")
    TESK_CONTROL(chkFeeder,               CheckBox,     "&Automatic feeder")
    TESK_CONTROL(chkPrinter,              CheckBox,     "&Imprinter")
    TESK_CONTROL(chkRejecter,             CheckBox,     "Re&jecter")
    TESK_CONTROL(chkWindowing,            CheckBox,     "Read &windows only")
    TESK_CONTROL(chkContinuous,           CheckBox,     "Continuous scannin&g")
    TESK_CONTROL(fraRecognition,          Frame,        "Recognition")
    TESK_CONTROL(lblRecognitionThreshold, Label,        "Recognition t&hreshold:")
    TESK_CONTROL(txtRecognitionThreshold, SpinField,    "")
    TESK_CONTROL(lblErasureThreshold,     Label,        "Erasure thresh&old:")
    TESK_CONTROL(txtErasureThreshold,     SpinField,    "")
    TESK_CONTROL(lblMarkDiscrimination,   Label,        "&Mark discrimination:")
    TESK_CONTROL(txtMarkDiscrimination,   SpinField,    "")
    TESK_CONTROL(lblMarkCutOff,           Label,        "Mar&k cut-off:")
    TESK_CONTROL(txtMarkCutOff,           SpinField,    "")
    TESK_CONTROL(fraTiming,               Frame,        "Timing")
    TESK_CONTROL(lblReaderTimeout,        Label,        "Respo&nse time-out (seconds):")
    TESK_CONTROL(txtReaderTimeout,        SpinField,    "")
    TESK_CONTROL(lblSystemPause,          Label,        "Polling inter&val (milliseconds):")
    TESK_CONTROL(txtSystemPause,          SpinField,    "")
    TESK_CONTROL(cmdDefaults,             Button,       "D&efaults")
    TESK_CONTROL(cmdOK,                   Button,       "OK")
    TESK_CONTROL(cmdCancel,               Button,       "Cancel")
};
// clang-format on

#undef TESK_CONTROL

static_assert(InOrder(kControls, &ControlRow::id) && std::size(kControls) == kControlCount);

// ---- The fixed lists

struct FixedEntry {
  const char* text;
  const char* value;
};

constexpr FixedEntry kColorDepths[] = {{"Black & White", "0"}, {"Grayscale", "1"}, {"Color", "2"}};
constexpr FixedEntry kResolutions[] = {
    {"50 DPI", "50"}, {"100 DPI", "100"}, {"150 DPI", "150"}, {"200 DPI", "200"}, {"300 DPI", "300"}};
constexpr FixedEntry kStopBits[] = {{"1", "1"}, {"1.5", "1.5"}, {"2", "2"}};
constexpr FixedEntry kParities[] = {
    {"None", "N"}, {"Odd", "O"}, {"Even", "E"}, {"Mark", "M"}, {"Space", " "}};
constexpr FixedEntry kFlowControls[] = {{"None", "0"}, {"Xon / Xoff", "1"}, {"Hardware", "2"}, {"Both", "3"}};
constexpr FixedEntry kDataBits[] = {{"4", "4"}, {"5", "5"}, {"6", "6"}, {"7", "7"}, {"8", "8"}};
constexpr FixedEntry kBaudRates[] = {
    {"110", "110"},     {"300", "300"},       {"600", "600"},      {"1200", "1200"},   {"2400", "2400"},
    {"9600", "9600"},   {"14400", "14400"},   {"19200", "19200"},  {"28800", "28800"}, {"38400", "38400"},
    {"56000", "56000"}, {"128000", "128000"}, {"256000", "256000"}};
constexpr FixedEntry kPorts[] = {{"1", "1"},   {"2", "2"},   {"3", "3"},   {"4", "4"},
                                 {"5", "5"},   {"6", "6"},   {"7", "7"},   {"8", "8"},
                                 {"9", "9"},   {"10", "10"}, {"11", "11"}, {"12", "12"},
                                 {"13", "13"}, {"14", "14"}, {"15", "15"}, {"16", "16"}};

struct FixedList {
  ControlId id;
  std::span<const FixedEntry> entries;
};

constexpr FixedList kLists[] = {
    {ControlId::cboPort, kPorts},
    {ControlId::cboBaud, kBaudRates},
    {ControlId::cboDataBits, kDataBits},
    {ControlId::cboParity, kParities},
    {ControlId::cboStopBits, kStopBits},
    {ControlId::cboFlowControl, kFlowControls},
    {ControlId::cboColorDepth, kColorDepths},
    {ControlId::cboResolution, kResolutions},
};

// ---- The bounds that no reader changes

struct FixedBounds {
  ControlId id;
  std::int32_t minimum;
  std::int32_t maximum;
};

constexpr FixedBounds kBounds[] = {
    {ControlId::txtReaderTimeout, kLeastTimeOut, kMostTimeOut},
    {ControlId::txtSystemPause, 0, kMostPause},
};

}  // namespace

OptionControls CreateOptionControls() {
  OptionControls controls;
  for (const ControlRow& row : kControls) {
    controls[row.id].kind = row.kind;
    if (*row.caption != '\0') controls[row.id].caption = LoadString(row.caption);
  }
  for (const FixedList& list : kLists) {
    for (const FixedEntry& entry : list.entries) {
      controls[list.id].entries.push_back({LoadString(entry.text), entry.value});
    }
  }
  for (const FixedBounds& bounds : kBounds) {
    controls[bounds.id].minimum = bounds.minimum;
    controls[bounds.id].maximum = bounds.maximum;
  }
  return controls;
}

std::string_view ControlName(ControlId id) { return kControls[static_cast<std::size_t>(id)].name; }

const ListEntry* ChosenEntry(const Control& list) {
  const auto at = static_cast<std::size_t>(list.chosen);
  return list.chosen >= 0 && at < list.entries.size() ? &list.entries[at] : nullptr;
}

bool ChooseValue(Control& list, std::string_view value) {
  const auto found = std::ranges::find(list.entries, value, &ListEntry::value);
  list.chosen = found == list.entries.end() ? Control::kNothingChosen
                                            : Narrow<std::int32_t>(found - list.entries.begin());
  return list.chosen != Control::kNothingChosen;
}

void ChooseNumber(Control& list, const std::string& value, const std::string& unit) {
  if (ChooseValue(list, value) || Val(value) <= 0) return;
  list.entries.push_back({value + unit, value});
  ChooseValue(list, value);
}

}  // namespace tesk
