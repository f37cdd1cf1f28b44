// The drivers that exist. A new driver is one line here, beside its header.
#include <algorithm>
#include <iterator>

#include "drivers/Driver.h"
#include "drivers/basNCS.h"
#include "drivers/basPeripheralDynamics.h"
#include "drivers/basScanningSystems.h"
#include "drivers/basScantron.h"
#include "drivers/basSekonicSR.h"

namespace tesk {
namespace {

// clang-format off
constexpr const Driver* kDrivers[] = {
    &basNCS::kDriver,
    &basPeripheralDynamics::kDriver,
    &basScanningSystems::kDriver,
    &basScantron::kDriver,
    &basSekonicSR::kDriver,
};
// clang-format on

}  // namespace

const Driver* DriverOf(teskReaderType type) {
  const auto* driver = std::ranges::find(kDrivers, ModelOf(type).family, &Driver::family);
  return driver != std::end(kDrivers) ? *driver : nullptr;
}

}  // namespace tesk
