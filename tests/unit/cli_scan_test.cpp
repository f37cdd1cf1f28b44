// A batch through the command line's parts, in memory and in virtual time: what is delivered, how it ends
// when the operator asks, and what the trace holds.
#include <memory>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/BatchHost.h"
#include "cli/CommandError.h"
#include "cli/SimulatedSerial.h"
#include "cli/Trace.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"

namespace tesk::cli {
namespace {

using simulator::Exit;
using testing::AllOf;
using testing::HasSubstr;

// teskread's own arrangement around an engine, with everything that it writes kept in memory.
class CliScan : public testing::Test {
 protected:
  void Start(teskReaderType type, simulator::Options options, std::vector<std::string> assignments = {}) {
    scanner_ = simulator::CreateScanner(type, std::move(options));
    time_->nextDue = [this] { return scanner_->NextDue(); };
    auto traceStream = std::make_unique<std::ostringstream>();
    traceText_ = traceStream.get();
    trace_ = std::make_shared<Trace>(time_, [] {});
    trace_->Begin(std::move(traceStream), type, "a scanner", "Duplex=True");
    engine_ = CreateReader(
        {.serial = std::make_shared<ObservedSerialSystem>(
             std::make_shared<SimulatedSerial>(scanner_, time_),
             std::vector<std::shared_ptr<LineObserver>>{activity_, trace_}),
         .loop = time_,
         .clock = time_,
         .timer = std::make_shared<TracedTimer>(std::make_shared<DeadlineTimer>(time_), trace_)});
    trace_->CancelledBy([this] { return engine_->CancelScan(); });
    engine_->SetError(host_);
    ScanOptions scan;
    scan.reader = std::to_string(type);
    scan.port = "sim";
    scan.side1 = scan.side2 = "50x48";
    scan.assignments = std::move(assignments);
    ConfigureEngine(ParseScanOptions(scan), *engine_);
    batch_ = std::make_unique<BatchHost>(
        *engine_, BatchHost::Parts{.console = console_,
                                   .activity = activity_,
                                   .clock = time_,
                                   .interrupted = [this] { return interrupted_; },
                                   .deliver = [this](const SheetRecord& record) { Deliver(record); }});
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

  void Deliver(const SheetRecord& record) {
    if (deliveryFails_) throw CommandFailure("disk full");
    records_.push_back(record);
  }

  bool Read(std::int32_t maxSheets = -1) {
    std::int32_t count = 0;
    return engine_->ReadBatch(false, maxSheets, count);
  }

  std::shared_ptr<test::VirtualTime> time_ = std::make_shared<test::VirtualTime>();
  std::shared_ptr<LineActivity> activity_ = std::make_shared<LineActivity>(time_);
  std::ostringstream errors_;
  std::shared_ptr<Console> console_ = std::make_shared<Console>(errors_, false);
  std::shared_ptr<ConsoleHost> host_ = std::make_shared<ConsoleHost>(console_);
  std::shared_ptr<simulator::SheetScanner> scanner_;
  std::ostringstream* traceText_ = nullptr;
  std::shared_ptr<Trace> trace_;
  std::shared_ptr<clsTeskReader> engine_;
  std::unique_ptr<BatchHost> batch_;
  std::vector<SheetRecord> records_;
  std::function<void(int)> onMessages_;
  bool interrupted_ = false;
  bool deliveryFails_ = false;
};

TEST_F(CliScan, EverySheetArrivesAsItWasAndIsEjectedBeforeItIsDelivered) {
  const auto sheets = simulator::GenerateSheets(3, 5, {50, 48, true}, 15);
  Start(teskReaderTypeScantronScanMark5500, {.sheets = sheets});
  EXPECT_TRUE(Read());
  ASSERT_EQ(records_.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(records_[i].side1.marks, sheets[i].side1);
    ASSERT_TRUE(records_[i].side2);
    EXPECT_EQ(records_[i].side2->marks, sheets[i].side2);
    EXPECT_EQ(records_[i].disposed, "eject");
  }
  EXPECT_EQ(scanner_->Disposals().size(), 3U);
  EXPECT_EQ(scanner_->Disposals()[2].exit, Exit::Accepted);
  EXPECT_EQ(host_->Messages(), 0);
  EXPECT_TRUE(scanner_->Complaints().empty());
}

TEST_F(CliScan, AnInterruptWhileAHandFedScannerWaitsEndsAtOnceAndQuietly) {
  Start(teskReaderTypeScantronScanMark2000, {.count = 0});
  onMessages_ = [this](int turn) { interrupted_ = turn > 50; };
  EXPECT_TRUE(Read());
  EXPECT_LT(time_->Elapsed(), Milliseconds(5000));
  EXPECT_EQ(errors_.str(), "");
  EXPECT_FALSE(engine_->fComm()->mscComm()->PortOpen());
}

TEST_F(CliScan, AnInterruptInMidSheetLetsTheSheetLeaveProperly) {
  Start(teskReaderTypeScantronScanMark5500, {.count = 5, .timings = {.reading = Milliseconds(1500)}});
  onMessages_ = [this](int) { interrupted_ = interrupted_ || scanner_->SheetsLeft() == 3; };
  EXPECT_TRUE(Read());
  EXPECT_EQ(records_.size(), 2U);
  ASSERT_EQ(scanner_->Disposals().size(), 2U);
  EXPECT_EQ(scanner_->Disposals()[1].exit, Exit::Accepted);
  EXPECT_EQ(scanner_->SheetsLeft(), 3U);
  EXPECT_EQ(errors_.str(), "");
}

TEST_F(CliScan, AnInterruptDoesNotWaitForAScannerThatFellSilent) {
  Start(teskReaderTypeScantronScanMark5500, {.count = 5, .faults = {{simulator::FaultKind::Cut, 1, 100}}},
        {"TimeOut=600"});
  onMessages_ = [this](int) { interrupted_ = interrupted_ || scanner_->SheetsLeft() == 4; };
  Read();
  EXPECT_LT(time_->Elapsed(), Milliseconds(20000));
  EXPECT_TRUE(records_.empty());
  EXPECT_EQ(errors_.str(), "");
  EXPECT_FALSE(engine_->fComm()->mscComm()->PortOpen());
}

TEST_F(CliScan, ASheetThatCannotBeWrittenEndsTheBatchWithThePaperOut) {
  deliveryFails_ = true;
  Start(teskReaderTypeScantronScanMark5500, {.count = 5});
  EXPECT_TRUE(Read());
  EXPECT_EQ(batch_->DeliveryFailure(), "disk full");
  EXPECT_EQ(scanner_->Disposals().size(), 1U);
  EXPECT_EQ(host_->Messages(), 0);
}

TEST_F(CliScan, MessagesArePrintedByTitleAndCounted) {
  Start(teskReaderTypeScantronScanMark5500, {.count = 5, .faults = {{simulator::FaultKind::DoubleFeed, 2}}});
  Read();
  EXPECT_EQ(records_.size(), 1U);
  EXPECT_EQ(host_->Messages(), 1);
  EXPECT_EQ(errors_.str(),
            "Double Feed: The Scantron scanner reports a double feed. Please rescan the page.\n");
}

TEST_F(CliScan, EveryLineOfATraceFollowsItsGrammar) {
  Start(teskReaderTypeScantronScanMark5500, {.count = 2, .faults = {{simulator::FaultKind::Silence, 2}}});
  Read();
  const std::regex header("(teskread-trace 1|version [0-9.]+|reader [0-9]+ .+|settings .*|)");
  const std::regex event(
      " *[0-9]+\\.[0-9]{6} (open [0-9]+ [0-9]+,[NEOMS],[4-8],(1|1\\.5|2) [a-z-]+|close"
      "|[<>] (?:[0-9A-F]{2} ){1,16} *\\|.{1,16}\\||wait [0-9]+|end (arrived|timed out|cancelled))");
  std::istringstream lines(traceText_->str());
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    EXPECT_TRUE(std::regex_match(line, number <= 5 ? header : event)) << number << ": " << line;
  }
  EXPECT_THAT(traceText_->str(),
              AllOf(HasSubstr("|.READ 5 Y E.|"), HasSubstr("wait 10000"), HasSubstr("end timed out"),
                    HasSubstr("end arrived"), HasSubstr("close")));
}

TEST_F(CliScan, ATraceHoldsEveryByteInBothDirections) {
  Start(teskReaderTypeScantronScanMark5500, {.count = 2});
  Read();
  std::map<char, std::string> traced;
  std::istringstream lines(traceText_->str());
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find_first_of("<>");
    if (at == std::string::npos) continue;
    std::istringstream hex(line.substr(at + 1, 48));
    for (std::string byte; hex >> byte;) {
      traced[line[at]] += static_cast<char>(std::stoi(byte, nullptr, 16));
    }
  }
  std::map<char, std::string> onWire;
  for (const auto& traffic : scanner_->Transcript()) {
    onWire[traffic.direction == simulator::Direction::FromHost ? '>' : '<'] += traffic.bytes;
  }
  EXPECT_EQ(traced, onWire);
}

TEST_F(CliScan, ATraceThatCannotBeWrittenIsToldOnceAndTheScanGoesOn) {
  class FullDisk : public std::stringbuf {
    int sync() override { return -1; }
  };
  FullDisk disk;
  int told = 0;
  Trace trace(time_, [&] { ++told; });
  trace.Begin(std::make_unique<std::ostream>(&disk), 15, "a scanner", "");
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
  EXPECT_EQ(errors.str(),
            "Invalid Port Number: No port.\n  Try this\n  or\n  that\n"
            "Application Error: Subscript out of range\n  (error 9 in basScantron.ReadPageST)\n"
            "Title: bell?\n");
  EXPECT_EQ(host.Messages(), 3);
}

TEST(CliConsole, WithoutATerminalNothingIsAnimated) {
  std::ostringstream errors;
  Console console(errors, false);
  console.Progress("3 sheets");
  console.ClearProgress();
  EXPECT_EQ(errors.str(), "");
}

TEST(CliConsole, AMessageTakesTheProgressLineAwayFirst) {
  std::ostringstream errors;
  Console console(errors, true);
  console.Progress(std::string(200, 'x'));
  console.Message("A", "b");
  EXPECT_EQ(errors.str(), '\r' + std::string(79, 'x') + '\r' + std::string(79, ' ') + "\rA: b\n");
}

}  // namespace
}  // namespace tesk::cli
