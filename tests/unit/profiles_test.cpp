// The profile record, the catalogue cell by cell against tests/data, and the collection of profiles.
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "profiles/catalogue.h"
#include "profiles/clsTeskReaderProfiles.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {
namespace {

using Row = std::vector<std::string>;

// The lines of a tab-separated file; the first is the header.
std::vector<Row> Lines(const std::string& name) {
  std::ifstream file(TESKREAD_TEST_DATA "/" + name);
  EXPECT_TRUE(file) << name;
  std::vector<Row> lines;
  for (std::string line; std::getline(file, line);) {
    Row row(1);
    for (const char c : line) {
      if (c == '\r') continue;
      if (c == '\t') {
        row.emplace_back();
      } else {
        row.back() += c;
      }
    }
    lines.push_back(std::move(row));
  }
  return lines;
}

std::string TextOf(const ProfileValue& value) {
  struct {
    std::string operator()(bool v) const { return BooleanText(v); }
    std::string operator()(std::int16_t v) const { return NumberText(v); }
    std::string operator()(std::int32_t v) const { return NumberText(v); }
    std::string operator()(float v) const { return NumberText(v); }
    std::string operator()(const std::string& v) const { return v; }
  } text;
  return std::visit(text, value);
}

std::string TypeName(ProfileValueType type) {
  constexpr const char* kNames[] = {"Boolean", "Int16", "Int32", "Single", "Text"};
  return kNames[static_cast<std::size_t>(type)];
}

Row ValuesOf(const clsTeskReaderProfile& profile) {
  Row values;
  for (const ProfileProperty& property : ProfileProperties()) values.push_back(TextOf(property.get(profile)));
  return values;
}

// Another value of the same type.
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

std::vector<teskReaderType> TypesIn(const clsTeskReaderProfiles& profiles) {
  std::vector<teskReaderType> types;
  for (std::int32_t i = 1; i <= profiles.Count(); ++i)
    types.push_back(profiles.Item(AtPosition(i))->ReaderType());
  return types;
}

TEST(Profile, FreshOneHoldsTheInitialValueOfEveryPropertyInSlotOrder) {
  const auto lines = Lines("fresh_profile.tsv");
  const auto properties = ProfileProperties();
  ASSERT_EQ(lines.size(), properties.size() + 1);
  const clsTeskReaderProfile fresh;
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const ProfileProperty& property = properties[i];
    const Row actual = {std::string(property.name), TypeName(property.type), TextOf(property.get(fresh))};
    EXPECT_EQ(actual, lines[i + 1]);
    EXPECT_EQ(property.get(fresh).index(), static_cast<std::size_t>(property.type)) << property.name;
  }
}

TEST(Profile, SettingAPropertyChangesThatOneAlone) {
  const auto properties = ProfileProperties();
  const Row fresh = ValuesOf(clsTeskReaderProfile());
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (properties[i].set == nullptr) continue;
    clsTeskReaderProfile profile;
    const ProfileValue other = Other(properties[i].get(profile));
    properties[i].set(profile, other);
    Row expected = fresh;
    expected[i] = TextOf(other);
    if (properties[i].name == "ReaderType") expected[58] = "DATAWIN AXM 960";
    EXPECT_EQ(ValuesOf(profile), expected) << properties[i].name;
    profile.Class_Initialize();
    EXPECT_EQ(ValuesOf(profile), fresh) << properties[i].name;
  }
}

TEST(Profile, ReaderNameAloneIsReadOnlyAndOtherTypesAreRefused) {
  clsTeskReaderProfile profile;
  for (const ProfileProperty& property : ProfileProperties()) {
    EXPECT_EQ(property.set == nullptr, property.name == "ReaderName") << property.name;
    if (property.set == nullptr) continue;
    const bool text = property.type == ProfileValueType::Text;
    const ProfileValue wrong = text ? ProfileValue(1.0F) : ProfileValue(std::string("1"));
    const auto error = Attempt([&] { property.set(profile, wrong); });
    ASSERT_TRUE(error) << property.name;
    EXPECT_EQ(error->Number(), kErrorTypeMismatch) << property.name;
  }
  EXPECT_EQ(ValuesOf(profile), ValuesOf(clsTeskReaderProfile()));
}

TEST(Profile, ReaderNameIsTranslatedForNoneAndFollowsTheReaderTypeOtherwise) {
  RecordingHost host;
  host.translate = {{"None", "Keiner"}, {"Scantron 8000", "wrong"}};
  clsTeskReaderProfile profile;
  EXPECT_EQ(profile.ReaderName(), "Keiner");
  for (const auto& [type, name] : std::map<int, std::string>{{16, "Scantron 8000"},
                                                             {37, "Chatsworth Data ACP-100"},
                                                             {46, "DATAWIN HEMERA C"},
                                                             {47, ""},
                                                             {-1, ""}}) {
    profile.SetReaderType(static_cast<teskReaderType>(type));
    EXPECT_EQ(profile.ReaderName(), name) << type;
  }
}

TEST(Catalogue, EveryCellOfEveryProfileIsAsListed) {
  const auto lines = Lines("catalogue.tsv");
  const auto properties = ProfileProperties();
  const clsTeskReaderProfiles profiles;
  ASSERT_EQ(lines.size(), 47U);
  ASSERT_EQ(profiles.Count(), 46);
  for (std::size_t line = 0; line < lines.size(); ++line) ASSERT_EQ(lines[line].size(), 73U) << line;
  for (std::int32_t position = 1; position <= 46; ++position) {
    const Row& listed = lines[static_cast<std::size_t>(position)];
    const Row actual = ValuesOf(*profiles.Item(AtPosition(position)));
    for (std::size_t i = 0; i < properties.size(); ++i) {
      EXPECT_EQ(lines[0][i], properties[i].name);
      EXPECT_EQ(actual[i], listed[i]) << listed[58] << "." << properties[i].name;
    }
  }
}

TEST(Catalogue, NamesWrittenBesideTheRowsAreTheNamesThatHostsSee) {
  for (const IdentityRow& row : IdentityRows()) EXPECT_EQ(row.readerName, ReaderName(row.type)) << row.number;
}

TEST(Profiles, EachFilterBitAdmitsItsMakersInTheFixedOrder) {
  struct Case {
    int filter;
    std::int32_t count;
    int firstModel;  // at position 2
    int lastModel;
  };
  constexpr Case kCases[] = {
      {0, 1, -1, 0},   {1, 5, 40, 18},   {8, 7, 37, 21},  {32, 2, 44, 44}, {16, 2, 24, 24}, {4, 21, 16, 29},
      {2, 14, 19, 45}, {63, 46, 40, 45}, {6, 34, 16, 45}, {9, 11, 40, 21}, {64, 1, -1, 0},  {-1, 46, 40, 45},
  };
  for (const Case& c : kCases) {
    clsTeskReaderProfiles profiles;
    profiles.SetProfileType(static_cast<teskProfileType>(c.filter));
    EXPECT_EQ(profiles.ProfileType(), c.filter);
    ASSERT_EQ(profiles.Count(), c.count) << c.filter;
    const auto types = TypesIn(profiles);
    EXPECT_EQ(types.front(), teskReaderTypeNone) << c.filter;
    EXPECT_EQ(types.back(), c.lastModel) << c.filter;
    if (c.count > 1) {
      EXPECT_EQ(types[1], c.firstModel) << c.filter;
    }
  }
}

TEST(Profiles, GroupsFollowOneAnotherInTheDeliberateOrder) {
  std::vector<teskReaderType> expected = {teskReaderTypeNone};
  for (const int filter : {1, 8, 32, 16, 4, 2}) {
    clsTeskReaderProfiles group;
    group.SetProfileType(static_cast<teskProfileType>(filter));
    const auto types = TypesIn(group);
    expected.insert(expected.end(), types.begin() + 1, types.end());
  }
  EXPECT_EQ(TypesIn(clsTeskReaderProfiles()), expected);
}

TEST(Profiles, TextIsAKeyAndANumberAPosition) {
  RecordingHost host;
  const clsTeskReaderProfiles profiles;
  EXPECT_EQ(profiles.ProfileType(), teskProfileTypeAll);
  for (const ReaderTypeName& name : ReaderTypeNames()) {
    const Index key = NumberText(name.type);
    const auto profile = profiles.Item(key);
    EXPECT_EQ(profiles.Exists(key), name.type != teskReaderTypeDatawinHemeraC);
    EXPECT_EQ(profile != nullptr, name.type != teskReaderTypeDatawinHemeraC);
    if (profile) {
      EXPECT_EQ(profile->ReaderType(), name.type);
    }
  }
  EXPECT_EQ(profiles.Item(1.0)->ReaderType(), teskReaderTypeNone);
  EXPECT_EQ(profiles.Item(2.0)->ReaderType(), teskReaderTypeAppersonAdvantage1200);
  EXPECT_EQ(profiles.Item(46.0)->ReaderType(), teskReaderTypeSekonicSR8000Hybrid);
  for (const Index& missing : {Index(47.0), Index(0.0), Index(-1.0), Index("46"), Index("47"), Index(""),
                               Index(" 1"), Index("01"), Index("teskReaderTypeNone")}) {
    EXPECT_FALSE(profiles.Exists(missing));
    EXPECT_EQ(profiles.Item(missing), nullptr);
  }
  EXPECT_TRUE(host.errors.empty());
}

TEST(Profiles, FetchedProfilesAreSharedUntilTheNextRefill) {
  clsTeskReaderProfiles profiles;
  const auto fetched = profiles.Item("16");
  fetched->SetMarkCutOff(1);
  EXPECT_EQ(profiles.Item("16")->MarkCutOff(), 1);
  profiles.SetProfileType(teskProfileTypeAll);
  EXPECT_EQ(profiles.Item("16"), fetched) << "an unchanged filter must not refill";
  profiles.SetProfileType(teskProfileTypeScantron);
  EXPECT_NE(profiles.Item("16"), fetched);
  EXPECT_EQ(profiles.Item("16")->MarkCutOff(), 65);
  EXPECT_EQ(fetched->MarkCutOff(), 1);
}

TEST(Profiles, PrunedOnesComeBackWithANewFilterOrFromEmpty) {
  RecordingHost host;
  clsTeskReaderProfiles profiles;
  profiles.Remove("33");
  profiles.Remove(1.0);
  EXPECT_EQ(profiles.Count(), 44);
  EXPECT_FALSE(profiles.Exists("33"));
  EXPECT_EQ(profiles.Item(1.0)->ReaderType(), teskReaderTypeAppersonAdvantage1200);
  profiles.SetProfileType(teskProfileTypeAll);
  EXPECT_EQ(profiles.Count(), 44);
  profiles.RemoveAll();
  EXPECT_EQ(profiles.Count(), 0);
  profiles.SetProfileType(teskProfileTypeAll);
  EXPECT_EQ(profiles.Count(), 46);
  profiles.Remove("33");
  profiles.SetProfileType(teskProfileTypeSekonic);
  EXPECT_TRUE(profiles.Exists("33"));
  EXPECT_TRUE(host.errors.empty());
}

TEST(Profiles, RemovingWhatIsMissingIsReportedAndRemovesNothing) {
  RecordingHost host;
  clsTeskReaderProfiles profiles;
  profiles.Remove("46");
  profiles.Remove(47.0);
  EXPECT_EQ(host.Sources(),
            (std::vector<std::string>{"clsTeskReaderProfiles.Remove", "clsTeskReaderProfiles.Remove"}));
  EXPECT_EQ(host.errors[0].number, kErrorInvalidCall);
  EXPECT_EQ(host.errors[1].number, kErrorSubscript);
  EXPECT_EQ(profiles.Count(), 46);
}

}  // namespace
}  // namespace tesk::test
