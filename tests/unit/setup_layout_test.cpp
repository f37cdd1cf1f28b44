// The places of the setup dialog's controls: what is hidden closes up, nothing overlaps, everything is reached.
#include <array>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "setup/optionsLayout.h"
#include "tests/support/OptionsBench.h"

namespace tesk::test {
namespace {

using enum ControlId;

const LayoutMetrics kMetrics{
    .text = {.width = [](std::string_view text) { return 6 * static_cast<std::int32_t>(text.size()); },
             .box = 16,
             .padding = 8},
    .margin = 10,
    .frameTop = 18,
    .framePadding = 9,
    .frameGap = 7,
    .rowHeight = 21,
    .rowGap = 4,
    .labelGap = 6,
    .listArrow = 22,
    .spinWidth = 60,
    .besideGap = 8,
    .buttonWidth = 75,
    .buttonHeight = 23,
    .buttonGap = 6};

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

TEST_P(EveryLayout, IsLaidOutWithoutGapsOrOverlaps) {
  Dialog dialog;
  dialog.Load();
  const LayoutSize first = RepositionControls(dialog.form.Controls(), kMetrics);
  dialog.ChooseReader(GetParam());
  OptionControls& controls = dialog.form.Controls();
  const LayoutSize size = RepositionControls(controls, kMetrics);
  EXPECT_EQ(size.width, first.width) << "the columns stay";
  std::vector<ControlId> placed(OptionButtons().begin(), OptionButtons().end());
  std::array<std::int32_t, 2> bottom{kMetrics.margin, kMetrics.margin};
  for (const LayoutFrame& frame : OptionFrames()) {
    if (!IsShown(controls, frame.frame)) continue;
    const ControlPlace& outer = controls[frame.frame].place;
    EXPECT_EQ(outer.top, bottom.at(frame.column)) << ControlName(frame.frame);
    std::int32_t top = outer.top + kMetrics.frameTop;
    for (const LayoutRow& row : frame.rows) {
      if (!IsShown(controls, row.field)) continue;
      EXPECT_EQ(controls[row.field].place.top, top) << ControlName(row.field) << " closes up";
      top += kMetrics.rowHeight + kMetrics.rowGap;
      for (const auto id : {std::optional(row.field), row.label, row.beside}) {
        if (!id || !IsShown(controls, *id)) continue;
        EXPECT_TRUE(Within(controls[*id].place, outer)) << ControlName(*id);
        placed.push_back(*id);
      }
    }
    EXPECT_EQ(outer.top + outer.height, top - kMetrics.rowGap + kMetrics.framePadding);
    bottom.at(frame.column) = outer.top + outer.height + kMetrics.frameGap;
  }
  const ControlPlace whole{0, 0, size.width, size.height};
  for (std::size_t i = 0; i < placed.size(); ++i) {
    EXPECT_TRUE(Within(controls[placed[i]].place, whole)) << ControlName(placed[i]);
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_FALSE(Overlap(controls[placed[i]].place, controls[placed[j]].place))
          << ControlName(placed[i]) << " and " << ControlName(placed[j]);
    }
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

TEST(Layout, NarrowsThePortListForItsButtonAndGivesTheRoomBack) {
  Dialog dialog(teskReaderTypeChatsworthOMR1100);
  dialog.Load();
  OptionControls& controls = dialog.form.Controls();
  RepositionControls(controls, kMetrics);
  const std::int32_t baud = controls[cboBaud].place.width;
  EXPECT_EQ(controls[cboPort].place.width, baud - controls[cmdLocate].place.width - kMetrics.besideGap);
  EXPECT_EQ(controls[cmdLocate].place.left + controls[cmdLocate].place.width,
            controls[cboBaud].place.left + baud);
  dialog.ChooseReader(teskReaderTypeNCSOpScan2);
  RepositionControls(controls, kMetrics);
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
