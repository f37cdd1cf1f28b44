// Puts a reader together.
#include "assembly/assembly.h"

#include <utility>

#include "drivers/Driver.h"
#include "transport/SerialPort.h"
#include "transport/basRead.h"

namespace tesk {

std::shared_ptr<clsTeskReader> CreateReader(ReaderParts parts) {
  auto timer = parts.timer ? parts.timer : std::make_shared<DeadlineTimer>(parts.clock);
  auto comm = std::make_shared<frmComm>(std::make_shared<SerialPort>(parts.serial), std::move(timer));
  return std::make_shared<clsTeskReader>(EngineSeams{.comm = std::move(comm),
                                                     .loop = std::move(parts.loop),
                                                     .dispatch = std::make_shared<basRead>(),
                                                     .portSearch = nullptr,
                                                     .setupDialog = std::move(parts.setupDialog),
                                                     .settings = std::move(parts.settings)});
}

std::string_view DriverModule(teskReaderType type) {
  const auto family = FamilyOf(type);
  const Driver* driver = family ? FindDriver(*family) : nullptr;
  return driver != nullptr ? driver->module : std::string_view();
}

}  // namespace tesk
