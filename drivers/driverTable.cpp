// The drivers that exist. A new driver is one line here, beside its header.
#include <algorithm>
#include <iterator>

#include "drivers/Driver.h"
#include "drivers/basChatsworth.h"
#include "drivers/basNCS.h"
#include "drivers/basPeripheralDynamics.h"
#include "drivers/basScanningSystems.h"
#include "drivers/basScantron.h"
#include "drivers/basSekonicSR.h"

namespace tesk {
namespace {

// clang-format off
constexpr const Driver* kDrivers[] = {
    &basChatsworth::kDriver,
    &basNCS::kDriver,
    &basPeripheralDynamics::kDriver,
    &basScanningSystems::kDriver,
    &basScantron::kDriver,
    &basSekonicSR::kDriver,
};
// clang-format on

}  // namespace

const Driver* DriverOf(teskReaderType type) {
  const Model& model = ModelOf(type);
  if (model.support == Support::NoDriver) return nullptr;
  const auto* driver = std::ranges::find(kDrivers, model.family, &Driver::family);
  return driver != std::end(kDrivers) ? *driver : nullptr;
}

}  // namespace tesk
