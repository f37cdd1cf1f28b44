// The profile record, the catalogue cell by cell against tests/data, the models' facts, and the collection of
// profiles.
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "profiles/catalogue.h"
#include "profiles/clsTeskReaderProfiles.h"
#include "profiles/models.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {
namespace {

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

// One per line, so that a failure shows the lines that differ.
std::string Lines(const Cells& cells) {
  std::string lines;
  for (const std::string& cell : cells) lines += cell + "\n";
  return lines;
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

std::vector<int> TypesIn(const clsTeskReaderProfiles& profiles) {
  std::vector<int> types;
  for (std::int32_t i = 1; i <= profiles.Count(); ++i) {
    types.push_back(profiles.Item(AtPosition(i))->ReaderType());
  }
  return types;
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
    EXPECT_EQ(Lines(CellsOf(profile)), Lines(expected)) << name;
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
    EXPECT_EQ(Lines(CellsOf(*profile)), Lines(listed[static_cast<std::size_t>(position)]));
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
  const auto where = [](auto&& holds) {
    Types types;
    for (std::int32_t type = -1; type <= kLastReaderType + 1; ++type) {
      if (holds(ModelOf(static_cast<teskReaderType>(type)))) types.insert(type);
    }
    return types;
  };
  const auto prints = [&](Printing when) {
    return where([=](const Model& m) { return m.printing == when; });
  };
  const auto sends = [&](Sending how) { return where([=](const Model& m) { return m.sending == how; }); };
  const auto of = [&](Family family) { return where([=](const Model& m) { return m.family == family; }); };
  const Types opScan = {2, 3, 4, 5, 6, 25, 26, 31, 32}, usb = {30, 33, 34, 36}, hybrid = {42, 43};
  EXPECT_EQ(of(Family::Apperson), (Types{1, 18, 39, 40}));
  EXPECT_EQ(of(Family::OpScan), opScan);
  EXPECT_EQ(of(Family::SekonicUsb), usb);
  EXPECT_EQ(of(Family::SekonicHybrid), hybrid);
  EXPECT_EQ(of(Family::Chatsworth), (Types{20, 21, 22, 35, 41}));
  EXPECT_EQ(of(Family::EZData), (Types{23, 37})) << "the ACF-100 too";
  EXPECT_EQ(of(Family::Unrouted), (Types{-1, 0, 45, 46, kLastReaderType + 1}));
  EXPECT_EQ(prints(Printing::Always), (Types{7, 8, 9, 10}));
  EXPECT_EQ(prints(Printing::UnlessSkipped), where([&](const Model& m) {
              return opScan.contains(m.type) || usb.contains(m.type) || hybrid.contains(m.type) ||
                     m.type == 44;
            }));
  EXPECT_EQ(sends(Sending::Plain), (Types{1, 7, 8, 9, 10, 11, 12, 13, 14, 15, 18, 24, 29, 39, 40}));
  EXPECT_EQ(sends(Sending::RejectsToRejecter), opScan);
  EXPECT_EQ(sends(Sending::AsEjected), (Types{22, 23, 37, 44}));
  EXPECT_EQ(sends(Sending::AsEjectedAndCancelled), (Types{30, 33, 34, 36, 42, 43}));
  EXPECT_EQ(where([](const Model& m) { return m.scoresItself; }), (Types{2, 3, 4, 5, 6, 23, 25, 26, 31, 32}));
}

TEST(Profiles, EachFilterBitAdmitsItsMakersInTheFixedOrder) {
  const std::vector<int> all = TypesIn(clsTeskReaderProfiles());
  struct Case {
    int filter;
    std::size_t first;  // in the catalogue, behind None
    std::size_t count;
  };
  constexpr Case kCases[] = {{1, 1, 4},   {8, 5, 6},   {32, 11, 1}, {16, 12, 1}, {4, 13, 20}, {2, 33, 13},
                             {63, 1, 45}, {6, 13, 33}, {9, 1, 10},  {64, 1, 0},  {0, 1, 0},   {-1, 1, 45}};
  for (const auto& [filter, first, count] : kCases) {
    clsTeskReaderProfiles profiles;
    profiles.SetProfileType(static_cast<teskProfileType>(filter));
    EXPECT_EQ(profiles.ProfileType(), filter);
    std::vector<int> expected = {teskReaderTypeNone};
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
    expected.insert(expected.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
    EXPECT_EQ(TypesIn(profiles), expected) << filter;
  }
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
  profiles.RemoveAll();
  EXPECT_EQ(profiles.Count(), 0);
  profiles.SetProfileType(teskProfileTypeScantron);
  EXPECT_EQ(profiles.Count(), 21) << "nor must an empty one stay empty";
  EXPECT_TRUE(host.errors.empty());
  profiles.Remove("46");
  profiles.Remove(47.0);
  EXPECT_EQ(host.Sources(), (std::vector<std::string>(2, "clsTeskReaderProfiles.Remove")));
  EXPECT_EQ(profiles.Count(), 21);
}

}  // namespace
}  // namespace tesk::test
