// What the pages about the command line are made of: every command, option and setting with its words, as the parser
// itself has them. Knows the command line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tesk::cli {

// What a shell can propose where a value is due.
enum class Proposal { Nothing, Words, Models, Ports, PortsAndSim, Files, Keys, Settings, Topics };

struct OptionPage {
  std::vector<std::string> names;  // "-h", "--help"; of a positional its word
  std::string takes;               // "FILE"; empty for a flag
  std::string text;                // in one line
  std::string example;             // empty: none
  bool required = false;
  bool repeats = false;
  Proposal proposal = Proposal::Nothing;
  std::vector<std::string> words;  // Words only
};

struct CommandPage {
  std::string path;  // "settings save"; empty for the whole
  std::string name;  // "save"
  std::string text;
  std::string footer;  // in lines; those that begin with a blank stand as they are
  std::vector<OptionPage> options;
  std::vector<OptionPage> positionals;
  std::vector<CommandPage> commands;
};

struct SettingPage {
  std::string name;
  std::string means;
  std::string takes;
  std::vector<std::string> words;  // what it takes, where that is a few words
};

struct Manual {
  CommandPage program;
  std::vector<SettingPage> settings;
  std::vector<std::string> models;  // the display names of those that have a driver
};

Manual ReadManual();

// Every command with a name of its own, those within others behind them.
std::vector<const CommandPage*> AllCommands(const CommandPage& program);

std::string Joined(const std::vector<std::string>& words, std::string_view separator);

// A script for `sed -nE` that makes keys of what `teskread settings list` prints. There a key stands as a word for a
// shell: bare, in double quotes that need no escapes, or in single quotes.
constexpr std::string_view kReadKeys = R"sed(
  s/^"([^"]*)".*/\1/p
  t
  /^[^\x27]/ { s/ .*//p; d; }
  s/^\x27(([^\x27]|\x27\\\x27\x27)*)\x27.*/\1/
  s/\x27\\\x27\x27/\x27/g
  p)sed";

// The three pages, whole files.
std::string ManPage(const Manual& manual, std::string_view date);
std::string BashCompletion(const Manual& manual);
std::string ZshCompletion(const Manual& manual);

}  // namespace tesk::cli
