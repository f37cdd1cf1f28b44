// The driver of the Scantron serial mark readers: ScanMark 2000 to ES 2800, Scantron 8000 and 8400.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "engine/Sheet.h"

namespace tesk {
struct Driver;
class clsTeskReader;
}  // namespace tesk

namespace tesk::basScantron {

extern const Driver kDriver;

// Resets the scanner, downloads the form and switches the imprinter.
bool InitReaderST(clsTeskReader& reader);
bool CloseReaderST(clsTeskReader& reader);
bool ResetReaderST(clsTeskReader& reader);
bool DownloadFormST(clsTeskReader& reader);
bool EnablePrinterST(clsTeskReader& reader);

// Sends a framed command; True when its acknowledgement came. Shows nothing.
bool SendCommandST(clsTeskReader& reader, std::string_view command);

// 1: a sheet is ready, 0: none is, -1: error (shown), time-out (shown), cancel or unknown status.
std::int32_t CheckStatusST(clsTeskReader& reader);

// Reads one sheet, 48 values per row; empty: none was read, and why has been shown. Side arrays have the
// engine's extents (rows x columns from 1); a value outside them fails the read with error 9. Values are 0 and
// up on the scanner's own scale. Rows are counted in the engine as they come.
std::optional<Sheet> ReadPageST(clsTeskReader& reader);
// Reads one sheet through the engine's Windows; positions outside every window are 0.
std::optional<Sheet> ReadWindowsST(clsTeskReader& reader);

// Sends the held sheet to the reject exit, or to the accept exit with the imprinter's text.
bool RejectPageST(clsTeskReader& reader, bool reject);

// Discards everything that waits; errors are ignored.
void ClearBufferST(clsTeskReader& reader);

}  // namespace tesk::basScantron
