// The description of the dialog as tables, and what follows from it for what is shown.
#include "setup/optionsLayout.h"

#include <algorithm>
#include <array>

namespace tesk {
namespace {

using enum ControlId;

constexpr LayoutRow kReaderRows[] = {{cboReaderType, lblReaderType}};
constexpr LayoutRow kPortRows[] = {
    {cboPort, lblPort, cmdLocate}, {cboBaud, lblBaud},         {cboDataBits, lblDataBits},
    {cboParity, lblParity},        {cboStopBits, lblStopBits}, {cboFlowControl, lblFlowControl},
};
constexpr LayoutRow kImageRows[] = {{cboColorDepth, lblColorDepth}, {cboResolution, lblResolution}};
constexpr LayoutRow kOptionRows[] = {{chkReaderGrade}, {chkBarcode},  {chkDuplex},    {chkFeeder},
                                     {chkPrinter},     {chkRejecter}, {chkWindowing}, {chkContinuous}};
constexpr LayoutRow kRecognitionRows[] = {
    {txtRecognitionThreshold, lblRecognitionThreshold},
    {txtErasureThreshold, lblErasureThreshold},
    {txtMarkDiscrimination, lblMarkDiscrimination},
    {txtMarkCutOff, lblMarkCutOff},
};
constexpr LayoutRow kTimingRows[] = {{txtReaderTimeout, lblReaderTimeout}, {txtSystemPause, lblSystemPause}};

constexpr LayoutFrame kFrames[] = {
    {frmReader, kReaderRows},           {frmComPort, kPortRows},
    {fraImageSettings, kImageRows},     {fraOptions, kOptionRows},
    {fraRecognition, kRecognitionRows}, {fraTiming, kTimingRows},
};
constexpr ControlId kButtons[] = {cmdDefaults, cmdOK, cmdCancel};

const LayoutFrame* FrameAround(ControlId id) {
  for (const LayoutFrame& frame : kFrames) {
    for (const LayoutRow& row : frame.rows) {
      if (row.field == id || row.label == id || row.beside == id) return &frame;
    }
  }
  return nullptr;
}

bool HasShownRow(const OptionControls& controls, const LayoutFrame& frame) {
  return std::ranges::any_of(frame.rows, [&](const LayoutRow& row) { return controls[row.field].visible; });
}

}  // namespace

std::span<const LayoutFrame> OptionFrames() { return kFrames; }

std::span<const ControlId> OptionButtons() { return kButtons; }

std::vector<ControlId> TabOrder() {
  std::vector<ControlId> order;
  for (const LayoutFrame& frame : kFrames) {
    for (const LayoutRow& row : frame.rows) {
      order.push_back(row.field);
      if (row.beside) order.push_back(*row.beside);
    }
  }
  order.insert(order.end(), std::begin(kButtons), std::end(kButtons));
  return order;
}

std::optional<ControlId> LabelOf(ControlId field) {
  const LayoutFrame* frame = FrameAround(field);
  if (frame == nullptr) return std::nullopt;
  const auto row = std::ranges::find(frame->rows, field, &LayoutRow::field);
  return row == frame->rows.end() ? std::nullopt : row->label;
}

void FollowContents(OptionControls& controls) {
  for (const LayoutFrame& frame : kFrames) {
    for (const LayoutRow& row : frame.rows) {
      if (!row.label) continue;
      controls[*row.label].enabled = controls[row.field].enabled;
      controls[*row.label].visible = controls[row.field].visible;
    }
    if (frame.frame == fraImageSettings) continue;
    controls[frame.frame].visible = HasShownRow(controls, frame);
    controls[frame.frame].enabled =
        std::ranges::any_of(frame.rows, [&](const LayoutRow& row) { return controls[row.field].enabled; });
  }
}

bool IsShown(const OptionControls& controls, ControlId id) {
  if (!controls[id].visible) return false;
  const auto own = std::ranges::find(kFrames, id, &LayoutFrame::frame);
  if (own != std::end(kFrames)) return HasShownRow(controls, *own);
  const LayoutFrame* frame = FrameAround(id);
  return frame == nullptr || controls[frame->frame].visible;
}

bool IsUsable(const OptionControls& controls, ControlId id) {
  const LayoutFrame* frame = FrameAround(id);
  return IsShown(controls, id) && controls[id].enabled &&
         (frame == nullptr || controls[frame->frame].enabled);
}

}  // namespace tesk
