// The port search: asks one serial port after the other whether a reader answers there.
#pragma once

#include "engine/Seams.h"

namespace tesk {

class IdentifyingPortSearch : public PortSearch {
 public:
  // Asks startPort first where it is one of 1..16, then 1 to 16 in order. The engine's Port is where a reader
  // answered, or as it was. CancelScan, set while it searches, ends the search. False at once for readers
  // that cannot be located. Throws what no other port would mend.
  bool Locate(clsTeskReader& reader, std::int16_t startPort) override;
  // The text by which the reader on the engine's Port identifies itself. False, and no port opened, for
  // readers that have none.
  bool Firmware(clsTeskReader& reader, std::string& firmware) override;
};

}  // namespace tesk
