// The registry as settings store, seen by the system's own reg program.
#include <array>
#include <cstdio>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/SettingsStores.h"

namespace tesk::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

constexpr auto kRoot = teskReaderRegistryKeyCurrentUser;
const std::string kKey = "Software\\TeskReader99 test [1]";

// What `reg` prints; empty where it fails.
std::string Reg(const std::string& arguments) {
  FILE* pipe = ::_popen(("reg " + arguments + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return {};
  std::string output;
  std::array<char, 256> buffer{};
  while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) output += buffer.data();
  return ::_pclose(pipe) == 0 ? output : std::string();
}

class Registry : public testing::Test {
 protected:
  Registry() { Reg("delete \"HKCU\\" + kKey + "\" /f"); }
  ~Registry() override { Reg("delete \"HKCU\\" + kKey + "\" /f"); }

  static std::string Add(const std::string& name, const std::string& type, const std::string& data) {
    return Reg("add \"HKCU\\" + kKey + "\" /v " + name + " /t " + type + " /d \"" + data + "\" /f");
  }

  std::shared_ptr<SettingsStore> store = platform::CreateSettingsStore();
};

TEST_F(Registry, WhatIsSavedStandsThereAsText) {
  ASSERT_TRUE(store->SaveValues(kRoot, kKey, {{"ScannerType", "26"}, {"ScannerParity", " "}}));
  const std::string shown = Reg("query \"HKCU\\" + kKey + "\"");
  EXPECT_THAT(shown, ContainsRegex("ScannerType +REG_SZ +26"));
  EXPECT_THAT(shown, ContainsRegex("ScannerParity +REG_SZ"));
}

TEST_F(Registry, WhatOthersWroteIsReadByTheRules) {
  ASSERT_NE(Add("Text", "REG_SZ", "E"), "");
  ASSERT_NE(Add("Expandable", "REG_EXPAND_SZ", "a^%b^%"), "");
  ASSERT_NE(Add("Small", "REG_DWORD", "7"), "");
  ASSERT_NE(Add("Zero", "REG_DWORD", "0"), "");
  ASSERT_NE(Add("Large", "REG_DWORD", "258"), "");
  ASSERT_NE(Add("Binary", "REG_BINARY", "010203"), "");
  ASSERT_NE(Add("Long", "REG_SZ", std::string(1500, 'x')), "");
  const std::pair<const char*, std::optional<std::string>> kValues[] = {{"Text", "E"},
                                                                        {"Small", "7"},
                                                                        {"Zero", ""},
                                                                        {"Large", "18"},
                                                                        {"Binary", std::nullopt},
                                                                        {"Long", std::nullopt},
                                                                        {"Missing", std::nullopt}};
  for (const auto& [name, text] : kValues) EXPECT_EQ(store->LoadValue(kRoot, kKey, name), text) << name;
  EXPECT_THAT(store->LoadValue(kRoot, kKey, "Expandable").value_or("missing"), HasSubstr("%b"));
}

TEST_F(Registry, TextsOfTheCodePageComeBack) {
  ASSERT_TRUE(store->SaveValue(kRoot, kKey, "Umlaut", "M\xC3\xBCller"));
  EXPECT_EQ(store->LoadValue(kRoot, kKey, "Umlaut"), "M\xC3\xBCller");
}

TEST_F(Registry, DeletingTakesOurValuesAndTheKeyOnlyWhenItIsEmpty) {
  ASSERT_TRUE(store->SaveValue(kRoot, kKey, "ours", "1"));
  ASSERT_NE(Add("theirs", "REG_SZ", "2"), "");
  EXPECT_TRUE(store->DeleteValues(kRoot, kKey, {"ours"}));
  EXPECT_THAT(Reg("query \"HKCU\\" + kKey + "\""), HasSubstr("theirs"));
  EXPECT_TRUE(store->DeleteValues(kRoot, kKey, {"theirs"}));
  EXPECT_EQ(Reg("query \"HKCU\\" + kKey + "\""), "");
  EXPECT_FALSE(store->DeleteValues(kRoot, kKey, {"ours"}));
}

}  // namespace
}  // namespace tesk::test
