// The completion for bash, on the functions of the package bash-completion.
#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/pages/CommandPages.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kWords = R"sh(
_teskread_words() { # WORDS
  COMPREPLY=($(compgen -W "$1" -- "$cur"))
}

# Reads the word so far as the shell will: typed is what it means, quote its open quote. Readline leaves the first
# characters of it, as many as kept, alone: those before an open quote or behind a break that is not quoted.
_teskread_read_word() {
  local i char next opened=0
  typed="" quote="" kept=0
  for ((i = 0; i < ${#cur}; ++i)); do
    char=${cur:i:1} next=${cur:i+1:1}
    case "$quote$char" in
      "''" | '""') quote="" ;;
      "'" | '"') quote=$char opened=${#typed} ;;
      "\\") typed+=$next && ((++i)) ;;
      '"\') if [[ $next == [\\\"\$\`] ]]; then typed+=$next && ((++i)); else typed+=$char; fi ;;
      *) typed+=$char && [[ $quote || $COMP_WORDBREAKS != *"$char"* ]] || kept=${#typed} ;;
    esac
  done
  [[ -z $quote ]] || kept=$opened
}

_teskread_escape() { # QUOTE
  case "$1" in
    '"') sed 's/[\\"$`]/\\&/g; s/!/"\\!"/g' ;;
    "'") sed 's/\x27/\x27\\\x27\x27/g' ;;
    *) sed 's|[^[:alnum:]_.,:=@%+/-]|\\&|g' ;;
  esac
}

# Proposes lines of the input, with any characters and in any case. Readline could quote them itself, but only as names
# of files: it would put a slash behind a name that a folder has too.
_teskread_lines() {
  local line typed quote kept
  _teskread_read_word
  mapfile -t COMPREPLY < <(while IFS= read -r line; do
    [[ ${line,,} != "${typed,,}"* ]] || printf '%s\n' "${line:kept}"
  done | _teskread_escape "$quote")
}

_teskread_files() {
  local i typed quote kept
  _teskread_read_word
  _filedir
  for i in "${!COMPREPLY[@]}"; do COMPREPLY[i]=${COMPREPLY[i]:kept}; done
}

_teskread_ports() { # PROGRAM [FURTHER-WORDS]
  _teskread_words "$("$1" ports 2>/dev/null | grep '^/') ${2-}"
  if [[ ${#COMPREPLY[@]} -eq 0 && $cur == */* ]]; then _teskread_files; else __ltrim_colon_completions "$cur"; fi
}

_teskread_keys() { # PROGRAM
  _teskread_lines < <("$1" settings list 2>/dev/null | sed -nE ')sh";

constexpr std::string_view kSettings = R"sh(')
}

_teskread_settings() {
  local typed quote kept word words=""
  _teskread_read_word
  if [[ $typed != *=* ]]; then
    compopt -o nospace
    _teskread_lines <<<"$_teskread_setting_names"
    return
  fi
  case "${typed,,}" in
)sh";

constexpr std::string_view kTopics = R"sh(  esac
  _teskread_lines < <(for word in $words; do printf '%s\n' "${typed%%=*}=$word"; done)
}

_teskread_topics() {
  local i above=""
  for ((i = 1; i < cword; ++i)); do
    [[ ${words[i]} == -* ]] || above+=" ${words[i]}"
  done
  case "$above" in
)sh";

constexpr std::string_view kMain = R"sh(
_teskread() {
  local cur prev words cword split command="" i
  _init_completion -s -n :@ || return
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

std::string Propose(const OptionPage& option) {
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
      return "_teskread_files";
    case Proposal::Keys:
      return "_teskread_keys \"$1\"";
    case Proposal::Settings:
      return "_teskread_settings";
    case Proposal::Topics:
      return "_teskread_topics";
    case Proposal::Nothing:
      break;
  }
  return ":";
}

// What follows an option that takes a value.
std::string ValueCases(const CommandPage& command) {
  std::string cases;
  for (const OptionPage& option : command.options) {
    if (option.takes.empty()) continue;
    for (const std::string& name : option.names) {
      cases += fmt::format("    \"{} {}\") {} ; return ;;\n", command.path, name, Propose(option));
    }
  }
  return cases;
}

// What may follow in other places.
std::string WordCase(const CommandPage& command) {
  std::string words = NamesOf(command.options);
  if (!command.commands.empty()) words = NamesOf(command.commands) + " " + words;
  const std::string propose = fmt::format("_teskread_words \"{}\"", words);
  if (command.positionals.empty()) return fmt::format("    \"{}\") {} ;;\n", command.path, propose);
  return fmt::format("    \"{}\") if [[ $cur == -* ]]; then {}; else {}; fi ;;\n", command.path, propose,
                     Propose(command.positionals.front()));
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

std::string TopicCase(const CommandPage& command) {
  if (command.commands.empty()) return "";
  return fmt::format("    \" help{}{}\") _teskread_words \"{}\" ;;\n", command.path.empty() ? "" : " ",
                     command.path, NamesOf(command.commands));
}

std::string TopicCases(const Manual& manual) {
  std::string cases = TopicCase(manual.program);
  for (const CommandPage* command : AllCommands(manual.program)) cases += TopicCase(*command);
  return cases;
}

std::string SettingCases(const Manual& manual) {
  std::string cases;
  for (const SettingPage& setting : manual.settings) {
    if (setting.words.empty()) continue;
    cases += fmt::format("    {}=*) words=\"{}\" ;;\n", LowerCase(setting.name), Joined(setting.words, " "));
  }
  return cases;
}

}  // namespace

std::string BashCompletion(const Manual& manual) {
  const auto commands = AllCommands(manual.program);
  std::string names;
  for (const SettingPage& setting : manual.settings)
    names += (names.empty() ? "" : "\n") + setting.name + "=";
  std::string page = "# teskread(1) completion for bash\n\n";
  page += fmt::format("_teskread_models='{}'\n_teskread_setting_names='{}'\n", Joined(manual.models, "\n"),
                      names);
  page += fmt::format("{}{}{}", kWords, kReadKeys, kSettings) + SettingCases(manual) + std::string(kTopics);
  page += TopicCases(manual) + "  esac\n}\n" + std::string(kMain);
  page += fmt::format("      {}) command=\"${{command:+$command }}${{words[i]}}\" ;;\n    esac\n  done\n",
                      CommandPatterns(commands));
  page += "  case \"$command $prev\" in\n";
  for (const CommandPage* command : commands) page += ValueCases(*command);
  page += "  esac\n  $split && return\n  case \"$command\" in\n" + WordCase(manual.program);
  for (const CommandPage* command : commands) page += WordCase(*command);
  return page + "  esac\n} &&\n  complete -F _teskread teskread\n";
}

}  // namespace tesk::cli
