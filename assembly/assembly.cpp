// Puts a reader together.
#include "assembly/assembly.h"

#include <utility>

#include "drivers/Driver.h"
#include "platform/OmrLibraryLoader.h"
#include "platform/SettingsStores.h"
#include "setup/SetupScreen.h"
#include "setup/portSearch.h"
#include "transport/SerialPort.h"
#include "transport/dispatch/basRead.h"

namespace tesk {

std::shared_ptr<clsTeskReader> CreateReader(ReaderParts parts) {
  auto timer = parts.timer ? parts.timer : std::make_shared<DeadlineTimer>(parts.clock);
  auto comm = std::make_shared<frmComm>(std::make_shared<SerialPort>(parts.serial), std::move(timer));
  auto omrLoader = parts.omrLoader ? std::move(parts.omrLoader) : platform::CreateOmrLibraryLoader();
  auto settings = parts.settings ? std::move(parts.settings) : platform::CreateSettingsStore();
  auto setupDialog = parts.setupDialog ? std::move(parts.setupDialog) : CreateSetupDialog();
  return std::make_shared<clsTeskReader>(EngineSeams{.comm = std::move(comm),
                                                     .loop = std::move(parts.loop),
                                                     .clock = std::move(parts.clock),
                                                     .dispatch = std::make_shared<basRead>(),
                                                     .portSearch = std::make_shared<IdentifyingPortSearch>(),
                                                     .setupDialog = std::move(setupDialog),
                                                     .settings = std::move(settings),
                                                     .omrLoader = std::move(omrLoader)});
}

std::string_view DriverModule(teskReaderType type) {
  const Driver* driver = DriverOf(type);
  return driver != nullptr ? driver->module : std::string_view();
}

}  // namespace tesk
