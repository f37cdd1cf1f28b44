// What the host says to a Sekonic serial reader: the fixed commands, and those that carry settings. Nothing
// here touches a line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/enumerations.h"
#include "engine/clsTeskReaderPrinter.h"
#include "engine/clsTeskReaderWindow.h"

namespace tesk::basScanningSystems {

// Octal, so that a letter may follow: CAN 030, DLE 020, ENQ 005, DC3 023, STX 002.
inline constexpr std::string_view kReset = "\030\r";
inline constexpr std::string_view kReadingMode = "\005OM\r";
inline constexpr std::string_view kFitted = "\005O\r";
inline constexpr std::string_view kTimingMarks = "\005T\r";
inline constexpr std::string_view kStatus = "?\r";
inline constexpr std::string_view kFeedQuery = "?F\r";
inline constexpr std::string_view kPrintQuery = "?P\r";
inline constexpr std::string_view kForgetWindows = "\020Q\r";
inline constexpr std::string_view kWindowData = "\020R*\r";
inline constexpr std::string_view kBarcodeData = "\023BA05\r";
inline constexpr std::string_view kBarcodeField = "\023BA10999\r";  // once per definition
inline constexpr std::string_view kBarcodeSetUp[] = {"\023BA00\r", "\023BA01\r"};
inline constexpr std::string_view kImprinterSetUp[] = {"\023P10\r", "\023P3100\r"};
inline constexpr std::string_view kToReject = "\023R05\r";
inline constexpr std::string_view kToAccept = "\023R04\r";

// Before a command: meant for the head of the back side.
inline constexpr std::string_view kBackSide = "/";

// The whole set-up of a reader that takes no questions (SR-410, SR-430); empty for the others.
std::vector<std::string> CardSetUp(teskReaderType type, std::int16_t threshold);

// The read threshold as the reading mode takes it.
std::string ThresholdCommand(std::int16_t readingMode, std::int16_t threshold);
std::string DiscriminationCommand(std::int16_t discrimination);

// Turns negative gaps round: the same positions from the other end. Error 6 beyond 16 bits; the window then
// stays as it is.
void Normalise(clsTeskReaderWindow& window);
// Error 5 for a field outside 0..99, which has no room on the wire.
std::string WindowCommand(const clsTeskReaderWindow& window);

// Asks for the marks of `rows` rows. Error 5 above 999, which has no room on the wire.
std::string PageCommand(std::int32_t rows);

// The print position and the three lines, an empty one as a command of its own.
std::vector<std::string> ImprintCommands(const clsTeskReaderPrinter& printer, std::int32_t dataBits);

}  // namespace tesk::basScanningSystems
