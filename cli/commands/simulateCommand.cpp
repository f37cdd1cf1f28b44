// `teskread simulate`: is a scanner.
#include <charconv>
#include <memory>
#include <optional>
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
#include "cli/options.h"
#include "cli/simulated/SimulatedScanner.h"
#include "cli/trace/TraceFile.h"

namespace tesk::cli {
namespace {

constexpr std::int32_t kMostSheets = 100'000;
constexpr std::size_t kTranscript = std::size_t{64} * 1024;  // bytes
constexpr std::size_t kComplaints = 100;

struct SimulateOptions {
  teskReaderType reader = teskReaderTypeNone;
  std::string sheets;
  std::optional<std::int32_t> count;
  std::optional<std::uint64_t> seed;
  std::optional<SheetSizes> side1;
  std::optional<SheetSizes> side2;
  std::string link;
  std::string replay;
  bool paced = false;
  std::vector<std::string> faults;  // which there are depends on the reader

  bool Generates() const { return count || seed || side1 || side2; }
};

std::uint64_t ReadSeed(std::string_view option, const std::string& text) {
  std::uint64_t seed = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, seed);
  if (result.ec == std::errc() && result.ptr == end) return seed;
  throw UsageError(fmt::format("{}: \"{}\" is no whole number from 0 to {}", option, text, UINT64_MAX));
}

// Generated sheets are of one size, front and back.
void TakeSizes(const SimulateOptions& options, StockOptions& stock) {
  stock.side1 = options.side1 ? options.side1 : options.side2;
  stock.side2 = options.side2;
  if (stock.side1 && stock.side1->rows.size() > 1) {
    throw UsageError("--side1: generated sheets are of one size|--sheets takes sheets of any");
  }
  if (stock.side2 &&
      (stock.side2->rows != stock.side1->rows || stock.side2->columns != stock.side1->columns)) {
    throw UsageError(fmt::format("--side2: a generated back is as large as the front; write --side2 {}x{}",
                                 stock.side1->rows[0], stock.side1->columns[0]));
  }
}

StockOptions StockOf(const SimulateOptions& options) {
  if (!options.sheets.empty() && options.Generates()) {
    throw UsageError(
        "--sheets: the sheets come from the file, so --count, --seed, --side1 and --side2 do not go "
        "with it");
  }
  StockOptions stock;
  stock.sheetFile = options.sheets;
  stock.count = options.count.value_or(stock.count);
  stock.seed = options.seed.value_or(stock.seed);
  TakeSizes(options, stock);
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
  if (options.reader == teskReaderTypeNone && options.sheets.empty() && !options.Generates() &&
      options.faults.empty()) {
    return;
  }
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
  if (options.reader == teskReaderTypeNone) {
    throw UsageError(
        "--reader: is required, except with --replay; it takes a number or name from the list of models "
        "(teskread readers)");
  }
  const teskReaderType reader = options.reader;
  const StockOptions stock = StockOf(options);
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
  const bool named = options.reader != teskReaderTypeNone;
  const teskReaderType reader = named ? options.reader : teskReaderTypeScantronScanMark5500;
  try {
    RequireLineSimulator(reader);
  } catch (const CommandFailure& failure) {
    return Replace(failure.what(), "|", "\n") + "\n" + std::string(kExamples);
  }
  const std::string hint = !named ? "With --reader R, --help lists the faults of that model.\n" : "";
  return FaultsText(reader) + hint + std::string(kExamples);
}

void AddStockOptions(CLI::App& command, SimulateOptions& options) {
  AddOption(command,
            {"--sheets", "FILE",
             "the sheets in the hopper: a file of what scan --format ndjson writes; without it sheets are "
             "generated, filled as people fill them",
             "--sheets class7.ndjson"},
            options.sheets);
  AddOption(command, {"--count", "N", "how many sheets are generated (20)", "--count 200"}, options.count,
            WholeFrom<std::int32_t>(0, kMostSheets));
  AddOption(
      command,
      {"--seed", "S", "the same seed gives the same sheets and the same garbage everywhere (1)", "--seed 42"},
      options.seed, ReadSeed);
  AddOption(command, {"--side1", "RxC", "rows and columns of the generated sheets (50x48)", "--side1 40x48"},
            options.side1, ParseSheetSizes);
  AddOption(command,
            {"--side2", "RxC",
             "generates the back too, of the same size; it is there anyway where the model reads both sides",
             "--side2 40x48"},
            options.side2, ParseSheetSizes);
}

void AddLineOptions(CLI::App& command, SimulateOptions& options) {
  AddOption(command,
            {"--replay", "TRACE",
             "answers as the scanner did that scan --trace recorded, and checks every byte of the "
             "host's; in place of --reader and the sheets",
             "--replay scan.trace"},
            options.replay);
  AddOption(
      command,
      {"--link", "PATH", "a symbolic link to the pseudo-terminal, removed at the end", "--link /tmp/scanner"},
      options.link);
  AddFlag(command,
          {"--paced", "", "delivers bytes no faster than the bit rate that the model's profile proposes",
           "teskread simulate --reader 15 --paced"},
          options.paced);
  AddOption(command,
            {"--fault", "KIND@SHEET", "something that goes wrong at a sheet, see below; may be repeated",
             "--fault jam@3"},
            options.faults);
}

}  // namespace

void AddSimulateCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<SimulateOptions>();
  CLI::App* command = app.add_subcommand(
      "simulate", "Is a scanner: opens a pseudo-terminal and speaks that model's side of the wire");
  AddOption(*command,
            {"--reader", "R",
             "the scanner model: its number or name in the list of models (teskread readers)", "--reader 15"},
            options->reader, [options = options.get()](const std::string& text) {
              // Help is about this model even where there is no simulator.
              options->reader = ParseReader(text);
              RequireLineSimulator(options->reader);
              return options->reader;
            });
  AddStockOptions(*command, *options);
  AddLineOptions(*command, *options);
  command->footer([options] { return FooterText(*options); });
  command->callback(
      [options, &program] { program.run = [options, &program] { return RunSimulate(*options, program); }; });
}

}  // namespace tesk::cli
