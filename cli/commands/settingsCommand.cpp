// `teskread settings`: the settings saved under a key of the settings store.
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/conversions.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/EngineSession.h"
#include "cli/ReaderChoice.h"
#include "cli/assignments.h"
#include "cli/options.h"
#include "cli/settingLimits.h"
#include "cli/settingsKey.h"
#include "cli/storedSettings.h"
#include "platform/Platform.h"
#include "platform/SettingsStores.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kFooter =
    "Examples:\n"
    "  teskread settings save --key \"School\\Lab\" --reader 4 --port 3\n"
    "  teskread settings save --key \"School\\Lab\" --set TimeOut=30\n"
    "  teskread settings list\n"
    "  teskread settings show --key \"School\\Lab\"\n"
    "  teskread scan --key \"School\\Lab\"";

struct SettingsOptions {
  SettingsKey key;
  teskReaderType reader = teskReaderTypeNone;  // None: what is saved stays
  std::optional<PortChoice> port;
  std::vector<Assignment> assignments;
};

CommandFailure NothingSaved(const SettingsKey& key) {
  return CommandFailure(fmt::format(
      "nothing is saved under the key {}|\"teskread settings list\" shows the keys that there are",
      key.path));
}

// The value of a stored setting; a space stands for none.
std::string TextOf(const std::vector<StoredValue>& values, std::string_view name) {
  const auto found = std::ranges::find(values, name, &StoredValue::name);
  return found == values.end() || found->text == " " ? "" : found->text;
}

teskReaderType TypeOf(const std::vector<StoredValue>& values) {
  const double number = Val(TextOf(values, "ScannerType"));
  const bool known = number >= 0 && number < static_cast<double>(ReaderTypeNames().size());
  return known ? static_cast<teskReaderType>(ToInt16(number)) : teskReaderTypeNone;
}

int List(const SettingsOptions& options, Program& program) {
  const teskReaderRegistryKey root = options.key.root;
  std::string text;
  for (const std::string& path : platform::SettingsKeys(root)) {
    const auto values = ReadStored({.root = root, .path = path});
    const std::string device = TextOf(values, "ScannerDevice");
    text += fmt::format("{:<32} {:<35} {}\n", ShellWord(path), ReaderName(TypeOf(values)),
                        device.empty() ? "port " + TextOf(values, "ScannerPort") : device);
  }
  program.output->Write(text);
  if (text.empty()) program.console->Message("teskread settings list", "no settings are saved yet");
  return kStatusDone;
}

int Show(const SettingsOptions& options, Program& program) {
  const SettingsKey& key = options.key;
  const auto values = ReadStored(key);
  if (values.empty()) throw NothingSaved(key);
  std::string text = fmt::format("{:<24} {:<24} {}\n", "Name", "Stored as", "Value");
  for (const StoredValue& value : values) {
    text += fmt::format("{:<24} {:<24} {}\n", PropertyOf(value.name), value.name, value.text);
  }
  program.output->Write(text);
  return kStatusDone;
}

void BeginWithDefaults(teskReaderType reader, clsTeskReader& engine) {
  LoadModelDefaults(reader, engine);
  engine.SetPort(1);
}

// What is saved stays as it is; its model decides what may be changed.
void BeginWithSaved(const SettingsKey& key, clsTeskReader& engine) {
  const auto values = ReadStored(key);
  if (values.empty()) throw UsageError("--reader: is required: nothing is saved under this key yet");
  engine.SetReaderType(TypeOf(values));
}

PortChoice ReadSavedPort(std::string_view option, const std::string& text) {
  PortChoice port = ParsePort(option, text);
  if (port.kind != PortChoice::Kind::Simulated) return port;
  throw UsageError(fmt::format(
      "{}: sim is no port that can be saved|give it to the scan: teskread scan --port sim", option));
}

// What is assigned, --port first: a number is Port, a device stands beside the settings.
std::vector<Assignment> AssignmentsOf(const SettingsOptions& options) {
  std::vector<Assignment> assignments;
  if (options.port && options.port->device.empty()) {
    assignments.push_back(ParseAssignment("Port=" + NumberText(std::int32_t{options.port->number})));
  }
  assignments.insert(assignments.end(), options.assignments.begin(), options.assignments.end());
  return assignments;
}

// With a reader all settings are saved, its defaults and what is assigned; without one only what is assigned.
int Save(const SettingsOptions& options, Program& program) {
  const SettingsKey& key = options.key;
  const std::string device = options.port ? options.port->device : "";
  const auto assignments = AssignmentsOf(options);
  RequireSettings(assignments);
  const EngineSession session(platform::CreateSerialSystem(), program.console);
  clsTeskReader& engine = session.Engine();
  const bool afresh = options.reader != teskReaderTypeNone;
  afresh ? BeginWithDefaults(options.reader, engine) : BeginWithSaved(key, engine);
  for (const Assignment& assignment : assignments) Apply(assignment, engine);
  for (const Assignment& assignment : assignments) CheckSaved(assignment, engine);
  const bool saved =
      afresh ? SaveAll(key, engine, device)
             : SaveAssigned(key, assignments, engine) && (device.empty() || SaveDevice(key, device, engine));
  return saved ? kStatusDone : kStatusFailed;
}

int Delete(const SettingsOptions& options, Program&) {
  const SettingsKey& key = options.key;
  if (!platform::CreateSettingsStore()->DeleteValues(key.root, key.path, StoredNames())) {
    throw NothingSaved(key);
  }
  return kStatusDone;
}

CLI::App& AddAction(CLI::App& settings, Program& program, const std::shared_ptr<SettingsOptions>& options,
                    const char* name, const char* does, int (*run)(const SettingsOptions&, Program&)) {
  CLI::App& action = *settings.add_subcommand(name, does);
  if (run == List) {
    AddSettingsRootOption(action, options->key);
  } else {
    AddSettingsKeyOptions(action, options->key, true);
  }
  action.footer(std::string(kFooter));
  action.callback([options, &program, run] {
    program.run = [options, &program, run] { return run(*options, program); };
  });
  return action;
}

void AddSaveOptions(CLI::App& save, SettingsOptions& options) {
  AddOption(
      save,
      {"--reader", "R", "begins with this model's defaults; without it, with what is saved", "--reader 4"},
      options.reader, ParseReader);
  AddOption(save,
            {"--port", "P", "1 to 16, or a device path that scans with this key use", "--port /dev/ttyACM0"},
            options.port, ReadSavedPort);
  AddOption(
      save,
      {"--set", "NAME=VALUE", "sets a value by its name (teskread help settings lists them); may be repeated",
       "--set TimeOut=30"},
      options.assignments, ParseAssignment);
}

}  // namespace

void AddSettingsCommand(CLI::App& app, Program& program) {
  CLI::App& settings =
      *app.add_subcommand("settings", "Lists, shows, saves and deletes the settings under a key");
  settings.require_subcommand(1);
  settings.footer(std::string(kFooter));
  const auto options = std::make_shared<SettingsOptions>();
  AddAction(settings, program, options, "list", "Lists the keys that settings are saved under", List);
  AddAction(settings, program, options, "show", "Prints the settings saved under a key", Show);
  CLI::App& save = AddAction(
      settings, program, options, "save",
      "Saves settings under a key: a model's defaults with changes, or changes to what is saved", Save);
  AddSaveOptions(save, *options);
  AddAction(settings, program, options, "delete", "Deletes the settings saved under a key", Delete);
}

}  // namespace tesk::cli
