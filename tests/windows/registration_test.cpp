// Registering, unregistering, and doing without.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "tests/windows/Host.h"
#include "tests/windows/RegistrySnapshot.h"

namespace tesk::test {
namespace {

const std::wstring kClassNames[] = {
    L"clsTeskReader",        L"clsTeskReaderWindows", L"clsTeskReaderWindow",  L"clsTeskReaderBarcodes",
    L"clsTeskReaderBarcode", L"clsTeskReaderPrinter", L"clsTeskReaderProfile", L"clsTeskReaderProfiles"};

class Registration : public testing::Test {
 protected:
  void TearDown() override { EXPECT_TRUE(RegisterServer(false)); }
};

bool IsRegistered(HKEY root, const std::wstring& name) {
  HKEY key = nullptr;
  const std::wstring path = L"Software\\Classes\\TeskReader99." + name;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

bool RegisterForUser(const wchar_t* undo) {
  return RunProgram(std::wstring(L"regsvr32 /s /n /i:user ") + undo + L"\"" + ServerPath() + L"\"").status ==
         0;
}

TEST_F(Registration, OfTheUserAndOfTheMachineAreTakenBackEachByItselfAndLeaveNothing) {
  ASSERT_TRUE(RegisterForUser(L""));
  EXPECT_TRUE(IsRegistered(HKEY_CURRENT_USER, L"clsTeskReader"));
  ASSERT_TRUE(RegisterForUser(L"/u "));
  EXPECT_FALSE(IsRegistered(HKEY_CURRENT_USER, L"clsTeskReader"));
  for (const std::wstring& name : kClassNames) {
    EXPECT_TRUE(IsRegistered(HKEY_LOCAL_MACHINE, name)) << platform::WideToUtf8(name);
  }
  EXPECT_TRUE(NewReader());
  ASSERT_TRUE(RegisterServer(true));
  EXPECT_EQ(std::vector<std::string>(), LeftInRegistry());
  EXPECT_TRUE(RegisterServer(true)) << "taking back what is not there is no error";
  ASSERT_TRUE(RegisterForUser(L""));
  EXPECT_FALSE(IsRegistered(HKEY_LOCAL_MACHINE, L"clsTeskReader"));
  EXPECT_LT(8 * 8U, LeftInRegistry().size());
  ASSERT_TRUE(RegisterServer(true));
  EXPECT_EQ(std::vector<std::string>(), LeftInRegistry());
}

TEST_F(Registration, MakesEveryClassCreatableByItsName) {
  for (const std::wstring& name : kClassNames) {
    CLSID id = {};
    EXPECT_EQ(S_OK, CLSIDFromProgID((L"TeskReader99." + name).c_str(), &id)) << platform::WideToUtf8(name);
    EXPECT_TRUE(Create<IDispatch>(id)) << platform::WideToUtf8(name);
  }
}

TEST_F(Registration, IsNotNeededWhereAManifestNamesTheServer) {
  ASSERT_TRUE(RegisterServer(true));
  for (const std::wstring& name : kClassNames) {
    const Ended ended =
        RunProgram(L"\"" + ProgramFolder() + L"side_by_side\\manifest_client.exe\" TeskReader99." + name);
    EXPECT_EQ(0U, ended.status) << platform::WideToUtf8(name) << ": " << ended.output;
  }
  const Ended without =
      RunProgram(L"\"" + ProgramFolder() + L"manifest_client.exe\" TeskReader99.clsTeskReader");
  EXPECT_NE(0U, without.status) << "the test proves nothing while the server is found without the manifest";
}

}  // namespace
}  // namespace tesk::test
