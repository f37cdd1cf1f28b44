// The driver of the Chatsworth Data OMR-1100.
#pragma once

#include <optional>

#include "engine/Sheet.h"

namespace tesk {
struct Driver;
class clsTeskReader;
}  // namespace tesk

namespace tesk::basChatsworth {

extern const Driver kDriver;

// Tells the scanner to send what it reads in binary.
bool InitReaderCT(clsTeskReader& reader);
// Switches the feed off. No answer is awaited.
void CloseReaderCT(clsTeskReader& reader);

// Reads one sheet into an array of its columns, 1 to 126, by 12: rows 12, 11, 0 to 9 of the sheet. A mark is
// RecognitionThreshold + 1. Without a feeder it waits for the sheet until CancelScan is set. Empty: none was read.
std::optional<Sheet> ReadPageCT(clsTeskReader& reader);

}  // namespace tesk::basChatsworth
