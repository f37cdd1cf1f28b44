// teskread scan as people run it: the program against its own simulated scanner over real pseudo-terminals.
// A scan waits more than it works, so scans that have nothing to do with each other run side by side.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <deque>
#include <filesystem>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/Sheet.h"
#include "tests/process/Process.h"

namespace tesk::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

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

// What a traced scan sent, as far as it can be read, without the bytes' numbers.
std::string Sent(const std::string& trace) {
  std::string sent;
  std::istringstream lines(trace);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find(" > ");
    if (at != std::string::npos)
      sent += line.substr(line.find('|') + 1, line.rfind('|') - line.find('|') - 1);
  }
  return sent;
}

TEST(ProcessScan, ManyDuplexSheetsArriveMarkByMarkAndServeAsSheetsAgain) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "60", "--seed", "9"});
  Process scan(ScanArguments("15", scanner.Device(), {"--side2", "50x48", "--set", "SleepTime=0"}));
  EXPECT_EQ(scan.Wait(Seconds(60)), 0) << scan.Error();
  EXPECT_EQ(scanner.End(), 0);
  const auto paper = simulator::GenerateSheets(60, 9, {50, 48, true}, 15);
  const auto sheets = Sheets(scan.Output());
  ASSERT_EQ(sheets.size(), paper.size());
  for (std::size_t i = 0; i < paper.size(); ++i) {
    ASSERT_EQ(sheets[i]["sheet"], i + 1);
    ASSERT_EQ(sheets[i]["side1"]["marks"], MarksJson(paper[i].side1)) << i;
    ASSERT_EQ(sheets[i]["side2"]["marks"], MarksJson(paper[i].side2)) << i;
    ASSERT_EQ(sheets[i]["disposed"], "ejected");
  }
  const std::string four = scan.Output().substr(0, scan.Output().find("{\"sheet\":5,"));
  WriteFile(directory / "sheets", four);
  Scanner again({"--reader", "15", "--sheets", directory / "sheets"});
  Process same(ScanArguments("15", again.Device(), {"--side2", "50x48"}));
  EXPECT_EQ(same.Wait(), 0) << same.Error();
  EXPECT_EQ(same.Output(), four);
}

TEST(ProcessScan, SheetsArePrintedOnRejectedOrSentOnAsTheOperatorWants) {
  const TemporaryDirectory directory;
  const struct {
    const char* reader;
    Texts options;
    const char* disposed;
    const char* sent;
  } cases[] = {{"15", {"--dispose", "reject"}, "rejected", ".EJCT C."},
               {"11", {"--imprint", "Room 7", "--imprint-position", "4"}, "ejected", ".EJCT A     Room 7."},
               {"2", {"--imprint", "Zo\xC3\xAB"}, "ejected", "2Zo? "}};
  std::deque<Scanner> scanners;
  std::deque<Process> scans;
  for (const auto& [reader, options, disposed, sent] : cases) {
    scanners.emplace_back(Texts{"--reader", reader, "--count", "2"});
    const Texts more = {"--max-sheets", "1", "--trace", directory / reader};
    scans.emplace_back(ScanArguments(reader, scanners.back().Device(), Joined(options, more)));
  }
  for (std::size_t i = 0; i < scans.size(); ++i) {
    EXPECT_EQ(scans[i].Wait(), 0) << scans[i].Error();
    EXPECT_EQ(scanners[i].End(), 0) << scanners[i].Program().Error();
    EXPECT_EQ(Sheets(scans[i].Output()).at(0)["disposed"], cases[i].disposed);
    EXPECT_THAT(Sent(FileText(directory / cases[i].reader)), HasSubstr(cases[i].sent));
  }
}

TEST(ProcessScan, AReplayedTraceReadsTheSameSheetsAndCatchesAnotherScan) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "2"});
  Process scan(ScanArguments("15", scanner.Device(), {"--trace", directory / "trace"}));
  EXPECT_EQ(scan.Wait(), 0) << scan.Error();

  Scanner replay({"--replay", directory / "trace"});
  Scanner strict({"--replay", directory / "trace"});
  Process same(ScanArguments("15", replay.Device()));
  Process other(ScanArguments("15", strict.Device(), {"--dispose", "reject", "--set", "TimeOut=1"}));
  EXPECT_EQ(same.Wait(), 0) << same.Error();
  EXPECT_EQ(same.Output(), scan.Output());
  EXPECT_EQ(replay.End(), 0) << replay.Program().Error();
  EXPECT_EQ(other.Wait(), 1);
  EXPECT_EQ(strict.End(), 1);
  EXPECT_THAT(strict.Program().Error(),
              HasSubstr("byte 2 of 9: expected \"E\", got \"P\"; the record is \"<1B>EJCT A"));
}

TEST(ProcessScan, AFaultReachesTheOperatorInItsOwnWords) {
  const struct {
    const char* fault;
    int status;
    std::size_t sheets;
    const char* told;  // its beginning; empty: nothing
    const char* ended;
    const char* reader = "15";
  } cases[] = {
      {"jam@2", 1, 1,
       "Paper Jam: The Scantron scanner reports a paper jam. Please clear the jam and try again.\n",
       "Paper Jam"},
      {"timing@2", 1, 1, "Initialize Error: ", "Initialize Error"},
      {"empty@2", 0, 1, "", "the hopper is empty"},
      {"unknown-status@2", 1, 1, "", "the scanner reported a condition without a text"},
      {"silence@2", 1, 1, "Read Error: There was no response", "Read Error"},
      {"silence-eject@1", 1, 1, "Eject Page Error: ", "Eject Page Error"},
      {"silence-reset@1", 1, 0, "No Response: ", "No Response"},
      {"cut@100@2", 1, 1, "Read Error: There was no response", "Read Error"},
      {"refuse-threshold@1", 1, 0, "Initialize Error: ", "Initialize Error", "16"},
      {"refuse-printer@1", 1, 0, "Start Refused: the scanner refused to start\n", "Start Refused"},
  };
  std::deque<Scanner> scanners;
  std::deque<Process> scans;
  for (const auto& row : cases)
    scanners.emplace_back(Texts{"--reader", row.reader, "--count", "3", "--fault", row.fault});
  for (std::size_t i = 0; i < scanners.size(); ++i) {
    scans.emplace_back(ScanArguments(cases[i].reader, scanners[i].Device(), {"--set", "TimeOut=2"}));
  }
  for (std::size_t i = 0; i < scanners.size(); ++i) {
    SCOPED_TRACE(cases[i].fault);
    EXPECT_EQ(scans[i].Wait(), cases[i].status);
    EXPECT_THAT(Told(scans[i]), StartsWith(cases[i].told));
    EXPECT_EQ(Told(scans[i]).empty(), *cases[i].told == '\0') << Told(scans[i]);
    EXPECT_THAT(Ended(scans[i]), StartsWith(cases[i].ended));
    EXPECT_EQ(Sheets(scans[i].Output()).size(), cases[i].sheets);
  }
}

TEST(ProcessScan, WaitingForASheetTakesNoProcessorTimeAndCtrlCClosesThePort) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "11", "--count", "1"});
  Process scan(ScanArguments("11", scanner.Device(), {"--output", directory / "sheets"}));
  WaitForFile(directory / "sheets", "}\n");
  std::this_thread::sleep_for(Seconds(0.3));
  const Seconds before = scan.ProcessorTime() + scanner.Program().ProcessorTime();
  std::this_thread::sleep_for(Seconds(1));
  EXPECT_LT((scan.ProcessorTime() + scanner.Program().ProcessorTime() - before).count(), 0.05);
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
  const TemporaryDirectory directory;
  const int signals[] = {SIGINT, SIGHUP, SIGTERM};
  std::deque<Scanner> scanners;
  std::deque<Process> scans;
  const auto trace = [&](int signal) { return directory / std::to_string(signal); };
  for (const int signal : signals) {
    scanners.emplace_back(Texts{"--reader", "15", "--count", "9", "--paced"});
    scans.emplace_back(ScanArguments("15", scanners.back().Device(), {"--trace", trace(signal)}));
  }
  for (std::size_t i = 0; i < scans.size(); ++i) {
    // A paced sheet takes about a second and a half.
    WaitForFile(trace(signals[i]), "|.READ 5 Y E.|");
    scans[i].Signal(signals[i]);
  }
  for (std::size_t i = 0; i < scans.size(); ++i) {
    EXPECT_EQ(scans[i].Wait(Seconds(10)), 128 + signals[i]);
    EXPECT_EQ(Told(scans[i]), "");
    EXPECT_EQ(Sheets(scans[i].Output()).size(), 1U);
    const std::string traced = FileText(trace(signals[i]));
    EXPECT_THAT(Sent(traced).substr(Sent(traced).rfind("READ")), HasSubstr("EJCT A ."));
    EXPECT_THAT(traced, HasSubstr(" close\n"));
    EXPECT_EQ(scanners[i].End(), 0);
  }
}

TEST(ProcessScan, WhatWasReadIsNeverDestroyedAndGoesOnWithItsNumbers) {
  const TemporaryDirectory directory;
  const auto arguments = [&](const std::string& format, const Texts& more = {}) {
    return ScanArguments(
        "15", "sim", Joined({"--output", directory / format, "--format", format, "--max-sheets", "1"}, more));
  };
  const auto both = [&](const Texts& more, int status, const std::string& told) {
    Process ndjson(arguments("ndjson", more));
    Process csv(arguments("csv", more));
    for (Process* scan : {&ndjson, &csv}) {
      EXPECT_EQ(scan->Wait(), status) << scan->Error();
      EXPECT_THAT(scan->Error(), testing::ContainsRegex(told));
    }
  };
  both({}, 0, "1 sheet, ");
  const std::string before[] = {FileText(directory / "ndjson"), FileText(directory / "csv")};
  both({}, 2, "--output: .* is there already.*--append");
  both({"--append"}, 0, "1 sheet, ");
  EXPECT_THAT(FileText(directory / "ndjson"), StartsWith(before[0] + "{\"sheet\":2,"));
  EXPECT_THAT(FileText(directory / "csv"), StartsWith(before[1] + "2,1,"));
  WriteFile(directory / "ndjson", before[0].substr(0, before[0].size() - 3));
  WriteFile(directory / "csv", before[1] + "\n");
  both({"--append"}, 2, "--append: .* (does not end with|ends with) a");
  EXPECT_EQ(FileText(directory / "csv"), before[1] + "\n");
}

TEST(ProcessScan, AScanThatReadNothingLeavesNoFile) {
  const TemporaryDirectory directory;
  Scanner empty({"--reader", "15", "--count", "0"});
  const std::pair<std::string, Texts> cases[] = {
      {"/nonexistent/tty", {}}, {empty.Device(), {"--append"}}, {"sim", {"--summary", "/nonexistent/end"}}};
  for (const auto& [port, more] : cases) {
    Process scan(ScanArguments("15", port, Joined({"--output", directory / "class"}, more)));
    EXPECT_EQ(scan.Wait(), 1) << scan.Error();
    EXPECT_FALSE(std::filesystem::exists(directory / "class")) << port;
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

TEST(ProcessScan, WhatCannotGoWellIsRefusedBeforeAnythingMoves) {
  const TemporaryDirectory directory;
  const std::string letter = directory / "letter";
  const std::string one = directory / "one";
  WriteFile(letter, "Dear all\n");
  const struct {
    Texts arguments;
    const char* reason;
    std::string port = "sim";
    const char* reader = "15";
  } cases[] = {
      {{"--append"}, "--append: goes with --output"},
      {{"--output", letter, "--append"}, "--append: "},
      {{"--output", one, "--trace", one}, "--trace: "},
      {{"--output", one, "--summary", directory / "./one"}, "is what --output names too"},
      {{"--trace", letter}, "is something else"},
      {{"--trace", letter}, "is what --port names too", letter},
      {{"--trace", letter}, "is what --port names too", "3"},
      {{"--dispose", "reject"}, "has no reject exit", "sim", "2"},
      {{"--dispose", "reject", "--set", "Rejecter=False"}, "the setting Rejecter is off"},
      {{"--dispose", "none"}, "holds each sheet until it is sent on"},
      {{"--imprint", "Room 7"}, "has no command that sends it on", "sim", "16"},
      {{"--set", "Rejecter=True"}, "has no command that sends it on", "sim", "28"},
  };
  ::setenv("TESKREADER_PORT_3", letter.c_str(), 1);
  for (const auto& [arguments, reason, port, reader] : cases) {
    Process scan(ScanArguments(reader, port, arguments));
    EXPECT_EQ(scan.Wait(), 2) << reason;
    EXPECT_THAT(scan.Error(), HasSubstr(reason));
    EXPECT_EQ(scan.Output(), "");
  }
  ::unsetenv("TESKREADER_PORT_3");
  EXPECT_EQ(FileText(letter), "Dear all\n");
  Process redirected(ScanArguments("15", "sim", {"--trace", one}), one);
  EXPECT_EQ(redirected.Wait(), 2);
  EXPECT_THAT(redirected.Error(), HasSubstr("is what standard output names too"));
}

TEST(ProcessScan, AHostileFileIsRefusedWithoutTakingAllMemory) {
  const TemporaryDirectory directory;
  WriteFile(directory / "deep", std::string(5'000'000, '[') + '\n');
  Process scan(ScanArguments("15", "sim", {"--append", "--output", directory / "deep"}));
  EXPECT_EQ(scan.Wait(), 2);
  EXPECT_THAT(scan.Error(), HasSubstr("does not end with a sheet"));
  rusage ended{};
  ASSERT_EQ(::getrusage(RUSAGE_CHILDREN, &ended), 0);
  EXPECT_LT(ended.ru_maxrss, 200'000) << "KiB, of the largest program";
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
  const Texts limited = {"--output", directory / "class", "--max-sheets", "5"};
  Process scan(
      ScanArguments("15", scanner.Device(), {"--output", "/dev/full", "--trace", directory / "trace"}));
  Process limit({"/bin/sh", "-c", "ulimit -f 16; exec " + Words(ScanArguments("15", "sim", limited))});
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_THAT(scan.Error(), AllOf(HasSubstr("No space left on device"), HasSubstr("No sheet is safe"),
                                  HasSubstr("Sheet 1 was not disposed of")));
  EXPECT_THAT(Sent(FileText(directory / "trace")), testing::Not(HasSubstr("EJCT")));
  EXPECT_EQ(limit.Wait(), 1);
  EXPECT_THAT(limit.Error(),
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
  Process refused(ScanArguments("15", "sim", {"--summary", "/dev/full", "--max-sheets", "1"}));
  EXPECT_EQ(scan.Wait(), 1);
  EXPECT_EQ(Sheets(scan.Output()).size(), 2U);
  json summary = json::parse(FileText(directory / "end.json"));
  EXPECT_GT(summary["per_minute"], 0);
  summary.erase("per_minute");
  EXPECT_EQ(summary, json::parse(R"({"sheets":2,"rejected":1,"warnings":0,"ended":"message",
      "message":"Paper Jam: The Scantron scanner reports a paper jam. Please clear the jam and try again."})"));
  EXPECT_THAT(scan.Error(), AllOf(HasSubstr("marks go from 0 to 15"), HasSubstr("teskread scan: 2 sheets, "),
                                  HasSubstr(" 1 rejected, 0 warnings\n  ended because: Paper Jam\n")));
  EXPECT_EQ(refused.Wait(), 1);
  EXPECT_THAT(refused.Error(), HasSubstr("Summary Not Written"));
}

TEST(ProcessScan, AKilledScanLeavesWholeSheets) {
  const TemporaryDirectory directory;
  Scanner scanner({"--reader", "15", "--count", "500"});
  Process scan(ScanArguments("15", scanner.Device(), {"--output", directory / "sheets"}));
  WaitForFile(directory / "sheets", "\"sheet\":4,");
  scan.Signal(SIGKILL);
  EXPECT_EQ(scan.Wait(), 128 + SIGKILL);
  const std::string text = FileText(directory / "sheets");
  ASSERT_TRUE(text.ends_with('\n')) << text.size();
  for (const auto& sheet : Sheets(text)) EXPECT_EQ(sheet["side1"]["marks"].size(), 50U);
}

TEST(ProcessScan, WhatNobodyTakesIsAFailureWithAReason) {
  Process full(ScanArguments("15", "sim"), "/dev/full");
  Process closed(ScanArguments("15", "sim"));
  closed.CloseOutput();
  Process file(ScanArguments("15", "sim", {"--output", "/nonexistent/sheets"}));
  Process trace(ScanArguments("15", "sim", {"--trace", "/dev/full", "--max-sheets", "2"}));
  Process port(ScanArguments("15", "/nonexistent/tty"));
  const std::pair<Process&, const char*> cases[] = {
      {full, "standard output takes nothing more: No space left on device"},
      {closed, "standard output takes nothing more: Broken pipe"},
      {file, "/nonexistent/sheets"},
      {trace, "--trace: The file \"/dev/full\" cannot be written"},
      {port,
       "Invalid Port Number: An error has occurred attempting to initialize the selected COM port: 1."}};
  for (const auto& [scan, told] : cases) {
    EXPECT_EQ(scan.Wait(), 1);
    EXPECT_THAT(scan.Error(), HasSubstr(told));
  }
  EXPECT_EQ(Sheets(trace.Output()).size(), 2U) << "the sheets are read all the same";
}

}  // namespace
}  // namespace tesk::test
