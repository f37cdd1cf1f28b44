// `teskread locate` and `teskread firmware`: the readers that say who they are when they are asked.
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/HostServices.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/EngineSession.h"
#include "cli/ReaderChoice.h"
#include "cli/options.h"
#include "cli/simulated/SimulatedScanner.h"
#include "platform/Platform.h"
#include "platform/SerialPorts.h"
#include "profiles/catalogue.h"
#include "simulator/Simulators.h"

namespace tesk::cli {
namespace {

// A port that the search asks, as the operator knows it.
struct Asked {
  std::string name;  // "3" or a device path; what is printed when a scanner answers there
  std::string device;
};

struct PortOptions {
  teskReaderType reader = teskReaderTypeNone;
  PortChoice port;
  std::int16_t start = 0;
  std::vector<Asked> ports;  // locate
};

void AddReaderOption(CLI::App& command, PortOptions& options) {
  const auto read = [](const std::string& text) {
    const teskReaderType reader = ParseReader(text);
    RequireSystem(reader);
    return reader;
  };
  AddOption(command,
            {"--reader", "R",
             "the scanner model: its number or name in the list of models (teskread readers)", "--reader 20"},
            options.reader, read)
      .required();
}

bool ProfileOffers(clsTeskReader& engine, bool (clsTeskReaderProfile::*offers)() const) {
  const auto profile = engine.Profile();
  return profile && (*profile.*offers)();
}

// The end of a command that found nothing.
int NotFound(int messages, Program& program, const char* title, const std::string& text) {
  if (platform::Interrupted()) return kStatusBySignal + platform::InterruptSignal();
  if (messages == 0) program.console->Message(title, text);
  return kStatusFailed;
}

// What stands behind the ports of one search, 1 to 16 at most; the others are not there. Keeps why a port could
// not be opened, since a search goes on without a word.
class SearchedPorts : public SerialSystem {
 public:
  explicit SearchedPorts(std::vector<Asked> ports) : ports_(std::move(ports)), reasons_(ports_.size()) {}

  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override {
    const auto index = static_cast<std::size_t>(port) - 1;
    if (index >= ports_.size()) throw RunTimeError(kErrorPort, "Invalid port number");
    const std::string& device = ports_[index].device;
    std::unique_ptr<SerialLine> line;
    const auto error = Attempt([&] { line = platform::CreateSerialSystem(device)->Open(1, settings); });
    if (!error) return line;
    reasons_[index] = Replace(error->Description(), " " + device, "");
    throw *error;
  }

  const std::string& NameOf(std::int16_t port) const {
    return ports_.at(static_cast<std::size_t>(port) - 1).name;
  }

  // One line for numbers of the same fate: "2 to 8 (/dev/ttyS1 to /dev/ttyS7): The device cannot be ...".
  std::string UnopenedText() const {
    std::string text;
    for (std::size_t first = 0; first < ports_.size(); ++first) {
      if (reasons_[first].empty()) continue;
      std::size_t last = first;
      while (Numbered(last) && last + 1 < ports_.size() && Numbered(last + 1) &&
             reasons_[last + 1] == reasons_[first]) {
        ++last;
      }
      text += "|" + SpanText(first, last) + ": " + reasons_[first];
      first = last;
    }
    return text;
  }

 private:
  bool Numbered(std::size_t index) const { return ports_[index].name != ports_[index].device; }

  std::string SpanText(std::size_t first, std::size_t last) const {
    const auto span = [&](std::string Asked::*part) {
      const std::string& from = ports_[first].*part;
      return first == last ? from : from + " to " + ports_[last].*part;
    };
    return Numbered(first) ? fmt::format("{} ({})", span(&Asked::name), span(&Asked::device))
                           : span(&Asked::name);
  }

  std::vector<Asked> ports_;
  std::vector<std::string> reasons_;  // by port; empty where it was opened or not asked
};

constexpr std::int16_t kLastPort = 16;

std::vector<Asked> NumberedPorts() {
  std::vector<Asked> ports;
  for (std::int16_t port = 1; port <= kLastPort; ++port) {
    ports.push_back({NumberText(std::int32_t{port}), platform::DeviceOfPort(port)});
  }
  return ports;
}

// The serial ports of this machine that have no number.
std::vector<Asked> OtherPorts() {
  std::vector<Asked> others;
  for (const auto& port : platform::ListSerialPorts()) {
    bool numbered = false;
    for (std::int16_t n = 1; n <= kLastPort; ++n) {
      numbered = numbered || platform::SameDevice(platform::DeviceOfPort(n), port.device);
    }
    if (!numbered) others.push_back({port.path, port.path});
  }
  return others;
}

Asked ReadAsked(std::string_view option, const std::string& text) {
  const PortChoice port = ParsePort(option, text);
  if (port.kind == PortChoice::Kind::Simulated) {
    throw UsageError(
        fmt::format("{}: sim cannot be searched|give the path that \"teskread simulate\" prints", option));
  }
  const bool numbered = port.kind == PortChoice::Kind::Number;
  return {text, numbered ? platform::DeviceOfPort(port.number) : port.device};
}

void TellUnopened(const SearchedPorts& ports, Console& console) {
  const std::string text = ports.UnopenedText();
  if (!text.empty())
    console.Message("teskread locate", "ports that could not be opened, so not asked:" + text);
}

// One search of the engine's; true and printed where a scanner answered.
bool Search(teskReaderType type, const std::vector<Asked>& asked, std::int16_t start, int& messages,
            Program& program) {
  const auto ports = std::make_shared<SearchedPorts>(asked);
  const EngineSession session(ports, program.console);
  LoadModelDefaults(type, session.Engine());
  const bool found = session.Engine().Locate(start);
  messages += session.Messages();
  TellUnopened(*ports, *program.console);
  if (found) program.output->Write(ports->NameOf(session.Engine().Port()) + "\n");
  return found;
}

void RequireLocatable(teskReaderType type) {
  if (ProfileOf(type).LocateEnabled()) return;
  RequireDriver(type);
  throw CommandFailure(
      fmt::format("the {} cannot be searched for: it does not say who it is|\"teskread ports\" lists the "
                  "serial ports; try them with \"teskread scan --reader {} --port P\"",
                  ReaderName(type), std::int32_t{type}));
}

// The other ports in searches of as many as an engine has; true where a scanner answered.
bool SearchOthers(teskReaderType type, const std::vector<Asked>& others, int& messages, Program& program) {
  for (std::size_t first = 0; first < others.size() && !platform::Interrupted(); first += kLastPort) {
    const auto begin = others.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = begin + std::min<std::ptrdiff_t>(others.end() - begin, kLastPort);
    if (Search(type, std::vector<Asked>(begin, end), 0, messages, program)) return true;
  }
  return false;
}

int Locate(const PortOptions& options, Program& program) {
  const teskReaderType type = options.reader;
  RequireLocatable(type);
  const bool chosen = !options.ports.empty();
  if (chosen && options.start != 0) {
    throw UsageError("--start: goes with the ports 1 to 16, not with --port, whose order is the search's");
  }
  int messages = 0;
  if (!chosen && Search(type, NumberedPorts(), options.start, messages, program)) return kStatusDone;
  if (SearchOthers(type, chosen ? options.ports : OtherPorts(), messages, program)) return kStatusDone;
  return NotFound(messages, program, "teskread locate",
                  chosen
                      ? "no scanner answered on these ports|check that it has power and is connected; "
                        "\"teskread ports\" lists the ports that there are"
                      : "no scanner answered on ports 1 to 16 or on any other serial port|check that it has "
                        "power and is connected");
}

std::shared_ptr<SerialSystem> SerialOf(const PortChoice& port, teskReaderType type) {
  if (port.kind == PortChoice::Kind::Number) return platform::CreateSerialSystem();
  if (port.kind == PortChoice::Kind::Device) return platform::CreateSerialSystem(port.device);
  std::shared_ptr<simulator::Scanner> scanner = simulator::CreateScanner(type, {});
  if (!scanner) throw CommandFailure("--port sim: this model has no simulated scanner");
  return std::make_shared<SimulatedSerial>(std::move(scanner), platform::CreateClock());
}

int Firmware(const PortOptions& options, Program& program) {
  const teskReaderType type = options.reader;
  const EngineSession session(SerialOf(options.port, type), program.console);
  clsTeskReader& engine = session.Engine();
  LoadModelDefaults(type, engine);
  engine.SetPort(options.port.number);
  if (!ProfileOffers(engine, &clsTeskReaderProfile::FirmwareEnabled)) {
    throw CommandFailure(fmt::format("the {} cannot be asked for its firmware", engine.ReaderName()));
  }
  std::string text;
  if (!engine.Firmware(text)) {
    return NotFound(session.Messages(), program, "teskread firmware",
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
  AddOption(command, {"--start", "N", "the port of 1 to 16 that is asked first", "--start 5"}, options->start,
            WholeFrom<std::int16_t>(0, kLastPort));
  AddOption(command,
            {"--port", "P", "asks this port alone, 1 to 16 or a device path; may be repeated",
             "--port /dev/ttyACM0"},
            options->ports, ReadAsked);
  command.footer(
      "Without --port the ports 1 to 16 are asked, then all others of \"teskread ports\".\n\n"
      "Example:\n  teskread locate --reader \"Chatsworth Data OMR1100\" --start 9");
}

void AddFirmwareCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<PortOptions>();
  CLI::App& command =
      AddCommand(app, program, options, "firmware", "Prints the scanner's firmware text", Firmware);
  AddOption(command, {"--port", "P", "1 to 16, a device path, or sim", "--port /dev/ttyUSB0"}, options->port,
            ParsePort)
      .required();
  command.footer("Example:\n  teskread firmware --reader 20 --port /dev/ttyUSB0");
}

}  // namespace tesk::cli
