// The identification request of the Scantron EZData and Chatsworth readers. Sheets are not read: this family
// has no driver.
#pragma once

#include <cstdint>
#include <string>

namespace tesk {
class clsTeskReader;
}

namespace tesk::basNCSEZData {

// Both leave the communications form as they found it, send nothing that moves paper, and give up when
// CancelScan is set. They throw for line settings that no port has and while the engine holds its port open.

// Opens port 1..16 with the engine's line settings, asks whoever is there to identify itself, and closes the
// port again. True when a reader of the family answered. A port that is not there, that another program holds
// or that fails is passed over.
bool ProbePortNCSEZ(clsTeskReader& reader, std::int16_t port);

// The same request on the engine's own port. `firmware` is what the reader says of itself ("OMR-1100 -
// Version 1.04"), untouched where none answered. Throws where the port cannot be opened or fails.
bool FirmwareNCSEZ(clsTeskReader& reader, std::string& firmware);

}  // namespace tesk::basNCSEZData
