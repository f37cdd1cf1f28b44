// The completion for zsh: a function for each command.
#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/pages/CommandPages.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kFunctions = R"sh(
_teskread_ports() { # [FURTHER-WORDS]
  local -a ports=(${(f)"$(_call_program ports teskread ports 2>/dev/null | grep '^/')"} $@)
  compadd -a ports || _files
}

_teskread_keys() {
  local -a keys=(${(f)"$(_call_program keys teskread settings list 2>/dev/null |
    sed -n 's/^"\([^"]*\)".*/\1/p; s/^\([^" ][^ ]*\).*/\1/p')"})
  compadd -a keys
}

_teskread_settings_values() {
  if compset -P '*='; then
    compadd -- ${=_teskread_setting_words[${IPREFIX%=}]}
  else
    compadd -S = -- ${(k)_teskread_setting_words}
  fi
}

_teskread_models() { compadd -M 'm:{a-zA-Z}={A-Za-z}' -a _teskread_model_names }
)sh";

std::string Quoted(const std::string& text) { return "'" + Replace(text, "'", "'\\''") + "'"; }

// A text in a specification of _arguments: up to its first semicolon, brackets and colons escaped.
std::string Short(const std::string& text) {
  std::string escaped;
  for (const char c : text.substr(0, text.find("; "))) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string FunctionName(const CommandPage& command) {
  return command.path.empty() ? "_teskread" : "_teskread_command_" + Replace(command.path, " ", "_");
}

std::string NamesOf(const std::vector<CommandPage>& commands) {
  std::string names;
  for (const CommandPage& command : commands) names += (names.empty() ? "" : " ") + command.name;
  return names;
}

std::string Action(const OptionPage& option, const Manual& manual) {
  switch (option.proposal) {
    case Proposal::Words:
      return fmt::format("({})", Joined(option.words, " "));
    case Proposal::Models:
      return "_teskread_models";
    case Proposal::Ports:
      return "_teskread_ports";
    case Proposal::PortsAndSim:
      return "_teskread_ports sim";
    case Proposal::Files:
      return "_files";
    case Proposal::Keys:
      return "_teskread_keys";
    case Proposal::Settings:
      return "_teskread_settings_values";
    case Proposal::Topics:
      return fmt::format("({})", NamesOf(manual.program.commands));
    case Proposal::Nothing:
      break;
  }
  return " ";
}

std::string OptionSpecs(const OptionPage& option, const Manual& manual) {
  std::string specs;
  for (const std::string& name : option.names) {
    std::string spec = (option.repeats ? "*" : "") + name;
    if (!option.takes.empty()) spec += "=";
    spec += "[" + Short(option.text) + "]";
    if (!option.takes.empty()) spec += ":" + Short(option.takes) + ":" + Action(option, manual);
    specs += " \\\n    " + Quoted(spec);
  }
  return specs;
}

std::string Arguments(const CommandPage& command, const Manual& manual) {
  std::string specs;
  for (const OptionPage& option : command.options) specs += OptionSpecs(option, manual);
  for (const OptionPage& positional : command.positionals) {
    specs += " \\\n    " + Quoted(fmt::format("{}:{}:{}", positional.repeats ? "*" : "",
                                              Short(positional.takes), Action(positional, manual)));
  }
  return specs;
}

// A command that has commands: its own options, one of the commands, and whatever that one takes.
std::string Choice(const CommandPage& command, const Manual& manual) {
  std::string described, calls;
  for (const CommandPage& below : command.commands) {
    described += "\n    " + Quoted(below.name + ":" + Short(below.text));
    calls += fmt::format("      {}) {} ;;\n", below.name, FunctionName(below));
  }
  return fmt::format(R"sh(
{}() {{
  local state line
  local -a commands=({}
  )
  _arguments -C{} \
    '1: :->command' \
    '*:: :->rest'
  case "$state" in
    command) _describe command commands ;;
    rest) case "$line[1]" in
{}    esac ;;
  esac
}}
)sh",
                     FunctionName(command), described, Arguments(command, manual), calls);
}

std::string Function(const CommandPage& command, const Manual& manual) {
  if (!command.commands.empty()) return Choice(command, manual);
  return fmt::format("\n{}() {{\n  _arguments{}\n}}\n", FunctionName(command), Arguments(command, manual));
}

std::string Tables(const Manual& manual) {
  std::string models, settings;
  for (const std::string& model : manual.models) models += "\n  " + Quoted(model);
  for (const SettingPage& setting : manual.settings) {
    settings += fmt::format("\n  {} '{}'", setting.name, Joined(setting.words, " "));
  }
  return fmt::format("typeset -ga _teskread_model_names=({}\n)\ntypeset -gA _teskread_setting_words=({}\n)\n",
                     models, settings);
}

}  // namespace

std::string ZshCompletion(const Manual& manual) {
  std::string page = "#compdef teskread\n# teskread(1) completion for zsh\n\n";
  page += Tables(manual) + std::string(kFunctions);
  for (const CommandPage* command : AllCommands(manual.program)) page += Function(*command, manual);
  return page + Function(manual.program, manual) + "\n_teskread \"$@\"\n";
}

}  // namespace tesk::cli
