// The library of the Sekonic USB readers with a simulated scanner behind it. Knows the engine's seam and the
// simulator.
#pragma once

#include <memory>
#include <vector>

#include "base/enumerations.h"
#include "engine/OmrLibrary.h"
#include "simulator/SekonicUsb.h"

namespace tesk::cli {

// Every engine that loads it gets the same scanner.
class SimulatedOmr : public OmrLibraryLoader {
 public:
  explicit SimulatedOmr(std::shared_ptr<simulator::SekonicUsb> scanner);
  std::shared_ptr<OmrLibrary> Load() override;

 private:
  std::shared_ptr<simulator::SekonicUsb> scanner_;
};

// A scanner with these sheets in its hopper; empty where the model is not read through this library.
std::shared_ptr<OmrLibraryLoader> CreateSimulatedOmr(teskReaderType type,
                                                     std::vector<simulator::Sheet> stock);

}  // namespace tesk::cli
