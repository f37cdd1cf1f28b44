// Both servers in one registry, in every order.
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "tests/windows/RegistrySnapshot.h"
#include "tests/windows/both/Servers.h"

namespace tesk::test {
namespace {

using Kinds = std::set<Kind>;

class SideBySide : public testing::Test {
 protected:
  void SetUp() override {
    for (const Kind kind : {Kind::k32, Kind::k64}) ASSERT_TRUE(RegisterServer(kind, true));
    ASSERT_EQ(std::vector<std::string>(), LeftInRegistry());
  }
  void TearDown() override {
    serverContext = CLSCTX_INPROC_SERVER;
    EndSurrogates();
    for (const Kind kind : {Kind::k32, Kind::k64}) EXPECT_TRUE(RegisterServer(kind, false));
  }

  // "+32 -64": registers one, takes the other back, and calls `check` after each step with what is registered then.
  // Where that is nothing, nothing may be left.
  template <class Check>
  void Walk(const std::string& steps, bool user, Check&& check) {
    Kinds registered;
    std::istringstream words(steps);
    for (std::string step; words >> step;) {
      const Kind kind = step.substr(1) == "32" ? Kind::k32 : Kind::k64;
      const bool undo = step[0] == '-';
      ASSERT_TRUE(RegisterServer(kind, undo, user)) << steps << ", " << step;
      undo ? static_cast<void>(registered.erase(kind)) : static_cast<void>(registered.insert(kind));
      check(registered, step + " of " + steps);
      if (registered.empty()) {
        EXPECT_EQ(std::vector<std::string>(), LeftInRegistry()) << step << " of " << steps;
      }
    }
  }
};

// Each comes first and second, and goes first and last; doing it twice is no error.
constexpr const char* kEveryWay = "+32 +64 -32 -64 +64 +32 +32 -64 -32 -32";

bool AnswersFromAnotherApartment() {
  ComPtr<IStream> carried;
  const auto reader = NewReader();
  if (!reader ||
      FAILED(CoMarshalInterThreadInterfaceInStream(__uuidof(_clsTeskReader), reader.Get(), &carried)))
    return false;
  SHORT port = 0;
  RunInApartments({[&] {
    ComPtr<_clsTeskReader> proxy;
    if (SUCCEEDED(CoGetInterfaceAndReleaseStream(carried.Detach(), IID_PPV_ARGS(&proxy)))) {
      proxy->put_Port(7);
      proxy->get_Port(&port);
    }
  }});
  return port == 7;
}

// Which servers hosts can use, in their own process and out of it.
TEST_F(SideBySide, EachWorksForItsHostsWhateverHappensToTheOther) {
  Walk(kEveryWay, false, [](const Kinds& registered, const std::string& step) {
    serverContext = CLSCTX_INPROC_SERVER;
    EXPECT_EQ(registered.contains(Kind::k64), AnswersFromAnotherApartment()) << step;
    const Ended script = RunScript(L"objects.vbs", "", SystemFolder(Kind::k32));
    const bool fine = script.output.find(" checks, 0 faults") != std::string::npos;
    EXPECT_EQ(registered.contains(Kind::k32), fine) << step << ": " << script.output;
    EXPECT_EQ(0, Surrogates()) << step << ": each in its host's process";
    serverContext = kOwnProcess;
    EXPECT_EQ(registered.contains(Kind::k32), AnswersFromAnotherApartment()) << step;
    EndSurrogates();
  });
}

// What the two share of a user's entries. The classes are kept apart by Windows, not by every system.
TEST_F(SideBySide, ForAUserTheSharedEntriesStayUntilTheLastGoes) {
  const auto isThere = [](const std::wstring& path) {
    HKEY key = nullptr;
    const std::wstring whole = L"Software\\Classes\\" + path;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, whole.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    return RegCloseKey(key) == ERROR_SUCCESS;
  };
  const std::wstring library = L"TypeLib\\{AD112764-5872-404B-B1B7-397D418A9D34}\\1.0\\0\\";
  Walk(kEveryWay, true, [&](const Kinds& registered, const std::string& step) {
    EXPECT_EQ(registered.contains(Kind::k32), isThere(library + L"win32")) << step;
    EXPECT_EQ(registered.contains(Kind::k64), isThere(library + L"win64")) << step;
    EXPECT_EQ(registered.contains(Kind::k32), isThere(L"AppID\\{3F827E45-A85F-4946-ACF8-EAEB39C21D7F}"))
        << step;
    for (const wchar_t* shared : {L"TeskReader99.clsTeskReader\\CLSID",
                                  L"Interface\\{97874DD0-5E4B-40F0-B34F-9C95DF31AC92}\\ProxyStubClsid32"}) {
      EXPECT_EQ(!registered.empty(), isThere(shared)) << step;
    }
  });
}

TEST_F(SideBySide, AHostGetsAnotherProcessOnlyWhereItAsksForOneOrHasNoServerOfItsOwn) {
  enum Place { kNowhere, kHere, kThere };
  struct Asked {
    DWORD context;
    Place place;
  };
  const struct {
    const char* steps;
    std::vector<Asked> asked;
  } cases[] = {{"+32",
                {{CLSCTX_INPROC_SERVER, kNowhere},
                 {CLSCTX_SERVER, kThere},
                 {CLSCTX_LOCAL_SERVER, kThere},
                 {kOwnProcess, kThere}}},
               {"+64", {{CLSCTX_SERVER, kHere}, {CLSCTX_LOCAL_SERVER, kNowhere}, {kOwnProcess, kNowhere}}},
               {"+32", {{CLSCTX_INPROC_SERVER, kHere}, {CLSCTX_SERVER, kHere}, {kOwnProcess, kThere}}}};
  for (const auto& [steps, asked] : cases) {
    if (steps == std::string("+64")) {
      ASSERT_TRUE(RegisterServer(Kind::k32, true));
    }
    Walk(steps, false, [](const Kinds&, const std::string&) {});
    for (const auto& [context, place] : asked) {
      serverContext = context;
      const auto reader = NewReader();
      const Place found = !reader ? kNowhere : LivingObjects() > 0 ? kHere : kThere;
      EXPECT_EQ(place, found) << steps << ", context " << context;
      EXPECT_EQ(place == kThere ? 1 : 0, Surrogates()) << steps << ", context " << context;
      EndSurrogates();
    }
  }
}

}  // namespace
}  // namespace tesk::test
