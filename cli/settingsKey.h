// The options --key and --root: where in the settings store a command works.
#pragma once

#include <string>

#include "base/enumerations.h"

namespace CLI {
class App;
}  // namespace CLI

namespace tesk::cli {

struct SettingsKeyOptions {
  std::string key;
  std::string root;
};

struct SettingsKey {
  teskReaderRegistryKey root = teskReaderRegistryKeyCurrentUser;
  std::string path;
};

void AddSettingsRootOption(CLI::App& command, SettingsKeyOptions& options);
void AddSettingsKeyOptions(CLI::App& command, SettingsKeyOptions& options, bool required);

// A text as a shell takes it for one word; backslashes and blanks survive.
std::string ShellWord(const std::string& text);

// Throws UsageError where --root names no root of the store, or --key nothing.
SettingsKey ParseSettingsKey(const SettingsKeyOptions& options);
// Empty: CurrentUser.
teskReaderRegistryKey ParseSettingsRoot(const std::string& name);

}  // namespace tesk::cli
