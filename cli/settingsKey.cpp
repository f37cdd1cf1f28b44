// Where in the settings store.
#include "cli/settingsKey.h"

#include <algorithm>
#include <cctype>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"

namespace tesk::cli {
namespace {

constexpr struct {
  std::string_view name;
  teskReaderRegistryKey root;
} kRoots[] = {
    {"CurrentUser", teskReaderRegistryKeyCurrentUser},
    {"LocalMachine", teskReaderRegistryKeyLocalMachine},
    {"Users", teskReaderRegistryKeyUsers},
    {"ClassesRoot", teskReaderRegistryKeyClassesRoot},
    {"CurrentConfig", teskReaderRegistryKeyCurrentConfig},
};

}  // namespace

void AddSettingsRootOption(CLI::App& command, SettingsKeyOptions& options) {
  command
      .add_option("--root", options.root,
                  Explain("the root that the key is below: CurrentUser (default), LocalMachine, Users, "
                          "ClassesRoot or CurrentConfig",
                          "--root LocalMachine"))
      ->type_name("ROOT");
}

void AddSettingsKeyOptions(CLI::App& command, SettingsKeyOptions& options, bool required) {
  command
      .add_option("--key", options.key,
                  Explain("the key that the settings are saved under, a path", "--key \"School\\Lab\""))
      ->type_name("K")
      ->required(required);
  AddSettingsRootOption(command, options);
}

std::string ShellWord(const std::string& text) {
  constexpr std::string_view kSpecialInQuotes = "\"$`!\n";
  const bool plain = std::ranges::all_of(text, [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '/' || c == '-' || c == '_' || c == '.';
  });
  if (plain) return text;
  if (text.find_first_of(kSpecialInQuotes) == std::string::npos && !text.ends_with('\\'))
    return '"' + text + '"';
  return "'" + Replace(text, "'", "'\\''") + "'";
}

SettingsKey ParseSettingsKey(const SettingsKeyOptions& options) {
  if (options.key.find_first_not_of("\\/ ") == std::string::npos) {
    throw UsageError("--key: takes a path such as School\\Lab");
  }
  if (std::ranges::any_of(options.key, [](unsigned char c) { return std::iscntrl(c) != 0; })) {
    throw UsageError("--key: may hold no control characters; it takes a path such as School\\Lab");
  }
  return {.root = ParseSettingsRoot(options.root), .path = options.key};
}

teskReaderRegistryKey ParseSettingsRoot(const std::string& name) {
  if (name.empty()) return teskReaderRegistryKeyCurrentUser;
  for (const auto& [known, root] : kRoots) {
    if (LowerCase(known) == LowerCase(name)) return root;
  }
  throw UsageError(fmt::format(
      "--root: \"{}\" is none of CurrentUser, LocalMachine, Users, ClassesRoot, CurrentConfig", name));
}

}  // namespace tesk::cli
