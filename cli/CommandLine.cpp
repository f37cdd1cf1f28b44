// Parsing of the command line and the way out of it.
#include "cli/CommandLine.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/NearestNames.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

constexpr void (*kCommands[])(CLI::App&, Program&) = {
    AddReadersCommand, AddScanCommand,     AddSimulateCommand, AddDemoCommand,  AddPortsCommand,
    AddLocateCommand,  AddFirmwareCommand, AddSettingsCommand, AddSetupCommand, AddHelpCommand,
};

constexpr std::string_view kFooter =
    "Examples:\n"
    "  teskread demo\n"
    "  teskread readers\n"
    "  teskread scan --reader \"Scantron Scanmark 2500\" --port /dev/ttyUSB0 --side1 50x48\n"
    "\n"
    "Exit status: 0 done, 1 the scanner, the port or a file failed, 2 the command line is wrong,\n"
    "129, 130, 143 ended by a hang-up, Ctrl-C, SIGTERM.";

// The command, or the command's action, that the command line names; `app` itself where it names none.
const CLI::App& ChosenCommand(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? app : ChosenCommand(*chosen.back());
}

std::string TitleOf(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return app.get_name() + (chosen.empty() ? "" : " " + TitleOf(*chosen.back()));
}

std::string CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return AlternativesText(names);
}

// What could have been meant by an argument that nothing takes.
std::string ExtraText(const CLI::App& app, const std::string& argument) {
  const CLI::App& command = ChosenCommand(app);
  if (!argument.starts_with('-') && !CommandNames(command).empty()) {
    return fmt::format("\"{}\" is no command; the commands are {}", argument, CommandNames(command));
  }
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) names.push_back(option->get_name());
  const std::vector<std::string_view> views(names.begin(), names.end());
  const auto nearest = NearestNames(argument.substr(0, argument.find('=')), views, 3);
  const std::string hint = nearest.empty() ? "" : "|did you mean " + AlternativesText(nearest) + "?";
  return fmt::format("{}: is not understood{}", argument, hint);
}

// The option that an error of the parser begins with; nullptr where it names none.
const CLI::Option* OptionOf(const CLI::App& app, const std::string& error) {
  const CLI::App& command = ChosenCommand(app);
  return error.starts_with("--") ? command.get_option_no_throw(error.substr(0, error.find_first_of(": =")))
                                 : nullptr;
}

// A help text in the lines of a message: unfolded, its example in a line of its own.
std::string MessageLines(const std::string& description) {
  return Replace(Replace(description, "\nexample", "|example"), "\n", " ");
}

std::string ParseErrorText(const CLI::App& app, const CLI::ParseError& error) {
  const auto extras = app.remaining(true);
  if (!extras.empty()) return ExtraText(app, extras.front());
  const std::string text = error.what();
  if (const CLI::Option* option = OptionOf(app, text)) {
    const bool missing = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const bool valueless = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch);
    return fmt::format("{}|{} {}: {}",
                       missing     ? option->get_name() + ": is required"
                       : valueless ? option->get_name() + ": takes one value, and may not stand there twice"
                                   : text,
                       option->get_name(), option->get_type_name(), MessageLines(option->get_description()));
  }
  const std::string commands = CommandNames(ChosenCommand(app));
  if (!commands.empty()) return "a command is required: " + commands;
  return text;
}

// The parser would take the next word for the value of "--port=".
void RequireValuesBehindSigns(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (!argument.starts_with("--") || argument.find('=') != argument.size() - 1) continue;
    throw UsageError(
        fmt::format("{}: takes a value, not an empty text", argument.substr(0, argument.size() - 1)));
  }
}

// An empty value says nothing, but looks as if the option were not there. An imprint may have an empty line.
void RefuseEmptyValues(CLI::App& app) {
  const auto refuse = [](const std::string& text) {
    return text.empty() ? "takes a value, not an empty text" : "";
  };
  for (CLI::Option* option : app.get_options()) {
    if (option->get_type_size() != 0 && option->get_name() != "--imprint") option->check(refuse);
  }
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    RefuseEmptyValues(*command);
}

// Whether the command line asks for help, which it gets whatever else is wrong with it.
bool AsksForHelp(const CLI::App& app) {
  return app.get_help_ptr()->count() > 0 ||
         std::ranges::any_of(app.get_subcommands(),
                             [](const CLI::App* command) { return AsksForHelp(*command); });
}

// The status of a command line that asks for nothing but help or the version; empty for any other.
std::optional<int> Parse(CLI::App& app, int argc, const char* const* argv, Program& program) {
  RequireValuesBehindSigns(argc, argv);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    program.output->Write(app.help());
    return kStatusDone;
  } catch (const CLI::CallForVersion&) {
    program.output->Write(fmt::format("teskread {}\n", TESKREAD_VERSION));
    return kStatusDone;
  } catch (const CLI::ParseError& error) {
    if (!AsksForHelp(app)) throw UsageError(ParseErrorText(app, error));
    program.output->Write(app.help());
    return kStatusDone;
  } catch (const std::runtime_error&) {
    const auto extras = app.remaining(true);
    if (!AsksForHelp(app) && !extras.empty()) throw UsageError(ExtraText(app, extras.front()));
    if (!AsksForHelp(app)) throw;
    program.output->Write(app.help());
    return kStatusDone;
  }
  return std::nullopt;
}

int Run(CLI::App& app, int argc, const char* const* argv, Program& program) {
  try {
    if (const auto status = Parse(app, argc, argv, program)) return *status;
    return program.run();
  } catch (const UsageError& error) {
    const std::string title = TitleOf(app);
    program.console->Message(title,
                             fmt::format("{}|\"{} --help\" explains every option", error.what(), title));
    return kStatusWrongUsage;
  } catch (const CommandFailure& failure) {
    program.console->Message(TitleOf(app), failure.what());
  } catch (const RunTimeError& error) {
    program.console->Message(TitleOf(app), fmt::format("{}{}{}", error.Description(),
                                                       error.Detail().empty() ? "" : "|", error.Detail()));
  }
  return kStatusFailed;
}

}  // namespace

std::string Explain(std::string_view text, std::string_view example) {
  constexpr std::size_t kWidth = 62;  // characters beside the names of the options
  std::string folded;
  std::size_t column = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string_view word = text.substr(at, end - at);
    if (column > 0 && column + 1 + word.size() > kWidth) {
      folded += '\n';
      column = 0;
    }
    if (column > 0) folded += ' ', ++column;
    folded += word;
    column += word.size();
    at = end + 1;
  }
  if (!example.empty()) folded += fmt::format("\nexample: {}", example);
  return folded;
}

void AddCommands(CLI::App& app, Program& program) {
  app.description("Drives optical mark readers: reads the marks of sheets over a scanner's own protocol.");
  app.name("teskread");
  app.set_version_flag("--version", TESKREAD_VERSION);
  app.set_help_flag("-h,--help", "Prints this help and exits");
  app.get_formatter()->column_width(34);
  app.require_subcommand(1);
  for (const auto add : kCommands) add(app, program);
  RefuseEmptyValues(app);
  // Last: commands take over what is there when they are added.
  app.footer(std::string(kFooter));
}

int RunCommandLine(int argc, const char* const* argv) {
  Program program;
  program.console = std::make_shared<Console>(std::cerr, platform::StandardErrorIsTerminal());
  try {
    program.output = OpenStandardOutput();
    CLI::App app;
    AddCommands(app, program);
    return Run(app, argc, argv, program);
  } catch (const std::exception& error) {
    program.console->Message("teskread", error.what());
    return kStatusFailed;
  }
}

}  // namespace tesk::cli
