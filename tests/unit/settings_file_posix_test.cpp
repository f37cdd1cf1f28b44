// The settings file: what happens to it when things go wrong, and when two write at once.
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/HostServices.h"
#include "platform/posix/SettingsFile.h"
#include "tests/support/Folder.h"

namespace tesk::test {
namespace {

using platform::SettingsFile;
using platform::SettingsText;
using ::testing::HasSubstr;

constexpr auto kRoot = teskReaderRegistryKeyCurrentUser;

struct SettingsFileTest : ::testing::Test {
  Folder folder;
  std::string path = folder.File("deep/er/settings.conf");
};

TEST_F(SettingsFileTest, ValuesComeBackFromANewStoreUnderAnySpellingOfTheKeyUntilDeleted) {
  EXPECT_TRUE(SettingsFile(path).SaveValues(kRoot, "School\\Lab", {{"ScannerPort", "3"}, {"theirs", "2"}}));
  SettingsFile store(path);
  EXPECT_EQ(store.LoadValue(kRoot, "school/lab/", "scannerport"), "3");
  EXPECT_EQ(store.LoadValue(teskReaderRegistryKeyLocalMachine, "School\\Lab", "ScannerPort"), std::nullopt);
  EXPECT_TRUE(store.DeleteValues(kRoot, "School\\Lab", {"ScannerPort", "absent"}));
  EXPECT_FALSE(store.DeleteValues(kRoot, "School\\Lab", {"ScannerPort"}));
  EXPECT_EQ(store.LoadValue(kRoot, "School\\Lab", "ScannerPort"), std::nullopt);
  EXPECT_EQ(store.LoadValue(kRoot, "School\\Lab", "theirs"), "2");
}

TEST_F(SettingsFileTest, DamagedFileIsRefusedAndNeverOverwritten) {
  const std::string damaged = "[CurrentUser\\A]\n\"x\" = \"1\"\nby hand\n";
  WriteFile(path, damaged);
  SettingsFile store(path);
  const auto load = Attempt([&] { store.LoadValue(kRoot, "A", "x"); });
  const auto save = Attempt([&] { store.SaveValue(kRoot, "A", "x", "2"); });
  ASSERT_TRUE(load && save);
  EXPECT_THAT(load->Description(), HasSubstr("line 3"));
  EXPECT_EQ(Content(path), damaged);
}

TEST_F(SettingsFileTest, HugeAndLongValuesAreMissingNotRead) {
  SettingsFile store(path);
  const std::string longest(1024, 'x');
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {longest, longest}, {longest + "x", {}}, {std::string(1 << 20, '7'), {}}, {{"ab\0cd", 5}, "ab"}};
  for (const auto& [stored, read] : cases) {
    ASSERT_TRUE(store.SaveValue(kRoot, "A", "x", stored));
    EXPECT_EQ(store.LoadValue(kRoot, "A", "x"), read) << stored.size();
  }
}

TEST_F(SettingsFileTest, ProgramsThatWriteAtOnceLoseAndMixNothing) {
  constexpr int kPrograms = 4;
  constexpr int kRounds = 25;
  std::vector<pid_t> children;
  for (int program = 0; program < kPrograms; ++program) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const std::string own = std::to_string(program);
      SettingsFile store(path);
      const auto error = Attempt([&] {
        for (int i = 0; i < kRounds; ++i) {
          store.SaveValues(kRoot, "Shared",
                           {{"first", own}, {own + "-" + std::to_string(i), "kept"}, {"last", own}});
          // One file, so both are of one round.
          const auto text = SettingsText::Parse(Content(path), path);
          if (text.Find("CurrentUser\\Shared", "first") != text.Find("CurrentUser\\Shared", "last"))
            throw TypeMismatch();
        }
      });
      ::_exit(error ? 1 : 0);
    }
    children.push_back(child);
  }
  SettingsFile store(path);
  for (int program = 0; program < kPrograms; ++program) {
    int status = -1;
    ::waitpid(children[static_cast<std::size_t>(program)], &status, 0);
    EXPECT_EQ(status, 0);
    for (int i = 0; i < kRounds; ++i) {
      EXPECT_EQ(store.LoadValue(kRoot, "Shared", std::to_string(program) + "-" + std::to_string(i)), "kept");
    }
  }
}

TEST_F(SettingsFileTest, LinkedFileIsReplacedWhereItLiesAndAPlaceThatCannotBeWrittenSaysSo) {
  WriteFile(path, "");
  const std::string link = folder.File("link.conf");
  std::filesystem::create_symlink(path, link);
  ASSERT_TRUE(SettingsFile(link).SaveValue(kRoot, "A", "x", "1"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(SettingsFile(path).LoadValue(kRoot, "A", "x"), "1");
  const std::string below = path + "/no folder";
  const auto error = Attempt([&] { SettingsFile(below).SaveValue(kRoot, "A", "x", "1"); });
  ASSERT_TRUE(error);
  EXPECT_THAT(error->Description(), HasSubstr(below));
}

TEST_F(SettingsFileTest, FullDiskLeavesTheOldSettings) {
  SettingsFile store(path);
  ASSERT_TRUE(store.SaveValue(kRoot, "A", "x", "1"));
  // What a full disk does to the new file, a link into a full device does too.
  std::filesystem::create_symlink("/dev/full", path + ".new");
  EXPECT_TRUE(Attempt([&] { store.SaveValues(kRoot, "A", {{"x", "2"}, {"y", "3"}}); }));
  EXPECT_EQ(store.LoadValue(kRoot, "A", "x"), "1");
  EXPECT_EQ(store.LoadValue(kRoot, "A", "y"), std::nullopt);
}

}  // namespace
}  // namespace tesk::test
