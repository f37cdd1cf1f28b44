// The OpScan family. A sheet comes back as lines of hexadecimal digits, one per mark position.
//
//   host     "s0"                   which scan mode?
//   scanner  51 bytes and more      34: report letter, 48: mode letter, both counted from 0
//   host     "e" letter EOT         set the scan mode; nothing is answered
//   host     "r"                    start
//   host     DC1                    read a sheet
//   scanner  record                 drivers/opscanRecord.h
//   host     "s1"                   how did the sheet fare?
//   scanner  5 bytes                1: 2 skewed, 1 too thick; 2: 8 jam, 4 read head
//   host     "1" dd EOT             imprint position
//   host     "2" text " " EOT       imprint
//   host     [ESC] DC2              eject the sheet; with ESC to the reject exit
//   host     SO                     close
#include "drivers/basNCS.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "drivers/opscanRecord.h"
#include "engine/clsTeskReader.h"

namespace tesk::basNCS {
namespace {

// What the family keeps between calls, for all engines.
struct Kept {
  std::int16_t scanMode = 0;  // as InitReaderNCS found it; 0: the scanner named none that is known
  char reportLetter = '\0';   // upper case, of the last scan-mode report; 0 once it has been acted on
} kept;

constexpr std::string_view kStart = "r";
constexpr std::string_view kReadSheet = "\x11";
constexpr std::string_view kStatus = "s1";
constexpr std::string_view kScanMode = "s0";
constexpr std::string_view kClose = "\x0E";
constexpr std::string_view kReject = "\x1B\x12";
constexpr std::string_view kEject = "\x12";
constexpr char kEndOfText = '\x04';

// ---- Scan modes

constexpr std::string_view kModeLetters = "ietdwsy";  // of modes 1 to 7
constexpr std::int16_t kReadingMode = 1;
constexpr std::int16_t kPassageMode = 5;  // every change of mode passes through it
constexpr std::size_t kReportLetterAt = 34;
constexpr std::size_t kModeLetterAt = 48;
constexpr std::int32_t kReportLength = 51;
constexpr std::size_t kLongestReport = 200;
constexpr Milliseconds kModeChange{200};
constexpr int kMostPolls = 11;  // scan-mode reports that may lead to success

bool RestoredAtClose(std::int16_t mode) { return mode == 2 || mode == 3 || mode == 4 || mode == 6; }

char UpperLetter(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char LowerLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// ---- Messages

constexpr Message kStatusSilence{"No Response",
                                 "There was no response from the scanner while checking status."};
constexpr Message kSheetSilence{"No Response",
                                "There was no response from the scanner while scanning a page."};
constexpr Message kDataSilence{"No Response", "There was no response from the scanner while reading data."};
constexpr Message kInvalidMode{"Invalid Scan Mode", "An invalid scan mode was specified."};

constexpr const char* kWrongLengthTitle = "Invalid Number of Bytes";
constexpr const char* kWrongLengthOfSide1 = "The scanner reported an invalid number of bytes on side 1";
constexpr const char* kWrongLengthOfSide2 = "The scanner reported an invalid number of bytes on side 2";

void Show(const WrongLength& wrong) {
  ShowComposedMessage(kWrongLengthTitle,
                      LoadString(wrong.side == 1 ? kWrongLengthOfSide1 : kWrongLengthOfSide2) + "|" +
                          LoadString("Invalid number of bytes: ") + NumberText(wrong.bytes) + "|" +
                          LoadString("Line number: ") + NumberText(wrong.line));
}

// ---- Status

struct Fault {
  std::size_t byte;
  unsigned bit;
  Message message;
};

constexpr unsigned kFaultBitsOfByte1 = 3;
constexpr unsigned kFaultBits = 15;
constexpr std::int32_t kShortestStatus = 4;
constexpr std::size_t kStatusLength = 5;

// In the order in which they are looked for; the first is shown.
constexpr Fault kFaults[] = {
    {1,
     2,
     {"Skewed Page",
      "The scanner reports a skewed page. Please clear the page from the feeder and then rescan."}},
    {1,
     1,
     {"Thickness Error",
      "The scanner reports a page thickness error. Please check that the scanner did not double feed and "
      "then rescan this page."}},
    {2,
     8,
     {"Paper Jam",
      "The scanner reports paper jam or a misfeed.  Please clear the feeder and then rescan the form."}},
    {2,
     4,
     {"Read Head Error",
      "The scanner reports a read head error.  Check with the scanner's manufacturer for support."}},
};

const Fault* FindFault(const std::array<std::uint8_t, kStatusLength>& status) {
  for (const Fault& fault : kFaults) {
    if ((status[fault.byte] & fault.bit) != 0) return &fault;
  }
  return nullptr;
}

// ---- Waiting

// Waits for `count` bytes. A time-out is shown, a cancel is not.
bool Answered(SerialExchange& line, std::int32_t count, const Message& silence) {
  const Wait wait = line.ForBytes(count);
  if (wait == Wait::TimedOut) Show(silence);
  return wait == Wait::Arrived;
}

// Without a feeder, and while answer sheets are graded, a person inserts the sheet and takes their time.
bool SheetCame(const clsTeskReader& reader, SerialExchange& line) {
  if (reader.ReaderGrade() || !reader.Feeder()) return line.ForBytesWithoutLimit() == Wait::Arrived;
  return Answered(line, 1, kSheetSilence);
}

// Feeds the record until it ends; False when a wait failed.
bool TakeRecord(SerialExchange& line, OpScanRecord& record) {
  while (!record.Ended()) {
    if (const auto byte = line.TakeByte()) {
      if (const auto wrong = record.Take(*byte)) Show(*wrong);
    } else if (!record.MayEndInSilence()) {
      if (!Answered(line, 1, kDataSilence)) return false;
    } else if (!line.FollowsWithinSleepTime()) {
      return !line.Cancelled();
    }
  }
  return true;
}

// ---- Starting

bool ChangeToReadingMode(clsTeskReader& reader) {
  if (!SetScanModeNCS(reader, kPassageMode) || !SetScanModeNCS(reader, kReadingMode)) return false;
  std::int16_t mode = 0;
  for (int polls = 0; mode != kReadingMode; ++polls) {
    if (!GetScanModeNCS(reader, mode)) return false;
    // Kept: a report beyond the last one that counts is a failure whatever it says.
    if (polls >= kMostPolls) return Show(kStatusSilence), false;
  }
  return true;
}

}  // namespace

bool InitReaderNCS(clsTeskReader& reader) {
  return Guarded("basNCS.InitReaderNCS", [&] {
    SerialExchange line(reader);
    kept = {};
    if (!GetScanModeNCS(reader, kept.scanMode)) return false;
    if (kept.scanMode != kReadingMode && !ChangeToReadingMode(reader)) return false;
    line.Tell(kStart);
    return true;
  });
}

bool CloseReaderNCS(clsTeskReader& reader) {
  return Guarded("basNCS.CloseReaderNCS", [&] {
    if (reader.SleepTime() < 1) reader.SetSleepTime(50);
    SerialExchange line(reader);
    if (!line.Port().PortOpen()) return true;
    line.Rest(2);
    if (!reader.Feeder()) line.Tell(kClose);
    if (!RestoredAtClose(kept.scanMode)) return true;
    line.Rest(2);
    return SetScanModeNCS(reader, kPassageMode) && SetScanModeNCS(reader, kept.scanMode);
  });
}

bool GetScanModeNCS(clsTeskReader& reader, std::int16_t& mode) {
  return Guarded("basNCS.GetScanModeNCS", [&] {
    SerialExchange line(reader);
    line.Ask(kScanMode);
    if (!Answered(line, kReportLength, kStatusSilence)) return false;
    std::string report;
    while (report.size() < kLongestReport && line.FollowsWithoutGap()) {
      report += static_cast<char>(line.TakeByte().value());
    }
    kept.reportLetter = UpperLetter(report.at(kReportLetterAt));
    const std::size_t position = kModeLetters.find(LowerLetter(report.at(kModeLetterAt)));
    if (position != std::string_view::npos) mode = Narrow<std::int16_t>(position + 1);
    return true;
  });
}

bool SetScanModeNCS(clsTeskReader& reader, std::int16_t mode) {
  return Guarded("basNCS.SetScanModeNCS", [&] {
    SerialExchange line(reader);
    line.Clear();
    if (mode < 1 || mode > static_cast<std::int16_t>(kModeLetters.size())) return Show(kInvalidMode), false;
    line.Tell(std::string{'e', kModeLetters[static_cast<std::size_t>(mode) - 1], kEndOfText});
    reader.Loop().Sleep(kModeChange);
    if (kept.reportLetter == 'A' || kept.reportLetter == 'I') {
      line.Tell(kReadSheet);
      kept.reportLetter = '\0';
    }
    line.Clear();
    return true;
  });
}

// ---- Sheets

bool ReadPageNCS(clsTeskReader& reader) {
  return Guarded("basNCS.ReadPageNCS", [&] {
    SerialExchange line(reader);
    const bool twoSided = reader.TwoSided();
    OpScanRecord record(twoSided);
    line.Ask(kReadSheet);
    if (!SheetCame(reader, line) || !TakeRecord(line, record)) return false;

    Page& page = record.Result();
    reader.SetSide1TimingMarks(page.side1Lines);
    if (twoSided) reader.SetSide2TimingMarks(page.side2Lines);
    if (reader.ReaderGrade()) line.Rest(10);
    line.ClearUntilQuiet();
    if (!CheckStatusNCS(reader)) return false;
    reader.SetSide1Array(std::move(page.side1));
    reader.SetSide2Array(std::move(page.side2));
    reader.SetBarcodeTexts(std::move(page.texts));
    return true;
  });
}

bool CheckStatusNCS(clsTeskReader& reader) {
  return Guarded("basNCS.CheckStatusNCS", [&] {
    SerialExchange line(reader);
    line.Ask(kStatus);
    if (!Answered(line, kShortestStatus, kStatusSilence)) return false;
    std::array<std::uint8_t, kStatusLength> status{};
    for (std::uint8_t& byte : status) {
      if (line.FollowsWithoutGap()) byte = line.TakeByte().value();
    }
    if ((((status[1] & kFaultBitsOfByte1) | status[2]) & kFaultBits) == 0) return true;
    if (const Fault* fault = FindFault(status)) {
      Show(fault->message);
      if (reader.Rejecter()) RejectPageNCS(reader);
    }
    return false;
  });
}

bool PrintNCS(clsTeskReader& reader) {
  return Guarded("basNCS.PrintNCS", [&] {
    const auto printer = reader.Printer();
    if (!printer) return false;
    SerialExchange line(reader);
    line.Tell("1" + PaddedText(printer->Distance(), 2) + kEndOfText);
    line.Tell("2" + WireText(printer->Buffer1()) + " " + kEndOfText);
    return true;
  });
}

void RejectPageNCS(clsTeskReader& reader) {
  Guarded("basNCS.RejectPageNCS", [&] { SerialExchange(reader).Tell(kReject); });
}

void EjectPageNCS(clsTeskReader& reader) {
  Guarded("basNCS.EjectPageNCS", [&] { SerialExchange(reader).Tell(kEject); });
}

}  // namespace tesk::basNCS
