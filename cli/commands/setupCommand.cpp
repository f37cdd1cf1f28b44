// `teskread setup`: the setup dialog over the settings saved under a key.
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "assembly/assembly.h"
#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/CommandLine.h"
#include "cli/ReaderChoice.h"
#include "cli/options.h"
#include "cli/settingsKey.h"
#include "cli/storedSettings.h"
#include "platform/Platform.h"
#include "platform/SettingsStores.h"
#include "setup/SetupScreen.h"

namespace tesk::cli {
namespace {

struct SetupOptions {
  SettingsKey key;
  teskReaderType reader = teskReaderTypeNone;  // None: begins with what is saved
};

// Messages stand where the dialog stands, and on standard error before and after it.
class SetupHost : public ConsoleHost {
 public:
  SetupHost(std::shared_ptr<Console> console, std::shared_ptr<SetupScreen> screen)
      : ConsoleHost(std::move(console)), screen_(std::move(screen)) {}

  bool MsgBoxEx(const std::string& title, const std::string& text) override {
    return screen_->ShowMessage(title, text) || ConsoleHost::MsgBoxEx(title, text);
  }
  void RaiseError(const ErrorReport& report) override {
    const OperatorMessage message = MessageOf(report);
    if (!Silent()) MsgBoxEx(message.title, message.text);
  }

 private:
  std::shared_ptr<SetupScreen> screen_;
};

// The named model's proposals (empty), or what is saved.
std::optional<LoadedSettings> Begin(const SetupOptions& options, const SettingsKey& key,
                                    clsTeskReader& engine) {
  if (options.reader != teskReaderTypeNone) {
    LoadModelDefaults(options.reader, engine);
    engine.SetPort(1);
    return std::nullopt;
  }
  const auto store = platform::CreateSettingsStore();
  if (!store->LoadValue(key.root, key.path, "ScannerType")) {
    throw UsageError("--reader: is required: nothing is saved under this key yet");
  }
  return LoadedSettings(key, engine);
}

// What the dialog cannot show.
void TellStored(const LoadedSettings& loaded, const SettingsKey& key, SetupScreen& screen, Console& console) {
  const auto tell = [&](const std::string& title, const std::string& text) {
    if (!screen.Announce(title, text)) console.Message(title, text);
  };
  if (!loaded.Unusable().empty()) {
    std::string text = "What is saved here cannot be used:";
    for (const StoredValue& value : loaded.Unusable()) {
      text += fmt::format("|{}: \"{}\"", PropertyOf(value.name), Replace(value.text, "|", "?"));
    }
    tell("Saved Settings",
         text + "|The dialog shows a proposal instead. OK saves that, Cancel changes nothing.");
  }
  if (const std::string device = StoredDevice(key); !device.empty()) {
    tell("Scanner Port",
         fmt::format("Scans with this key use {}, not the number of the port. Another port that is "
                     "chosen here takes its place.",
                     device));
  }
}

std::shared_ptr<SetupScreen> Screen() {
  try {
    return CreateSetupScreen();
  } catch (const NoSetupScreen& none) {
    throw UsageError(none.what());
  }
}

int RunSetup(const SetupOptions& options, Program& program) {
  const SettingsKey& key = options.key;
  platform::InstallInterruptHandler();
  const auto screen = Screen();
  const InstalledHost host(std::make_shared<SetupHost>(program.console, screen));
  const auto engine =
      CreateReader({.serial = platform::CreateSerialSystem(),
                    .loop = platform::CreateHostLoop([screen] { return screen->RunMessages(); }),
                    .clock = platform::CreateClock(),
                    .setupDialog = screen->Dialog()});
  const auto loaded = Begin(options, key, *engine);
  if (loaded) TellStored(*loaded, key, *screen, *program.console);
  const bool confirmed = engine->ShowOptions(nullptr);
  if (platform::Interrupted()) return kStatusBySignal + platform::InterruptSignal();
  if (!confirmed) {
    program.console->Message("teskread setup", "nothing was changed");
    return kStatusDone;
  }
  const bool saved = loaded ? loaded->SaveChanges() : SaveAll(key, *engine);
  return saved ? kStatusDone : kStatusFailed;
}

}  // namespace

void AddSetupCommand(CLI::App& app, Program& program) {
  const auto options = std::make_shared<SetupOptions>();
  CLI::App& command = *app.add_subcommand("setup", "Shows and changes the settings under a key in a dialog");
  AddSettingsKeyOptions(command, options->key, true);
  AddOption(
      command,
      {"--reader", "R", "begins with this model's defaults; without it, with what is saved", "--reader 4"},
      options->reader, ParseReader);
  command.footer(
      "Examples:\n"
      "  teskread setup --key \"School\\Lab\" --reader \"Scantron EZData\"\n"
      "  teskread setup --key \"School\\Lab\"");
  command.callback(
      [options, &program] { program.run = [options, &program] { return RunSetup(*options, program); }; });
}

}  // namespace tesk::cli
