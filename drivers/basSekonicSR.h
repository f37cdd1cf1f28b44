// The driver of the Sekonic USB mark readers: SR1800, SR2300, SR3500 and SR6500. It reaches them through the
// scanner maker's library, which the engine keeps from the start of a reading run to its end. An engine that goes,
// or becomes another reader type, closes the scanner.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/Sheet.h"

namespace tesk {
struct Driver;
class clsTeskReader;
class clsTeskReaderPrinter;
}  // namespace tesk

namespace tesk::basSekonicSR {

extern const Driver kDriver;

// Loads the library, opens the scanner and sets it up. A library that is not there is shown as a missing file.
bool InitReaderSR(clsTeskReader& reader);
// Switches the barcode unit on; a scanner without one is no failure.
bool InitBarcodeSR(clsTeskReader& reader);
// Closes the scanner and releases the library; True also where there was nothing to close.
bool CloseReaderSR(clsTeskReader& reader);

// Feeds and reads one sheet. Both side arrays become 200 x 48, one mark byte (0..255) per position as the
// library delivers it, rows as long as its column count says and the rest 0; a side that was not read all 0; the timing-mark counts are the rows that have values.
// threshold: the engine's; marks are not scaled by it.
std::optional<Sheet> ReadPageSR(clsTeskReader& reader, std::int16_t threshold);

// Send the sheet to a stacker. A failure is shown.
bool RejectPageSR(clsTeskReader& reader);
bool EjectPageSR(clsTeskReader& reader);

// Hands the imprinter's lines over, each cut to the printer's MaxCharacters.
bool PrintSR(clsTeskReader& reader, const clsTeskReaderPrinter& printer);

// Reports what a scanner error code means.
void ReturnErrorSR(std::int32_t code);

}  // namespace tesk::basSekonicSR
