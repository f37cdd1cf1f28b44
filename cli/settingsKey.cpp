// The options --key and --root.
#include "cli/settingsKey.h"

#include <algorithm>
#include <cctype>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/options.h"

namespace tesk::cli {
namespace {

std::string ReadKey(std::string_view option, const std::string& text) {
  if (text.find_first_not_of("\\/ ") == std::string::npos) {
    throw UsageError(fmt::format("{}: takes a path such as School\\Lab", option));
  }
  if (std::ranges::any_of(text, [](unsigned char c) { return std::iscntrl(c) != 0; })) {
    throw UsageError(
        fmt::format("{}: may hold no control characters; it takes a path such as School\\Lab", option));
  }
  return text;
}

}  // namespace

void AddSettingsRootOption(CLI::App& command, SettingsKey& key) {
  AddOption(command,
            {"--root", "ROOT",
             "the root that the key is below: CurrentUser (default), LocalMachine, Users, "
             "ClassesRoot or CurrentConfig",
             "--root LocalMachine"},
            key.root,
            OneOf<teskReaderRegistryKey>({{"CurrentUser", teskReaderRegistryKeyCurrentUser},
                                          {"LocalMachine", teskReaderRegistryKeyLocalMachine},
                                          {"Users", teskReaderRegistryKeyUsers},
                                          {"ClassesRoot", teskReaderRegistryKeyClassesRoot},
                                          {"CurrentConfig", teskReaderRegistryKeyCurrentConfig}}));
}

void AddSettingsKeyOptions(CLI::App& command, SettingsKey& key, bool required) {
  AddOption(command,
            {"--key", "K", "the key that the settings are saved under, a path", "--key \"School\\Lab\""},
            key.path, ReadKey)
      .required(required);
  AddSettingsRootOption(command, key);
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

}  // namespace tesk::cli
