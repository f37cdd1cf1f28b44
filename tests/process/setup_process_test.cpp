// `teskread setup`, driven by keys in a terminal.
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/process/Process.h"
#include "tests/process/TerminalProcess.h"

namespace tesk::test {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using T = TerminalProcess;

class ProcessSetup : public testing::Test {
 protected:
  ProcessSetup() {
    setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
    Save({"--reader", "15", "--set", "Port=3", "--set", "Resolution=300"});
  }
  ~ProcessSetup() override { unsetenv("XDG_CONFIG_HOME"); }

  static Texts SetupLine() { return Teskread({"setup", "--key", "School\\Lab"}); }
  static void Save(const Texts& settings) {
    const Ran save = RunTeskread(Joined({"settings", "save", "--key", "School\\Lab"}, settings));
    EXPECT_EQ(save.status, 0) << save.error;
  }
  static std::string Saved() { return RunTeskread({"settings", "show", "--key", "School\\Lab"}).output; }

  std::string Path(const std::string& name) const { return folder_ / name; }

 private:
  TemporaryDirectory folder_;
};

// A serial port where no scanner ever answers, as ports 3 and 4; the others are missing.
class SilentPorts {
 public:
  SilentPorts() : port_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(port_);
    unlockpt(port_);
    for (int n = 1; n <= 16; ++n) setenv(Name(n).c_str(), n == 3 || n == 4 ? ptsname(port_) : "/dev/none", 1);
  }
  SilentPorts(const SilentPorts&) = delete;
  SilentPorts& operator=(const SilentPorts&) = delete;
  ~SilentPorts() {
    for (int n = 1; n <= 16; ++n) unsetenv(Name(n).c_str());
    close(port_);
  }

 private:
  static std::string Name(int n) { return "TESKREADER_PORT_" + std::to_string(n); }

  int port_;
};

TEST_F(ProcessSetup, WhatIsDoneByKeysIsSavedAndTheTerminalGivenBack) {
  const Texts other = {T::kTab, T::kRight};  // the next port
  const struct {
    const char* before;
    Texts keys;
    int status;
    const char* saved;
    int signal = 0;
  } cases[] = {
      {"Port=3", {T::kTab, T::kRight, T::kTab, T::kEnter, T::kEnd, T::kEnter, T::kF10}, 0, "Port +4\n"},
      {"Port=3", {T::kTab, T::kTab, T::kEnter, T::kEnd, T::kEnter, T::kF10}, 0, "ScannerBaud +256000\n"},
      {"Port=3",
       {T::kEnter, T::kEnd, T::kEnter, T::kBackTab, T::kBackTab, T::kEnter},
       0,
       "ScannerType +45\n"},
      {"Port=3",  // a name is searched for as it is typed
       {T::kEnter, "scantron o", T::kBackspace, "ezd", T::kEnter, T::kF10},
       0,
       "ScannerType +23\n"},
      {"TimeOut=77",  // from the buttons backwards: Cancel, OK, Defaults, the polling interval, the time-out
       {T::kBackTab, T::kBackTab, T::kBackTab, T::kBackTab, T::kBackTab, T::kBackspace, T::kBackspace, "9",
        "9", "x", "9", T::kF10},
       0,
       "Time[Oo]ut +600\n"},
      {"Port=3", {T::kTab, T::kRight, T::kLeft, T::kEscape}, 0, "Port +3\n"},  // as it was: nothing is asked
      {"Port=3", Joined(other, {T::kEscape, "y"}), 0, "Port +3\n"},
      {"Port=3", Joined(other, {T::kEscape, T::kEnter, T::kEscape, T::kEscape, T::kF10}), 0, "Port +4\n"},
      {"Port=3", Joined(other, {T::kBackTab, T::kBackTab, T::kEnter}), 0, "Port +3\n"},  // the Cancel button
      {"Port=3", Joined(other, {T::kInterrupt}), 130, "Port +3\n"},
      {"Port=3", Joined(other, {T::kEscape}), 143, "Port +3\n", SIGTERM},
      {"Port=3", Joined(other, {T::kEnter}), 129, "Port +3\n", SIGHUP},
  };
  for (const auto& [before, keys, status, saved, signal] : cases) {
    Save({"--reader", "15", "--set", before});
    TerminalProcess setup(SetupLine());
    setup.WaitFor("Scanner type");
    setup.Press(keys);
    if (signal != 0) setup.Signal(signal);
    EXPECT_EQ(setup.Wait(), status) << setup.Output();
    EXPECT_THAT(setup.Output(), HasSubstr("\x1b[?1049l"));
    EXPECT_TRUE(setup.IsGivenBack());
    EXPECT_THAT(Saved(), ContainsRegex(saved)) << testing::PrintToString(keys);
  }
}

TEST_F(ProcessSetup, WhatIsNoKeyOfTheDialogChangesNothingOnAnyTerminal) {
  const std::string none =
      "\x1b[1;5C\x1bOd\x1b[c\x1bx\x1b\x1b[C\x1b[[A\x1b[3$\x1b[24;2~"  // Ctrl, Alt and Shift with keys, F1, F12
      "\x1b[M !!\x1b[<0;10;10M\x1b[<0;10;10m"                         // the mouse
      "\x1b[200~ +\r\t9 \x1b[201~\xC3\xA9\xE2\x82\xAC\x9B"            // pasted text, other languages
      "\x1b]11;rgb:0000/0000/0000\x07\x1bP1$r0m\x1b\\\x1b[?1;2c\x1b[5;5R";  // answers of the terminal
  for (const std::string terminal : {"xterm", "linux", "vt100", "screen", "rxvt"}) {
    Save({"--set", "Port=3"});
    TerminalProcess setup(SetupLine(), terminal);
    setup.WaitFor("Scanner type");
    setup.Press({T::kTab, none + "\x1b[C"});
    for (const std::string piece : {"\x1b", "[", "C"}) {
      setup.Send(piece);
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    setup.Press({terminal == "vt100" ? "\x1bOx" : T::kF10});
    EXPECT_EQ(setup.Wait(), 0) << terminal << setup.Output();
    EXPECT_THAT(Saved(), ContainsRegex("Port +5\n")) << terminal;
  }
}

TEST_F(ProcessSetup, ATerminalThatIsGoneEndsIt) {
  const SilentPorts silent;
  const Texts places[] = {
      {T::kTab, T::kRight},                      // the form
      {T::kEnter},                               // a list
      {T::kTab, T::kRight, T::kEscape},          // the question
      {T::kTab, T::kRight, T::kTab, T::kEnter},  // the search
  };
  Save({"--reader", "23", "--set", "Port=3"});
  for (const auto& keys : places) {
    // Also where the hang-up is no signal.
    TerminalProcess setup(Joined({"/bin/sh", "-c", "trap '' HUP; exec \"$@\"", "sh"}, SetupLine()));
    setup.WaitFor("Scanner type");
    setup.Press(keys);
    setup.Close();
    EXPECT_EQ(setup.Wait(), 129) << keys.size();
    EXPECT_THAT(Saved(), ContainsRegex("Port +3\n"));
  }
}

TEST_F(ProcessSetup, AChangeOfSizeDrawsWhatStandsThereAndHintsAreWhole) {
  const SilentPorts silent;
  Save({"--reader", "23", "--set", "Port=3"});
  TerminalProcess setup(SetupLine(), "xterm", 40, 10);
  setup.WaitFor("need 72 columns and 12");
  setup.Press({T::kTab, T::kRight, T::kF10});  // nobody sees what they do
  const struct {
    Texts keys;
    Texts shown;  // after a change of size, in this order
  } states[] = {
      {{}, {"Scanner type", "Enter: list   Left/Right: change   F10: OK   Esc: cancel"}},
      {{T::kEnter}, {"Scantron EZData", "Type a name   Up/Down: move   Enter: choose   Esc: back"}},
      {{T::kEscape, T::kTab, T::kRight, T::kTab}, {"Enter: press   Tab: next   F10: OK   Esc: cancel"}},
      {{T::kTab}, {"Type a number, or Left/Right: change   F10: OK   Esc: cancel"}},
      {{T::kEscape}, {"Leave without", "Left/Right: choose   Enter: press   Esc: No"}},
      {{"n", T::kBackTab, T::kEnter}, {"Scanner type", "Searching the ports ... Esc ends the search"}},
  };
  int lines = 12;
  for (const auto& [keys, shown] : states) {
    setup.Press(keys);
    setup.Resize(72, lines++);
    for (const std::string& text : shown) setup.WaitFor(text);
  }
  setup.WaitFor("Scanner Not Located");
  setup.Resize(30, 8);
  setup.WaitFor("The scanner was not");
  setup.Press({T::kDown, T::kDown, T::kDown, T::kDown, T::kDown});
  setup.WaitFor("computer.");
  setup.Resize(72, 12);
  setup.WaitFor("Enter: OK");
  setup.Press({T::kEnter, T::kF10});
  EXPECT_EQ(setup.Wait(), 0);
  EXPECT_THAT(Saved(), ContainsRegex("Port +4\n"));
}

TEST_F(ProcessSetup, NoTextOfOthersReachesTheTerminalAsAControlCharacter) {
  const std::string home = Path("c\xC2\x9Bm\x9B\x7F\x01");
  std::filesystem::create_directories(home + "/teskreader99");
  WriteFile(home + "/teskreader99/settings.conf", "[CurrentUser\\School\\Lab]\nnonsense\n");
  setenv("XDG_CONFIG_HOME", home.c_str(), 1);
  for (const std::string terminal : {"xterm", "x\xC2\x9BJ\x9B"}) {
    TerminalProcess setup(SetupLine(), terminal);
    EXPECT_NE(setup.Wait(), 0);
    EXPECT_THAT(setup.Output(),
                AllOf(HasSubstr("teskread setup: "), Not(ContainsRegex("[\x01-\x09\x0B\x0C\x0E-\x1F\x7F]")),
                      Not(HasSubstr("\x9B"))))
        << terminal;
  }
}

TEST_F(ProcessSetup, WhatTheDialogCannotShowOfTheSavedSettingsIsToldFirst) {
  const struct {
    const char* sound;
    const char* stored;
    const char* told;
    const char* afterwards;  // what OK saves
  } cases[] = {
      {"\"ScannerPort\" = \"3\"", "\"ScannerPort\" = \"99999\"", "Port: \"99999\"", "Port +1\n"},
      {"\"Duplex\" = \"True\"", "\"Duplex\" = \"yes\"", "Duplex: \"yes\"", "Duplex +True\n"},
      {"\"ScannerBaud\" = \"19200\"", "\"ScannerBaud\" = \"1e300\"", "BaudRate: \"1e300\"", "Baud +19200\n"},
      {"\"ScannerPort\"", "\"ScannerDevice\" = \"/dev/ttyACM0\"\n\"ScannerPort\"", "use /dev/ttyACM0,",
       "ScannerDevice +/dev/ttyACM0\n"},
  };
  const std::string file = Path("config/teskreader99/settings.conf");
  for (const auto& [sound, stored, told, afterwards] : cases) {
    Save({"--reader", "15", "--set", "Port=3", "--set", "TimeOut=77"});
    std::string text = FileText(file);
    ASSERT_NE(text.find(sound), std::string::npos) << text;
    WriteFile(file, text.replace(text.find(sound), std::string(sound).size(), stored));
    for (const bool confirmed : {false, true}) {
      TerminalProcess setup(SetupLine());
      setup.WaitFor(told);
      setup.WaitFor("Enter: OK");
      setup.Press({T::kEnter, confirmed ? T::kF10 : T::kEscape});
      EXPECT_EQ(setup.Wait(), 0) << setup.Output();
      EXPECT_THAT(setup.Output(), AllOf(HasSubstr("Scantron Scanmark 5500"), Not(HasSubstr("Error"))));
      EXPECT_TRUE(confirmed || FileText(file) == text) << told;
    }
    EXPECT_THAT(Saved(), AllOf(ContainsRegex(afterwards), ContainsRegex("TimeOut +77\n")));
  }
}

TEST_F(ProcessSetup, WithoutATerminalTheCommandLineIsWrong) {
  const Ran piped = RunTeskread({"setup", "--key", "School\\Lab"});
  EXPECT_EQ(piped.status, 2);
  EXPECT_THAT(piped.error, HasSubstr("needs a terminal"));
  TerminalProcess unknown(SetupLine(), "no-such-terminal");
  TerminalProcess unsaved(Teskread({"setup", "--key", "Nowhere"}));
  EXPECT_EQ(unknown.Wait(), 2);
  EXPECT_THAT(unknown.Output(), HasSubstr("TERM"));
  EXPECT_EQ(unsaved.Wait(), 2);
  EXPECT_THAT(unsaved.Output(), HasSubstr("--reader: is required"));
}

}  // namespace
}  // namespace tesk::test
