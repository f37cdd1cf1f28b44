// A batch through the command line's parts, in memory and in virtual time: what is delivered, how it ends
// when the operator asks, and what the trace holds.
#include <map>
#include <memory>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandError.h"
#include "cli/scan/BatchHost.h"
#include "cli/simulated/SimulatedScanner.h"
#include "cli/trace/Trace.h"
#include "cli/trace/TraceFile.h"
#include "simulator/Simulators.h"
#include "tests/support/ScanCommand.h"
#include "tests/support/TestBench.h"

namespace tesk::cli {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr auto kHeld = teskReaderTypeScantronScanMark5500;

// teskread's own arrangement around an engine, with everything that it writes kept in memory.
class CliScan : public testing::Test, public SheetTaker {
 protected:
  void Start(teskReaderType type, simulator::Options options, std::vector<std::string> assignments = {}) {
    scanner_ = simulator::CreateScanner(type, std::move(options));
    time_->nextDue = [this] { return scanner_->NextDue(); };
    trace_ = std::make_shared<Trace>(time_, [](const std::string&) {});
    trace_->Begin([this](std::string_view line) { traceText_ += line; }, type, "a scanner", "Duplex=True");
    engine_ = CreateReader(
        {.serial = std::make_shared<ObservedSerialSystem>(
             std::make_shared<SimulatedSerial>(scanner_, time_),
             std::vector<std::shared_ptr<LineObserver>>{activity_, trace_}),
         .loop = time_,
         .clock = time_,
         .timer = std::make_shared<TracedTimer>(std::make_shared<DeadlineTimer>(time_), trace_)});
    trace_->CancelledBy([this] { return engine_->CancelScan(); });
    engine_->SetError(host_);
    std::vector<std::string> arguments{
        "--reader", std::to_string(type), "--port", "sim", "--side1", side1_, "--side2",
        side2_,     "--dispose",          dispose_};
    for (const std::string& text : assignments) arguments.insert(arguments.end(), {"--set", text});
    if (strict_) arguments.emplace_back("--strict");
    test::ParseScan(std::move(arguments), plan_);
    plan_.maxSheets = maxSheets_;
    ConfigureEngine(plan_, *engine_);
    batch_ =
        std::make_unique<BatchHost>(*engine_, plan_,
                                    BatchHost::Parts{.console = console_,
                                                     .host = host_,
                                                     .activity = activity_,
                                                     .clock = time_,
                                                     .interrupted = [this] { return interrupted_ ? 2 : 0; },
                                                     .taker = *this});
    engine_->AddEvents(*batch_);
    time_->onMessages = [this](int turn) {
      if (onMessages_) onMessages_(turn);
      batch_->RunMessages();
    };
  }
  void TearDown() override {
    SetError(nullptr);
    if (engine_ && batch_) engine_->RemoveEvents(*batch_);
  }

  void Keep(const clsTeskReader&, const SheetRecord& record) override { keptAs_.push_back(record.disposed); }
  void Settle(const clsTeskReader&, const SheetRecord& record) override { records_.push_back(record); }

  BatchReport Read() {
    std::int32_t count = 0;
    return batch_->Report(engine_->ReadBatch(false, maxSheets_, count));
  }

  std::shared_ptr<test::VirtualTime> time_ = std::make_shared<test::VirtualTime>();
  std::shared_ptr<LineActivity> activity_ = std::make_shared<LineActivity>(time_);
  std::ostringstream errors_;
  std::shared_ptr<Console> console_ = std::make_shared<Console>(errors_, false);
  std::shared_ptr<ConsoleHost> host_ = std::make_shared<ConsoleHost>(console_);
  std::shared_ptr<simulator::SheetScanner> scanner_;
  std::string traceText_;
  std::shared_ptr<Trace> trace_;
  std::shared_ptr<clsTeskReader> engine_;
  std::unique_ptr<BatchHost> batch_;
  std::vector<SheetRecord> records_;
  std::function<void(int)> onMessages_;
  ScanPlan plan_;
  std::string side1_ = "50x48";
  std::string side2_ = "50x48";
  std::string dispose_ = "eject";
  bool strict_ = false;
  std::int32_t maxSheets_ = -1;
  bool interrupted_ = false;
  std::vector<std::string> keptAs_;
};

TEST_F(CliScan, AnInterruptDoesNotWaitForAScannerThatFellSilent) {
  Start(kHeld, {.count = 5, .faults = {{simulator::FaultKind::Cut, 1, 100}}}, {"TimeOut=600"});
  onMessages_ = [this](int) { interrupted_ = interrupted_ || scanner_->SheetsLeft() == 4; };
  Read();
  EXPECT_LT(time_->Elapsed(), Milliseconds(20000));
  EXPECT_TRUE(records_.empty());
  EXPECT_EQ(errors_.str(), "");
  EXPECT_FALSE(engine_->fComm()->mscComm()->PortOpen());
}

TEST_F(CliScan, ASheetWhoseWayOutWasNotAwaitedIsNotSaidToHaveLeft) {
  Start(kHeld, {.count = 5, .faults = {{simulator::FaultKind::SilenceEject, 2}}}, {"TimeOut=600"});
  onMessages_ = [this](int) { interrupted_ = interrupted_ || keptAs_.size() == 2; };
  EXPECT_EQ(StatusOf(Read()), 130);
  ASSERT_EQ(records_.size(), 2U);
  EXPECT_EQ(records_[0].disposed, "ejected");
  EXPECT_EQ(records_[1].disposed, "failed");
}

// ---- How a batch ends

struct EndsAs {
  int rejected = 0;
  int warnings = 0;
  int status = 1;
  const char* told = "";  // what stands among the messages
};

struct Asked {
  const char* dispose = "eject";
  std::int32_t maxSheets = -1;
  bool strict = false;
};

struct EndCase {
  const char* name;
  teskReaderType type;
  simulator::Options scanner;
  const char* assignment;
  BatchEnd end;
  const char* title;     // of the message that ended it
  const char* disposed;  // of the sheets that were written, by their first letters
  EndsAs endsAs = {};
  Asked asked = {};
};

std::vector<EndCase> EndCases() {
  using simulator::FaultKind;
  using enum BatchEnd;
  const auto with = [](FaultKind kind) { return simulator::Options{.count = 3, .faults = {{kind, 2}}}; };
  const simulator::Options dark = with(FaultKind::TooDark);
  const simulator::Options cut = with(FaultKind::Short);
  const simulator::Options firstDark{.count = 2, .faults = {{FaultKind::TooDark, 1}}};
  const simulator::Options darkAndStuck{.count = 3,
                                        .faults = {{FaultKind::TooDark, 2}, {FaultKind::SilenceEject, 2}}};
  const char* second = "The sheet behind sheet 1 cannot be right";
  const char* stuck = "It may still be in the scanner: take it out";
  const EndsAs well{.status = 0};
  const char* off = "Rejecter=False";
  return {
      {"hopper", kHeld, {.count = 2}, "", HopperEmpty, "", "ee", well},
      {"emptyHopper", kHeld, {.count = 0}, "", HopperEmpty, "", ""},
      {"maxSheets", kHeld, {.count = 3}, "", MaxSheets, "", "ee", well, {.maxSheets = 2}},
      {"message", kHeld, with(FaultKind::Jam), "", Message, "Paper Jam", "e"},
      {"theLastSheet", kHeld, with(FaultKind::Jam), "", Message, "Paper Jam", "e", {}, {.maxSheets = 2}},
      {"unknownStatus", kHeld, with(FaultKind::UnknownStatus), "", SilentFault, "", "e"},
      {"rejecting", kHeld, {.count = 2}, "", HopperEmpty, "", "rr", well, {.dispose = "reject"}},
      {"noneButTheLast", kHeld, {.count = 3}, off, MaxSheets, "", "ne", well, {"none", 2}},
      {"noRoutine", teskReaderTypeScantron8000, {.count = 1}, "", HopperEmpty, "", "n", well},
      {"noEject", kHeld, with(FaultKind::SilenceEject), "TimeOut=1", Message, "Eject Page Error", "ef"},
      {"tooDarkIsRejected", kHeld, dark, "", HopperEmpty, "", "ee", {1, 0, 0, second}},
      {"theFirstTooDark", kHeld, firstDark, "", HopperEmpty, "", "e", {1, 0, 0, "The first sheet cannot"}},
      {"tooDarkAndStuck", kHeld, darkAndStuck, off, Message, "Eject Page Error", "e", {1, 0, 1, stuck}},
      {"tooDarkAndNoRejecter", kHeld, dark, off, Message, "Sheet Refused", "e", {.rejected = 1}},
      {"short", kHeld, cut, "", HopperEmpty, "", "eee", {.warnings = 2, .status = 0}},
      {"strict", kHeld, cut, "", Message, "Warning", "ee", {.warnings = 2}, {.strict = true}},
      {"strictAtTheLast", kHeld, cut, off, Message, "Warning", "ne", {.warnings = 2}, {"none", -1, true}}};
}

class CliBatchEnd : public CliScan, public testing::WithParamInterface<EndCase> {};

TEST_P(CliBatchEnd, IsToldAsItWas) {
  const EndCase& expected = GetParam();
  dispose_ = expected.asked.dispose;
  maxSheets_ = expected.asked.maxSheets;
  strict_ = expected.asked.strict;
  std::vector<std::string> assignments;
  if (*expected.assignment != '\0') assignments.emplace_back(expected.assignment);
  Start(expected.type, expected.scanner, assignments);
  const BatchReport report = Read();
  EXPECT_EQ(static_cast<int>(report.end), static_cast<int>(expected.end)) << ClosingText(report);
  EXPECT_EQ(report.message.title, expected.title);
  std::string disposed;
  for (const auto& record : records_) disposed += record.disposed.front();
  EXPECT_EQ(disposed, expected.disposed);
  EXPECT_EQ(report.sheets, static_cast<std::int32_t>(disposed.size()));
  EXPECT_EQ(report.rejected, expected.endsAs.rejected);
  EXPECT_EQ(report.warnings, expected.endsAs.warnings) << errors_.str();
  EXPECT_EQ(StatusOf(report), expected.endsAs.status);
  EXPECT_THAT(errors_.str(), HasSubstr(expected.endsAs.told));
  EXPECT_FALSE(engine_->fComm()->mscComm()->PortOpen());
}

INSTANTIATE_TEST_SUITE_P(Ends, CliBatchEnd, testing::ValuesIn(EndCases()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(CliScan, ARefusedSheetLeavesByTheRejectExitAndIsSaidWithItsPlace) {
  Start(kHeld, {.count = 3, .faults = {{simulator::FaultKind::TooDark, 2}}});
  Read();
  EXPECT_EQ(scanner_->Disposals().at(1).exit, simulator::Exit::Rejected);
  EXPECT_THAT(errors_.str(),
              HasSubstr("side 1, row 34, column 17 has the value 78; this scanner's marks go from 0 to 15"));
  EXPECT_EQ(records_.at(1).sheet, 2);
}

TEST_F(CliScan, WhatIsMissingIsSaidOfItsSheetAlone) {
  Start(kHeld, {.count = 3, .faults = {{simulator::FaultKind::Short, 2}}});
  Read();
  ASSERT_EQ(records_.size(), 3U);
  EXPECT_TRUE(records_[0].warnings.empty() && records_[2].warnings.empty());
  EXPECT_THAT(records_[1].warnings,
              testing::Contains(HasSubstr("mark positions that were asked for did not come")));
}

TEST_F(CliScan, AWholeSheetOfASmallerDefinitionMissesNothing) {
  side1_ = "50x48,50x48";
  side2_ = "30x48,50x48";
  Start(kHeld, {.count = 1});
  Read();
  ASSERT_EQ(records_.size(), 1U);
  EXPECT_EQ(records_[0].side2->timingMarks, 30);
  EXPECT_THAT(records_[0].warnings, testing::IsEmpty());
}

TEST_F(CliScan, ATraceHoldsEveryByteInBothDirectionsAndReadsBack) {
  Start(kHeld, {.count = 2, .faults = {{simulator::FaultKind::Silence, 2}}});
  Read();
  std::map<simulator::Direction, std::string> traced, onWire;
  std::istringstream text(traceText_);
  for (const auto& record : ReadTrace(text, "t").session) traced[record.direction] += record.bytes;
  for (const auto& traffic : scanner_->Transcript()) onWire[traffic.direction] += traffic.bytes;
  EXPECT_EQ(traced, onWire);
  EXPECT_THAT(traceText_, AllOf(HasSubstr("|.READ 5 Y E.|"), HasSubstr("wait 10000"),
                                HasSubstr("end timed out"), HasSubstr("end arrived"), HasSubstr("close")));
}

TEST_F(CliScan, ATraceThatCannotBeWrittenIsToldOnceAndTheScanGoesOn) {
  int told = 0;
  Trace trace(time_, [&](const std::string& why) { told += why == "disk full" ? 1 : 0; });
  trace.Begin([](std::string_view) { throw CommandFailure("disk full"); }, 15, "a scanner", "");
  trace.Sent("abc");
  trace.Closed();
  EXPECT_EQ(told, 1);
}

TEST(CliConsole, AnErrorReportShowsItsLinesAndWhereNothingElseNamesItItsSource) {
  std::ostringstream errors;
  ConsoleHost host(std::make_shared<Console>(errors, false));
  host.RaiseError({.number = 8002,
                   .source = "s",
                   .message = "No port.",
                   .title = "Invalid Port Number",
                   .detail = "Try this|or\nthat"});
  host.RaiseError({.number = 9,
                   .source = "basScantron.ReadPageST",
                   .message = "Subscript out of range",
                   .title = "Application Error"});
  host.MsgBoxEx("Title", "bell\a");
  EXPECT_EQ(
      errors.str(),
      "Invalid Port Number: No port.\n  Try this\n  or\n  that\n"
      "Data Error: The scanner sent what the sheet cannot hold: a mark outside it, or a value that is none.\n"
      "  Check that the model is the right one, the cable and the line's settings, and where they are given "
      "the form's sizes and windows (--side1, --side2, --window).\n  (error 9 in basScantron.ReadPageST)\n"
      "Title: bell?\n");
  EXPECT_EQ(host.Messages(), 3);
}

TEST(CliConsole, AMessageTakesTheProgressLineAwayFirstAndNothingIsAnimatedWithoutATerminal) {
  for (const bool terminal : {true, false}) {
    std::ostringstream errors;
    Console console(errors, terminal);
    console.Progress(std::string(200, 'x'));
    console.Message("A", "b");
    console.ClearProgress();
    EXPECT_EQ(errors.str(),
              terminal ? '\r' + std::string(79, 'x') + '\r' + std::string(79, ' ') + "\rA: b\n" : "A: b\n");
  }
}

}  // namespace
}  // namespace tesk::cli
