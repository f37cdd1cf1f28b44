// The description of the dialog as tables, and the arithmetic that places it.
#include "setup/optionsLayout.h"

#include <algorithm>
#include <array>

#include "base/HostServices.h"

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

constexpr std::size_t kColumns = 2;
constexpr LayoutFrame kFrames[] = {
    {frmReader, 0, kReaderRows},           {frmComPort, 0, kPortRows},
    {fraImageSettings, 0, kImageRows},     {fraOptions, 1, kOptionRows},
    {fraRecognition, 1, kRecognitionRows}, {fraTiming, 1, kTimingRows},
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

// ---- Widths

class Layout {
 public:
  Layout(OptionControls& controls, const LayoutMetrics& metrics) : controls_(controls), metrics_(metrics) {}

  LayoutSize Place() {
    std::int32_t left = metrics_.margin;
    std::int32_t bottom = metrics_.margin;
    for (std::size_t column = 0; column < kColumns; ++column) {
      const std::int32_t width = MeasureColumn(column);
      bottom = std::max(bottom, PlaceColumn(column, left, width));
      left += width + metrics_.frameGap;
    }
    const std::int32_t right = std::max(left - metrics_.frameGap, metrics_.margin + ButtonsWidth());
    PlaceButtons(right, bottom + metrics_.frameGap);
    return {right + metrics_.margin, bottom + metrics_.frameGap + metrics_.buttonHeight + metrics_.margin};
  }

 private:
  template <class Visit>
  static void ForRows(std::size_t column, Visit visit) {
    for (const LayoutFrame& frame : kFrames) {
      if (frame.column != column) continue;
      for (const LayoutRow& row : frame.rows) visit(row);
    }
  }

  // The width of a column's frames. Leaves every field at its distance from the frame's inner edge.
  std::int32_t MeasureColumn(std::size_t column) {
    std::vector<Control*> fields;
    ForRows(column, [&](const LayoutRow& row) {
      Control& field = controls_[row.field];
      field.place = {0, 0, FieldWidth(column, field), metrics_.rowHeight};
      if (!row.label) return;
      Control& label = controls_[*row.label];
      label.place = {0, 0, 0, metrics_.rowHeight};
      basPublic::ControlAutoSize(label, metrics_.text);
      basPublic::ControlPositionRight(field, label, metrics_.labelGap);
      fields.push_back(&field);
    });
    basPublic::ControlAlignLeft(fields);
    std::int32_t inner = 0;
    ForRows(column, [&](const LayoutRow& row) {
      inner = std::max(inner, controls_[row.field].place.left + controls_[row.field].place.width);
    });
    for (const LayoutFrame& frame : kFrames) {
      if (frame.column != column) continue;
      inner = std::max(inner, basPublic::ControlTextWidth(controls_[frame.frame], metrics_.text));
    }
    return inner + 2 * metrics_.framePadding;
  }

  std::int32_t FieldWidth(std::size_t column, const Control& field) const {
    if (field.kind == ControlKind::SpinField) return metrics_.spinWidth;
    return field.kind == ControlKind::CheckBox ? CheckBoxWidth(field) : ListWidth(column);
  }

  // Room for either of the captions that the reader-grade box may get.
  std::int32_t CheckBoxWidth(const Control& box) const {
    Control sized = box;
    sized.place.width = 0;
    basPublic::ControlAutoSize(sized, metrics_.text);
    if (&box != &controls_[chkReaderGrade]) return sized.place.width;
    for (const char* caption : {kSelfScoreCaption, kReaderGradeCaption}) {
      sized.caption = LoadString(caption);
      basPublic::ControlAutoSize(sized, metrics_.text);
    }
    return sized.place.width;
  }

  // All lists of a column are as wide as its longest entry.
  std::int32_t ListWidth(std::size_t column) const {
    std::int32_t widest = 0;
    ForRows(column, [&](const LayoutRow& row) {
      for (const ListEntry& entry : controls_[row.field].entries) {
        widest = std::max(widest, metrics_.text.width(entry.text));
      }
    });
    return widest + metrics_.listArrow;
  }

  // ---- Places

  // Yields the lower edge of the column's last frame.
  std::int32_t PlaceColumn(std::size_t column, std::int32_t left, std::int32_t width) {
    std::int32_t top = metrics_.margin;
    std::int32_t bottom = top;
    for (const LayoutFrame& frame : kFrames) {
      if (frame.column != column || !IsShown(controls_, frame.frame)) continue;
      const std::int32_t height = PlaceRows(frame, left + metrics_.framePadding, top);
      controls_[frame.frame].place = {left, top, width, height};
      bottom = top + height;
      top = bottom + metrics_.frameGap;
    }
    return bottom;
  }

  // Yields the height of the frame around the rows.
  std::int32_t PlaceRows(const LayoutFrame& frame, std::int32_t left, std::int32_t frameTop) {
    std::int32_t top = frameTop + metrics_.frameTop;
    for (const LayoutRow& row : frame.rows) {
      if (!controls_[row.field].visible) continue;
      PlaceAt(controls_[row.field], left, top);
      if (row.label) PlaceAt(controls_[*row.label], left, top);
      if (row.beside) PlaceBeside(controls_[row.field], controls_[*row.beside]);
      top += metrics_.rowHeight + metrics_.rowGap;
    }
    return top - metrics_.rowGap + metrics_.framePadding - frameTop;
  }

  static void PlaceAt(Control& control, std::int32_t left, std::int32_t top) {
    control.place.left += left;
    control.place.top = top;
  }

  // The button takes its room from the field that it stands beside.
  void PlaceBeside(Control& field, Control& button) const {
    if (!button.visible) return;
    button.place = {0, field.place.top, 0, metrics_.rowHeight};
    basPublic::ControlAutoSize(button, metrics_.text);
    field.place.width -= button.place.width + metrics_.besideGap;
    basPublic::ControlPositionRight(button, field, metrics_.besideGap);
  }

  // ---- Buttons

  // All as wide as the widest.
  std::int32_t ButtonWidth() const {
    Control widest{.kind = ControlKind::Button};
    widest.place.width = metrics_.buttonWidth;
    for (const ControlId id : kButtons) {
      widest.caption = controls_[id].caption;
      basPublic::ControlAutoSize(widest, metrics_.text);
    }
    return widest.place.width;
  }

  std::int32_t ButtonsWidth() const {
    const auto count = static_cast<std::int32_t>(std::size(kButtons));
    return count * ButtonWidth() + (count - 1) * metrics_.buttonGap;
  }

  void PlaceButtons(std::int32_t right, std::int32_t top) {
    const std::int32_t width = ButtonWidth();
    const std::int32_t cancel = right - width;
    controls_[cmdDefaults].place = {metrics_.margin, top, width, metrics_.buttonHeight};
    controls_[cmdOK].place = {cancel - metrics_.buttonGap - width, top, width, metrics_.buttonHeight};
    controls_[cmdCancel].place = {cancel, top, width, metrics_.buttonHeight};
  }

  OptionControls& controls_;
  const LayoutMetrics& metrics_;
};

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

LayoutSize RepositionControls(OptionControls& controls, const LayoutMetrics& metrics) {
  return Layout(controls, metrics).Place();
}

}  // namespace tesk
