// The completion for bash, on the functions of the package bash-completion.
#include <fmt/format.h>

#include "cli/pages/CommandPages.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kFunctions = R"sh(
_teskread_words() { # WORDS
  COMPREPLY=($(compgen -W "$1" -- "$cur"))
}

# Names with blanks, in any case; readline puts quotes or backslashes in.
_teskread_lines() {
  local line typed=${cur//[\\\"\']/}
  compopt -o filenames
  while IFS= read -r line; do
    [[ ${line,,} != "${typed,,}"* ]] || COMPREPLY+=("$line")
  done
}

_teskread_ports() { # PROGRAM [FURTHER-WORDS]
  _teskread_words "$("$1" ports 2>/dev/null | grep '^/') ${2-}"
  [[ ${#COMPREPLY[@]} -gt 0 || $cur != */* ]] || _filedir
  __ltrim_colon_completions "$cur"
}

_teskread_keys() { # PROGRAM
  _teskread_lines < <("$1" settings list 2>/dev/null | sed -n 's/^"\([^"]*\)".*/\1/p; s/^\([^" ][^ ]*\).*/\1/p')
}

_teskread_settings() {
  local typed=$cur
  if [[ $cur != *=* ]]; then
    compopt -o nospace
    _teskread_words "$_teskread_setting_names"
    return
  fi
  cur=${cur#*=}
  case "${typed%%=*}" in
)sh";

constexpr std::string_view kMain = R"sh(
_teskread() {
  local cur prev words cword split command="" i
  _init_completion -s -n : || return
  for ((i = 1; i < cword; ++i)); do
    case "$command ${words[i]}" in
)sh";

std::string NamesOf(const std::vector<OptionPage>& options) {
  std::string names;
  for (const OptionPage& option : options) names += (names.empty() ? "" : " ") + Joined(option.names, " ");
  return names;
}

std::string NamesOf(const std::vector<CommandPage>& commands) {
  std::string names;
  for (const CommandPage& command : commands) names += (names.empty() ? "" : " ") + command.name;
  return names;
}

std::string Propose(const OptionPage& option, const Manual& manual) {
  switch (option.proposal) {
    case Proposal::Words:
      return fmt::format("_teskread_words \"{}\"", Joined(option.words, " "));
    case Proposal::Models:
      return "_teskread_lines <<<\"$_teskread_models\"";
    case Proposal::Ports:
      return "_teskread_ports \"$1\"";
    case Proposal::PortsAndSim:
      return "_teskread_ports \"$1\" sim";
    case Proposal::Files:
      return "_filedir";
    case Proposal::Keys:
      return "_teskread_keys \"$1\"";
    case Proposal::Settings:
      return "_teskread_settings";
    case Proposal::Topics:
      return fmt::format("_teskread_words \"{}\"", NamesOf(manual.program.commands));
    case Proposal::Nothing:
      break;
  }
  return ":";
}

// What follows an option that takes a value.
std::string ValueCases(const CommandPage& command, const Manual& manual) {
  std::string cases;
  for (const OptionPage& option : command.options) {
    if (option.takes.empty()) continue;
    for (const std::string& name : option.names) {
      cases += fmt::format("    \"{} {}\") {} ; return ;;\n", command.path, name, Propose(option, manual));
    }
  }
  return cases;
}

// What may follow in other places.
std::string WordCase(const CommandPage& command, const Manual& manual) {
  std::string words = NamesOf(command.options);
  if (!command.commands.empty()) words = NamesOf(command.commands) + " " + words;
  const std::string propose = fmt::format("_teskread_words \"{}\"", words);
  if (command.positionals.empty()) return fmt::format("    \"{}\") {} ;;\n", command.path, propose);
  return fmt::format("    \"{}\") if [[ $cur == -* ]]; then {}; else {}; fi ;;\n", command.path, propose,
                     Propose(command.positionals.front(), manual));
}

// The commands as they stand behind each other: " settings", "settings save".
std::string CommandPatterns(const std::vector<const CommandPage*>& commands) {
  std::string patterns;
  for (const CommandPage* command : commands) {
    const bool nested = command->path != command->name;
    patterns += fmt::format("{}\"{}{}\"", patterns.empty() ? "" : " | ", nested ? "" : " ", command->path);
  }
  return patterns;
}

std::string SettingCases(const Manual& manual) {
  std::string cases;
  for (const SettingPage& setting : manual.settings) {
    if (setting.words.empty()) continue;
    cases += fmt::format("    {}) _teskread_words \"{}\" ;;\n", setting.name, Joined(setting.words, " "));
  }
  return cases;
}

}  // namespace

std::string BashCompletion(const Manual& manual) {
  const auto commands = AllCommands(manual.program);
  std::string names;
  for (const SettingPage& setting : manual.settings) names += (names.empty() ? "" : " ") + setting.name + "=";
  std::string page = "# teskread(1) completion for bash\n\n";
  page += fmt::format("_teskread_models='{}'\n_teskread_setting_names='{}'\n", Joined(manual.models, "\n"),
                      names);
  page += std::string(kFunctions) + SettingCases(manual) + "  esac\n}\n" + std::string(kMain);
  page += fmt::format("      {}) command=\"${{command:+$command }}${{words[i]}}\" ;;\n    esac\n  done\n",
                      CommandPatterns(commands));
  page += "  case \"$command $prev\" in\n";
  for (const CommandPage* command : commands) page += ValueCases(*command, manual);
  page += "  esac\n  $split && return\n  case \"$command\" in\n" + WordCase(manual.program, manual);
  for (const CommandPage* command : commands) page += WordCase(*command, manual);
  return page + "  esac\n} &&\n  complete -F _teskread teskread\n";
}

}  // namespace tesk::cli
