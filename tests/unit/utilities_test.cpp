// File names that are free, random numbers, and the measuring and lining up of controls.
#include <array>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "setup/basPublic.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;

const std::filesystem::path kFolder = TESKREAD_TEST_DATA;

TEST(GetUniqueFileName, MakesUpWhatTheCallerLeavesOut) {
  RecordingHost host;
  host.applicationName = "Über-Quillon";
  const std::string given = basPublic::GetUniqueFileName("", "", "");
  const std::filesystem::path path(std::u8string(given.begin(), given.end()));
  EXPECT_EQ((path.parent_path() / "").lexically_normal(),
            (std::filesystem::temp_directory_path() / "").lexically_normal());
  const std::u8string utf8 = path.filename().u8string();
  const std::string name(utf8.begin(), utf8.end());
  EXPECT_TRUE(std::regex_match(name, std::regex("Über-[0-9a-f]{3}(0|[1-9A-F][0-9A-F]{0,4})\\.[0-9a-f]{1,3}")))
      << name;
}

TEST(GetUniqueFileName, KeepsPrefixExtensionFolderAndInstanceDigits) {
  RecordingHost host;
  const std::regex form("img_([0-9a-f]{3})(0|[1-9A-F][0-9A-F]{0,4})\\.tif");
  std::set<std::string> instances, names, extensions;
  for (int i = 0; i < 200; ++i) {
    const std::filesystem::path path = basPublic::GetUniqueFileName("img_", ".tif", kFolder.string());
    ASSERT_EQ(path.parent_path(), kFolder);
    const std::string name = path.filename().string();
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(name, parts, form)) << name;
    instances.insert(parts[1]);
    names.insert(name);
    extensions.insert(std::filesystem::path(basPublic::GetUniqueFileName("", "", "")).extension().string());
  }
  EXPECT_EQ(instances.size(), 1U) << "digits of one instance";
  EXPECT_GT(names.size(), 195U);
  EXPECT_GT(extensions.size(), 120U) << "a fresh one per name";
}

TEST(FirstFreePath, DrawsAgainWhereAFileOrAFolderIsAndNotForEver) {
  const std::string file = (kFolder / "catalogue.tsv").string();
  const std::string free = (kFolder / "free").string();
  std::vector<std::string> draws{free, file, kFolder.string()};
  EXPECT_EQ(basPublic::FirstFreePath([&] {
              const std::string drawn = draws.back();
              draws.pop_back();
              return drawn;
            }),
            free);
  EXPECT_THROW(basPublic::FirstFreePath([&] { return file; }), RunTimeError);
}

TEST(RandomNumber, ReachesBothEndsAndNothingBeyond) {
  std::map<std::int32_t, int> counts;
  for (int i = 0; i < 70'000; ++i) ++counts[basPublic::RandomNumber(-3, 3)];
  EXPECT_EQ(std::pair(counts.begin()->first, counts.rbegin()->first), std::pair(-3, 3));
  for (const auto& [number, count] : counts) EXPECT_NEAR(count, 10'000, 600) << number;
}

TEST(RandomNumber, TakesTheWholeRangeAndASingleNumber) {
  RecordingHost host;
  int negative = 0;
  for (int i = 0; i < 1000; ++i) negative += basPublic::RandomNumber(INT32_MIN, INT32_MAX) < 0 ? 1 : 0;
  EXPECT_NEAR(negative, 500, 120);
  EXPECT_EQ(basPublic::RandomNumber(INT32_MAX, INT32_MAX), INT32_MAX);
  EXPECT_EQ(basPublic::RandomNumber(6, 5), 6);
  EXPECT_THAT(host.Sources(), ElementsAre("basPublic.RandomNumber"));
}

// One unit per character.
const basPublic::TextMeasure kMeasure{
    .width = [](std::string_view text) { return static_cast<std::int32_t>(text.size()); },
    .box = 4,
    .padding = 3};

TEST(Captions, AreMeasuredWithoutTheAccessMarker) {
  const std::tuple<const char*, std::string, char> cases[] = {{"", "", 0},
                                                              {"&Port:", "Port:", 'p'},
                                                              {"SelfSco&re", "SelfScore", 'r'},
                                                              {"A && B", "A & B", 0},
                                                              {"R&&D &Lab", "R&D Lab", 'l'},
                                                              {"End&", "End", 0},
                                                              {"&&", "&", 0},
                                                              {"&&&x", "&x", 'x'}};
  for (const auto& [caption, shown, key] : cases) {
    EXPECT_EQ(basPublic::ShownCaption(caption), shown);
    EXPECT_EQ(basPublic::AccessKey(caption), key) << caption;
    const Control label{.kind = ControlKind::Label, .caption = caption};
    EXPECT_EQ(basPublic::ControlTextWidth(label, kMeasure), static_cast<std::int32_t>(shown.size()));
  }
}

TEST(Controls, AreWidenedForTheirCaptionByKindAndNeverNarrowed) {
  using enum ControlKind;
  const std::tuple<ControlKind, std::int32_t, std::int32_t> cases[] = {
      {Label, 5, 5}, {CheckBox, 5, 9},     {OptionButton, 5, 9}, {Button, 5, 11},
      {Frame, 5, 1}, {DropDownList, 0, 1}, {SpinField, 0, 1}};
  for (const auto& [kind, textWidth, width] : cases) {
    Control control{.kind = kind, .caption = "&Width"};
    control.place = {2, 3, 1, 1};
    EXPECT_EQ(basPublic::ControlTextWidth(control, kMeasure), textWidth);
    basPublic::ControlAutoSize(control, kMeasure);
    EXPECT_EQ(control.place, (ControlPlace{2, 3, width, 1}));
    control.place.width = 50;
    basPublic::ControlAutoSize(control, kMeasure);
    EXPECT_EQ(control.place.width, 50);
  }
}

TEST(Controls, LineUpByTheirLeftEdges) {
  Control label;
  label.place = {10, 0, 25, 1};
  Control field;
  basPublic::ControlPositionRight(field, label, 5);
  Control other;
  other.place.left = 12;
  basPublic::ControlAlignLeft(std::array{&other, &field});
  EXPECT_EQ(std::pair(field.place.left, other.place.left), std::pair(40, 40));
  basPublic::ControlAlignLeft({});
}

TEST(Controls, ErrorsAreReportedUnderTheHelpersName) {
  RecordingHost host;
  const basPublic::TextMeasure broken{.width = [](std::string_view) -> std::int32_t { throw Overflow(); }};
  Control label;
  EXPECT_EQ(basPublic::ControlTextWidth(label, broken), 0);
  basPublic::ControlAutoSize(label, broken);
  struct StuckForm : basPublic::Form {
    void Unload() override { throw ObjectNotSet(); }
  } form;
  basPublic::UnloadForm(form);
  EXPECT_THAT(host.Sources(),
              ElementsAre("basPublic.ControlTextWidth", "basPublic.ControlAutoSize", "basPublic.UnloadForm"));
}

}  // namespace
}  // namespace tesk::test
