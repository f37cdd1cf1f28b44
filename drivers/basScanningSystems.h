// The driver of the Sekonic serial mark readers: SR-601, SR-607, SR-700-351, SR-700-352, SR-410, SR-430.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/Sheet.h"

namespace tesk {
struct Driver;
class clsTeskReader;
class SideArray;
}  // namespace tesk

namespace tesk::basScanningSystems {

extern const Driver kDriver;

class Answer;

// Resets the scanner and sets it up. For the SR-601, 607 and 700 it asks for the reading mode, replaces the
// engine's Rejecter by what the scanner says it has, and in window mode downloads the engine's Windows; those
// with a negative gap are rewritten in the engine's own list. Error 5 for a window with a field outside
// 0..99.
bool InitReaderSS(clsTeskReader& reader);
// Sends nothing: the scanner keeps its settings.
bool CloseReaderSS(clsTeskReader& reader);

// Feeds and reads one sheet, with its timing-mark counts and barcodes, whole or by windows.
std::optional<Sheet> ReadPageSS(clsTeskReader& reader);
// The marks of the sheet that was fed, rows x 48 per side, or in the engine's extents by windows. Values are
// 0 and up on the scanner's own scale. A mark outside the array is error 9, a record that breaks off is the
// time-out error; the engine's arrays then stay as they are.
std::optional<Sheet> ReadEntirePageSS(clsTeskReader& reader);
std::optional<Sheet> ReadWindowsSS(clsTeskReader& reader);

enum class Spread { Complete, Incomplete, Failed };  // Failed: has been reported

// Spreads the reply for one side (1 or 2) over `side` through the engine's Windows of that page. Incomplete:
// not every item of every window was in the reply; the last CR may be missing.
Spread AddToArraySS(clsTeskReader& reader, std::string_view reply, SideArray& side, std::int16_t number);

// Writes a command and returns its answer as it came, or as the decimal texts of its bytes in a row ("0" is
// "48"). Empty after a time-out, which was shown, and after a cancel; `answer` then has what came. Errors pass
// to the caller.
std::string SendCommandSS(clsTeskReader& reader, std::string_view command, bool bytewise, Answer& answer);

// Shows the message of a status code ("49"); nothing for a code that has none.
void ReturnErrorSS(clsTeskReader& reader, std::string_view code);

// Sends the sheet to the reject exit or the accept exit. Without a rejecter and with an initialised imprinter
// either way through RejectPrintSS.
bool RejectPageSS(clsTeskReader& reader, bool reject);
bool RejectPrintSS(clsTeskReader& reader);

// Imprints the imprinter's buffers on the sheet; with `feed` after a feed query. True when the scanner says
// so.
bool PrintSS(clsTeskReader& reader, bool feed);

}  // namespace tesk::basScanningSystems
