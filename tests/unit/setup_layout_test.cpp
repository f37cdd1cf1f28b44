// The places of the setup dialog's controls: what is hidden closes up, nothing overlaps, everything is reached.
#include <cstdlib>
#include <optional>
#include <set>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "setup/optionsLayout.h"
#include "tests/support/OptionsBench.h"

namespace tesk::test {
namespace {

using enum ControlId;

constexpr int kDpis[] = {96, 120, 144, 192};
constexpr LayoutSize kScreens[] = {{1024, 768}, {1366, 768}, {1920, 1080}, {3840, 2160}};

LayoutMetrics MetricsAt(int dpi) {
  const auto at = [dpi](std::int32_t pixels) { return pixels * dpi / 96; };
  return {.text = {.width =
                       [at](std::string_view text) { return at(6 * static_cast<std::int32_t>(text.size())); },
                   .box = at(16),
                   .padding = at(8)},
          .margin = at(10),
          .frameTop = at(18),
          .framePadding = at(9),
          .frameGap = at(7),
          .rowHeight = at(23),
          .rowGap = at(6),
          .labelGap = at(6),
          .listArrow = at(22),
          .spinWidth = at(60),
          .spinHeight = at(15) + 6,
          .besideGap = at(8),
          .buttonWidth = at(75),
          .buttonHeight = at(25),
          .buttonGap = at(6),
          .scrollBar = at(17)};
}

// Of a dialog on a screen with a task bar.
LayoutSize RoomOn(LayoutSize screen, int dpi) {
  return {screen.width - 6, screen.height - (40 + 26) * dpi / 96};
}

const LayoutMetrics kMetrics = MetricsAt(96);
constexpr LayoutRoom kRoom{{1920, 1080}, 1080};

bool Overlap(const ControlPlace& a, const ControlPlace& b) {
  return a.left < b.left + b.width && b.left < a.left + a.width && a.top < b.top + b.height &&
         b.top < a.top + a.height;
}

bool Within(const ControlPlace& inner, const ControlPlace& outer) {
  return inner.left >= outer.left && inner.top >= outer.top &&
         inner.left + inner.width <= outer.left + outer.width &&
         inner.top + inner.height <= outer.top + outer.height;
}

class EveryLayout : public ::testing::TestWithParam<teskReaderType> {};

// What is shown of a frame: it closes up, and stands within the frame.
void ExpectFrame(const OptionControls& controls, const LayoutFrame& frame, const LayoutMetrics& metrics,
                 std::vector<ControlId>& placed) {
  const ControlPlace& outer = controls[frame.frame].place;
  std::int32_t top = outer.top + metrics.frameTop;
  for (const LayoutRow& row : frame.rows) {
    if (!IsShown(controls, row.field)) continue;
    const ControlPlace& field = controls[row.field].place;
    EXPECT_LE(std::abs(2 * field.top + field.height - 2 * top - metrics.rowHeight), 1)
        << ControlName(row.field) << " is on its label's line, and closes up";
    top += metrics.rowHeight + metrics.rowGap;
    for (const auto id : {std::optional(row.field), row.label, row.beside}) {
      if (!id || !IsShown(controls, *id)) continue;
      EXPECT_TRUE(Within(controls[*id].place, outer)) << ControlName(*id);
      EXPECT_GE(controls[*id].place.width, basPublic::ControlTextWidth(controls[*id], metrics.text))
          << ControlName(*id);
      placed.push_back(*id);
    }
  }
  EXPECT_EQ(outer.top + outer.height, top - metrics.rowGap + metrics.framePadding);
}

void ExpectApart(const OptionControls& controls, const std::vector<ControlId>& placed) {
  for (std::size_t i = 0; i < placed.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_FALSE(Overlap(controls[placed[i]].place, controls[placed[j]].place))
          << ControlName(placed[i]) << " and " << ControlName(placed[j]);
    }
  }
}

void ExpectGoodLayout(const OptionControls& controls, const DialogLayout& layout,
                      const LayoutMetrics& metrics, LayoutSize room) {
  EXPECT_LE(layout.inside.width, room.width);
  EXPECT_LE(layout.inside.height, room.height);
  EXPECT_GT(layout.seen.height, 3 * metrics.rowHeight) << "enough to scroll in";
  std::vector<ControlId> frames;
  std::vector<ControlId> rows;
  for (const LayoutFrame& frame : OptionFrames()) {
    if (!IsShown(controls, frame.frame)) continue;
    frames.push_back(frame.frame);
    EXPECT_TRUE(Within(controls[frame.frame].place, {0, 0, layout.frames.width, layout.frames.height}));
    ExpectFrame(controls, frame, metrics, rows);
  }
  ExpectApart(controls, frames);
  ExpectApart(controls, rows);
  for (const ControlId id : OptionButtons()) {
    const ControlPlace& place = controls[id].place;
    const std::int32_t top = layout.seen.height + metrics.frameGap;
    EXPECT_TRUE(Within(place, {0, top, layout.inside.width, layout.inside.height - top}))
        << ControlName(id) << " is below what scrolls";
  }
  ExpectApart(controls, {OptionButtons().begin(), OptionButtons().end()});
}

TEST_P(EveryLayout, FitsEveryScreenInEveryLanguage) {
  for (const bool doubled : {false, true}) {
    Dialog dialog(GetParam());
    if (doubled) {
      for (const std::string& text : dialog.host.lookedUp) dialog.host.translate[text] = text + text;
    }
    frmOptions form(*dialog.reader, dialog.view);
    form.LoadValues();
    for (const int dpi : kDpis) {
      const LayoutMetrics metrics = MetricsAt(dpi);
      for (const LayoutSize& screen : kScreens) {
        SCOPED_TRACE(::testing::Message() << doubled << ' ' << dpi << " DPI on " << screen.width);
        const LayoutSize room = RoomOn(screen, dpi);
        ExpectGoodLayout(form.Controls(), RepositionControls(form.Controls(), metrics, {room, room.height}),
                         metrics, room);
      }
    }
  }
}

TEST_P(EveryLayout, KeepsTheColumnsOfOtherReaders) {
  Dialog dialog;
  dialog.Load();
  for (const LayoutSize& room : kScreens) {
    const DialogLayout first = RepositionControls(dialog.form.Controls(), kMetrics, {room, room.height});
    dialog.ChooseReader(GetParam());
    EXPECT_EQ(RepositionControls(dialog.form.Controls(), kMetrics, {room, room.height}).inside.width,
              first.inside.width);
  }
}

TEST_P(EveryLayout, HasNoAccessKeyTwice) {
  Dialog dialog;
  dialog.Load();
  dialog.ChooseReader(GetParam());
  std::set<char> keys;
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const auto id = static_cast<ControlId>(i);
    const char key = basPublic::AccessKey(dialog[id].caption);
    const bool seen = IsShown(dialog.form.Controls(), id) && key != '\0';
    EXPECT_TRUE(!seen || keys.insert(key).second) << ControlName(id);
  }
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryLayout, ::testing::ValuesIn(CatalogueTypes()),
                         [](const auto& info) { return "Type" + std::to_string(info.param); });

TEST(Layout, FlowsIntoAsManyColumnsAsItNeedsAndScrollsWhereThatIsNotEnough) {
  struct Case {
    int dpi;
    LayoutSize room;
    std::size_t columns;
    bool down, across;
  };
  const Case cases[] = {{96, RoomOn({1024, 768}, 96), 2, false, false},
                        {120, RoomOn({1366, 768}, 120), 2, false, false},
                        {192, RoomOn({1920, 1080}, 192), 3, false, false},
                        {192, RoomOn({3840, 2160}, 192), 2, false, false},
                        {144, RoomOn({1024, 768}, 144), 2, true, false},
                        {96, {520, 1080}, 1, false, false},
                        {96, {520, 600}, 1, true, false},
                        {96, {290, 600}, 1, true, true},
                        {96, {290, 1080}, 1, false, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.dpi << " DPI on " << c.room.width << 'x' << c.room.height);
    Dialog dialog(teskReaderTypeSekonicSR3500Hybrid);
    OptionControls& controls = dialog.Load().Controls();
    const DialogLayout layout = RepositionControls(controls, MetricsAt(c.dpi), {c.room, c.room.height});
    std::set<std::int32_t> columns;
    for (const LayoutFrame& frame : OptionFrames()) columns.insert(controls[frame.frame].place.left);
    EXPECT_EQ(columns.size(), c.columns);
    EXPECT_EQ(layout.ScrollsDown(), c.down);
    EXPECT_EQ(layout.ScrollsAcross(), c.across);
    const std::int32_t bar = MetricsAt(c.dpi).scrollBar;
    EXPECT_EQ(layout.inside.width, layout.seen.width + (c.down ? bar : 0)) << "room for the bar";
    if (c.across) {
      EXPECT_EQ(layout.inside.width, c.room.width);
      EXPECT_EQ(layout.inside.height == c.room.height, c.down);
    }
  }
}

TEST(Layout, NarrowsThePortListForItsButtonAndGivesTheRoomBack) {
  Dialog dialog(teskReaderTypeChatsworthOMR1100);
  dialog.Load();
  OptionControls& controls = dialog.form.Controls();
  RepositionControls(controls, kMetrics, kRoom);
  const std::int32_t baud = controls[cboBaud].place.width;
  EXPECT_EQ(controls[cboPort].place.width, baud - controls[cmdLocate].place.width - kMetrics.besideGap);
  EXPECT_EQ(controls[cmdLocate].place.left + controls[cmdLocate].place.width,
            controls[cboBaud].place.left + baud);
  dialog.ChooseReader(teskReaderTypeNCSOpScan2);
  RepositionControls(controls, kMetrics, kRoom);
  EXPECT_EQ(controls[cboPort].place.width, controls[cboBaud].place.width);
}

TEST(Layout, KeepsAFrameAndItsRowsTogether) {
  Dialog dialog(teskReaderTypeSekonicSR8000Hybrid);
  dialog.Load();
  OptionControls& controls = dialog.form.Controls();
  controls[fraImageSettings].visible = false;
  EXPECT_FALSE(IsShown(controls, cboResolution));
  controls[fraImageSettings].visible = true;
  controls[fraImageSettings].enabled = false;
  EXPECT_TRUE(IsShown(controls, cboResolution));
  EXPECT_FALSE(IsUsable(controls, cboResolution));
  for (const ControlId id : {cboResolution, cboColorDepth}) controls[id].visible = false;
  EXPECT_FALSE(IsShown(controls, fraImageSettings)) << "a frame without rows closes up too";
}

TEST(Layout, ReachesEveryControlOnceByTheTabKey) {
  const auto order = TabOrder();
  EXPECT_EQ(std::set<ControlId>(order.begin(), order.end()).size(), order.size());
  const OptionControls controls = CreateOptionControls();
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const auto id = static_cast<ControlId>(i);
    const bool passive = controls[id].kind == ControlKind::Label || controls[id].kind == ControlKind::Frame;
    EXPECT_EQ(std::ranges::count(order, id), passive ? 0 : 1) << ControlName(id);
    const bool labelled =
        controls[id].kind == ControlKind::DropDownList || controls[id].kind == ControlKind::SpinField;
    EXPECT_EQ(LabelOf(id).has_value(), labelled) << ControlName(id);
    EXPECT_TRUE(!labelled || !controls[*LabelOf(id)].caption.empty()) << ControlName(id);
  }
}

}  // namespace
}  // namespace tesk::test
