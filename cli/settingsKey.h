// The options --key and --root: where in the settings store a command works.
#pragma once

#include <string>

#include "base/enumerations.h"
#include "cli/CommandLine.h"

namespace tesk::cli {

struct SettingsKeyOptions {
  std::string key;
  std::string root;
};

struct SettingsKey {
  teskReaderRegistryKey root = teskReaderRegistryKeyCurrentUser;
  std::string path;
};

void AddSettingsKeyOptions(CLI::App& command, SettingsKeyOptions& options, bool required);

// Throws UsageError where --root names no root of the store, or --key nothing.
SettingsKey ParseSettingsKey(const SettingsKeyOptions& options);

}  // namespace tesk::cli
