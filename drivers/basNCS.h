// The driver of the Scantron/NCS OpScan readers: OpScan 2 to 8, iNSIGHT 2 and 4.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/Sheet.h"

namespace tesk {
struct Driver;
class clsTeskReader;
}  // namespace tesk

namespace tesk::basNCS {

extern const Driver kDriver;

// Remembers the scanner's scan mode, brings the scanner into mode 1 and starts it.
bool InitReaderNCS(clsTeskReader& reader);
// Restores the scan mode that InitReaderNCS found. A SleepTime below 1 becomes 50.
bool CloseReaderNCS(clsTeskReader& reader);

// Reads one sheet into arrays of 150 x 48 values, 0 to 15; column 48 is always 0. Side 2 is read where Duplex
// and DuplexForm are True. The text lines of the sheet are its barcode texts. Empty: none was read.
std::optional<Sheet> ReadPageNCS(clsTeskReader& reader);
// Asks how the last sheet fared. A fault is shown and, with a Rejecter, the sheet rejected.
bool CheckStatusNCS(clsTeskReader& reader);

// Sends the imprinter's Distance and Buffer1; False without an imprinter object.
bool PrintNCS(clsTeskReader& reader);
void RejectPageNCS(clsTeskReader& reader);
void EjectPageNCS(clsTeskReader& reader);

// mode: 1 to 7; left as it is where the scanner reports another one.
bool GetScanModeNCS(clsTeskReader& reader, std::int16_t& mode);
// mode: 1 to 7; another one is shown as invalid and sends nothing.
bool SetScanModeNCS(clsTeskReader& reader, std::int16_t mode);

}  // namespace tesk::basNCS
