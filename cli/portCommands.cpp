// `teskread locate` and `teskread firmware`: the readers that say who they are when they are asked.
#include <memory>
#include <string>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/EngineSession.h"
#include "cli/PortChoice.h"
#include "cli/ReaderChoice.h"
#include "cli/SimulatedSerial.h"
#include "cli/optionValues.h"
#include "platform/Platform.h"
#include "simulator/Simulators.h"

namespace tesk::cli {
namespace {

struct PortOptions {
  std::string reader;
  std::string port;
  std::string start;
};

void AddReaderOption(CLI::App& command, PortOptions& options) {
  command
      .add_option("--reader", options.reader,
                  Explain("the scanner model: its number, enumerator or display name", "--reader 20"))
      ->type_name("R")
      ->required();
}

void LoadDefaults(clsTeskReader& engine, teskReaderType type) {
  if (!engine.LoadDefaults(type)) throw CommandFailure("there are no defaults for this reader");
}

bool ProfileOffers(clsTeskReader& engine, bool (clsTeskReaderProfile::*offers)() const) {
  const auto profile = engine.Profiles()->Item(NumberText(engine.ReaderType()));
  return profile && (*profile.*offers)();
}

// The end of a command that found nothing.
int NotFound(const EngineSession& session, Program& program, const std::string& text) {
  if (platform::Interrupted()) return kStatusBySignal + platform::InterruptSignal();
  if (session.Messages() == 0) program.console->Message("teskread", text);
  return kStatusFailed;
}

int Locate(const PortOptions& options, Program& program) {
  const teskReaderType type = ParseReader(options.reader);
  const std::int32_t start = options.start.empty() ? 0 : ParseWholeNumber("--start", options.start, 0, 16);
  const EngineSession session(platform::CreateSerialSystem(), program.console);
  clsTeskReader& engine = session.Engine();
  LoadDefaults(engine, type);
  if (!ProfileOffers(engine, &clsTeskReaderProfile::LocateEnabled)) {
    throw CommandFailure(
        fmt::format("the {} cannot be searched for: it does not say who it is", engine.ReaderName()));
  }
  if (!engine.Locate(static_cast<std::int16_t>(start))) {
    return NotFound(session, program,
                    "no scanner answered on ports 1 to 16|check that it has power and is connected");
  }
  program.output->Write(fmt::format("{}\n", engine.Port()));
  return kStatusDone;
}

std::shared_ptr<SerialSystem> SerialOf(const PortChoice& port, teskReaderType type) {
  if (port.kind == PortChoice::Kind::Number) return platform::CreateSerialSystem();
  if (port.kind == PortChoice::Kind::Device) return platform::CreateSerialSystem(port.device);
  std::shared_ptr<simulator::Scanner> scanner = simulator::CreateScanner(type, {});
  if (!scanner) throw CommandFailure("--port sim: this model has no simulated scanner");
  return std::make_shared<SimulatedSerial>(std::move(scanner), platform::CreateClock());
}

int Firmware(const PortOptions& options, Program& program) {
  const teskReaderType type = ParseReader(options.reader);
  const PortChoice port = ParsePort(options.port);
  const EngineSession session(SerialOf(port, type), program.console);
  clsTeskReader& engine = session.Engine();
  LoadDefaults(engine, type);
  engine.SetPort(port.number);
  if (!ProfileOffers(engine, &clsTeskReaderProfile::FirmwareEnabled)) {
    throw CommandFailure(fmt::format("the {} cannot be asked for its firmware", engine.ReaderName()));
  }
  std::string text;
  if (!engine.Firmware(text)) {
    return NotFound(session, program,
                    "the scanner did not answer|check the port, that the scanner has power and is connected");
  }
  program.output->Write(text + "\n");
  return kStatusDone;
}

CLI::App& AddCommand(CLI::App& app, Program& program, const std::shared_ptr<PortOptions>& options,
                     const char* name, const char* does, int (*run)(const PortOptions&, Program&)) {
  CLI::App& command = *app.add_subcommand(name, does);
  AddReaderOption(command, *options);
  command.callback([options, &program, run] {
    program.run = [options, &program, run] { return run(*options, program); };
  });
  return command;
}

}  // namespace

void AddLocateCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<PortOptions>();
  CLI::App& command = AddCommand(app, program, options, "locate",
                                 "Searches the ports for a scanner, prints the port", Locate);
  command.add_option("--start", options->start, Explain("the port that is asked first", "--start 5"))
      ->type_name("N");
  command.footer("Example:\n  teskread locate --reader \"Chatsworth Data OMR1100\" --start 9");
}

void AddFirmwareCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<PortOptions>();
  CLI::App& command =
      AddCommand(app, program, options, "firmware", "Prints the scanner's firmware text", Firmware);
  command
      .add_option("--port", options->port, Explain("1 to 16, a device path, or sim", "--port /dev/ttyUSB0"))
      ->type_name("P")
      ->required();
  command.footer("Example:\n  teskread firmware --reader 20 --port /dev/ttyUSB0");
}

}  // namespace tesk::cli
