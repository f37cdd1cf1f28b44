// `teskread settings`: the settings saved under a key of the settings store.
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/EngineSession.h"
#include "cli/ReaderChoice.h"
#include "cli/engineProperties.h"
#include "cli/settingsKey.h"
#include "cli/storedSettings.h"
#include "platform/Platform.h"
#include "platform/SettingsStores.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kFooter =
    "Examples:\n"
    "  teskread settings save --key School\\Lab --reader 4 --set Port=3\n"
    "  teskread settings save --key School\\Lab --set TimeOut=30\n"
    "  teskread settings show --key School\\Lab\n"
    "  teskread scan --key School\\Lab";

struct SettingsOptions {
  SettingsKeyOptions key;
  std::string reader;
  std::vector<std::string> assignments;
};

CommandFailure NothingSaved(const SettingsKey& key) {
  return CommandFailure(fmt::format("nothing is saved under the key {}", key.path));
}

int Show(const SettingsOptions& options, Program& program) {
  const SettingsKey key = ParseSettingsKey(options.key);
  const auto values = ReadStored(key);
  if (values.empty()) throw NothingSaved(key);
  std::string text;
  for (const StoredValue& value : values) text += fmt::format("{:<24} {}\n", value.name, value.text);
  program.output->Write(text);
  return kStatusDone;
}

void BeginWithDefaults(const std::string& reader, clsTeskReader& engine) {
  const teskReaderType type = ParseReader(reader);
  if (!engine.LoadDefaults(type)) throw CommandFailure("there are no defaults for this reader");
  engine.SetPort(1);
}

// With a reader all settings are saved, its defaults and what is assigned; without one only what is assigned.
int Save(const SettingsOptions& options, Program& program) {
  const SettingsKey key = ParseSettingsKey(options.key);
  std::vector<Assignment> assignments;
  for (const std::string& text : options.assignments) assignments.push_back(ParseAssignment(text));
  RequireSettings(assignments);
  const EngineSession session(platform::CreateSerialSystem(), program.console);
  clsTeskReader& engine = session.Engine();
  const bool afresh = !options.reader.empty();
  if (afresh) BeginWithDefaults(options.reader, engine);
  if (!afresh && ReadStored(key).empty()) {
    throw UsageError("--reader: is required: nothing is saved under this key yet");
  }
  for (const Assignment& assignment : assignments) Apply(assignment, engine);
  const bool saved =
      afresh ? engine.SaveSettings(key.root, key.path) : SaveAssigned(key, assignments, engine);
  return saved ? kStatusDone : kStatusFailed;
}

int Delete(const SettingsOptions& options, Program&) {
  const SettingsKey key = ParseSettingsKey(options.key);
  if (!platform::CreateSettingsStore()->DeleteValues(key.root, key.path, SettingNames())) {
    throw NothingSaved(key);
  }
  return kStatusDone;
}

CLI::App& AddAction(CLI::App& settings, Program& program, const std::shared_ptr<SettingsOptions>& options,
                    const char* name, const char* does, int (*run)(const SettingsOptions&, Program&)) {
  CLI::App& action = *settings.add_subcommand(name, does);
  AddSettingsKeyOptions(action, options->key, true);
  action.footer(std::string(kFooter));
  action.callback([options, &program, run] {
    program.run = [options, &program, run] { return run(*options, program); };
  });
  return action;
}

}  // namespace

void AddSettingsCommand(CLI::App& app, Program& program) {
  CLI::App& settings = *app.add_subcommand("settings", "Shows, saves and deletes the settings under a key");
  settings.require_subcommand(1);
  settings.footer(std::string(kFooter));
  const auto options = std::make_shared<SettingsOptions>();
  AddAction(settings, program, options, "show", "Prints the settings saved under a key", Show);
  CLI::App& save = AddAction(
      settings, program, options, "save",
      "Saves settings under a key: a model's defaults with changes, or changes to what is saved", Save);
  save.add_option("--reader", options->reader,
                  Explain("begins with this model's defaults; without it, with what is saved", "--reader 4"))
      ->type_name("R");
  save.add_option("--set", options->assignments,
                  Explain("sets a property of the engine by its own name; may be repeated", "--set Port=3"))
      ->allow_extra_args(false)
      ->type_name("NAME=VALUE");
  AddAction(settings, program, options, "delete", "Deletes the settings saved under a key", Delete);
}

}  // namespace tesk::cli
