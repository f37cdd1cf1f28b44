// The driver of the Peripheral Dynamics VMR138.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/Sheet.h"

namespace tesk {
struct Driver;
class clsTeskReader;
}  // namespace tesk

namespace tesk::basPeripheralDynamics {

extern const Driver kDriver;

// Starts the scanner, completes its set-up and sets its threshold.
bool InitReaderPD(clsTeskReader& reader);
void CloseReaderPD(clsTeskReader& reader);

// Asks for the two status bytes, 0 to 255 each. False: no answer, or a sensor or jam error, both shown; after
// an error the sheet is ejected.
bool CheckStatusPD(clsTeskReader& reader, std::int16_t& status1, std::int16_t& status2);
// Steps the scanner's threshold to RecognitionThreshold. pause: milliseconds after a step.
bool SetRecThresholdPD(clsTeskReader& reader, std::int32_t pause);

// Reads one sheet into an array of 500 x 14; a mark is RecognitionThreshold + 1. Waits for the sheet without
// limit until CancelScan is set. Empty: none was read.
std::optional<Sheet> ReadPagePD(clsTeskReader& reader);
void RejectPagePD(clsTeskReader& reader);
void EjectPagePD(clsTeskReader& reader);

}  // namespace tesk::basPeripheralDynamics
