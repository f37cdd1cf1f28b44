// Registers the server for the tests, and checks at the end that nothing of it is left.
#include <gtest/gtest.h>

#include "tests/windows/Host.h"
#include "tests/windows/RegistrySnapshot.h"

namespace {

class Registered : public testing::Environment {
 public:
  void SetUp() override {
    ASSERT_EQ(S_OK, CoInitialize(nullptr));
    ASSERT_TRUE(tesk::test::RegisterServer(true));
    tesk::test::NoteCleanRegistry();
    ASSERT_TRUE(tesk::test::RegisterServer(false));
  }
  void TearDown() override {
    EXPECT_EQ(0, tesk::test::LivingObjects());
    EXPECT_EQ(0, tesk::test::HostDispatch::living);
    CoFreeUnusedLibraries();
    EXPECT_TRUE(tesk::test::RegisterServer(true));
    CoUninitialize();
  }
};

}  // namespace

int main(int count, char** words) {
  testing::InitGoogleTest(&count, words);
  testing::AddGlobalTestEnvironment(new Registered);
  return RUN_ALL_TESTS();
}
