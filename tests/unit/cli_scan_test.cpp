// A batch through the command line's parts, in memory and in virtual time: what is delivered, how it ends
// when the operator asks, and what the trace holds.
#include <iterator>
#include <map>
#include <memory>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandError.h"
#include "cli/scan/BatchHost.h"
#include "cli/scan/scanSetup.h"
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
  void Start(teskReaderType type, simulator::Options options, const std::string& more = {}) {
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
    std::vector<std::string> arguments{"--reader", std::to_string(type), "--port", "sim"};
    if (more.find("--side1") == std::string::npos)
      arguments.insert(arguments.end(), {"--side1", "50x48", "--side2", "50x48"});
    std::istringstream words(more);
    arguments.insert(arguments.end(), std::istream_iterator<std::string>(words), {});
    test::ParseScan(std::move(arguments), plan_);
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
    return batch_->Report(engine_->ReadBatch(false, plan_.maxSheets, count));
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
  bool interrupted_ = false;
  std::vector<std::string> keptAs_;
};

TEST_F(CliScan, AnInterruptDoesNotWaitForAScannerThatFellSilent) {
  Start(kHeld, {.count = 5, .faults = {{simulator::FaultKind::Cut, 1, 100}}}, "--set TimeOut=600");
  onMessages_ = [this](int) { interrupted_ = interrupted_ || scanner_->SheetsLeft() == 4; };
  Read();
  EXPECT_LT(time_->Elapsed(), Milliseconds(20000));
  EXPECT_TRUE(records_.empty());
  EXPECT_EQ(errors_.str(), "");
  EXPECT_FALSE(engine_->fComm()->mscComm()->PortOpen());
}

TEST_F(CliScan, ASheetWhoseWayOutWasNotAwaitedIsNotSaidToHaveLeft) {
  Start(kHeld, {.count = 5, .faults = {{simulator::FaultKind::SilenceEject, 2}}}, "--set TimeOut=600");
  onMessages_ = [this](int) { interrupted_ = interrupted_ || keptAs_.size() == 2; };
  EXPECT_EQ(StatusOf(Read()), 130);
  ASSERT_EQ(records_.size(), 2U);
  EXPECT_EQ(records_[0].disposed, "ejected");
  EXPECT_EQ(records_[1].disposed, "failed");
}

struct EndCase {
  teskReaderType type;
  simulator::Options scanner;
  const char* options;
  BatchEnd end;
  const char* outcome;  // title of the ending message|sheets written, by their ends|rejected|warnings|status
  const char* told = "";  // what stands among the messages
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
  const simulator::Options jam = with(FaultKind::Jam), mute = with(FaultKind::SilenceEject);
  const char* off = "--set Rejecter=False";
  return {{kHeld, {.count = 2}, "", HopperEmpty, "|ee|0|0|0"},
          {kHeld, {.count = 0}, "", HopperEmpty, "||0|0|1"},
          {kHeld, {.count = 3}, "--max-sheets 2", MaxSheets, "|ee|0|0|0"},
          {kHeld, jam, "", Message, "Paper Jam|e|0|0|1"},
          {kHeld, jam, "--max-sheets 2", Message, "Paper Jam|e|0|0|1"},
          {kHeld, with(FaultKind::UnknownStatus), "", SilentFault, "|e|0|0|1"},
          {kHeld, {.count = 2}, "--dispose reject", HopperEmpty, "|rr|0|0|0"},
          {kHeld, {.count = 3}, "--set Rejecter=False --dispose none --max-sheets 2", MaxSheets, "|ne|0|0|0"},
          {teskReaderTypeScantron8000, {.count = 1}, "", HopperEmpty, "|n|0|0|0"},
          {kHeld, mute, "--set TimeOut=1", Message, "Eject Page Error|ef|0|0|1"},
          {kHeld, dark, "", HopperEmpty, "|ee|1|0|0", second},
          {kHeld, firstDark, "", HopperEmpty, "|e|1|0|0", "The first sheet cannot"},
          {kHeld, darkAndStuck, off, Message, "Eject Page Error|e|1|0|1", stuck},
          {kHeld, dark, off, Message, "Sheet Refused|e|1|0|1"},
          {kHeld, cut, "", HopperEmpty, "|eee|0|2|0"},
          {kHeld, cut, "--strict", Message, "Warning|ee|0|2|1"},
          {kHeld, cut, "--set Rejecter=False --dispose none --strict", Message, "Warning|ne|0|2|1"}};
}

class CliBatchEnd : public CliScan, public testing::WithParamInterface<EndCase> {};

TEST_P(CliBatchEnd, IsToldAsItWas) {
  const auto& [type, scanner, options, end, outcome, told] = GetParam();
  Start(type, scanner, options);
  const BatchReport report = Read();
  EXPECT_EQ(static_cast<int>(report.end), static_cast<int>(end)) << ClosingText(report);
  std::string disposed;
  for (const auto& record : records_) disposed += record.disposed.front();
  std::ostringstream ended;
  ended << report.message.title << '|' << disposed << '|' << report.rejected << '|' << report.warnings << '|'
        << StatusOf(report);
  EXPECT_EQ(ended.str(), outcome) << errors_.str();
  EXPECT_EQ(report.sheets, static_cast<std::int32_t>(disposed.size()));
  EXPECT_THAT(errors_.str(), HasSubstr(told));
  EXPECT_FALSE(engine_->fComm()->mscComm()->PortOpen());
}

INSTANTIATE_TEST_SUITE_P(Ends, CliBatchEnd, testing::ValuesIn(EndCases()));

TEST_F(CliScan, WhatIsWrongWithASheetIsSaidOfItAlone) {
  Start(kHeld,
        {.count = 4, .faults = {{simulator::FaultKind::TooDark, 2}, {simulator::FaultKind::Short, 3}}});
  Read();
  EXPECT_EQ(scanner_->Disposals().at(1).exit, simulator::Exit::Rejected);
  EXPECT_THAT(errors_.str(),
              HasSubstr("side 1, row 34, column 17 has the value 78; this scanner's marks go from 0 to 15"));
  ASSERT_EQ(records_.size(), 3U);
  EXPECT_EQ(records_[1].sheet, 2);
  EXPECT_TRUE(records_[0].warnings.empty() && records_[2].warnings.empty());
  EXPECT_THAT(records_[1].warnings,
              testing::Contains(HasSubstr("mark positions that were asked for did not come")));
}

TEST_F(CliScan, AWholeSheetOfASmallerDefinitionMissesNothing) {
  Start(kHeld, {.count = 1}, "--side1 50x48,50x48 --side2 30x48,50x48");
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
