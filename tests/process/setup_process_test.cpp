// `teskread setup`, driven by keys in a terminal.
#include <stdlib.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/process/Process.h"
#include "tests/process/TerminalProcess.h"

namespace tesk::test {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using T = TerminalProcess;

class ProcessSetup : public testing::Test {
 protected:
  ProcessSetup() {
    setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
    Process save(Teskread({"settings", "save", "--key", "School\\Lab", "--reader", "15", "--set", "Port=3",
                           "--set", "Resolution=300"}));
    EXPECT_EQ(save.Wait(), 0) << save.Error();
  }
  ~ProcessSetup() override { unsetenv("XDG_CONFIG_HOME"); }

  static std::vector<std::string> SetupLine() { return Teskread({"setup", "--key", "School\\Lab"}); }
  static std::string Saved() {
    Process show(Teskread({"settings", "show", "--key", "School\\Lab"}));
    EXPECT_EQ(show.Wait(), 0);
    return show.Output();
  }

 private:
  TemporaryDirectory folder_;
};

TEST_F(ProcessSetup, WhatIsChangedByKeysIsSaved) {
  TerminalProcess setup(SetupLine());
  setup.WaitFor("Scanner Settings");
  setup.WaitFor("Scantron Scanmark 5500");
  setup.Press({T::kTab, T::kRight, T::kTab, T::kEnter, T::kEnd, T::kEnter});
  setup.Press({T::kF10});
  EXPECT_EQ(setup.Wait(), 0) << setup.Output();
  EXPECT_THAT(Saved(), AllOf(ContainsRegex("Port +4\n"), ContainsRegex("ScannerBaud +256000\n"),
                             ContainsRegex("Resolution +300\n")));
}

TEST_F(ProcessSetup, AnotherReaderIsChosenFromTheListAndTheButtonConfirms) {
  TerminalProcess setup(SetupLine());
  setup.WaitFor("Scanner type");
  setup.Press({T::kEnter, T::kEnd, T::kEnter});
  setup.WaitFor("Resolution");
  setup.Press({T::kBackTab, T::kBackTab, T::kEnter});
  EXPECT_EQ(setup.Wait(), 0) << setup.Output();
  EXPECT_THAT(Saved(), ContainsRegex("ScannerType +45\n"));
}

TEST_F(ProcessSetup, ANumberOutOfBoundsBecomesTheBound) {
  TerminalProcess setup(SetupLine());
  setup.WaitFor("Scanner type");
  // From the buttons backwards: Cancel, OK, Defaults, the polling interval, the time-out.
  setup.Press({T::kBackTab, T::kBackTab, T::kBackTab, T::kBackTab, T::kBackTab});
  setup.WaitFor("Response time-out");
  setup.Press({T::kBackspace, T::kBackspace, T::kBackspace, "9", "9", "x", "9", T::kF10});
  EXPECT_EQ(setup.Wait(), 0) << setup.Output();
  EXPECT_THAT(Saved(), ContainsRegex("Time[Oo]ut +600\n"));
}

TEST_F(ProcessSetup, TheEscapeKeyAndAnInterruptChangeNothing) {
  const std::string before = Saved();
  const struct {
    const char* key;
    int status;
  } exits[] = {{T::kEscape, 0}, {T::kInterrupt, 130}};
  for (const auto& [key, status] : exits) {
    TerminalProcess setup(SetupLine());
    setup.WaitFor("Scanner type");
    setup.Press({T::kTab, T::kRight, key});
    EXPECT_EQ(setup.Wait(), status) << setup.Output();
    EXPECT_EQ(Saved(), before);
  }
}

TEST_F(ProcessSetup, ATerminalThatIsTooSmallSaysSoUntilItIsLarger) {
  TerminalProcess setup(SetupLine(), "xterm", 40, 10);
  setup.WaitFor("This terminal is too small");
  setup.Resize(100, 30);
  setup.WaitFor("Scanner type");
  setup.Resize(80, 6);
  setup.WaitFor("too small");
  setup.Press({T::kTab, T::kRight, T::kEscape});
  EXPECT_EQ(setup.Wait(), 0);
  EXPECT_THAT(Saved(), ContainsRegex("Port +3\n"));
}

TEST_F(ProcessSetup, WithoutATerminalTheCommandLineIsWrong) {
  Process piped(SetupLine());
  EXPECT_EQ(piped.Wait(), 2);
  EXPECT_THAT(piped.Error(), HasSubstr("needs a terminal"));
  TerminalProcess unknown(SetupLine(), "no-such-terminal");
  EXPECT_EQ(unknown.Wait(), 2);
  EXPECT_THAT(unknown.Output(), HasSubstr("TERM"));
  TerminalProcess unsaved(Teskread({"setup", "--key", "Nowhere"}));
  EXPECT_EQ(unsaved.Wait(), 2);
  EXPECT_THAT(unsaved.Output(), HasSubstr("--reader: is required"));
}

}  // namespace
}  // namespace tesk::test
