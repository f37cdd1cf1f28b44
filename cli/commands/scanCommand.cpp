// `teskread scan`: reads sheets.
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/scan/ResultFiles.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/ScanRun.h"
#include "cli/scan/SheetWriter.h"
#include "cli/simulated/SimulatedOmr.h"
#include "cli/simulated/SimulatedScanner.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kFooter =
    "The model's defaults come first, then the settings saved under --key, then the options in the\n"
    "order of this list. Without --reader the saved settings name the reader.\n"
    "Models whose driver reads the rows and columns that it is told need --side1.\n"
    "--side2 makes the form two-sided where the scanner reads both sides (Duplex).\n"
    "The batch ends with a block that says how many sheets were read and why it ended.\n"
    "\n"
    "Examples:\n"
    "  teskread scan --reader 13 --port /dev/ttyUSB0 --side1 50x48 --output class7.ndjson\n"
    "  teskread scan --reader 15 --port sim --side1 50x48 --side2 50x48 --format grid";

// What a scan reads from: a serial line, or the library of the USB readers; without one the system's is taken.
struct Source {
  std::shared_ptr<SerialSystem> serial;
  std::shared_ptr<OmrLibraryLoader> omrLoader = nullptr;
};

Source SourceOf(const ScanPlan& plan) {
  if (!plan.port || plan.port->kind == PortChoice::Kind::Number) return {platform::CreateSerialSystem()};
  if (plan.port->kind == PortChoice::Kind::Device) return {platform::CreateSerialSystem(plan.port->device)};
  StockOptions stock;
  stock.side1 = plan.side1;
  stock.side2 = plan.side2;
  auto sheets = StockOf(plan.reader, stock);
  if (auto usb = CreateSimulatedOmr(plan.reader, sheets)) {
    return {platform::CreateSerialSystem(), std::move(usb)};
  }
  return {std::make_shared<SimulatedSerial>(CreateSimulatedScanner(plan.reader, std::move(sheets)),
                                            platform::CreateClock())};
}

// Also after a batch that failed: what was read is brought to the disk, and scripts learn what came of it. What
// ended the batch before stays the reason.
void EndFiles(SheetWriter& writer, BatchReport& report, Console& console) {
  const auto end = [&](const std::string& title, auto action) {
    try {
      action();
    } catch (const CommandFailure& failure) {
      console.Message(title, failure.what());
      if (report.end == BatchEnd::Message || report.end == BatchEnd::SilentFault) return;
      report.end = BatchEnd::Message;
      report.message = {title, failure.what()};
    }
  };
  end("Results Not Written", [&] { writer.End(); });
  end("Summary Not Written", [&] { writer.WriteSummary(report); });
}

int RunScanCommand(ScanPlan& plan, Program& program) {
  CompleteScanPlan(plan);
  CheckFiles(plan);
  SheetWriter writer(plan, *program.output);
  Source source = SourceOf(plan);
  BatchReport report =
      RunScan(plan, std::move(source.serial), program.console, writer, std::move(source.omrLoader));
  EndFiles(writer, report, *program.console);
  program.console->Message("teskread scan", ClosingText(report));
  return StatusOf(report);
}

}  // namespace

void AddScanCommand(CLI::App& app, Program& program) {
  const auto plan = std::make_shared<ScanPlan>();
  CLI::App* command =
      app.add_subcommand("scan", "Reads sheets until the hopper is empty, --max-sheets, or Ctrl-C");
  AddScanOptions(*command, *plan);
  command->footer(std::string(kFooter));
  command->callback(
      [plan, &program] { program.run = [plan, &program] { return RunScanCommand(*plan, program); }; });
}

}  // namespace tesk::cli
