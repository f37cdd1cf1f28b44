// `teskread ports`: the serial ports of this machine.
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "platform/SerialPorts.h"

namespace tesk::cli {
namespace {

using Json = nlohmann::ordered_json;
using platform::SerialPort;

Json PortJson(const SerialPort& port) {
  return {{"path", port.path},       {"device", port.device},
          {"adaptor", port.adaptor}, {"access", port.access},
          {"usable", port.usable},   {"free", port.free ? Json(*port.free) : Json(nullptr)},
          {"holder", port.holder}};
}

std::string StateText(const SerialPort& port) {
  if (!port.free) return "free or in use: cannot be told without opening it";
  return *port.free ? "free" : "in use by " + port.holder;
}

std::string PortText(const SerialPort& port) {
  std::string text = port.path + "\n";
  if (port.device != port.path) text += fmt::format("    {}\n", port.device);
  if (!port.adaptor.empty()) text += fmt::format("    {}\n", port.adaptor);
  if (!port.access.empty()) {
    text += fmt::format("    {}: {}\n", port.access, port.usable ? "you may use it" : "you may not use it");
  }
  return text + fmt::format("    {}\n", StateText(port));
}

int RunPorts(bool json, Program& program) {
  const auto ports = platform::ListSerialPorts();
  Json list = Json::array();
  std::string text;
  for (const SerialPort& port : ports) {
    list.push_back(PortJson(port));
    text += PortText(port);
  }
  program.output->Write(json ? list.dump(1, ' ', false, Json::error_handler_t::replace) + '\n' : text);
  if (ports.empty()) {
    program.console->Message(
        "teskread ports",
        "this computer has no serial ports|plug the adaptor in, or check that its driver is "
        "installed");
  }
  return kStatusDone;
}

}  // namespace

void AddPortsCommand(CLI::App& app, Program& program) {
  const auto json = std::make_shared<bool>(false);
  CLI::App* command = app.add_subcommand(
      "ports", "Lists the serial ports: lasting name, adaptor, who may use it, whether it is free");
  command->add_flag(
      "--json", *json,
      Explain("prints one JSON array: an object per port with path, device, adaptor, access, usable, "
              "free (null where it cannot be told) and holder",
              "teskread ports --json"));
  command->footer(
      "No port is opened, so nothing that is connected moves. The first line of each is what --port takes.");
  command->callback(
      [json, &program] { program.run = [json, &program] { return RunPorts(*json, program); }; });
}

}  // namespace tesk::cli
