// The command line as a whole: its commands, its errors, its exit status. Knows nobody above the commands.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cli/Console.h"
#include "cli/Output.h"

namespace CLI {
class App;
}  // namespace CLI

namespace tesk::cli {

// What every command works with.
struct Program {
  std::shared_ptr<Console> console;
  std::shared_ptr<Output> output;  // standard output
  // What the chosen command does, once the whole command line is understood; yields the exit status.
  std::function<int()> run;
};

// Each adds one command to the command line.
void AddReadersCommand(CLI::App& app, Program& program);
void AddScanCommand(CLI::App& app, Program& program);
void AddSimulateCommand(CLI::App& app, Program& program);
void AddDemoCommand(CLI::App& app, Program& program);
void AddLocateCommand(CLI::App& app, Program& program);
void AddFirmwareCommand(CLI::App& app, Program& program);
void AddSettingsCommand(CLI::App& app, Program& program);
void AddSetupCommand(CLI::App& app, Program& program);
void AddPortsCommand(CLI::App& app, Program& program);
void AddHelpCommand(CLI::App& app, Program& program);

// A help text: what an option does, folded to lines, and an example of its use.
std::string Explain(std::string_view text, std::string_view example = {});

// Adds every command, and what holds for all of them.
void AddCommands(CLI::App& app, Program& program);

// Everything: parses, runs, prints what went wrong. Yields the exit status; never throws.
int RunCommandLine(int argc, const char* const* argv);

}  // namespace tesk::cli
