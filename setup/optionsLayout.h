// Where the controls of the setup dialog stand: frames that flow into columns, each with its rows in order, and
// the buttons below. Every view draws this one description, in its own unit. Knows the control values.
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
  std::span<const LayoutRow> rows;
};

// Top to bottom, column after column.
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
  std::int32_t spinHeight;  // at most a row's; in its middle, so that the number stands on its label's line
  std::int32_t besideGap;   // between the port list and its button: 120 twips
  std::int32_t buttonWidth;
  std::int32_t buttonHeight;
  std::int32_t buttonGap;
  std::int32_t scrollBar;  // thickness
};

struct LayoutSize {
  std::int32_t width;
  std::int32_t height;

  bool operator==(const LayoutSize&) const = default;
};

// The dialog's inside: the frames, scrolled where they are larger than what is seen of them, and the buttons below,
// which are always seen.
struct DialogLayout {
  LayoutSize inside;  // of the dialog
  LayoutSize
      seen;  // of the frames at once, from the upper left corner; scroll bars stand beside it and below
  LayoutSize frames;  // all of them, with the margins above and beside them

  bool ScrollsDown() const { return frames.height > seen.height; }
  bool ScrollsAcross() const { return frames.width > seen.width; }
};

// What a dialog may fill. Its columns are chosen for the screen; `height` is what it may use of that, less where a
// person moved it down.
struct LayoutRoom {
  LayoutSize screen;
  std::int32_t height;
};

// Gives every control that is shown its place: frames and rows within the frames' whole, buttons within the inside.
// Rows that are hidden close up, frames end below their last row, frames without one are left out. The inside is no
// larger than `room`, except that it is never narrower than the buttons. The frames stand in two columns where these
// fit, otherwise in the fewest columns that do; where none do, in as many as fit side by side and make it lowest, to
// be scrolled. Columns do not depend on what rows are hidden, so that they stay when another reader is chosen.
DialogLayout RepositionControls(OptionControls& controls, const LayoutMetrics& metrics,
                                const LayoutRoom& room);

}  // namespace tesk
