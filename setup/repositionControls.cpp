// The arithmetic that places the controls of the setup dialog.
#include <algorithm>
#include <bit>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "base/HostServices.h"
#include "setup/optionsLayout.h"

namespace tesk {
namespace {

using enum ControlId;
using Column = std::span<const LayoutFrame>;

// The frames in their order, cut into columns.
struct Flow {
  std::vector<Column> columns;
  LayoutSize size;  // of the frames with every row, whatever is hidden now
};

std::vector<Column> Cut(Column frames, unsigned cuts) {
  std::vector<Column> columns;
  std::size_t first = 0;
  for (std::size_t next = 1; next <= frames.size(); ++next) {
    if (next < frames.size() && (cuts >> (next - 1) & 1U) == 0) continue;
    columns.push_back(frames.subspan(first, next - first));
    first = next;
  }
  return columns;
}

// ---- Widths

class Measuring {
 public:
  Measuring(OptionControls& controls, const LayoutMetrics& metrics)
      : controls_(controls), metrics_(metrics) {}

  // The width of a column's frames. Leaves every field at its distance from the frame's inner edge.
  std::int32_t ColumnWidth(Column column) {
    std::vector<Control*> fields;
    ForRows(column, [&](const LayoutRow& row) {
      Control& field = controls_[row.field];
      field.place = {0, 0, FieldWidth(column, field), FieldHeight(field)};
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
    for (const LayoutFrame& frame : column) {
      inner = std::max(inner, basPublic::ControlTextWidth(controls_[frame.frame], metrics_.text));
    }
    return inner + 2 * metrics_.framePadding;
  }

  // All buttons are as wide as the widest.
  std::int32_t ButtonWidth() const {
    Control widest{.kind = ControlKind::Button};
    widest.place.width = metrics_.buttonWidth;
    for (const ControlId id : OptionButtons()) {
      widest.caption = controls_[id].caption;
      basPublic::ControlAutoSize(widest, metrics_.text);
    }
    return widest.place.width;
  }

 private:
  template <class Visit>
  static void ForRows(Column column, Visit visit) {
    for (const LayoutFrame& frame : column) {
      for (const LayoutRow& row : frame.rows) visit(row);
    }
  }

  std::int32_t FieldHeight(const Control& field) const {
    return field.kind == ControlKind::SpinField ? metrics_.spinHeight : metrics_.rowHeight;
  }

  std::int32_t FieldWidth(Column column, const Control& field) const {
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
  std::int32_t ListWidth(Column column) const {
    std::int32_t widest = 0;
    ForRows(column, [&](const LayoutRow& row) {
      for (const ListEntry& entry : controls_[row.field].entries) {
        widest = std::max(widest, metrics_.text.width(entry.text));
      }
    });
    return widest + metrics_.listArrow;
  }

  OptionControls& controls_;
  const LayoutMetrics& metrics_;
};

// ---- Columns

class Flowing {
 public:
  Flowing(Measuring& measuring, const LayoutMetrics& metrics, LayoutSize room)
      : measuring_(measuring), metrics_(metrics), room_(room) {}

  Flow Choose() {
    std::vector<Flow> flows = AllFlows();
    const auto fits = [&](const Flow& flow) {
      return flow.size.width <= room_.width && flow.size.height <= room_.height;
    };
    const auto fitsAcross = [&](const Flow& flow) {
      return flow.size.width + metrics_.scrollBar <= room_.width;
    };
    const auto fewer = [](const Flow& a, const Flow& b) { return Preference(a) < Preference(b); };
    const auto lower = [](const Flow& a, const Flow& b) { return a.size.height < b.size.height; };
    const auto narrower = [](const Flow& a, const Flow& b) { return a.size.width < b.size.width; };
    std::ranges::stable_sort(flows, lower);
    if (std::ranges::any_of(flows, fits)) {
      std::erase_if(flows, [&](const Flow& flow) { return !fits(flow); });
      return *std::ranges::min_element(flows, fewer);
    }
    const auto lowest = std::ranges::find_if(flows, fitsAcross);
    return lowest != flows.end() ? *lowest : *std::ranges::min_element(flows, narrower);
  }

 private:
  // Two columns are what people know, one is what nobody wants who has room for more.
  static std::pair<bool, std::size_t> Preference(const Flow& flow) {
    return {flow.columns.size() == 1, flow.columns.size()};
  }

  std::vector<Flow> AllFlows() {
    const Column frames = OptionFrames();
    std::vector<Flow> flows;
    for (unsigned cuts = 0; cuts < 1U << (frames.size() - 1); ++cuts) {
      Flow flow{Cut(frames, cuts), {}};
      flow.size = SizeOf(flow.columns);
      flows.push_back(std::move(flow));
    }
    return flows;
  }

  LayoutSize SizeOf(const std::vector<Column>& columns) {
    LayoutSize size{2 * metrics_.margin - metrics_.frameGap, 0};
    for (const Column& column : columns) {
      size.width += Width(column) + metrics_.frameGap;
      size.height = std::max(size.height, Height(column));
    }
    return {size.width, size.height - metrics_.frameGap + metrics_.margin};
  }

  // Every cut asks for the same few columns.
  std::int32_t Width(Column column) {
    const auto known = std::ranges::find_if(
        widths_, [&](const auto& each) { return each.data == column.data() && each.count == column.size(); });
    if (known != widths_.end()) return known->width;
    widths_.push_back({column.data(), column.size(), measuring_.ColumnWidth(column)});
    return widths_.back().width;
  }

  std::int32_t Height(Column column) const {
    std::int32_t height = 0;
    for (const LayoutFrame& frame : column) {
      const auto rows = static_cast<std::int32_t>(frame.rows.size());
      height += metrics_.frameTop + rows * (metrics_.rowHeight + metrics_.rowGap) - metrics_.rowGap +
                metrics_.framePadding + metrics_.frameGap;
    }
    return height;
  }

  struct KnownWidth {
    const LayoutFrame* data;
    std::size_t count;
    std::int32_t width;
  };

  Measuring& measuring_;
  const LayoutMetrics& metrics_;
  LayoutSize room_;
  std::vector<KnownWidth> widths_;
};

// ---- Places

class Placing {
 public:
  Placing(OptionControls& controls, Measuring& measuring, const LayoutMetrics& metrics)
      : controls_(controls), measuring_(measuring), metrics_(metrics) {}

  // Yields the size of the frames with the margins above and beside them.
  LayoutSize PlaceFrames(const Flow& flow) {
    std::int32_t left = metrics_.margin;
    std::int32_t bottom = metrics_.margin;
    for (const Column& column : flow.columns) {
      const bool shown =
          std::ranges::any_of(column, [&](const LayoutFrame& f) { return IsShown(controls_, f.frame); });
      if (!shown) continue;
      const std::int32_t width = measuring_.ColumnWidth(column);
      bottom = std::max(bottom, PlaceColumn(column, left, width));
      left += width + metrics_.frameGap;
    }
    return {left - metrics_.frameGap + metrics_.margin, bottom};
  }

  void PlaceButtons(LayoutSize inside) {
    const std::int32_t width = measuring_.ButtonWidth();
    const std::int32_t top = inside.height - metrics_.margin - metrics_.buttonHeight;
    const std::int32_t cancel = inside.width - metrics_.margin - width;
    controls_[cmdDefaults].place = {metrics_.margin, top, width, metrics_.buttonHeight};
    controls_[cmdOK].place = {cancel - metrics_.buttonGap - width, top, width, metrics_.buttonHeight};
    controls_[cmdCancel].place = {cancel, top, width, metrics_.buttonHeight};
  }

 private:
  // Yields the lower edge of the column's last frame.
  std::int32_t PlaceColumn(Column column, std::int32_t left, std::int32_t width) {
    std::int32_t top = metrics_.margin;
    std::int32_t bottom = top;
    for (const LayoutFrame& frame : column) {
      if (!IsShown(controls_, frame.frame)) continue;
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

  // In the middle of its row.
  void PlaceAt(Control& control, std::int32_t left, std::int32_t top) const {
    control.place.left += left;
    control.place.top = top + (metrics_.rowHeight - control.place.height) / 2;
  }

  // The button takes its room from the field that it stands beside.
  void PlaceBeside(Control& field, Control& button) const {
    if (!button.visible) return;
    button.place = {0, field.place.top, 0, metrics_.rowHeight};
    basPublic::ControlAutoSize(button, metrics_.text);
    field.place.width -= button.place.width + metrics_.besideGap;
    basPublic::ControlPositionRight(button, field, metrics_.besideGap);
  }

  OptionControls& controls_;
  Measuring& measuring_;
  const LayoutMetrics& metrics_;
};

// What is seen of `frames` in `room`: a scroll bar takes some of it, and may so call for the other one.
LayoutSize SeenOf(LayoutSize frames, LayoutSize room, std::int32_t bar) {
  bool down = frames.height > room.height;
  const bool across = frames.width > room.width - (down ? bar : 0);
  down = frames.height > room.height - (across ? bar : 0);
  return {std::min(frames.width, room.width - (down ? bar : 0)),
          std::min(frames.height, room.height - (across ? bar : 0))};
}

}  // namespace

DialogLayout RepositionControls(OptionControls& controls, const LayoutMetrics& metrics,
                                const LayoutRoom& room) {
  Measuring measuring(controls, metrics);
  Placing placing(controls, measuring, metrics);
  const auto count = static_cast<std::int32_t>(OptionButtons().size());
  const std::int32_t buttons =
      2 * metrics.margin + count * measuring.ButtonWidth() + (count - 1) * metrics.buttonGap;
  const std::int32_t below = metrics.frameGap + metrics.buttonHeight + metrics.margin;
  const LayoutSize screen{std::max(room.screen.width, buttons), room.screen.height - below};

  DialogLayout layout;
  layout.frames = placing.PlaceFrames(Flowing(measuring, metrics, screen).Choose());
  const LayoutSize free{screen.width, std::min(screen.height, room.height - below)};
  layout.seen = SeenOf(layout.frames, free, metrics.scrollBar);
  const std::int32_t barBeside = layout.ScrollsDown() ? metrics.scrollBar : 0;
  const std::int32_t barBelow = layout.ScrollsAcross() ? metrics.scrollBar : 0;
  layout.seen.width = std::max(layout.seen.width, buttons - barBeside);
  layout.inside = {layout.seen.width + barBeside, layout.seen.height + barBelow + below};
  placing.PlaceButtons(layout.inside);
  return layout;
}

}  // namespace tesk
