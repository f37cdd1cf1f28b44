// The profile record, the catalogue cell by cell against tests/data, the models' facts, and the collection of
// profiles.
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "profiles/catalogue.h"
#include "profiles/clsTeskReaderProfiles.h"
#include "profiles/models.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAreArray;

// "Imaging=False", "ImagingEnabled=False", ... in slot order.
using Cells = std::vector<std::string>;

struct ValueText {
  std::string operator()(bool v) const { return BooleanText(v); }
  std::string operator()(const std::string& v) const { return v; }
  std::string operator()(auto v) const { return NumberText(v); }
};

std::string TextOf(const ProfileValue& value) { return std::visit(ValueText{}, value); }

Cells CellsOf(const clsTeskReaderProfile& profile) {
  Cells cells;
  for (const ProfileProperty& property : ProfileProperties()) {
    cells.push_back(std::string(property.name) + "=" + TextOf(property.get(profile)));
  }
  return cells;
}

// The lines of tests/data/catalogue.tsv: the properties' types, then the models in their order, None first.
std::vector<Cells> Listed() {
  std::ifstream file(TESKREAD_TEST_DATA "/catalogue.tsv");
  const auto split = [](const std::string& line) {
    std::istringstream text(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
    Cells cells;
    for (std::string cell; std::getline(text, cell, '\t');) cells.push_back(cell);
    return cells;
  };
  std::string line;
  std::getline(file, line);
  const Cells names = split(line);
  std::vector<Cells> rows;
  while (std::getline(file, line)) {
    rows.push_back(split(line));
    EXPECT_EQ(rows.back().size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) rows.back()[i].insert(0, names[i] + "=");
  }
  EXPECT_GT(rows.size(), 46U);
  return rows;
}

// Another value of the same type, and one of another type.
ProfileValue Other(const ProfileValue& value) {
  struct {
    ProfileValue operator()(bool v) const { return !v; }
    ProfileValue operator()(std::int16_t v) const { return static_cast<std::int16_t>(v - 12345); }
    ProfileValue operator()(std::int32_t v) const { return v + 44; }
    ProfileValue operator()(float v) const { return v + 1.5F; }
    ProfileValue operator()(const std::string& v) const { return v + "M"; }
  } other;
  return std::visit(other, value);
}

ProfileValue Wrong(const ProfileValue& value) {
  return std::holds_alternative<std::string>(value) ? ProfileValue(1.0F) : ProfileValue(std::string("1"));
}

TEST(Profile, SettingAPropertyChangesThatOneAloneAndTakesNoOtherType) {
  constexpr const char* kTypes[] = {"Boolean", "Int16", "Int32", "Single", "Text"};
  const Cells fresh = CellsOf(clsTeskReaderProfile());
  const Cells types = Listed()[0];
  const auto properties = ProfileProperties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const ProfileProperty& property = properties[i];
    const std::string name(property.name);
    clsTeskReaderProfile profile;
    const ProfileValue before = property.get(profile);
    EXPECT_EQ(name + "=" + kTypes[static_cast<std::size_t>(property.type)], types[i]);
    EXPECT_EQ(before.index(), static_cast<std::size_t>(property.type)) << name;
    EXPECT_EQ(property.set == nullptr, name == "ReaderName");
    if (property.set == nullptr) continue;
    const auto error = Attempt([&] { property.set(profile, Wrong(before)); });
    EXPECT_TRUE(error && error->Number() == kErrorTypeMismatch) << name;
    property.set(profile, Other(before));
    Cells expected = fresh;
    expected[i] = name + "=" + TextOf(Other(before));
    if (name == "ReaderType") expected[58] = "ReaderName=DATAWIN AXM 960";
    EXPECT_THAT(CellsOf(profile), ElementsAreArray(expected)) << name;
    profile.Class_Initialize();
    EXPECT_EQ(CellsOf(profile), fresh) << name;
  }
}

TEST(Profile, ReaderNameIsTranslatedForNoneAndFollowsTheReaderTypeOtherwise) {
  RecordingHost host;
  host.translate = {{"None", "Keiner"}, {"Scantron 8000", "wrong"}};
  clsTeskReaderProfile profile;
  EXPECT_EQ(profile.ReaderName(), "Keiner");
  for (const auto& [type, name] : std::map<int, std::string>{{16, "Scantron 8000"},
                                                             {37, "Chatsworth Data ACP-100"},
                                                             {46, "DATAWIN HEMERA C"},
                                                             {kLastReaderType + 1, ""},
                                                             {-1, ""}}) {
    profile.SetReaderType(static_cast<teskReaderType>(type));
    EXPECT_EQ(profile.ReaderName(), name) << type;
  }
}

TEST(Catalogue, EveryCellOfEveryProfileIsAsListed) {
  const std::vector<Cells> listed = Listed();
  const clsTeskReaderProfiles profiles;
  ASSERT_EQ(profiles.Count() + 1, static_cast<std::int32_t>(listed.size()));
  for (std::int32_t position = 1; position <= profiles.Count(); ++position) {
    const auto profile = profiles.Item(AtPosition(position));
    EXPECT_THAT(CellsOf(*profile), ElementsAreArray(listed[static_cast<std::size_t>(position)]));
    EXPECT_EQ(CellsOf(ProfileOf(profile->ReaderType())), CellsOf(*profile)) << profile->ReaderName();
  }
  for (const int type : {int{teskReaderTypeDatawinHemeraC}, -1, kLastReaderType + 1}) {
    EXPECT_EQ(CellsOf(ProfileOf(static_cast<teskReaderType>(type))), listed[1]) << "as a fresh one";
  }
  EXPECT_EQ(DarkestMark(teskReaderTypeScantron8000), 99);
  EXPECT_EQ(DarkestMark(teskReaderTypeAppersonGradeMaster), 1) << "a mark or none";
}

TEST(Models, WhatIsDoneWithTheSheetsOfEachTypeIsWhatHostsKnow) {
  using Types = std::set<int>;
  const auto where = [](auto Model::*field, auto value) {
    Types types;
    for (std::int32_t type = -1; type <= teskReaderTypeDatawinHemeraC; ++type) {
      if (ModelOf(static_cast<teskReaderType>(type)).*field == value) types.insert(type);
    }
    return types;
  };
  const Types opScan = {2, 3, 4, 5, 6, 25, 26, 31, 32};
  EXPECT_EQ(where(&Model::family, Family::OpScan), opScan);
  EXPECT_EQ(where(&Model::family, Family::Chatsworth), (Types{20, 21, 22, 35, 41}));
  EXPECT_EQ(where(&Model::family, Family::EZData), (Types{23, 37})) << "the ACF-100 too";
  EXPECT_EQ(where(&Model::family, Family::Unrouted), (Types{-1, 0, 45, 46}));
  EXPECT_EQ(ModelOf(static_cast<teskReaderType>(kLastReaderType + 1)).type, teskReaderTypeNone);
  EXPECT_EQ(where(&Model::printing, Printing::Always), (Types{7, 8, 9, 10}));
  EXPECT_EQ(where(&Model::printing, Printing::UnlessSkipped),
            (Types{2, 3, 4, 5, 6, 25, 26, 30, 31, 32, 33, 34, 36, 42, 43, 44}));
  EXPECT_EQ(where(&Model::sending, Sending::Plain),
            (Types{1, 7, 8, 9, 10, 11, 12, 13, 14, 15, 18, 24, 29, 39, 40}));
  EXPECT_EQ(where(&Model::sending, Sending::RejectsToRejecter), opScan);
  EXPECT_EQ(where(&Model::sending, Sending::AsEjected), (Types{22, 23, 37, 44}));
  EXPECT_EQ(where(&Model::sending, Sending::AsEjectedAndCancelled), (Types{30, 33, 34, 36, 42, 43}));
  EXPECT_EQ(where(&Model::scoresItself, true), (Types{2, 3, 4, 5, 6, 23, 25, 26, 31, 32}));
}

TEST(Profiles, EachFilterBitAdmitsItsMakersInTheFixedOrder) {
  const auto types = [](int filter) {
    clsTeskReaderProfiles profiles;
    profiles.SetProfileType(static_cast<teskProfileType>(filter));
    EXPECT_EQ(profiles.ProfileType(), filter);
    std::vector<int> found;
    for (double at = 1; profiles.Exists(at); ++at) found.push_back(profiles.Item(at)->ReaderType());
    return found;
  };
  std::vector<int> all = {teskReaderTypeNone};
  for (const auto& [bit, first] : {std::pair{1, 40}, {8, 37}, {32, 44}, {16, 24}, {4, 16}, {2, 19}}) {
    const auto group = types(bit);
    ASSERT_GT(group.size(), 1U) << bit;
    EXPECT_EQ((std::vector{group[0], group[1]}), (std::vector<int>{teskReaderTypeNone, first})) << bit;
    all.insert(all.end(), group.begin() + 1, group.end());
  }
  for (const int filter : {63, -1}) EXPECT_EQ(types(filter), all);
  for (const int filter : {0, 64}) EXPECT_EQ(types(filter), std::vector<int>{teskReaderTypeNone});
  EXPECT_EQ(types(4 + 2 + 64).size(), types(4).size() + types(2).size() - 1);
}

TEST(Profiles, TextIsAKeyAndANumberAPosition) {
  RecordingHost host;
  const clsTeskReaderProfiles profiles;
  EXPECT_EQ(profiles.ProfileType(), teskProfileTypeAll);
  for (const ReaderTypeName& name : ReaderTypeNames()) {
    const auto profile = profiles.Item(NumberText(name.type));
    EXPECT_EQ(profile ? profile->ReaderType() : -1, name.type == 46 ? -1 : int{name.type});
  }
  EXPECT_EQ(profiles.Item(2.0)->ReaderType(), teskReaderTypeAppersonAdvantage1200);
  for (const Index& missing : {Index(0.0), Index(-1.0), AtPosition(profiles.Count() + 1), Index("46"),
                               Index(""), Index(" 1"), Index("01"), Index("teskReaderTypeNone")}) {
    EXPECT_FALSE(profiles.Exists(missing));
    EXPECT_EQ(profiles.Item(missing), nullptr);
  }
  EXPECT_TRUE(host.errors.empty());
}

TEST(Profiles, FetchedAndPrunedOnesStaySoUntilTheNextRefill) {
  RecordingHost host;
  clsTeskReaderProfiles profiles;
  const std::int32_t all = profiles.Count();
  const auto fetched = profiles.Item("16");
  fetched->SetMarkCutOff(1);
  profiles.Remove("33");
  profiles.Remove(1.0);
  profiles.SetProfileType(teskProfileTypeAll);
  EXPECT_EQ(profiles.Item("16"), fetched) << "an unchanged filter must not refill";
  EXPECT_EQ(profiles.Count(), all - 2);
  profiles.SetProfileType(teskProfileTypeScantron);
  EXPECT_EQ(profiles.Item("16")->MarkCutOff(), 65);
  EXPECT_EQ(fetched->MarkCutOff(), 1);
  const std::int32_t some = profiles.Count();
  profiles.RemoveAll();
  EXPECT_EQ(profiles.Count(), 0);
  profiles.SetProfileType(teskProfileTypeScantron);
  EXPECT_TRUE(host.errors.empty());
  for (const Index& gone : {Index("46"), AtPosition(some + 1)}) profiles.Remove(gone);
  EXPECT_EQ(host.Sources(), (std::vector<std::string>(2, "clsTeskReaderProfiles.Remove")));
  EXPECT_EQ(profiles.Count(), some) << "nor must an empty one stay empty";
}

}  // namespace
}  // namespace tesk::test
