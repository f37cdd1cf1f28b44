// Where the controls of the setup dialog stand: frames in two columns, each with its rows in order, and the
// buttons below. Every view draws this one description, in its own unit. Knows the control values.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "setup/basPublic.h"
#include "setup/optionControls.h"

namespace tesk {

// A row of a frame: a label and its field, or a check box alone; a button may stand beside the field.
struct LayoutRow {
  ControlId field;
  std::optional<ControlId> label = std::nullopt;
  std::optional<ControlId> beside = std::nullopt;
};

struct LayoutFrame {
  ControlId frame;
  std::size_t column;  // 0 left, 1 right
  std::span<const LayoutRow> rows;
};

// Top to bottom within their columns.
std::span<const LayoutFrame> OptionFrames();
// Along the lower edge: Defaults at the left, OK (the default button) and Cancel at the right.
std::span<const ControlId> OptionButtons();
// Everything that takes the focus, in the order of the tab key, hidden and disabled controls included.
std::vector<ControlId> TabOrder();
// The label that names a field; empty for what names itself.
std::optional<ControlId> LabelOf(ControlId field);

// Labels take their field's enabled state and visibility; a frame is enabled, and seen, with any of its
// contents. The frame of the image settings alone keeps its own states.
void FollowContents(OptionControls& controls);

// Whether a control is to be seen, and used: a frame takes its contents along.
bool IsShown(const OptionControls& controls, ControlId id);
bool IsUsable(const OptionControls& controls, ControlId id);

// Distances in the view's unit.
struct LayoutMetrics {
  basPublic::TextMeasure text;
  std::int32_t margin;        // around everything
  std::int32_t frameTop;      // from a frame's top edge to its first row
  std::int32_t framePadding;  // beside and below a frame's rows
  std::int32_t frameGap;      // between frames and between columns
  std::int32_t rowHeight;
  std::int32_t rowGap;
  std::int32_t labelGap;   // between a label and its field
  std::int32_t listArrow;  // what a drop-down list takes beside its text
  std::int32_t spinWidth;
  std::int32_t besideGap;  // between the port list and its button: 120 twips
  std::int32_t buttonWidth;
  std::int32_t buttonHeight;
  std::int32_t buttonGap;
};

struct LayoutSize {
  std::int32_t width;
  std::int32_t height;

  bool operator==(const LayoutSize&) const = default;
};

// Gives every control that is shown its place, and yields the size of the whole. Rows that are hidden close
// up, frames end below their last row, frames without one are left out. Widths do not depend on what is
// hidden, so that the dialog keeps its columns when another reader is chosen.
LayoutSize RepositionControls(OptionControls& controls, const LayoutMetrics& metrics);

}  // namespace tesk
