// The places of the setup dialog's controls: what is hidden closes up, nothing overlaps, everything is reached.
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "setup/optionsLayout.h"
#include "tests/support/OptionsBench.h"

namespace tesk::test {
namespace {

using enum ControlId;

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
    EXPECT_GE(place.width, basPublic::ControlTextWidth(controls[id], metrics.text)) << ControlName(id);
  }
  ExpectApart(controls, {OptionButtons().begin(), OptionButtons().end()});
}

TEST(EveryLayout, FitsEveryScreenInEveryLanguage) {
  ForEveryReader([](teskReaderType type, const clsTeskReaderProfile&) {
    for (const bool doubled : {false, true}) {
      Dialog dialog(type);
      if (doubled) {
        for (const std::string& text : dialog.host.lookedUp) dialog.host.translate[text] = text + text;
      }
      frmOptions form(*dialog.reader, dialog.view);
      form.LoadValues();
      for (const int dpi : {96, 120, 144, 192}) {
        const LayoutMetrics metrics = MetricsAt(dpi);
        for (const LayoutSize& screen : kScreens) {
          SCOPED_TRACE(::testing::Message() << doubled << ' ' << dpi << " DPI on " << screen.width);
          const LayoutSize room = RoomOn(screen, dpi);
          ExpectGoodLayout(form.Controls(), RepositionControls(form.Controls(), metrics, {room, room.height}),
                           metrics, room);
        }
      }
    }
  });
}

TEST(EveryLayout, KeepsTheColumnsOfOtherReadersAndHasNoAccessKeyTwice) {
  ForEveryReader([](teskReaderType type, const clsTeskReaderProfile&) {
    Dialog dialog;
    dialog.host.translate["Use scanne&r grade features"] = "Benote&r";
    dialog.Load();
    for (const LayoutSize& room : kScreens) {
      const auto widths = [&] {
        const auto layout = RepositionControls(dialog.form.Controls(), kMetrics, {room, room.height});
        return std::pair(layout.inside.width, dialog[chkReaderGrade].place.width);
      };
      const auto first = widths();
      dialog.ChooseReader(type);
      EXPECT_EQ(widths(), first);
    }
    std::set<char> keys;
    for (std::size_t i = 0; i < kControlCount; ++i) {
      const auto id = static_cast<ControlId>(i);
      const char key = basPublic::AccessKey(dialog[id].caption);
      const bool seen = IsShown(dialog.form.Controls(), id) && key != '\0';
      EXPECT_TRUE(!seen || keys.insert(key).second) << ControlName(id);
    }
  });
}

// A room of which one size grows from `from` to `to` pixels: the one that is 0.
struct Growing {
  std::int32_t from, to, width, height, seenHeight;
};

// Where that changes the layout: the columns by their counts of frames, and the scroll bars.
std::string ChangesOf(OptionControls& controls, const Growing& growing) {
  std::string changes, last;
  for (std::int32_t pixels = growing.from; pixels <= growing.to; ++pixels) {
    const auto size = [&](std::int32_t fixed) { return fixed == 0 ? pixels : fixed; };
    const LayoutRoom room{{size(growing.width), size(growing.height)}, size(growing.seenHeight)};
    const DialogLayout layout = RepositionControls(controls, kMetrics, room);
    std::map<std::int32_t, int> columns;
    for (const LayoutFrame& frame : OptionFrames()) ++columns[controls[frame.frame].place.left];
    std::string now;
    for (const auto& [left, frames] : columns) now += std::to_string(frames);
    now += (layout.ScrollsDown() ? " down" : "") + std::string(layout.ScrollsAcross() ? " across" : "");
    if (now != last) changes += std::to_string(pixels) + ": " + now + "\n";
    last = now;
    const std::int32_t bar = layout.ScrollsDown() ? kMetrics.scrollBar : 0;
    EXPECT_EQ(layout.inside.width, layout.seen.width + bar) << "room for the bar";
    EXPECT_TRUE(!layout.ScrollsDown() || layout.inside.height == room.height) << pixels;
    EXPECT_TRUE(!layout.ScrollsAcross() || layout.inside.width == room.screen.width) << pixels;
  }
  return changes;
}

TEST(Layout, FlowsIntoAsManyColumnsAsItNeedsAndScrollsWhereThatIsNotEnough) {
  Dialog dialog(teskReaderTypeSekonicSR3500Hybrid);
  dialog.Load();
  OptionControls& controls = dialog.form.Controls();
  for (std::size_t i = 0; i < kControlCount; ++i) controls[static_cast<ControlId>(i)].visible = true;
  EXPECT_EQ(ChangesOf(controls, {270, 1400, 0, 300, 300}),
            "270: 6 down across\n473: 6 down\n642: 33 down\n839: 312 down\n1042: 2112 down\n");
  EXPECT_EQ(ChangesOf(controls, {270, 1400, 0, 1080, 1080}), "270: 6 across\n456: 6\n625: 33\n");
  EXPECT_EQ(ChangesOf(controls, {200, 1100, 1400, 0, 0}), "200: 2112 down\n305: 2112\n390: 312\n535: 33\n");
  EXPECT_EQ(ChangesOf(controls, {200, 1100, 456, 0, 0}), "200: 6 down across\n880: 6\n");
  EXPECT_EQ(ChangesOf(controls, {200, 700, 1400, 700, 0}), "200: 33 down\n535: 33\n");
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
  EXPECT_EQ(controls[cboPort].place.height, kMetrics.rowHeight);
  EXPECT_EQ(controls[txtReaderTimeout].place.height, kMetrics.spinHeight);
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
