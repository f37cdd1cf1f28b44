// The options --key and --root: where in the settings store a command works.
#pragma once

#include <string>

#include "base/enumerations.h"

namespace CLI {
class App;
}  // namespace CLI

namespace tesk::cli {

struct SettingsKey {
  teskReaderRegistryKey root = teskReaderRegistryKeyCurrentUser;
  std::string path;  // empty: none
};

void AddSettingsRootOption(CLI::App& command, SettingsKey& key);
void AddSettingsKeyOptions(CLI::App& command, SettingsKey& key, bool required);

// A text as a shell takes it for one word; backslashes and blanks survive.
std::string ShellWord(const std::string& text);

}  // namespace tesk::cli
