// teskread as people run it: the program against its own simulated scanner over real pseudo-terminals.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/scan/SheetRecord.h"
#include "simulator/Sheet.h"
#include "tests/process/Process.h"

namespace tesk::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using Texts = std::vector<std::string>;

Texts Joined(Texts first, const Texts& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// A simulated scanner that listens.
class Scanner {
 public:
  explicit Scanner(const Texts& arguments) : process_(Teskread(Joined({"simulate"}, arguments))) {
    const std::string line = process_.ReadLine();
    EXPECT_THAT(line, StartsWith("listening on /"));
    device_ = line.substr(std::string("listening on ").size());
  }
  const std::string& Device() const { return device_; }
  // Ends it; its status, 1 where the host broke the rules of the wire.
  int End() {
    process_.Signal(SIGTERM);
    const int status = process_.Wait();
    EXPECT_EQ(process_.Error(), "");
    return status;
  }
  Process& Program() { return process_; }

 private:
  Process process_;
  std::string device_;
};

Texts ScanArguments(const std::string& reader, const std::string& port, const Texts& more = {}) {
  return Teskread(Joined({"scan", "--reader", reader, "--port", port, "--side1", "50x48"}, more));
}

// For a shell, with a blank at the end.
std::string Words(const Texts& arguments) {
  std::string words;
  for (const auto& word : arguments) words += "'" + word + "' ";
  return words;
}

std::vector<json> Sheets(const std::string& text) {
  std::vector<json> sheets;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) sheets.push_back(json::parse(line));
  return sheets;
}

// What the operator was told before the closing block, and how that says the scan ended.
std::string Told(const Process& scan) { return scan.Error().substr(0, scan.Error().find("teskread scan: ")); }
std::string Ended(const Process& scan) {
  constexpr std::string_view kBecause = "ended because: ";
  const std::size_t at = scan.Error().rfind(kBecause);
  return at == std::string::npos ? "" : scan.Error().substr(at + kBecause.size());
}

json MarksJson(const SideArray& side) {
  json rows = json::array();
  for (std::int32_t row = 1; row <= side.Rows(); ++row) {
    json values = json::array();
    for (std::int32_t column = 1; column <= side.Columns(); ++column) values.push_back(side.At(row, column));
    rows.push_back(values);
  }
  return rows;
}

// The bytes of one direction of a trace.
std::string TracedBytes(const std::string& trace, char direction) {
  std::string bytes;
  std::istringstream lines(trace);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find(std::string(" ") + direction + " ");
    if (at == std::string::npos) continue;
    std::istringstream hex(line.substr(at + 3, 48));
    for (std::string byte; hex >> byte;) bytes += static_cast<char>(std::stoi(byte, nullptr, 16));
  }
  return bytes;
}

TEST(ProcessScan, DuplexPagesArriveMarkByMarkAndServeAsSheetsAgain) {
  const TemporaryDirectory directory;
  const auto paper = simulator::GenerateSheets(4, 77, {50, 48, true}, 15);
  std::string file;
  for (const auto& sheet : paper) {
    file += cli::NdjsonText({.sheet = 0,
                             .reader = 15,
                             .side1 = {-1, sheet.side1, {}, {}},
                             .side2 = cli::SideRecord{-1, sheet.side2, {}, {}},
                             .barcodes = {},
                             .disposed = {},
                             .warnings = {}});
  }
  for (int round = 1; round <= 2; ++round) {
    WriteFile(directory / "sheets.ndjson", file);
    Scanner scanner({"--reader", "15", "--sheets", directory / "sheets.ndjson"});
    Process scan(ScanArguments("15", scanner.Device(), {"--side2", "50x48"}));
    EXPECT_EQ(scan.Wait(), 0) << scan.Error();
    EXPECT_EQ(Told(scan), "");
    const auto sheets = Sheets(scan.Output());
    ASSERT_EQ(sheets.size(), paper.size());
    for (std::size_t i = 0; i < paper.size(); ++i) {
      EXPECT_EQ(sheets[i]["sheet"], i + 1);
      EXPECT_EQ(sheets[i]["side1"]["marks"], MarksJson(paper[i].side1));
      EXPECT_EQ(sheets[i]["side2"]["marks"], MarksJson(paper[i].side2));
      EXPECT_EQ(sheets[i]["barcodes"], json::array());
      EXPECT_EQ(sheets[i]["disposed"], "ejected");
    }
    EXPECT_EQ(scanner.End(), 0);
    file = scan.Output();
  }
}

TEST(ProcessScan, WindowsReadTheirPositionsAndNothingElse) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "13", "--count", "2", "--seed", "3"});
  Process scan(
      ScanArguments("13", scanner.Device(),
                    {"--side2", "50x48", "--window", "14,10,2,1,5,1,1,0", "--window", "20,3,-1,9,5,1,2,1"}));
  EXPECT_EQ(scan.Wait(), 0) << scan.Error();
  EXPECT_EQ(scanner.End(), 0);
  const auto paper = simulator::GenerateSheets(2, 3, {50, 48, true}, 15);
  const auto sheets = Sheets(scan.Output());
  ASSERT_EQ(sheets.size(), 2U);
  for (std::int32_t row = 1; row <= 50; ++row) {
    const bool inFront = row >= 14 && row <= 32 && row % 2 == 0;
    const bool inBack = row >= 18 && row <= 20;
    for (std::int32_t column = 1; column <= 48; ++column) {
      const auto& front = sheets[1]["side1"]["marks"][static_cast<std::size_t>(row) - 1];
      const auto& back = sheets[1]["side2"]["marks"][static_cast<std::size_t>(row) - 1];
      const auto at = static_cast<std::size_t>(column) - 1;
      EXPECT_EQ(front[at], inFront && column <= 5 ? paper[1].side1.At(row, column) : 0)
          << row << ' ' << column;
      EXPECT_EQ(back[at], inBack && column >= 9 && column <= 13 ? paper[1].side2.At(row, column) : 0)
          << row << ' ' << column;
    }
  }
}

TEST(ProcessScan, RejectedSheetsLeaveThroughTheRejectExit) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "2"});
  Process scan(
      ScanArguments("15", scanner.Device(), {"--dispose", "reject", "--trace", directory / "trace"}));
  EXPECT_EQ(scan.Wait(), 0) << scan.Error();
  EXPECT_EQ(scanner.End(), 0);
  EXPECT_EQ(Sheets(scan.Output()).at(1)["disposed"], "rejected");
  EXPECT_THAT(TracedBytes(FileText(directory / "trace"), '>'),
              AllOf(HasSubstr("READ 5 Y E\r"), HasSubstr("EJCT C\r")));
}

TEST(ProcessScan, TheImprintIsSentWithEverySheet) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "11", "--count", "2"});
  Process scan(ScanArguments("11", scanner.Device(),
                             {"--imprint", "Room 7", "--imprint-position", "4", "--max-sheets", "2",
                              "--trace", directory / "trace"}));
  EXPECT_EQ(scan.Wait(), 0) << scan.Error();
  EXPECT_EQ(scanner.End(), 0);
  const std::string sent = TracedBytes(FileText(directory / "trace"), '>');
  EXPECT_THAT(sent, AllOf(HasSubstr("PRN$ 1 Y\r"), HasSubstr("READ 5 Y E\r"),
                          HasSubstr("\x1b"
                                    "EJCT A     Room 7\r")));
}

TEST(ProcessScan, AReplayedTraceReadsTheSameSheetsAndCatchesAnotherScan) {
  const TemporaryDirectory directory;
  std::string sheets;
  {
    Scanner scanner({"--reader", "15", "--count", "2"});
    Process scan(ScanArguments("15", scanner.Device(), {"--trace", directory / "trace"}));
    EXPECT_EQ(scan.Wait(), 0) << scan.Error();
    EXPECT_EQ(scanner.End(), 0);
    sheets = scan.Output();
  }
  Scanner replay({"--replay", directory / "trace"});
  Process same(ScanArguments("15", replay.Device()));
  EXPECT_EQ(same.Wait(), 0) << same.Error();
  EXPECT_EQ(same.Output(), sheets);
  EXPECT_EQ(replay.End(), 0);

  Scanner strict({"--replay", directory / "trace"});
  Process other(ScanArguments("15", strict.Device(), {"--dispose", "reject", "--set", "TimeOut=1"}));
  EXPECT_EQ(other.Wait(), 1);
  strict.Program().Signal(SIGTERM);
  EXPECT_EQ(strict.Program().Wait(), 1);
  EXPECT_THAT(strict.Program().Error(),
              HasSubstr("byte 2 of 9: expected \"E\", got \"P\"; the record is \"<1B>EJCT A"));
}

struct FaultCase {
  const char* fault;
  const char* message;  // empty: the scan ends quietly
  std::size_t sheets;
  const char* reader = "15";
};

class ProcessFault : public testing::TestWithParam<FaultCase> {};

TEST_P(ProcessFault, ReachesTheOperatorInItsOwnWords) {
  const FaultCase& expected = GetParam();
  Scanner scanner({"--reader", expected.reader, "--count", "3", "--fault", expected.fault});
  Process scan(ScanArguments(expected.reader, scanner.Device(), {"--set", "TimeOut=1"}));
  const bool quiet = *expected.message == '\0';
  const bool empty = std::string_view(expected.fault).starts_with("empty");
  EXPECT_EQ(scan.Wait(), empty && expected.sheets > 0 ? 0 : 1);
  const testing::Matcher<std::string> words = StartsWith(expected.message);
  EXPECT_THAT(Told(scan), quiet ? testing::Matcher<std::string>(std::string()) : words);
  const std::string title(expected.message, std::string_view(expected.message).find(':') + quiet);
  EXPECT_THAT(Ended(scan), StartsWith(empty   ? "the hopper is empty"
                                      : quiet ? "the scanner reported a condition without a text"
                                              : title));
  EXPECT_EQ(Sheets(scan.Output()).size(), expected.sheets);
}

constexpr FaultCase kFaultCases[] = {
    {"jam@2", "Paper Jam: The Scantron scanner reports a paper jam. Please clear the jam and try again.\n",
     1},
    {"jam-reading@2", "Paper Jam: ", 1},
    {"double-feed@1", "Double Feed: The Scantron scanner reports a double feed. Please rescan the page.\n",
     0},
    {"timing@2", "Initialize Error: The Scantron scanner reported a timing line error. ", 1},
    {"command-error@2", "Command Error: Your Scantron scanner reported a command error. Error #50\n", 1},
    {"empty@2", "", 1},
    {"unknown-status@2", "", 1},
    {"silence@2",
     "Read Error: There was no response from the Scantron scanner. The scanner timed out waiting for scanned "
     "data.\n",
     1},
    {"silence-status@1",
     "Initialize Error: There was no response from the Scantron scanner. Could not initialize!\n", 0},
    {"silence-eject@1",
     "Eject Page Error: There was no response from the Scantron scanner. Could not eject the page!\n", 1},
    {"silence-reset@1",
     "No Response: There was no response from the Scantron scanner. Could not initialize!\n", 0},
    {"cut@100@2",
     "Read Error: There was no response from the Scantron scanner. The scanner timed out waiting to receive "
     "the "
     "scanned data.\n",
     1},
    {"refuse-threshold@1",
     "Initialize Error: An error occurred trying to download the form definition to the Scantron scanner "
     "when "
     "issuing the scanner threshold command.\n",
     0, "16"},
    {"refuse-form-start@1",
     "Initialize Error: An error occurred trying to download the form definition to the Scantron scanner "
     "when "
     "issuing the form start command.\n",
     0},
    {"refuse-region@1",
     "Initialize Error: An error occurred trying to download the form definition to the Scantron scanner.  "
     "Invalid "
     "sheet definition.\n  Sheet: 1\n  Side: 1\n",
     0},
    {"refuse-form-end@1",
     "Initialize Error: An error occurred trying to download the form definition to the Scantron scanner "
     "while "
     "issuing the end of form command.\n",
     0},
    {"refuse-printer@1", "Start Refused: the scanner refused to start\n", 0},
};

INSTANTIATE_TEST_SUITE_P(Kinds, ProcessFault, testing::ValuesIn(kFaultCases), [](const auto& tested) {
  std::string name = tested.param.fault;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
});

TEST(ProcessScan, CtrlCWhileASheetIsAwaitedClosesThePort) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "11", "--count", "1"});
  Process scan(ScanArguments("11", scanner.Device(), {"--output", directory / "sheets"}));
  WaitForFile(directory / "sheets", "}\n");
  std::this_thread::sleep_for(Seconds(0.3));
  scan.Signal(SIGINT);
  EXPECT_EQ(scan.Wait(Seconds(5)), 130);
  EXPECT_EQ(Told(scan), "");
  EXPECT_EQ(Sheets(FileText(directory / "sheets")).size(), 1U);
  Process another(ScanArguments("11", scanner.Device(), {"--max-sheets", "0"}));
  EXPECT_EQ(another.Wait(), 1);
  EXPECT_THAT(another.Error(), StartsWith("teskread scan: no sheet was read"));
  EXPECT_EQ(scanner.End(), 0);
}

TEST(ProcessScan, AnInterruptInMidSheetSendsTheSheetOnFirst) {
  for (const int signal : {SIGINT, SIGHUP, SIGTERM}) {
    const TemporaryDirectory directory;
    Scanner scanner({"--reader", "15", "--count", "9", "--paced"});
    Process scan(ScanArguments("15", scanner.Device(), {"--trace", directory / "trace"}));
    // A paced sheet takes about a second and a half.
    WaitForFile(directory / "trace", "|.READ 5 Y E.|");
    std::this_thread::sleep_for(Seconds(0.3));
    scan.Signal(signal);
    EXPECT_EQ(scan.Wait(Seconds(10)), 128 + signal);
    EXPECT_EQ(Told(scan), "");
    EXPECT_EQ(Sheets(scan.Output()).size(), 1U);
    const std::string sent = TracedBytes(FileText(directory / "trace"), '>');
    EXPECT_THAT(sent.substr(sent.rfind("READ")), HasSubstr("EJCT A \r"));
    EXPECT_THAT(FileText(directory / "trace"), HasSubstr(" close\n"));
    EXPECT_EQ(scanner.End(), 0);
  }
}

TEST(ProcessScan, WhatWasReadIsNeverDestroyedAndGoesOnWithItsNumbers) {
  const TemporaryDirectory directory;
  const std::string file = directory / "class";
  for (const char* format : {"ndjson", "csv"}) {
    const Texts arguments = {"--output", file, "--format", format, "--max-sheets", "2"};
    Process first(ScanArguments("15", "sim", arguments));
    EXPECT_EQ(first.Wait(), 0) << first.Error();
    const std::string before = FileText(file);
    Process again(ScanArguments("15", "sim", arguments));
    EXPECT_EQ(again.Wait(), 2);
    EXPECT_THAT(again.Error(),
                AllOf(HasSubstr("--output: " + file + " is there already"), HasSubstr("--append")));
    EXPECT_EQ(FileText(file), before);
    Process more(ScanArguments("15", "sim", Joined(arguments, {"--append"})));
    EXPECT_EQ(more.Wait(), 0) << more.Error();
    EXPECT_THAT(FileText(file), StartsWith(before));
    const std::string behind = FileText(file).substr(before.size());
    EXPECT_THAT(behind, StartsWith(*format == 'c' ? "3,1," : "{\"sheet\":3,"));
    EXPECT_THAT(behind, HasSubstr(*format == 'c' ? "\n4,1," : "\n{\"sheet\":4,"));
    for (const auto& unfit : {before.substr(0, before.size() - 3), before + "\n"}) {
      WriteFile(file, unfit);
      Process refused(ScanArguments("15", "sim", Joined(arguments, {"--append"})));
      EXPECT_EQ(refused.Wait(), 2);
      EXPECT_THAT(refused.Error(), testing::ContainsRegex("--append: .* (does not end with|ends with) a"));
      EXPECT_EQ(FileText(file), unfit);
    }
    std::filesystem::remove(file);
  }
}

TEST(ProcessScan, AScanThatReadNothingLeavesNoFile) {
  const TemporaryDirectory directory;
  const std::string file = directory / "class";
  Scanner empty({"--reader", "15", "--count", "0"});
  for (const Texts& more : {Texts{}, Texts{"--append"}, Texts{"--summary", "/nonexistent/end.json"}}) {
    for (const std::string& port : {std::string("/nonexistent/tty"), empty.Device()}) {
      Process scan(ScanArguments("15", port, Joined({"--output", file}, more)));
      EXPECT_EQ(scan.Wait(), 1) << scan.Error();
      EXPECT_FALSE(std::filesystem::exists(file)) << port;
    }
  }
}

TEST(ProcessScan, AnotherScanOnTheSamePortHarmsNoResults) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "9", "--paced"});
  const auto arguments =
      ScanArguments("15", scanner.Device(),
                    {"--output", directory / "class", "--trace", directory / "trace", "--max-sheets", "2"});
  Process first(arguments);
  WaitForFile(directory / "class", "\"sheet\":1,");
  Process second(arguments);
  EXPECT_EQ(second.Wait(), 2);
  Process third(ScanArguments("15", scanner.Device(), {"--trace", directory / "trace"}));
  EXPECT_EQ(third.Wait(), 1);
  EXPECT_THAT(third.Error(), HasSubstr("is being written by another program"));
  EXPECT_EQ(first.Wait(), 0) << first.Error();
  EXPECT_EQ(Sheets(FileText(directory / "class")).size(), 2U);
  EXPECT_THAT(FileText(directory / "trace"), AllOf(StartsWith("teskread-trace 1\n"), HasSubstr(" close\n")));
}

struct RefusedCase {
  Texts arguments;
  const char* reason;
  const char* reader = "15";
};

TEST(ProcessScan, WhatCannotGoWellIsRefusedBeforeAnythingMoves) {
  const TemporaryDirectory directory;
  WriteFile(directory / "letter", "Dear all\n");
  const std::string one = directory / "one";
  const RefusedCase cases[] = {
      {{"--append"}, "--append: goes with --output"},
      {{"--output", directory / "letter", "--append"}, "--append: "},
      {{"--output", one, "--trace", one}, "--trace: "},
      {{"--output", one, "--summary", directory / "./one"}, "is what --output names too"},
      {{"--trace", directory / "letter"}, "is something else"},
      {{"--summary", directory / "letter"}, "is something else"},
      {{"--dispose", "reject"}, "has no reject exit", "2"},
      {{"--dispose", "reject", "--set", "Rejecter=False"}, "the setting Rejecter is off"},
      {{"--dispose", "none"}, "holds each sheet until it is sent on"},
      {{"--imprint", "Room 7"}, "has no command that sends it on", "16"},
      {{"--set", "Rejecter=True"}, "has no command that sends it on", "28"},
  };
  for (const auto& [arguments, reason, reader] : cases) {
    Process scan(ScanArguments(reader, "sim", arguments));
    EXPECT_EQ(scan.Wait(), 2) << reason;
    EXPECT_THAT(scan.Error(), HasSubstr(reason));
    EXPECT_EQ(scan.Output(), "");
  }
  EXPECT_EQ(FileText(directory / "letter"), "Dear all\n");
  ::setenv("TESKREADER_PORT_3", (directory / "letter").c_str(), 1);
  for (const std::string& named : {directory / "letter", std::string("3")}) {
    Process port(ScanArguments("15", named, {"--trace", directory / "letter"}));
    EXPECT_EQ(port.Wait(), 2);
    EXPECT_THAT(port.Error(), HasSubstr("is what --port names too"));
  }
  ::unsetenv("TESKREADER_PORT_3");
  Process redirected(ScanArguments("15", "sim", {"--trace", one}), one);
  EXPECT_EQ(redirected.Wait(), 2);
  EXPECT_THAT(redirected.Error(), HasSubstr("is what standard output names too"));
}

TEST(ProcessScan, AHostileFileIsRefusedWithoutTakingAllMemory) {
  const TemporaryDirectory directory;
  WriteFile(directory / "deep", std::string(20'000'000, '[') + '\n');
  Process scan(ScanArguments("15", "sim", {"--append", "--output", directory / "deep"}));
  EXPECT_EQ(scan.Wait(), 2);
  EXPECT_THAT(scan.Error(), HasSubstr("does not end with a sheet"));
  rusage ended{};
  ASSERT_EQ(::getrusage(RUSAGE_CHILDREN, &ended), 0);
  EXPECT_LT(ended.ru_maxrss, 800'000) << "KiB, of the largest program";
}

// The shell closes the descriptors before it becomes the program.
TEST(ProcessScan, ClosedDescriptorsSendNothingToTheScannerOrIntoTheResults) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "3"});
  const std::string command = Words(ScanArguments("15", scanner.Device()));
  Process closed({"/bin/sh", "-c", "exec " + command + ">&-"});
  EXPECT_EQ(closed.Wait(), 1);
  EXPECT_THAT(closed.Error(), HasSubstr("standard output takes nothing more: it was closed"));
  Process mute({"/bin/sh", "-c",
                "exec " + command + "--set TimeOut=1 --output " + (directory / "class") + " <&- >&- 2>&-"});
  EXPECT_EQ(mute.Wait(), 0);
  EXPECT_EQ(Sheets(FileText(directory / "class")).size(), 3U) << "no sheet was fed before";
  EXPECT_EQ(scanner.End(), 0);
}

TEST(ProcessScan, AFullDiskLeavesTheUnsafeSheetInTheScanner) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "3"});
  Process scan(
      ScanArguments("15", scanner.Device(), {"--output", "/dev/full", "--trace", directory / "trace"}));
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_THAT(scan.Error(), AllOf(HasSubstr("No space left on device"), HasSubstr("No sheet is safe"),
                                  HasSubstr("Sheet 1 was not disposed of")));
  EXPECT_THAT(TracedBytes(FileText(directory / "trace"), '>'), testing::Not(HasSubstr("EJCT")));
}

TEST(ProcessScan, ALimitOnTheSizeOfFilesEndsTheBatchWithWholeSheets) {
  const TemporaryDirectory directory;
  const Texts more = {"--output", directory / "class", "--max-sheets", "5"};
  Process scan({"/bin/sh", "-c", "ulimit -f 16; exec " + Words(ScanArguments("15", "sim", more))});
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_THAT(scan.Error(),
              AllOf(HasSubstr("File too large"), HasSubstr("The last sheet that is safe is sheet 1"),
                    HasSubstr("go on with it (--append)")));
  EXPECT_EQ(Sheets(FileText(directory / "class")).size(), 1U);
}

TEST(ProcessScan, AReaderThatStopsReadingDoesNotKeepTheScanFromEnding) {
  const TemporaryDirectory directory;
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  const int reader = ::open((directory / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_EQ(::fcntl(reader, F_SETPIPE_SZ, 4096), 4096);
  Scanner scanner({"--reader", "15", "--count", "3"});
  Process scan(ScanArguments("15", scanner.Device(), {"--trace", directory / "trace"}), directory / "pipe");
  WaitForFile(directory / "trace", "|.EJCT A .|");
  std::this_thread::sleep_for(Seconds(0.3));
  scan.Signal(SIGTERM);
  EXPECT_EQ(scan.Wait(Seconds(10)), 1);
  EXPECT_THAT(scan.Error(),
              AllOf(HasSubstr("its reader has stopped reading"), HasSubstr("No sheet was handed on"),
                    HasSubstr("Sheet 1 has left the scanner: scan it again")));
  EXPECT_THAT(FileText(directory / "trace"), HasSubstr(" close\n"));
  EXPECT_EQ(scanner.End(), 0);
  ::close(reader);
}

TEST(ProcessScan, TheSummarySaysForScriptsWhatTheBlockSaysForPeople) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "4", "--fault", "too-dark@2", "--fault", "jam@4"});
  Process scan(ScanArguments("15", scanner.Device(), {"--summary", directory / "end.json"}));
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_EQ(Sheets(scan.Output()).size(), 2U);
  json summary = json::parse(FileText(directory / "end.json"));
  EXPECT_GT(summary["per_minute"], 0);
  summary.erase("per_minute");
  EXPECT_EQ(summary, json::parse(R"({"sheets":2,"rejected":1,"warnings":0,"ended":"message",
      "message":"Paper Jam: The Scantron scanner reports a paper jam. Please clear the jam and try again."})"));
  EXPECT_THAT(scan.Error(), AllOf(HasSubstr("marks go from 0 to 15"), HasSubstr("teskread scan: 2 sheets, "),
                                  HasSubstr(" 1 rejected, 0 warnings\n  ended because: Paper Jam\n")));
  const std::pair<const char*, const char*> unwritten[] = {{"/dev/full", "Summary Not Written"},
                                                           {"/nonexistent/end", "No sheet was fed"}};
  for (const auto& [place, told] : unwritten) {
    Process refused(ScanArguments("15", "sim", {"--summary", place, "--max-sheets", "1"}));
    EXPECT_EQ(refused.Wait(), 1);
    EXPECT_THAT(refused.Error(), HasSubstr(told));
  }
}

TEST(ProcessScan, WhatALineCannotCarryOfAnImprintIsSaidAndPrintedAsAQuestionMark) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "2", "--count", "1"});
  Process scan(
      ScanArguments("2", scanner.Device(),
                    {"--imprint", "Zo\xC3\xAB", "--max-sheets", "1", "--trace", directory / "trace"}));
  EXPECT_EQ(scan.Wait(), 0) << scan.Error();
  EXPECT_THAT(Told(scan), HasSubstr("\"Zo?\" is printed"));
  EXPECT_THAT(TracedBytes(FileText(directory / "trace"), '>'), HasSubstr("2Zo? "));
  EXPECT_EQ(scanner.End(), 0);
}

TEST(ProcessScan, TwoHundredDuplexSheetsArriveWithoutALoss) {
  Scanner scanner({"--reader", "15", "--count", "200", "--seed", "9"});
  Process scan(ScanArguments("15", scanner.Device(), {"--side2", "50x48", "--set", "SleepTime=0"}));
  EXPECT_EQ(scan.Wait(Seconds(60)), 0) << scan.Error();
  EXPECT_EQ(scanner.End(), 0);
  const auto paper = simulator::GenerateSheets(200, 9, {50, 48, true}, 15);
  const auto sheets = Sheets(scan.Output());
  ASSERT_EQ(sheets.size(), 200U);
  for (std::size_t i = 0; i < 200; ++i) {
    EXPECT_EQ(sheets[i]["side1"]["marks"], MarksJson(paper[i].side1)) << i;
    EXPECT_EQ(sheets[i]["side2"]["marks"], MarksJson(paper[i].side2)) << i;
  }
}

TEST(ProcessScan, WaitingForASheetTakesNoProcessorTime) {
  Scanner scanner({"--reader", "11", "--count", "0"});
  Process scan(ScanArguments("11", scanner.Device()));
  std::this_thread::sleep_for(Seconds(0.5));
  const Seconds scanBefore = scan.ProcessorTime();
  const Seconds scannerBefore = scanner.Program().ProcessorTime();
  std::this_thread::sleep_for(Seconds(1));
  EXPECT_LT((scan.ProcessorTime() - scanBefore).count(), 0.05);
  EXPECT_LT((scanner.Program().ProcessorTime() - scannerBefore).count(), 0.05);
  scan.Signal(SIGINT);
  EXPECT_EQ(scan.Wait(), 130);
}

TEST(ProcessScan, AKilledScanLeavesWholeSheets) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "500"});
  Process scan(ScanArguments("15", scanner.Device(), {"--output", directory / "sheets"}));
  WaitForFile(directory / "sheets", "\"sheet\":4,");
  scan.Signal(SIGKILL);
  EXPECT_EQ(scan.Wait(), 128 + SIGKILL);
  const std::string text = FileText(directory / "sheets");
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(text.back(), '\n');
  for (const auto& sheet : Sheets(text)) EXPECT_EQ(sheet["side1"]["marks"].size(), 50U);
}

TEST(ProcessScan, OutputThatNobodyTakesIsAFailureWithAReason) {
  Scanner scanner({"--reader", "15", "--count", "50"});
  Process full(ScanArguments("15", scanner.Device()), "/dev/full");
  EXPECT_EQ(full.Wait(), 1);
  EXPECT_THAT(full.Error(), HasSubstr("standard output takes nothing more: No space left on device"));

  Process closed(ScanArguments("15", scanner.Device()));
  closed.CloseOutput();
  EXPECT_EQ(closed.Wait(), 1);
  EXPECT_THAT(closed.Error(), HasSubstr("standard output takes nothing more: Broken pipe"));

  Process file(ScanArguments("15", scanner.Device(), {"--output", "/nonexistent/sheets"}));
  EXPECT_EQ(file.Wait(), 1);
  EXPECT_THAT(file.Error(), HasSubstr("/nonexistent/sheets"));
  EXPECT_EQ(scanner.End(), 0);
}

TEST(ProcessScan, ATraceThatCannotBeWrittenIsToldAndTheSheetsAreReadAllTheSame) {
  Scanner scanner({"--reader", "15", "--count", "2"});
  Process scan(ScanArguments("15", scanner.Device(), {"--trace", "/dev/full"}));
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_THAT(scan.Error(), HasSubstr("--trace: The file \"/dev/full\" cannot be written"));
  EXPECT_EQ(Sheets(scan.Output()).size(), 2U);
}

TEST(ProcessScan, APortThatIsNotThereIsAnErrorOfThePort) {
  Process scan(ScanArguments("15", "/nonexistent/tty"));
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_THAT(scan.Error(),
              AllOf(StartsWith("Invalid Port Number: An error has occurred attempting to initialize the "
                               "selected COM port: 1."),
                    HasSubstr("/nonexistent/tty")));
}

TEST(ProcessScan, CsvAndGridAreForTablesAndPeople) {
  Process csv(ScanArguments("15", "sim", {"--format", "csv", "--max-sheets", "1"}));
  EXPECT_EQ(csv.Wait(), 0) << csv.Error();
  EXPECT_THAT(csv.Output(), StartsWith("sheet,side,row,column,value\n1,1,"));
  Process grid(ScanArguments("15", "sim", {"--format", "grid", "--max-sheets", "1"}));
  EXPECT_EQ(grid.Wait(), 0) << grid.Error();
  EXPECT_THAT(grid.Output(),
              AllOf(HasSubstr("Sheet 1, Scantron Scanmark 5500"), HasSubstr("█"), HasSubstr("▀")));
}

}  // namespace
}  // namespace tesk::test
