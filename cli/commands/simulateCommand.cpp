// `teskread simulate`: is a scanner.
#include <charconv>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/ReaderChoice.h"
#include "cli/simulated/SimulatedScanner.h"
#include "cli/trace/TraceFile.h"

namespace tesk::cli {
namespace {

constexpr std::int32_t kMostSheets = 100'000;
constexpr std::size_t kTranscript = std::size_t{64} * 1024;  // bytes
constexpr std::size_t kComplaints = 100;

struct SimulateOptions {
  std::string reader;
  std::string sheets;
  std::string count;
  std::string seed;
  std::string side1;
  std::string side2;
  std::string link;
  std::string replay;
  bool paced = false;
  std::vector<std::string> faults;
};

// Generated sheets are of one size, front and back.
void ParseSizes(const SimulateOptions& options, StockOptions& stock) {
  if (!options.side1.empty()) stock.side1 = ParseSheetSizes("--side1", options.side1);
  if (!options.side2.empty()) stock.side2 = ParseSheetSizes("--side2", options.side2);
  if (!stock.side1) stock.side1 = stock.side2;
  if (stock.side1 && stock.side1->rows.size() > 1) {
    throw UsageError("--side1: generated sheets are of one size|--sheets takes sheets of any");
  }
  if (stock.side2 &&
      (stock.side2->rows != stock.side1->rows || stock.side2->columns != stock.side1->columns)) {
    throw UsageError(
        fmt::format("--side2: a generated back is as large as the front; write --side2 {}", options.side1));
  }
}

StockOptions ParseStock(const SimulateOptions& options) {
  StockOptions stock;
  stock.sheetFile = options.sheets;
  if (!stock.sheetFile.empty() && !(options.count + options.seed + options.side1 + options.side2).empty()) {
    throw UsageError(
        "--sheets: the sheets come from the file, so --count, --seed, --side1 and --side2 do not go "
        "with it");
  }
  if (!options.count.empty()) stock.count = ParseWholeNumber("--count", options.count, 0, kMostSheets);
  if (!options.seed.empty()) {
    const char* end = options.seed.data() + options.seed.size();
    const auto result = std::from_chars(options.seed.data(), end, stock.seed);
    if (result.ec != std::errc() || result.ptr != end) {
      throw UsageError(
          fmt::format("--seed: \"{}\" is no whole number from 0 to {}", options.seed, UINT64_MAX));
    }
  }
  ParseSizes(options, stock);
  return stock;
}

std::vector<simulator::Fault> ParseFaults(teskReaderType reader, const std::vector<std::string>& texts) {
  std::vector<simulator::Fault> faults;
  for (const std::string& text : texts) {
    const auto parsed = simulator::ParseFault(text, simulator::FaultKinds(reader));
    if (!parsed.fault) throw UsageError("--fault: " + parsed.error);
    faults.push_back(*parsed.fault);
  }
  return faults;
}

// Status 1 where the host did what the scanner does not accept.
int TellComplaints(const simulator::Scanner& scanner, std::string_view what, Console& console) {
  for (const std::string& complaint : scanner.Complaints()) {
    console.Message("teskread simulate", fmt::format("{}: {}", what, complaint));
  }
  if (scanner.Complaints().size() >= kComplaints) {
    console.Message("teskread simulate", "there may be more of them, which were not kept");
  }
  return scanner.Complaints().empty() ? kStatusDone : kStatusFailed;
}

// Behind a pseudo-terminal until the operator ends it.
void ServeUntilInterrupted(const SimulateOptions& options, teskReaderType reader, simulator::Scanner& scanner,
                           const Clock& clock, Program& program) {
  if (options.paced) scanner.PaceAt(LineRate(reader));
  platform::InstallInterruptHandler();
  // Weeks of service must not fill the memory; nobody asks for what was said long ago.
  scanner.KeepAtMost(kTranscript, kComplaints);
  const auto terminal = platform::CreatePseudoTerminal(options.link);
  if (!terminal->Replaced().empty()) {
    program.console->Message(
        "teskread simulate",
        fmt::format("--link {}: led to {} before, perhaps another simulated scanner; it leads "
                    "here now",
                    options.link, terminal->Replaced()));
  }
  program.output->Write(fmt::format("listening on {}\n", terminal->DevicePath()));
  Serve(*terminal, scanner, clock, [] { return platform::Interrupted(); });
}

void CheckReplayStandsAlone(const SimulateOptions& options) {
  const std::string others =
      options.reader + options.sheets + options.count + options.seed + options.side1 + options.side2;
  if (others.empty() && options.faults.empty()) return;
  throw UsageError(
      "--replay: the scanner, its sheets and its faults are the recorded ones, so only --link and --paced go "
      "with it");
}

int RunReplay(const SimulateOptions& options, Program& program) {
  CheckReplayStandsAlone(options);
  const auto clock = platform::CreateClock();
  RecordedTrace trace = ReadTraceFile(options.replay);
  simulator::Replay scanner(std::move(trace.session), clock->Now());
  ServeUntilInterrupted(options, trace.reader, scanner, *clock, program);
  scanner.End();
  return TellComplaints(scanner, "the host and " + options.replay + " part", *program.console);
}

int RunSimulate(const SimulateOptions& options, Program& program) {
  if (!options.replay.empty()) return RunReplay(options, program);
  if (options.reader.empty()) {
    throw UsageError(
        "--reader: is required, except with --replay; it takes a number or name from the list of models "
        "(teskread readers)");
  }
  const teskReaderType reader = ParseReader(options.reader);
  RequireLineSimulator(reader);
  const StockOptions stock = ParseStock(options);
  const auto scanner =
      CreateSimulatedScanner(reader, StockOf(reader, stock), ParseFaults(reader, options.faults), stock.seed);
  ServeUntilInterrupted(options, reader, *scanner, *platform::CreateClock(), program);
  return TellComplaints(*scanner, "the host sent what this scanner does not understand", *program.console);
}

std::string FaultsText(teskReaderType reader) {
  std::string text = fmt::format("Faults of the {} (each happens once):\n", ReaderName(reader));
  for (const simulator::FaultKind kind : simulator::FaultKinds(reader)) {
    const auto& fault = simulator::Describe(kind);
    text += fmt::format("  {:<24} {}\n", fault.form, fault.description);
  }
  return text;
}

// The faults of the reader that the command line names; without one, of a model that has them.
std::string FooterText(const SimulateOptions& options) {
  constexpr std::string_view kExamples =
      "\nExamples:\n"
      "  teskread simulate --reader 15 --link /tmp/scanner\n"
      "  teskread simulate --reader 15 --sheets class7.ndjson --paced --fault jam@3 --fault cut@100@5\n"
      "  teskread simulate --replay scan.trace --link /tmp/scanner\n";
  teskReaderType reader = teskReaderTypeScantronScanMark5500;
  if (!options.reader.empty()) reader = ParseReader(options.reader);
  try {
    RequireLineSimulator(reader);
  } catch (const CommandFailure& failure) {
    return Replace(failure.what(), "|", "\n") + "\n" + std::string(kExamples);
  }
  const std::string hint =
      options.reader.empty() ? "With --reader R, --help lists the faults of that model.\n" : "";
  return FaultsText(reader) + hint + std::string(kExamples);
}

void AddStockOptions(CLI::App& command, SimulateOptions& options) {
  command
      .add_option(
          "--sheets", options.sheets,
          Explain(
              "the sheets in the hopper: a file of what scan --format ndjson writes; without it sheets are "
              "generated, filled as people fill them",
              "--sheets class7.ndjson"))
      ->type_name("FILE");
  command.add_option("--count", options.count, Explain("how many sheets are generated (20)", "--count 200"))
      ->type_name("N");
  command
      .add_option(
          "--seed", options.seed,
          Explain("the same seed gives the same sheets and the same garbage everywhere (1)", "--seed 42"))
      ->type_name("S");
  command
      .add_option("--side1", options.side1,
                  Explain("rows and columns of the generated sheets (50x48)", "--side1 40x48"))
      ->type_name("RxC");
  command
      .add_option(
          "--side2", options.side2,
          Explain("generates the back too, of the same size; it is there anyway where the model reads both "
                  "sides",
                  "--side2 40x48"))
      ->type_name("RxC");
}

void AddLineOptions(CLI::App& command, SimulateOptions& options) {
  command
      .add_option(
          "--replay", options.replay,
          Explain("answers as the scanner did that scan --trace recorded, and checks every byte of the "
                  "host's; in place of --reader and the sheets",
                  "--replay scan.trace"))
      ->type_name("TRACE");
  command
      .add_option(
          "--link", options.link,
          Explain("a symbolic link to the pseudo-terminal, removed at the end", "--link /tmp/scanner"))
      ->type_name("PATH");
  command.add_flag("--paced", options.paced,
                   Explain("delivers bytes no faster than the bit rate that the model's profile proposes",
                           "teskread simulate --reader 15 --paced"));
  command
      .add_option(
          "--fault", options.faults,
          Explain("something that goes wrong at a sheet, see below; may be repeated", "--fault jam@3"))
      ->type_name("KIND@SHEET")
      ->allow_extra_args(false);
}

}  // namespace

void AddSimulateCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<SimulateOptions>();
  CLI::App* command = app.add_subcommand(
      "simulate", "Is a scanner: opens a pseudo-terminal and speaks that model's side of the wire");
  command
      ->add_option("--reader", options->reader,
                   Explain("the scanner model: its number or name in the list of models (teskread readers)",
                           "--reader 15"))
      ->type_name("R");
  AddStockOptions(*command, *options);
  AddLineOptions(*command, *options);
  command->footer([options] { return FooterText(*options); });
  command->callback(
      [options, &program] { program.run = [options, &program] { return RunSimulate(*options, program); }; });
}

}  // namespace tesk::cli
