// The settings file: what happens to it when things go wrong, and when two write at once.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/HostServices.h"
#include "platform/posix/SettingsFile.h"

namespace tesk::test {
namespace {

using platform::SettingsFile;
using platform::SettingsText;
using ::testing::HasSubstr;

class SettingsFileTest : public ::testing::Test {
 protected:
  SettingsFileTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tesk-settings-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    path = folder + "/deep/er/settings.conf";
  }
  ~SettingsFileTest() override { std::filesystem::remove_all(folder); }

  std::string Content() const {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  void Write(const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
  }

  static constexpr const char* kGroup = "CurrentUser\\Shared";
  static constexpr auto kRoot = teskReaderRegistryKeyCurrentUser;
  std::string folder;
  std::string path;
};

TEST_F(SettingsFileTest, ValuesComeBackFromANewStoreUnderAnySpellingOfTheKey) {
  EXPECT_TRUE(SettingsFile(path).SaveValue(kRoot, "School\\Lab", "ScannerPort", "3"));
  EXPECT_EQ(SettingsFile(path).LoadValue(kRoot, "school/lab/", "scannerport"), "3");
  EXPECT_EQ(SettingsFile(path).LoadValue(teskReaderRegistryKeyLocalMachine, "School\\Lab", "ScannerPort"),
            std::nullopt);
}

TEST_F(SettingsFileTest, DamagedFileIsRefusedAndNeverOverwritten) {
  const std::string damaged = "[CurrentUser\\A]\n\"x\" = \"1\"\nby hand\n";
  Write(damaged);
  SettingsFile store(path);
  const auto load = Attempt([&] { store.LoadValue(kRoot, "A", "x"); });
  const auto save = Attempt([&] { store.SaveValue(kRoot, "A", "x", "2"); });
  ASSERT_TRUE(load && save);
  EXPECT_THAT(load->Description(), HasSubstr("line 3"));
  EXPECT_EQ(Content(), damaged);
}

TEST_F(SettingsFileTest, HugeAndLongValuesAreMissingNotRead) {
  SettingsFile store(path);
  ASSERT_TRUE(store.SaveValue(kRoot, "A", "long", std::string(1025, 'x')));
  ASSERT_TRUE(store.SaveValue(kRoot, "A", "longest", std::string(1024, 'x')));
  ASSERT_TRUE(store.SaveValue(kRoot, "A", "huge", std::string(1 << 20, '7')));
  ASSERT_TRUE(store.SaveValue(kRoot, "A", "zero", std::string("ab\0cd", 5)));
  EXPECT_EQ(store.LoadValue(kRoot, "A", "long"), std::nullopt);
  EXPECT_EQ(store.LoadValue(kRoot, "A", "longest"), std::string(1024, 'x'));
  EXPECT_EQ(store.LoadValue(kRoot, "A", "huge"), std::nullopt);
  EXPECT_EQ(store.LoadValue(kRoot, "A", "zero"), "ab");
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
          const auto text = SettingsText::Parse(Content(), path);
          if (text.Find(kGroup, "first") != text.Find(kGroup, "last")) throw TypeMismatch();
        }
      });
      ::_exit(error ? 1 : 0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  SettingsFile store(path);
  for (int program = 0; program < kPrograms; ++program) {
    for (int i = 0; i < kRounds; ++i) {
      EXPECT_EQ(store.LoadValue(kRoot, "Shared", std::to_string(program) + "-" + std::to_string(i)), "kept");
    }
  }
}

TEST_F(SettingsFileTest, LinkedFileIsReplacedWhereItLies) {
  Write("");
  const std::string link = folder + "/link.conf";
  std::filesystem::create_symlink(path, link);
  ASSERT_TRUE(SettingsFile(link).SaveValue(kRoot, "A", "x", "1"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(SettingsFile(path).LoadValue(kRoot, "A", "x"), "1");
}

TEST_F(SettingsFileTest, PlaceThatCannotBeWrittenSaysSo) {
  std::ofstream(folder + "/deep") << "a file where the folder should be";
  const auto error = Attempt([&] { SettingsFile(path).SaveValue(kRoot, "A", "x", "1"); });
  ASSERT_TRUE(error);
  EXPECT_THAT(error->Description(), HasSubstr(path));
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

TEST_F(SettingsFileTest, DeletingTakesOnlyTheNamedValues) {
  SettingsFile store(path);
  store.SaveValue(kRoot, "A", "ours", "1");
  store.SaveValue(kRoot, "A", "theirs", "2");
  EXPECT_TRUE(store.DeleteValues(kRoot, "A", {"ours", "absent"}));
  EXPECT_FALSE(store.DeleteValues(kRoot, "A", {"ours"}));
  EXPECT_EQ(store.LoadValue(kRoot, "A", "theirs"), "2");
}

}  // namespace
}  // namespace tesk::test
