// The table of scanner families that can be simulated.
#include "simulator/Simulators.h"

#include <array>
#include <utility>

#include "simulator/Chatsworth.h"
#include "simulator/EZData.h"
#include "simulator/OpScan.h"
#include "simulator/PeripheralDynamics.h"
#include "simulator/ScanMark.h"
#include "simulator/SekonicSerial.h"

namespace tesk::simulator {
namespace {

constexpr std::array kFamilies{&kChatsworthFamily,         &kEZDataFamily,   &kOpScanFamily,
                               &kPeripheralDynamicsFamily, &kScanMarkFamily, &kSekonicSerialFamily};

const Family* FamilyOf(teskReaderType reader) {
  for (const Family* family : kFamilies) {
    if (family->has(reader)) return family;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<SheetScanner> CreateScanner(teskReaderType reader, Options options) {
  const Family* const family = FamilyOf(reader);
  if (family == nullptr) return nullptr;
  if (options.sheets.empty() && family->media != nullptr) {
    const Media media = family->media(reader);
    options.sheets =
        GenerateSheets(options.count, options.seed, options.geometry.value_or(media.geometry), media.darkest);
  }
  return family->create(reader, std::move(options));
}

std::span<const FaultKind> FaultKinds(teskReaderType reader) {
  const Family* const family = FamilyOf(reader);
  return family == nullptr ? std::span<const FaultKind>() : family->faults;
}

}  // namespace tesk::simulator
