// teskread's other commands, and its answers to command lines that are wrong.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/process/Process.h"

namespace tesk::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

TEST(ProcessCommandLine, WhatIsWrongIsNamedWithStatus2AndNothingOnStandardOutput) {
  const Texts scan15 = {"scan", "--reader", "15", "--port", "sim"};
  const Texts simulate15 = {"simulate", "--reader", "15"};
  const struct {
    Texts arguments;
    const char* names;
  } lines[] = {
      {{}, "a command is required: readers, scan, simulate, demo, ports, locate, firmware, settings, setup "},
      {{"scna"}, "\"scna\" is no command"},
      {{"--frobnicate"}, "--frobnicate"},
      {{"scan"}, "--reader: is required"},
      {{"scan", "--reader"}, "--reader: takes one value"},
      {{"scan", "--reader", "15", "--sied1", "50x48"}, "did you mean --side1"},
      {{"scan", "--reader", "scanmark", "--port", "sim"}, "did you mean Scantron Scanmark 2000"},
      {{"scan", "--reader", "15", "--port=", "--side1", "50x48"}, "--port: takes a value"},
      {Joined(scan15, {"extra"}), "extra: is not understood"},
      {scan15, "--side1: is required"},
      {Joined(scan15, {"--side1", "20x12"}), "pages of 48 columns; write 20x48"},
      {Joined(scan15, {"--side1", "50x48", "--set", "Duplx=True"}), "did you mean Duplex"},
      {Joined(scan15, {"--side1", "50x48", "--max-sheets", ""}), "--max-sheets: takes a value, not an empty"},
      {{"settings", "frob"}, "list, show, save or delete"},
      {{"settings", "save", "--key", ""}, "teskread settings save: --key: takes a value"},
      {{"locate", "--reader", "20", "--port", "sim"}, "sim cannot be searched"},
      {{"locate", "--reader", "20", "--start", "5", "--port", "3"}, "--start: goes with"},
      {{"help", "scan", "frob"}, "\"frob\" is no topic: scan has none of its own"},
      {{"settings", "save", "--key", "A\tB", "--reader", "13"}, "no control characters"},
      {Joined(simulate15, {"--fault", "fire@3"}), "jam@SHEET"},
      {Joined(simulate15, {"--count", "-1"}), "--count"},
      {Joined(simulate15, {"--side1", "50x48", "--side2", "40x48"}), "write --side2 50x48"},
      {Joined(simulate15, {"--side1", "50x48,40x48"}), "--side1: generated sheets are of one size"},
      {Joined(simulate15, {"--sheets", "x", "--count", "3"}), "--sheets"},
      {{"simulate", "--replay", "x", "--reader", "15"}, "--replay"},
      {{"readers", "--group", "Kodak"}, "--group"},
      {{"demo", "--sheets", "0"}, "--sheets"},
  };
  for (const auto& [arguments, names] : lines) {
    const Ran ran = RunTeskread(arguments);
    EXPECT_EQ(ran.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.error, AllOf(StartsWith("teskread"), HasSubstr(names), HasSubstr("--help\" explains")));
  }
}

TEST(ProcessCommandLine, HelpGoesToStandardOutput) {
  const std::pair<Texts, const char*> topics[] = {
      {{"--help"}, "Usage: teskread"},
      {{"help", "settings", "save"}, "Usage: teskread"},
      {{"demo", "--help"}, "Usage: teskread"},
      {{"help", "settings"}, "SleepTime                pause between two looks at the line, in milliseconds"},
      {{"simulate", "--reader", "Scantron 8000", "--help"}, "Faults of the Scantron 8000"},
      {{"--version"}, "teskread " TESKREAD_VERSION "\n"}};
  for (const auto& [arguments, says] : topics) {
    const Ran ran = RunTeskread(arguments);
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.error, "");
    EXPECT_THAT(ran.output, AllOf(HasSubstr(says), Not(HasSubstr("enumerator"))));
  }
}

TEST(ProcessCommandLine, WhatCannotBeDoneHereIsRefusedInPlainWordsBeforeAnythingElse) {
  const TemporaryDirectory directory;
  WriteFile(directory / "sheets", "{\"side1\":{\"marks\":[[0]]}}\n{\"side1\":{\"marks\":[[99]]}}\n");
  WriteFile(directory / "trace", "teskread-trace 1\nversion 1\nreader 99 x\n");
  const std::pair<Texts, const char*> lines[] = {
      {{"scan", "--reader", "1", "--port", "1"}, "has no driver in this version"},
      {{"scan", "--reader", "33", "--port", "17", "--window", "x"}, "needs Windows"},
      {{"firmware", "--reader", "30", "--port", "17"}, "needs Windows"},
      {{"locate", "--reader", "36", "--start", "x"}, "needs Windows"},
      {{"simulate", "--reader", "33", "--count", "x"}, "no serial line that could be simulated"},
      {{"demo", "--reader", "33"}, "scan --reader 33 --port sim\" reads simulated sheets"},
      {{"firmware", "--reader", "46", "--port", "1"}, "no settings for the DATAWIN HEMERA C"},
      {{"settings", "save", "--key", "A", "--reader", "46"}, "no settings for the DATAWIN HEMERA C"},
      {{"locate", "--reader", "13"}, "\"teskread scan --reader 13 --port P\""},
      {{"simulate", "--reader", "15", "--sheets", directory / "sheets"}, "sheets, line 2: "},
      {{"simulate", "--replay", directory / "trace"}, "trace, line 3: "}};
  for (const auto& [arguments, says] : lines) {
    const Ran ran = RunTeskread(arguments);
    EXPECT_EQ(ran.status, 1) << testing::PrintToString(arguments);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.error, AllOf(HasSubstr(says), Not(HasSubstr("Error: "))));
  }
}

TEST(ProcessPorts, EveryPortSaysHowItIsReachedAndNoneIsOpened) {
  const Ran table = RunTeskread({"ports"});
  const Ran missing = RunTeskread({"scan", "--reader", "15", "--port", "ttyNONE7", "--side1", "50x48"});
  EXPECT_THAT(missing.error, HasSubstr("/dev/ttyNONE7: No such file or directory.\n  This computer has "));
  const auto ports = nlohmann::json::parse(RunTeskread({"ports", "--json"}).output);
  for (const auto& port : ports) {
    EXPECT_TRUE(fs::is_character_file(port["device"].get<std::string>()));
    EXPECT_THAT(table.output, HasSubstr(port["path"].get<std::string>() + "\n"));
    EXPECT_THAT(missing.error, HasSubstr(port["path"].get<std::string>()));
  }
  EXPECT_EQ(table.error.empty(), !ports.empty()) << "a computer without ports says so";
}

TEST(ProcessReaders, TheCatalogueListsEveryPropertyOfEveryProfileInItsOrder) {
  const auto readers = nlohmann::json::parse(RunTeskread({"readers", "--json"}).output);
  ASSERT_EQ(readers.size(), 46U);
  for (const auto& reader : readers) EXPECT_EQ(reader.size(), 73U + 3U);
  const auto chosen = [](const nlohmann::json& reader) {
    return nlohmann::json{reader["Enumerator"], reader["Driver"], reader["Support"], reader["StopBits"]}
        .dump();
  };
  EXPECT_EQ(chosen(readers[1]), R"(["teskReaderTypeAppersonAdvantage1200",null,"no driver",1.0])");
  EXPECT_EQ(chosen(readers[29]),
            R"(["teskReaderTypeScantronScanMark5500","basScantron","simulated only",2.0])");
  EXPECT_EQ(nlohmann::json::parse(RunTeskread({"readers", "--group", "ct", "--json"}).output).size(), 7U);
  EXPECT_THAT(RunTeskread({"readers", "--group", "teskProfileTypePDI"}).output,
              AllOf(HasSubstr("Peripheral Dynamics Inc. VMR138"), Not(HasSubstr("Sekonic"))));
  Process full(Teskread({"readers"}), "/dev/full");
  EXPECT_EQ(full.Wait(), 1);
  EXPECT_THAT(full.Error(), HasSubstr("standard output"));
}

TEST(ProcessSimulate, TheLinkLivesAsLongAsTheScannerAndTakesNothingThatIsSomebodyElses) {
  const TemporaryDirectory directory;
  const std::string link = directory / "scanner";
  WriteFile(directory / "file", "precious");
  fs::create_directory(directory / "folder");
  fs::create_symlink("/dev/null", directory / "foreign");
  fs::create_symlink("/dev/pts/../null", directory / "roundabout");
  for (const char* name : {"file", "folder", "foreign", "roundabout"}) {
    const Ran ran = RunTeskread({"simulate", "--reader", "15", "--link", directory / name});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.error, HasSubstr(name));
  }
  EXPECT_EQ(FileText(directory / "file"), "precious");
  EXPECT_EQ(fs::read_symlink(directory / "foreign"), "/dev/null");
  Scanner first({"--reader", "15", "--link", link});
  Scanner second({"--reader", "15", "--link", link});
  EXPECT_EQ(fs::read_symlink(link).string(), second.Device());
  second.Program().Signal(SIGINT);
  EXPECT_EQ(second.Program().Wait(), 0);
  EXPECT_THAT(second.Program().Error(), HasSubstr("led to " + first.Device() + " before, perhaps another"));
  EXPECT_FALSE(fs::is_symlink(fs::symlink_status(link)));
}

// Kilobytes that the program has in memory.
long MemoryOf(const Process& process) {
  const std::string status = FileText("/proc/" + std::to_string(process.Pid()) + "/status");
  return std::stol(status.substr(status.find("VmRSS:") + 6));
}

TEST(ProcessSimulate, AScannerThatServesForWeeksDoesNotGrow) {
  Scanner scanner({"--reader", "15"});
  const int line = ::open(scanner.Device().c_str(), O_RDWR | O_NOCTTY);
  ASSERT_GE(line, 0);
  // A status query and its answer of 12 bytes.
  const auto talk = [&](int exchanges) {
    std::string answer(12, '\0');
    for (int i = 0; i < exchanges; ++i) {
      ASSERT_EQ(::write(line, "\x1BQSTS\r", 6), 6);
      for (std::size_t got = 0; got < answer.size();) {
        const ssize_t count = ::read(line, answer.data() + got, answer.size() - got);
        ASSERT_GT(count, 0);
        got += static_cast<std::size_t>(count);
      }
    }
  };
  talk(1000);
  const long before = MemoryOf(scanner.Program());
  talk(10000);
  EXPECT_LT(MemoryOf(scanner.Program()) - before, 1000);
  ::close(line);
  EXPECT_EQ(scanner.End(), 0) << scanner.Program().Error();
}

TEST(ProcessSimulate, HostsComeAndGoAndOneThatBreaksTheRulesIsToldAtTheEnd) {
  Scanner scanner({"--reader", "13", "--count", "4"});
  const auto scan = [&](const char* reader, const char* sheets) {
    return RunTeskread(
        {"scan", "--reader", reader, "--port", scanner.Device(), "--side1", "50x48", "--max-sheets", sheets});
  };
  for (const char* sheets : {"1", "3"}) {
    const Ran ran = scan("13", sheets);
    EXPECT_EQ(ran.status, 0) << ran.error;
    EXPECT_EQ(std::to_string(std::count(ran.output.begin(), ran.output.end(), '\n')), sheets);
  }
  // The 8000 is told its read threshold, which the ScanMark 2500 does not know.
  EXPECT_EQ(scan("16", "1").status, 1);
  EXPECT_EQ(scanner.End(), 1);
  EXPECT_THAT(scanner.Program().Error(), HasSubstr("THR= 35"));
}

TEST(ProcessDemo, EverySheetIsShownAndCounted) {
  Process scanMark(Teskread({"demo", "--reader", "15", "--sheets", "2"}));
  Process opScan(Teskread({"demo", "--reader", "2", "--sheets", "2"}));
  for (Process* demo : {&scanMark, &opScan}) {
    EXPECT_EQ(demo->Wait(), 0);
    EXPECT_EQ(demo->Error(), "");
    EXPECT_THAT(demo->Output(), AllOf(HasSubstr("Sheet 2, "), EndsWith("\n2 sheets read, 0 lost\n")));
  }
}

// The script in a folder of its own, where set-up finds no Windows side and building does nothing.
TEST(ProcessDemo, TheScriptShowsTheNativePartWhereWineCannotBeHad) {
  const TemporaryDirectory directory;
  const std::string script = directory / "demo.sh";
  fs::copy_file(TESKREAD_TEST_DATA "/../../demo.sh", script);
  fs::create_directories(directory / "build/linux");
  fs::create_symlink(Teskread({}).front(), directory / "build/linux/teskread");
  WriteFile(directory / "setup.sh", "#!/bin/sh\ntest \"$1\" = --quick\n");
  WriteFile(directory / "cmake", "#!/bin/sh\n");
  for (const char* name : {"setup.sh", "cmake"}) fs::permissions(directory / name, fs::perms::owner_all);
  const struct {
    Texts options;
    int status;
    const char* ends;
  } cases[] = {{{}, 1, "\n3 passed, 1 failed\n"}, {{"--fast"}, 2, ""}};
  for (const auto& [options, status, ends] : cases) {
    Texts command{"/usr/bin/env", "PATH=" + (directory / ":") + std::getenv("PATH"), "bash", script};
    command.insert(command.end(), options.begin(), options.end());
    Process demo(command);
    EXPECT_EQ(demo.Wait(), status) << testing::PrintToString(options) << demo.Error();
    EXPECT_THAT(demo.Output(), EndsWith(ends));
  }
}

}  // namespace
}  // namespace tesk::test
