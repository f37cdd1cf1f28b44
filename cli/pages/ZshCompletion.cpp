// The completion for zsh: a function for each command.
#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/pages/CommandPages.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kPorts = R"sh(
_teskread_any_case() { compadd -M 'm:{a-zA-Z}={A-Za-z}' "$@" }

_teskread_ports() { # [FURTHER-WORDS]
  local -a ports=(${(f)"$(_call_program ports teskread ports 2>/dev/null | grep '^/')"} $@)
  compadd -a ports || _files
}

_teskread_keys() {
  local -a keys=(${(f)"$(_call_program keys teskread settings list 2>/dev/null | sed -nE ')sh";

constexpr std::string_view kSettings = R"sh(')"})
  _teskread_any_case -a keys
}

_teskread_settings_values() {
  local name
  if ! compset -P '*='; then
    _teskread_any_case -S = -- ${(k)_teskread_setting_words}
    return
  fi
  for name in ${(k)_teskread_setting_words}; do
    [[ ${(L)name} != ${(L)${IPREFIX%=}##*=} ]] || _teskread_any_case -- ${=_teskread_setting_words[$name]}
  done
}

_teskread_models() { _teskread_any_case -a _teskread_model_names }

_teskread_topics() {
  local -a above=(${words[2,CURRENT-1]:#-*})
  case "$above" in
)sh";

std::string Quoted(const std::string& text) { return "'" + Replace(text, "'", "'\\''") + "'"; }

// A text as _arguments takes it: up to its first semicolon, brackets and colons escaped.
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

std::string Action(const OptionPage& option) {
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
      return "_teskread_topics";
    case Proposal::Nothing:
      break;
  }
  return " ";
}

std::string OptionRules(const OptionPage& option) {
  std::string rules;
  for (const std::string& name : option.names) {
    std::string rule = (option.repeats ? "*" : "") + name;
    if (!option.takes.empty()) rule += "=";
    rule += "[" + Short(option.text) + "]";
    if (!option.takes.empty()) rule += ":" + Short(option.takes) + ":" + Action(option);
    rules += " \\\n    " + Quoted(rule);
  }
  return rules;
}

std::string Arguments(const CommandPage& command) {
  std::string rules;
  for (const OptionPage& option : command.options) rules += OptionRules(option);
  for (const OptionPage& positional : command.positionals) {
    rules += " \\\n    " + Quoted(fmt::format("{}:{}:{}", positional.repeats ? "*" : "",
                                              Short(positional.takes), Action(positional)));
  }
  return rules;
}

// A command that has commands: its own options, one of the commands, and whatever that one takes.
std::string Choice(const CommandPage& command) {
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
                     FunctionName(command), described, Arguments(command), calls);
}

std::string Function(const CommandPage& command) {
  if (!command.commands.empty()) return Choice(command);
  return fmt::format("\n{}() {{\n  _arguments{}\n}}\n", FunctionName(command), Arguments(command));
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

std::string TopicCase(const CommandPage& command) {
  if (command.commands.empty()) return "";
  return fmt::format("    '{}') compadd {} ;;\n", command.path, NamesOf(command.commands));
}

std::string TopicCases(const Manual& manual) {
  std::string cases = TopicCase(manual.program);
  for (const CommandPage* command : AllCommands(manual.program)) cases += TopicCase(*command);
  return cases;
}

}  // namespace

std::string ZshCompletion(const Manual& manual) {
  std::string page = "#compdef teskread\n# teskread(1) completion for zsh\n\n";
  page += Tables(manual) + fmt::format("{}{}{}", kPorts, kReadKeys, kSettings);
  page += TopicCases(manual) + "  esac\n}\n";
  for (const CommandPage* command : AllCommands(manual.program)) page += Function(*command);
  return page + Function(manual.program) + "\n_teskread \"$@\"\n";
}

}  // namespace tesk::cli
