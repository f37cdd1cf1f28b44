// `teskread help`: what --help prints, and the names that --set takes.
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/NearestNames.h"
#include "cli/assignments.h"
#include "cli/settingLimits.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kSettings = "settings";

std::string SettingsText() {
  std::string text = "What --set NAME=VALUE takes; upper and lower case are alike in names and words.\n\n";
  for (const SettingWords& words : WordsOfSettings()) {
    text += fmt::format("  {:<24} {}\n  {:<24} {}\n", words.name, words.means, "",
                        ValuesText(SettingNamed(words.name)));
  }
  return text +
         "\nExample:\n  teskread scan --reader 13 --port 1 --side1 50x48 --set TimeOut=30 --set "
         "Duplex=False\n"
         "\n\"teskread settings --help\" explains how settings are saved.\n";
}

CLI::App& CommandNamed(CLI::App& app, const std::string& name) {
  std::vector<std::string> names;
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_name() == name) return *command;
    names.push_back(command->get_name());
  }
  if (names.empty())
    throw UsageError(fmt::format("\"{}\" is no topic: {} has none of its own", name, app.get_name()));
  throw UsageError(fmt::format("\"{}\" is no topic; the topics are {}", name, AlternativesText(names)));
}

int RunHelp(const std::vector<std::string>& topics, CLI::App& app, Program& program) {
  if (topics.size() == 1 && topics.front() == kSettings) {
    program.output->Write(SettingsText());
    return kStatusDone;
  }
  CLI::App* command = &app;
  std::string name = app.get_name();
  for (const std::string& topic : topics) {
    command = &CommandNamed(*command, topic);
    name += " " + topic;
  }
  program.output->Write(command->get_formatter()->make_help(command, name, CLI::AppFormatMode::Normal));
  return kStatusDone;
}

}  // namespace

void AddHelpCommand(CLI::App& app, Program& program) {
  const auto topics = std::make_shared<std::vector<std::string>>();
  CLI::App* command = app.add_subcommand("help", "Explains a command, or with \"settings\" what --set takes");
  command->add_option("TOPIC", *topics, "a command, or settings")->type_name("");
  command->footer("Examples:\n  teskread help settings\n  teskread help scan\n  teskread help settings save");
  command->callback([topics, &app, &program] {
    program.run = [topics, &app, &program] { return RunHelp(*topics, app, program); };
  });
}

}  // namespace tesk::cli
