// Leaves both servers registered for the tests, and checks at the end that nothing of them is left.
#include <cwchar>

#include <gtest/gtest.h>

#include "tests/windows/RegistrySnapshot.h"
#include "tests/windows/both/DyingHost.h"
#include "tests/windows/both/Servers.h"

namespace {

using tesk::test::Kind;
using tesk::test::RegisterServer;

class BothServers : public testing::Environment {
 public:
  void SetUp() override {
    ASSERT_EQ(S_OK, CoInitialize(nullptr));
    ASSERT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(tesk::test::ServerPath(Kind::k32).c_str()))
        << "the 32-bit server is missing: build the preset windows first";
    tesk::test::EndSurrogates();  // of a run that was ended in the middle
    for (const Kind kind : {Kind::k32, Kind::k64}) ASSERT_TRUE(RegisterServer(kind, true));
    tesk::test::NoteCleanRegistry();
    for (const Kind kind : {Kind::k32, Kind::k64}) ASSERT_TRUE(RegisterServer(kind, false));
  }
  void TearDown() override {
    tesk::test::EndSurrogates();
    EXPECT_EQ(0, tesk::test::LivingObjects());
    CoFreeUnusedLibraries();
    for (const Kind kind : {Kind::k64, Kind::k32}) EXPECT_TRUE(RegisterServer(kind, true));
    EXPECT_EQ(std::vector<std::string>(), tesk::test::LeftInRegistry());
    CoUninitialize();
  }
};

}  // namespace

int main(int count, char** words) {
  if (count == 2 && words[1] == std::string(tesk::test::kDyingHost)) return tesk::test::RunDyingHost();
  testing::InitGoogleTest(&count, words);
  testing::AddGlobalTestEnvironment(new BothServers);
  return RUN_ALL_TESTS();
}
