// `teskread scan`: reads sheets.
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/ReaderChoice.h"
#include "cli/scan/ResultFiles.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/ScanRun.h"
#include "cli/scan/SheetWriter.h"
#include "cli/simulated/SimulatedOmr.h"
#include "cli/simulated/SimulatedScanner.h"
#include "cli/simulated/SimulatedSerial.h"
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

void AddEngineOptions(CLI::App& command, ScanOptions& options) {
  const auto many = [](CLI::Option* option) { return option->allow_extra_args(false); };
  command
      .add_option("--reader", options.reader,
                  Explain("the scanner model: its number or name in the list of models (teskread readers)",
                          "--reader \"Scantron Scanmark 5500\""))
      ->type_name("R");
  AddSettingsKeyOptions(command, options.key, false);
  command
      .add_option("--port", options.port,
                  Explain("1 to 16, a device path, or sim: a simulated scanner of the chosen model",
                          "--port /dev/ttyUSB0"))
      ->type_name("P");
  many(command.add_option(
           "--set", options.assignments,
           Explain("sets a value by its name (teskread help settings lists them); may be repeated",
                   "--set TimeOut=3 --set Duplex=False")))
      ->type_name("NAME=VALUE");
  command
      .add_option(
          "--side1", options.side1,
          Explain("rows and columns of the sheets' front, one size per sheet definition", "--side1 50x48"))
      ->type_name("RxC[,RxC...]");
  command
      .add_option("--side2", options.side2,
                  Explain("the same of the back, as many sizes as --side1", "--side2 50x48"))
      ->type_name("RxC[,RxC...]");
  many(command.add_option(
           "--window", options.windows,
           Explain("adds a read window and reads windows instead of pages: StartRow,NumRows,RowGap,"
                   "StartCol,NumCols,ColGap,Page,Orientation; may be repeated",
                   "--window 1,10,1,1,5,1,1,0")))
      ->type_name("FIELDS");
  many(command.add_option(
           "--barcode", options.barcodes,
           Explain("adds a barcode definition and switches barcodes on: Page,Field,Distance,Length,"
                   "Symbology,Orientation; may be repeated",
                   "--barcode 1,1,30,8,teskBarcodeTypeCode39,1")))
      ->type_name("FIELDS");
  many(command.add_option("--imprint", options.imprints,
                          Explain("a text to print on every sheet; up to 3 times", "--imprint \"Room 7\"")))
      ->type_name("TEXT");
  command
      .add_option("--imprint-position", options.imprintPosition,
                  Explain("where the imprint stands, in the model's own units", "--imprint-position 12"))
      ->type_name("N");
}

void AddBatchOptions(CLI::App& command, ScanOptions& options) {
  command
      .add_option("--max-sheets", options.maxSheets,
                  Explain("ends after so many sheets; none or negative: no limit", "--max-sheets 30"))
      ->type_name("N");
  command
      .add_option("--dispose", options.dispose,
                  Explain("what is done with each sheet after it was read: eject (default), reject or none",
                          "--dispose reject"))
      ->type_name("WHAT");
  command
      .add_option(
          "--format", options.format,
          Explain(
              "ndjson (one JSON object per line and sheet), csv (sheet,side,row,column,value), or grid (a "
              "picture); default grid on a terminal, else ndjson",
              "--format csv"))
      ->type_name("FORMAT");
  command
      .add_option(
          "--output", options.output,
          Explain("writes the sheets to a new file instead of standard output; a file that is there is "
                  "refused, unless --append",
                  "--output class7.ndjson"))
      ->type_name("FILE");
  command.add_flag("--append", options.append,
                   Explain("goes on in the file of --output, behind its last sheet and with its numbering",
                           "--output class7.ndjson --append"));
  command.add_flag(
      "--strict", options.strict,
      Explain("a sheet with a warning (rows that did not come, timing marks that differ) ends the batch",
              "--strict"));
  command
      .add_option("--summary", options.summary,
                  Explain("writes how the batch ended as one JSON object", "--summary class7.json"))
      ->type_name("FILE");
  command
      .add_option(
          "--trace", options.trace,
          Explain("records every byte on the wire and every wait with its time", "--trace scan.trace"))
      ->type_name("FILE");
}

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

int RunScanCommand(const ScanOptions& options, Program& program) {
  const ScanPlan plan = ParseScanOptions(options);
  RequireDriver(plan.reader);
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
  const auto options = std::make_shared<ScanOptions>();
  CLI::App* command =
      app.add_subcommand("scan", "Reads sheets until the hopper is empty, --max-sheets, or Ctrl-C");
  AddEngineOptions(*command, *options);
  AddBatchOptions(*command, *options);
  command->footer(std::string(kFooter));
  command->callback([options, &program] {
    program.run = [options, &program] { return RunScanCommand(*options, program); };
  });
}

}  // namespace tesk::cli
