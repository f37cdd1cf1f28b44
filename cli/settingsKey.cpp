// Where in the settings store.
#include "cli/settingsKey.h"

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"

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

void AddSettingsKeyOptions(CLI::App& command, SettingsKeyOptions& options, bool required) {
  command
      .add_option("--key", options.key,
                  Explain("the key that the settings are saved under, a path", "--key School\\Lab"))
      ->type_name("K")
      ->required(required);
  command
      .add_option("--root", options.root,
                  Explain("the root that the key is below: CurrentUser (default), LocalMachine, Users, "
                          "ClassesRoot or CurrentConfig",
                          "--root LocalMachine"))
      ->type_name("ROOT");
}

SettingsKey ParseSettingsKey(const SettingsKeyOptions& options) {
  if (options.key.find_first_not_of("\\/ ") == std::string::npos) {
    throw UsageError("--key: takes a path such as School\\Lab");
  }
  if (options.root.empty()) return {.root = teskReaderRegistryKeyCurrentUser, .path = options.key};
  for (const auto& [name, root] : kRoots) {
    if (LowerCase(name) == LowerCase(options.root)) return {.root = root, .path = options.key};
  }
  throw UsageError(
      fmt::format("--root: \"{}\" is none of CurrentUser, LocalMachine, Users, ClassesRoot, CurrentConfig",
                  options.root));
}

}  // namespace tesk::cli
