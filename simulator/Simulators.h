// The scanner models that can be simulated. It knows base and the simulator's own parts.
#pragma once

#include <memory>
#include <span>

#include "base/enumerations.h"
#include "simulator/SheetScanner.h"

namespace tesk::simulator {

// What sheets a model reads.
struct Media {
  std::int16_t darkest;  // the top of its darkness scale
  Geometry geometry;     // what is generated for it
};

// One scanner family.
struct Family {
  bool (*has)(teskReaderType reader);
  std::span<const FaultKind> faults;
  // Both for a reader that the family has. No media: the simulated models read no sheets.
  Media (*media)(teskReaderType reader);
  std::unique_ptr<SheetScanner> (*create)(teskReaderType reader, Options options);
};

// Null for a model without a simulator.
std::unique_ptr<SheetScanner> CreateScanner(teskReaderType reader, Options options);

// The faults of the model's own protocol, for help texts and ParseFault; empty without a simulator.
std::span<const FaultKind> FaultKinds(teskReaderType reader);

}  // namespace tesk::simulator
