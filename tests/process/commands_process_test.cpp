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
using testing::StartsWith;
using Texts = std::vector<std::string>;

struct WrongLine {
  Texts arguments;
  const char* names;
};

TEST(ProcessCommandLine, WhatIsWrongIsNamedWithStatus2AndNothingOnStandardOutput) {
  const WrongLine lines[] = {
      {{},
       "a command is required: readers, scan, simulate, demo, ports, locate, firmware, settings, setup "
       "or help"},
      {{"scna"}, "\"scna\" is no command"},
      {{"--frobnicate"}, "--frobnicate"},
      {{"scan"}, "--reader: is required"},
      {{"scan", "--reader"}, "--reader: takes one value"},
      {{"scan", "--reader", "15", "--sied1", "50x48"}, "did you mean --side1"},
      {{"scan", "--reader", "15", "--port", "sim", "extra"}, "extra: is not understood"},
      {{"scan", "--reader", "scanmark", "--port", "sim"}, "did you mean Scantron Scanmark 2000"},
      {{"scan", "--reader", "15", "--port", "17", "--side1", "50x48"}, "--port"},
      {{"scan", "--reader", "15", "--port", "sim"}, "--side1: is required"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "50"}, "--side1"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "50x48", "--set", "Duplx=True"},
       "did you mean Duplex"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "50x48", "--set", "Duplex=maybe"},
       "True or False"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "50x48", "--window", "1,2"}, "--window"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "50x48", "--max-sheets", "x"}, "--max-sheets"},
      {{"scan", "--reader", "0", "--port", "sim"}, "no scanner"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "20x12"}, "pages of 48 columns; write 20x48"},
      {{"scan", "--reader", "15", "--port", "sim", "--side1", "50x48", "--max-sheets", ""},
       "--max-sheets: takes a value, not an empty text"},
      {{"scan", "--reader", "15", "--port", "", "--side1", "50x48"}, "--port: takes a value"},
      {{"scan", "--reader", "15", "--port=", "--side1", "50x48"}, "--port: takes"},
      {{"settings", "frob"}, "list, show, save or delete"},
      {{"settings", "save", "--key", ""}, "teskread settings save: --key: takes a value"},
      {{"locate", "--reader", "20", "--port", "sim"}, "sim cannot be searched"},
      {{"locate", "--reader", "20", "--start", "5", "--port", "3"}, "--start: goes with"},
      {{"help", "frob"}, "\"frob\" is no topic"},
      {{"help", "scan", "frob"}, "\"frob\" is no topic: scan has none of its own"},
      {{"settings", "save", "--key", "A\tB", "--reader", "13"}, "no control characters"},
      {{"simulate", "--reader", "15", "--fault", "fire@3"}, "jam@SHEET"},
      {{"simulate", "--reader", "15", "--fault", "cut@3"}, "two numbers, not 1; write cut@BYTE@SHEET"},
      {{"simulate", "--reader", "15", "--count", "-1"}, "--count"},
      {{"simulate", "--reader", "15", "--seed", "-1"}, "--seed"},
      {{"simulate", "--reader", "15", "--side1", "50x48", "--side2", "40x48"}, "write --side2 50x48"},
      {{"simulate", "--reader", "15", "--side1", "50x48,40x48"}, "--side1: generated sheets are of one size"},
      {{"simulate", "--reader", "15", "--sheets", "x", "--count", "3"}, "--sheets"},
      {{"simulate"}, "--reader: is required"},
      {{"simulate", "--replay", "x", "--reader", "15"}, "--replay"},
      {{"readers", "--group", "Kodak"}, "--group"},
      {{"demo", "--sheets", "0"}, "--sheets"},
  };
  for (const WrongLine& line : lines) {
    Process process(Teskread(line.arguments));
    EXPECT_EQ(process.Wait(), 2) << testing::PrintToString(line.arguments);
    EXPECT_EQ(process.Output(), "");
    EXPECT_THAT(process.Error(),
                AllOf(StartsWith("teskread"), HasSubstr(line.names), HasSubstr("--help\" explains")));
  }
}

TEST(ProcessCommandLine, HelpAndVersionGoToStandardOutput) {
  for (const Texts& arguments : {Texts{"--help"},
                                 {"scan", "--help"},
                                 {"simulate", "--help"},
                                 {"readers", "--help"},
                                 {"help"},
                                 {"help", "scan"},
                                 {"help", "settings", "save"},
                                 {"demo", "--help"}}) {
    Process help(Teskread(arguments));
    EXPECT_EQ(help.Wait(), 0);
    EXPECT_THAT(help.Output(), HasSubstr("Usage: teskread"));
    EXPECT_EQ(help.Error(), "");
    EXPECT_THAT(help.Output(), testing::Not(HasSubstr("enumerator")));
  }
  Process settings(Teskread({"help", "settings"}));
  EXPECT_EQ(settings.Wait(), 0);
  EXPECT_THAT(settings.Output(),
              AllOf(HasSubstr("SleepTime                pause between two looks at the line, in "
                              "milliseconds"),
                    HasSubstr("0 none, 1 XON/XOFF"), HasSubstr("1 to 600 seconds"),
                    HasSubstr("teskread settings --help")));
  Process faults(Teskread({"simulate", "--reader", "Scantron 8000", "--help"}));
  EXPECT_EQ(faults.Wait(), 0);
  EXPECT_THAT(faults.Output(), AllOf(HasSubstr("Faults of the Scantron 8000"), HasSubstr("cut@BYTE@SHEET")));
  Process version(Teskread({"--version"}));
  EXPECT_EQ(version.Wait(), 0);
  EXPECT_EQ(version.Output(), "teskread " TESKREAD_VERSION "\n");
}

TEST(ProcessCommandLine, AModelThatCannotBeUsedHereIsRefusedInPlainWordsBeforeAnythingElse) {
  struct Case {
    Texts arguments;
    const char* says;
  };
  for (const auto& [arguments, says] : {
           Case{{"scan", "--reader", "1", "--port", "1"}, "has no driver in this version"},
           {{"scan", "--reader", "46", "--port", "1"}, "has no driver in this version"},
           {{"scan", "--reader", "33"}, "the Sekonic SR3500 (USB) needs Windows"},
           {{"scan", "--reader", "33", "--port", "17", "--window", "x"}, "needs Windows"},
           {{"firmware", "--reader", "30", "--port", "17"}, "needs Windows"},
           {{"locate", "--reader", "36", "--start", "x"}, "needs Windows"},
           {{"simulate", "--reader", "33", "--count", "x"}, "no serial line that could be simulated"},
           {{"demo", "--reader", "33"}, "scan --reader 33 --port sim\" reads simulated sheets"},
           {{"simulate", "--reader", "1"}, "no simulated scanner in this version"},
           {{"firmware", "--reader", "46", "--port", "1"}, "no settings for the DATAWIN HEMERA C"},
           {{"settings", "save", "--key", "A", "--reader", "46"}, "no settings for the DATAWIN HEMERA C"},
           {{"locate", "--reader", "1"}, "has no driver in this version"},
           {{"locate", "--reader", "13"}, "\"teskread scan --reader 13 --port P\""},
       }) {
    Process process(Teskread(arguments));
    EXPECT_EQ(process.Wait(), 1) << testing::PrintToString(arguments);
    EXPECT_THAT(process.Error(), AllOf(HasSubstr(says), testing::Not(HasSubstr("Error: "))));
  }
}

TEST(ProcessPorts, EveryPortSaysHowItIsReachedAndNoneIsOpened) {
  Process process(Teskread({"ports", "--json"}));
  EXPECT_EQ(process.Wait(), 0);
  const auto ports = nlohmann::json::parse(process.Output());
  Process table(Teskread({"ports"}));
  EXPECT_EQ(table.Wait(), 0);
  Process missing(Teskread({"scan", "--reader", "15", "--port", "ttyNONE7", "--side1", "50x48"}));
  EXPECT_EQ(missing.Wait(), 1);
  EXPECT_THAT(missing.Error(), HasSubstr("/dev/ttyNONE7: No such file or directory.\n  This computer has "));
  for (const auto& port : ports) {
    EXPECT_TRUE(std::filesystem::is_character_file(port["device"].get<std::string>()));
    EXPECT_THAT(table.Output(), HasSubstr(port["path"].get<std::string>() + "\n"));
    EXPECT_THAT(missing.Error(), HasSubstr(port["path"].get<std::string>()));
  }
  EXPECT_EQ(table.Error().empty(), !ports.empty()) << "a computer without ports says so";
}

TEST(ProcessReaders, TheCatalogueListsEveryPropertyOfEveryProfileInItsOrder) {
  Process process(Teskread({"readers", "--json"}));
  EXPECT_EQ(process.Wait(), 0);
  const auto readers = nlohmann::json::parse(process.Output());
  ASSERT_EQ(readers.size(), 46U);
  for (const auto& reader : readers) EXPECT_EQ(reader.size(), 73U + 3U);
  EXPECT_EQ(readers[1]["ReaderName"], "Apperson Advantage 1200");
  EXPECT_EQ(readers[1]["Driver"], nullptr);
  EXPECT_EQ(readers[1]["Support"], "no driver");
  EXPECT_EQ(readers[29]["Enumerator"], "teskReaderTypeScantronScanMark5500");
  EXPECT_EQ(readers[29]["Driver"], "basScantron");
  EXPECT_EQ(readers[29]["Support"], "simulated only");
  EXPECT_EQ(readers[29]["Duplex"], true);
  EXPECT_EQ(readers[29]["StopBits"], 2);
  EXPECT_EQ(readers[45]["ReaderType"], 45);
}

TEST(ProcessReaders, AGroupIsListedWithoutTheOthers) {
  Process process(Teskread({"readers", "--group", "ct", "--json"}));
  EXPECT_EQ(process.Wait(), 0);
  EXPECT_EQ(nlohmann::json::parse(process.Output()).size(), 7U);
  Process table(Teskread({"readers", "--group", "teskProfileTypePDI"}));
  EXPECT_EQ(table.Wait(), 0);
  EXPECT_THAT(table.Output(),
              AllOf(HasSubstr("Peripheral Dynamics Inc. VMR138"), testing::Not(HasSubstr("Sekonic"))));
}

TEST(ProcessReaders, AClosedStandardOutputIsAFailure) {
  Process process(Teskread({"readers"}), "/dev/full");
  EXPECT_EQ(process.Wait(), 1);
  EXPECT_THAT(process.Error(), HasSubstr("standard output"));
}

TEST(ProcessSimulate, TheLinkLivesAsLongAsTheScanner) {
  const TemporaryDirectory directory;
  const std::string link = directory / "scanner";
  for (const int signal : {SIGINT, SIGTERM}) {
    Process process(Teskread({"simulate", "--reader", "15", "--link", link}));
    EXPECT_EQ("listening on " + std::filesystem::read_symlink(link).string(), process.ReadLine());
    process.Signal(signal);
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(std::filesystem::symlink_status(link)));
  }
}

TEST(ProcessSimulate, TheLinkTakesNothingThatIsSomebodyElses) {
  const TemporaryDirectory directory;
  WriteFile(directory / "file", "precious");
  std::filesystem::create_directory(directory / "folder");
  std::filesystem::create_symlink("/dev/null", directory / "foreign");
  std::filesystem::create_symlink("/dev/pts/../null", directory / "roundabout");
  for (const char* name : {"file", "folder", "foreign", "roundabout"}) {
    Process process(Teskread({"simulate", "--reader", "15", "--link", directory / name}));
    EXPECT_EQ(process.Wait(), 1);
    EXPECT_EQ(process.Output(), "");
    EXPECT_THAT(process.Error(), HasSubstr(name));
  }
  EXPECT_EQ(FileText(directory / "file"), "precious");
  EXPECT_EQ(std::filesystem::read_symlink(directory / "foreign"), "/dev/null");
  Process first(Teskread({"simulate", "--reader", "15", "--link", directory / "scanner"}));
  const std::string device = first.ReadLine().substr(std::string("listening on ").size());
  Process second(Teskread({"simulate", "--reader", "15", "--link", directory / "scanner"}));
  second.WaitForError("led to " + device + " before, perhaps another simulated scanner");
}

// Kilobytes that the program has in memory.
long MemoryOf(const Process& process) {
  const std::string status = FileText("/proc/" + std::to_string(process.Pid()) + "/status");
  return std::stol(status.substr(status.find("VmRSS:") + 6));
}

TEST(ProcessSimulate, AScannerThatServesForWeeksDoesNotGrow) {
  Process scanner(Teskread({"simulate", "--reader", "15"}));
  const std::string device = scanner.ReadLine().substr(std::string("listening on ").size());
  const int line = ::open(device.c_str(), O_RDWR | O_NOCTTY);
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
  talk(4000);
  const long before = MemoryOf(scanner);
  talk(20000);
  EXPECT_LT(MemoryOf(scanner) - before, 1000);
  ::close(line);
  scanner.Signal(SIGTERM);
  EXPECT_EQ(scanner.Wait(), 0) << scanner.Error();
}

TEST(ProcessSimulate, HostsComeAndGo) {
  Process scanner(Teskread({"simulate", "--reader", "15", "--count", "4"}));
  const std::string device = scanner.ReadLine().substr(std::string("listening on ").size());
  for (const char* sheets : {"1", "3"}) {
    Process scan(
        Teskread({"scan", "--reader", "15", "--port", device, "--side1", "50x48", "--max-sheets", sheets}));
    EXPECT_EQ(scan.Wait(), 0) << scan.Error();
    EXPECT_EQ(std::to_string(std::count(scan.Output().begin(), scan.Output().end(), '\n')), sheets);
  }
  scanner.Signal(SIGTERM);
  EXPECT_EQ(scanner.Wait(), 0) << scanner.Error();
}

TEST(ProcessSimulate, AHostThatBreaksTheRulesIsToldAtTheEnd) {
  Process scanner(Teskread({"simulate", "--reader", "13"}));
  const std::string device = scanner.ReadLine().substr(std::string("listening on ").size());
  // The 8000 is told its read threshold, which the ScanMark 2500 does not know.
  Process scan(Teskread({"scan", "--reader", "16", "--port", device, "--side1", "50x48"}));
  EXPECT_EQ(scan.Wait(), 1);
  scanner.Signal(SIGTERM);
  EXPECT_EQ(scanner.Wait(), 1);
  EXPECT_THAT(scanner.Error(), HasSubstr("THR= 35"));
}

TEST(ProcessSimulate, ASheetFileThatIsNoneIsRefusedWithItsLine) {
  const TemporaryDirectory directory;
  WriteFile(directory / "sheets", "{\"side1\":{\"marks\":[[0]]}}\n{\"side1\":{\"marks\":[[99]]}}\n");
  Process process(Teskread({"simulate", "--reader", "15", "--sheets", directory / "sheets"}));
  EXPECT_EQ(process.Wait(), 1);
  EXPECT_EQ(process.Output(), "");
  EXPECT_THAT(process.Error(), HasSubstr("sheets, line 2: "));
}

TEST(ProcessSimulate, ATraceThatIsNoneIsRefusedWithItsLine) {
  const TemporaryDirectory directory;
  WriteFile(directory / "trace", "teskread-trace 1\nversion 1\nreader 99 x\n");
  Process process(Teskread({"simulate", "--replay", directory / "trace"}));
  EXPECT_EQ(process.Wait(), 1);
  EXPECT_EQ(process.Output(), "");
  EXPECT_THAT(process.Error(), HasSubstr("trace, line 3: "));
}

TEST(ProcessDemo, EverySheetIsShownAndCounted) {
  for (const char* reader : {"15", "11", "16"}) {
    Process process(Teskread({"demo", "--reader", reader, "--sheets", "2"}));
    EXPECT_EQ(process.Wait(), 0) << process.Error();
    EXPECT_EQ(process.Error(), "");
    EXPECT_THAT(process.Output(), AllOf(HasSubstr("Sheet 2, "), EndsWith("\n2 sheets read, 0 lost\n")));
  }
}

// The script in a folder of its own, where set-up finds no Windows side and building does nothing.
TEST(ProcessDemo, TheScriptShowsTheNativePartWhereWineCannotBeHad) {
  namespace fs = std::filesystem;
  const TemporaryDirectory directory;
  const std::string script = directory / "demo.sh";
  fs::copy_file(TESKREAD_TEST_DATA "/../../demo.sh", script);
  fs::create_directories(directory / "build/linux");
  fs::create_symlink(Teskread({}).front(), directory / "build/linux/teskread");
  WriteFile(directory / "setup.sh", "#!/bin/sh\ntest \"$1\" = --quick\n");
  WriteFile(directory / "cmake", "#!/bin/sh\n");
  for (const char* name : {"setup.sh", "cmake"}) fs::permissions(directory / name, fs::perms::owner_all);
  struct Case {
    Texts options;
    int status;
    const char* ends;
  };
  for (const auto& [options, status, ends] :
       {Case{{}, 1, "\n3 passed, 1 failed\n"},
        {{"--quick"}, 0, "\n3 passed, 0 failed\n"},
        {{"--help"}, 0, "without the Windows side (cross compiler, Wine)\n"},
        {{"--fast"}, 2, ""}}) {
    Texts command{"/usr/bin/env", "PATH=" + (directory / ":") + std::getenv("PATH"), "bash", script};
    command.insert(command.end(), options.begin(), options.end());
    Process demo(command);
    EXPECT_EQ(demo.Wait(), status) << testing::PrintToString(options) << demo.Error();
    EXPECT_THAT(demo.Output(), EndsWith(ends));
  }
}

}  // namespace
}  // namespace tesk::test
