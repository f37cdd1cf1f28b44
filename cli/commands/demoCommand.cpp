// `teskread demo`: a simulated scanner and a scan of its sheets, no hardware needed.
#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/ReaderChoice.h"
#include "cli/options.h"
#include "cli/scan/GridText.h"
#include "cli/scan/ScanRun.h"
#include "cli/simulated/SimulatedScanner.h"
#include "profiles/catalogue.h"

namespace tesk::cli {
namespace {

struct DemoOptions {
  teskReaderType reader = teskReaderTypeScantronScanMark5500;
  std::int32_t sheets = 3;
  bool paced = false;
};

// The scanner, and the road to it: a pseudo-terminal where the system has them, else the memory.
class DemoScanner {
 public:
  DemoScanner(teskReaderType reader, std::vector<simulator::Sheet> stock, bool paced)
      : scanner_(CreateSimulatedScanner(reader, std::move(stock))) {
    if (paced) scanner_->PaceAt(LineRate(reader));
    try {
      terminal_ = platform::CreatePseudoTerminal();
    } catch (const RunTimeError& error) {
      if (error.Number() != kErrorNotSupported) throw;
      return;
    }
    thread_ = std::thread([this] { ServeUntilStopped(); });
  }
  DemoScanner(const DemoScanner&) = delete;
  DemoScanner& operator=(const DemoScanner&) = delete;
  ~DemoScanner() { Stop(); }

  std::string Place() const { return terminal_ ? terminal_->DevicePath() : "memory"; }

  std::shared_ptr<SerialSystem> Serial() const {
    if (terminal_) return platform::CreateSerialSystem(terminal_->DevicePath());
    return std::make_shared<SimulatedSerial>(scanner_, clock_);
  }

  // What went wrong on the scanner's side; stops it.
  std::vector<std::string> Troubles() {
    Stop();
    auto troubles = scanner_->Complaints();
    if (!failure_.empty()) troubles.push_back(failure_);
    return troubles;
  }

 private:
  void ServeUntilStopped() {
    try {
      Serve(*terminal_, *scanner_, *clock_, [this] { return stop_.load(); });
    } catch (const std::exception& error) {
      failure_ = error.what();
    }
  }

  void Stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
  }

  std::shared_ptr<simulator::SheetScanner> scanner_;
  std::shared_ptr<const Clock> clock_ = platform::CreateClock();
  std::unique_ptr<platform::PseudoTerminal> terminal_;
  std::atomic<bool> stop_ = false;
  std::string failure_;  // of the thread; read after it ended
  std::thread thread_;
};

// Scanners that send raw values cannot send 13, which ends their data.
void AvoidDataEnd(SideArray& side) {
  for (std::int32_t row = 1; row <= side.Rows(); ++row) {
    for (std::int32_t column = 1; column <= side.Columns(); ++column) {
      if (side.At(row, column) == '\r') side.At(row, column) = '\r' - 1;
    }
  }
}

std::vector<simulator::Sheet> DemoStock(teskReaderType reader, std::int32_t count) {
  StockOptions options;
  options.count = count;
  auto stock = StockOf(reader, options);
  for (auto& sheet : stock) {
    AvoidDataEnd(sheet.side1);
    AvoidDataEnd(sheet.side2);
  }
  return stock;
}

ScanPlan DemoPlan(teskReaderType reader, const SideArray& front, std::int32_t count) {
  ScanPlan plan;
  plan.reader = reader;
  plan.port = PortChoice{};
  plan.side1 = SheetSizes{{Narrow<std::int16_t>(front.Rows())}, {Narrow<std::int16_t>(front.Columns())}};
  if (ReadsBothSides(reader)) plan.side2 = plan.side1;
  plan.maxSheets = count;
  return plan;
}

std::int16_t ValueAt(const SideArray& side, std::int32_t row, std::int32_t column) {
  return row <= side.Rows() && column <= side.Columns() ? side.At(row, column) : std::int16_t{0};
}

// Compares a side with the paper. Drivers with a fixed grid hand out more positions than the paper has;
// scanners that tell marks alone hand out the threshold plus one for each. On generated paper a mark is darker
// than the middle of the scale, an erasure lighter.
class SideJudge {
 public:
  SideJudge(std::int16_t threshold, std::int16_t darkest) : threshold_(threshold), middle_(darkest / 2) {}

  bool Same(const SideArray& read, const SideArray& paper) const {
    const bool marksAlone = TellsMarksAlone(read);
    return All(std::max(read.Rows(), paper.Rows()), std::max(read.Columns(), paper.Columns()),
               [&](std::int32_t row, std::int32_t column) {
                 const std::int16_t expected = ValueAt(paper, row, column);
                 const std::int16_t value = ValueAt(read, row, column);
                 return marksAlone ? (value != 0) == (expected > middle_) : value == expected;
               });
  }

 private:
  bool TellsMarksAlone(const SideArray& read) const {
    return All(read.Rows(), read.Columns(), [&](std::int32_t row, std::int32_t column) {
      const std::int16_t value = read.At(row, column);
      return value == 0 || value == threshold_ + 1;
    });
  }

  template <class Test>
  static bool All(std::int32_t rows, std::int32_t columns, Test test) {
    for (std::int32_t row = 1; row <= rows; ++row) {
      for (std::int32_t column = 1; column <= columns; ++column) {
        if (!test(row, column)) return false;
      }
    }
    return true;
  }

  std::int16_t threshold_;
  int middle_;
};

// The back counts where it was read.
bool Same(const SheetRecord& record, const simulator::Sheet& sheet, const clsTeskReader& engine) {
  const SideJudge judge(engine.RecognitionThreshold(), DarkestMark(engine.ReaderType()));
  return judge.Same(record.side1.marks, sheet.side1) &&
         (!record.side2 || judge.Same(record.side2->marks, sheet.side2));
}

// Shows every sheet and compares it with the paper.
class DemoJudge : public SheetTaker {
 public:
  DemoJudge(const std::vector<simulator::Sheet>& stock, Program& program)
      : stock_(stock), program_(program) {}

  void Keep(const clsTeskReader& engine, const SheetRecord& record) override {
    const bool color = platform::StandardOutputIsTerminal() && TerminalShowsColor();
    program_.output->Write(GridText(record, engine.ReaderName(),
                                    {.threshold = engine.RecognitionThreshold(),
                                     .darkest = engine.RecognitionThresholdMax(),
                                     .color = color}));
    const auto index = static_cast<std::size_t>(record.sheet) - 1;
    if (index < stock_.size() && Same(record, stock_[index], engine)) {
      ++good_;
    } else {
      program_.console->Message("teskread demo", fmt::format("sheet {} was read wrong", record.sheet));
    }
  }

  std::size_t Good() const { return good_; }

 private:
  const std::vector<simulator::Sheet>& stock_;
  Program& program_;
  std::size_t good_ = 0;
};

// The last line is what scripts look for.
std::string SummaryText(std::size_t good, std::size_t all) {
  const std::string judgement =
      good == all ? "every mark as it is on the paper" : "the others are lost or differ from the paper";
  return fmt::format("\n{0} of {1} sheets read, {2}\n{0} sheets read, {3} lost\n", good, all, judgement,
                     all - good);
}

int RunDemo(const DemoOptions& options, Program& program) {
  const teskReaderType reader = options.reader;
  RequireDriver(reader);
  RequireLineSimulator(reader);
  platform::InstallInterruptHandler();
  const auto stock = DemoStock(reader, options.sheets);
  DemoScanner scanner(reader, stock, options.paced);
  program.output->Write(fmt::format("A simulated {} listens on {}.\n", ReaderName(reader), scanner.Place()));
  DemoJudge judge(stock, program);
  const BatchReport report = RunScan(DemoPlan(reader, stock.front().side1, options.sheets), scanner.Serial(),
                                     program.console, judge);
  const auto troubles = scanner.Troubles();
  for (const auto& trouble : troubles) program.console->Message("teskread demo", "the scanner: " + trouble);
  program.output->Write(SummaryText(judge.Good(), stock.size()));
  const int status = StatusOf(report);
  const bool whole = troubles.empty() && judge.Good() == stock.size();
  return status == kStatusDone && !whole ? kStatusFailed : status;
}

}  // namespace

void AddDemoCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<DemoOptions>();
  CLI::App* command = app.add_subcommand("demo", "Reads sheets from a simulated scanner, no hardware needed");
  AddOption(
      *command,
      {"--reader", "R", "the scanner model: its number or name in the list of models (15)", "--reader 13"},
      options->reader, ParseReader);
  AddOption(*command, {"--sheets", "N", "how many sheets are read (3)", "--sheets 5"}, options->sheets,
            WholeFrom<std::int32_t>(1, 1000));
  AddFlag(*command, {"--paced", "", "as slow as the scanner's line would be", "teskread demo --paced"},
          options->paced);
  command->footer("The last line says how many sheets were read and how many lost.");
  command->callback(
      [options, &program] { program.run = [options, &program] { return RunDemo(*options, program); }; });
}

}  // namespace tesk::cli
