// Puts a reader together: the engine, its communications form and the dispatch over all drivers.
#pragma once

#include <memory>
#include <string_view>

#include "engine/clsTeskReader.h"
#include "transport/SerialLine.h"

namespace tesk {

// What a reader stands on. serial, loop and clock are required.
struct ReaderParts {
  std::shared_ptr<SerialSystem> serial;
  std::shared_ptr<HostLoop> loop;
  std::shared_ptr<const Clock> clock;
  std::shared_ptr<OneShotTimer> timer = nullptr;          // empty: a DeadlineTimer on the clock
  std::shared_ptr<SettingsStore> settings = nullptr;      // empty: the system's
  std::shared_ptr<SetupDialog> setupDialog = nullptr;     // empty: the system's, where it has windows
  std::shared_ptr<OmrLibraryLoader> omrLoader = nullptr;  // empty: the system's
};

std::shared_ptr<clsTeskReader> CreateReader(ReaderParts parts);

// The module name of the driver that a reader type is routed to ("basScantron"); empty where the type is
// routed nowhere or its driver does not exist.
std::string_view DriverModule(teskReaderType type);

}  // namespace tesk
