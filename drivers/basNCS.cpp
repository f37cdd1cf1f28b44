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

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Driver.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "drivers/opscanRecord.h"
#include "engine/clsTeskReader.h"

namespace tesk::basNCS {
namespace {

// What ended the last record with a text section.
enum class TextEnd { Unknown, LineEnd, Silence };

// What the family keeps between calls.
struct Kept : SerialSession {
  std::int16_t scanMode = 0;  // as InitReaderNCS found it; 0: the scanner named none that is known
  char reportLetter = '\0';   // upper case, of the last scan-mode report; 0 once it has been acted on
  TextEnd textEnd = TextEnd::Unknown;
  std::size_t lines = 0;  // of the last record; the next one is likely to have as many

  void StartAnew() {
    Forget();
    scanMode = 0;
    reportLetter = '\0';
    textEnd = TextEnd::Unknown;
    lines = 0;
  }
};

SerialExchange Exchange(clsTeskReader& reader) { return {reader, reader.Kept<Kept>()}; }

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
constexpr std::size_t kReportLength = 51;
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
constexpr std::size_t kShortestStatus = 4;
using Status = std::array<std::uint8_t, 3>;  // the first three bytes

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

const Fault* FindFault(const Status& status) {
  for (const Fault& fault : kFaults) {
    if ((status[fault.byte] & fault.bit) != 0) return &fault;
  }
  return nullptr;
}

// A fifth byte is of no use. More than that, and more than came so far, was not said about the status: what is
// left of a record comes in front of it, and makes it an answer that was never seen alone.
bool IsTailOfStatus(std::string_view behind, std::size_t usual) {
  return IsLineEnd(behind.substr(std::min<std::size_t>(behind.size(), 1))) && behind.size() <= usual;
}

// ---- Waiting

// Waits for an answer. A time-out is shown, a cancel is not.
bool Answered(SerialExchange& line, Shape& answer, const Message& silence, const Limits& limits = {}) {
  const Wait wait = line.Take(answer, limits);
  if (wait == Wait::TimedOut) Show(silence);
  return wait == Wait::Arrived;
}

// Without a feeder, and while answer sheets are graded, a person inserts the sheet and takes their time.
bool SheetCame(const clsTeskReader& reader, SerialExchange& line) {
  const bool byHand = reader.ReaderGrade() || !reader.Feeder();
  const Wait wait = line.Await(byHand ? kForPerson : Limits());
  if (wait == Wait::TimedOut) Show(kSheetSilence);
  return wait == Wait::Arrived;
}

// ---- The record of a sheet

// Until the text section, where silence may be an end, a record is as long as it says at its end. The last
// record tells how much of it can be expected still.
class MarksOfRecord : public Shape {
 public:
  MarksOfRecord(OpScanRecord& record, std::size_t lines) : record_(record), lines_(lines) {}

  std::size_t Missing() const override {
    if (record_.Ended() || record_.MayEndInSilence()) return 0;
    constexpr std::size_t kShortestLine = 4;  // a marker, and a run for all that is in it
    const std::size_t lines = record_.Lines();
    return lines + 1 < lines_ ? (lines_ - lines - 1) * kShortestLine : 1;
  }
  void Take(std::uint8_t byte) override {
    if (const auto wrong = record_.Take(byte)) Show(*wrong);
  }

 private:
  OpScanRecord& record_;
  std::size_t lines_;
};

// Whether the text section goes on. How long silence must last to be its end: the pause that hosts set, far longer
// where this scanner is not known to end its records so, and the time-out where it is known to end them otherwise.
bool TextGoesOn(const clsTeskReader& reader, SerialExchange& line, const Kept& kept) {
  if (kept.textEnd == TextEnd::LineEnd) {
    return line.Await({Limits::Time::Answer, kUnusualPause}) == Wait::Arrived;
  }
  const Milliseconds pause(std::max(reader.SleepTime(), 0));
  return line.Follows(kept.textEnd == TextEnd::Silence ? pause : std::max(pause, kUnusualPause),
                      SerialExchange::Shortened::Never);
}

// Takes the record until it ends; False when a wait failed.
bool TakeRecord(const clsTeskReader& reader, SerialExchange& line, Kept& kept, OpScanRecord& record) {
  MarksOfRecord marks(record, kept.lines);
  while (!record.Ended()) {
    if (!record.MayEndInSilence()) {
      if (!Answered(line, marks, kDataSilence, kEachPiece)) return false;
    } else if (TextGoesOn(reader, line, kept)) {
      Bytes next(1);
      if (!Answered(line, next, kDataSilence, kEachPiece)) return false;
      record.Take(static_cast<std::uint8_t>(next.Text()[0]));
    } else {
      // Where records end with a line end, one that breaks off within a text has lost its end.
      const bool whole = kept.textEnd != TextEnd::LineEnd || record.BetweenTexts();
      if (!whole && !line.Cancelled()) Show(kDataSilence);
      kept.textEnd = TextEnd::Silence;
      return whole;
    }
  }
  if (record.HasText()) kept.textEnd = TextEnd::LineEnd;
  return true;
}

// What was learnt of the scanner may be wrong, too.
void Distrust(SerialExchange& line, Kept& kept) {
  line.Session().Distrust();
  kept.textEnd = TextEnd::Unknown;
}

// A record that did not come alone was cut by a damaged byte, or bytes of another answer are in it.
bool CameAlone(SerialExchange& line, Kept& kept, const OpScanRecord& record) {
  const std::string behind = record.Ended() ? line.Tail("record") : std::string();
  if (!record.Broken() && IsLineEnd(behind) && !line.Surplus()) return true;
  Distrust(line, kept);
  return Show(record.WrongEnd(behind.size())), false;
}

// ---- Starting

bool ChangeToReadingMode(clsTeskReader& reader) {
  if (!SetScanModeNCS(reader, kPassageMode) || !SetScanModeNCS(reader, kReadingMode)) return false;
  std::int16_t mode = 0;
  for (int polls = 0; mode != kReadingMode; ++polls) {
    if (!GetScanModeNCS(reader, mode)) return false;
    // Compatibility: a report beyond the last one that counts is a failure whatever it says.
    if (polls >= kMostPolls) return Show(kStatusSilence), false;
  }
  return true;
}

}  // namespace

bool InitReaderNCS(clsTeskReader& reader) {
  return Guarded("basNCS.InitReaderNCS", [&] {
    SerialExchange line = Exchange(reader);
    const auto kept = reader.Kept<Kept>();
    kept->StartAnew();
    if (!GetScanModeNCS(reader, kept->scanMode)) return false;
    if (kept->scanMode != kReadingMode && !ChangeToReadingMode(reader)) return false;
    line.Tell(kStart);
    return true;
  });
}

bool CloseReaderNCS(clsTeskReader& reader) {
  return Guarded("basNCS.CloseReaderNCS", [&] {
    if (reader.SleepTime() < 1) reader.SetSleepTime(50);
    SerialExchange line = Exchange(reader);
    const auto kept = reader.Kept<Kept>();
    if (!line.Port().PortOpen()) return true;
    line.Rest(2);
    if (!reader.Feeder()) line.Tell(kClose);
    if (!RestoredAtClose(kept->scanMode)) return true;
    line.Rest(2);
    return SetScanModeNCS(reader, kPassageMode) && SetScanModeNCS(reader, kept->scanMode);
  });
}

bool GetScanModeNCS(clsTeskReader& reader, std::int16_t& mode) {
  return Guarded("basNCS.GetScanModeNCS", [&] {
    SerialExchange line = Exchange(reader);
    line.Ask(kScanMode);
    Bytes report(kReportLength);
    if (!Answered(line, report, kStatusSilence)) return false;
    line.Tail("s0", report.Text());
    reader.Kept<Kept>()->reportLetter = UpperLetter(report.Text().at(kReportLetterAt));
    const std::size_t position = kModeLetters.find(LowerLetter(report.Text().at(kModeLetterAt)));
    if (position != std::string_view::npos) mode = Narrow<std::int16_t>(position + 1);
    return true;
  });
}

bool SetScanModeNCS(clsTeskReader& reader, std::int16_t mode) {
  return Guarded("basNCS.SetScanModeNCS", [&] {
    SerialExchange line = Exchange(reader);
    const auto kept = reader.Kept<Kept>();
    line.Clear();
    if (mode < 1 || mode > static_cast<std::int16_t>(kModeLetters.size())) return Show(kInvalidMode), false;
    line.Tell(std::string{'e', kModeLetters[static_cast<std::size_t>(mode) - 1], kEndOfText});
    line.Pause(kModeChange);
    if (kept->reportLetter == 'A' || kept->reportLetter == 'I') {
      line.Tell(kReadSheet);
      kept->reportLetter = '\0';
    }
    line.Clear();
    return true;
  });
}

// ---- Sheets

std::optional<Sheet> ReadPageNCS(clsTeskReader& reader) {
  return Guarded("basNCS.ReadPageNCS", [&]() -> std::optional<Sheet> {
    SerialExchange line = Exchange(reader);
    const auto kept = reader.Kept<Kept>();
    const bool twoSided = reader.TwoSided();
    OpScanRecord record(twoSided);
    line.Ask(kReadSheet);
    if (!SheetCame(reader, line) || !TakeRecord(reader, line, *kept, record)) return std::nullopt;
    Sheet sheet = record.Result();
    reader.SetSide1TimingMarks(*sheet.side1TimingMarks);
    if (twoSided) reader.SetSide2TimingMarks(*sheet.side2TimingMarks);
    if (reader.ReaderGrade()) line.Rest(10);
    if (!CameAlone(line, *kept, record)) return std::nullopt;
    kept->lines = record.Lines();
    if (!CheckStatusNCS(reader)) return std::nullopt;
    // Without a single value it is no sheet, whatever the scanner says.
    if (!record.HasValues()) return Show(record.WrongEnd(0)), std::nullopt;
    return sheet;
  });
}

bool CheckStatusNCS(clsTeskReader& reader) {
  return Guarded("basNCS.CheckStatusNCS", [&] {
    SerialExchange line = Exchange(reader);
    const auto kept = reader.Kept<Kept>();
    const std::string before = line.Ask(kStatus);
    Bytes answer(kShortestStatus);
    if (!Answered(line, answer, kStatusSilence, kDespiteCancel)) return false;
    const std::size_t usual = line.Session().TailLengths("s1").longest;
    const std::string behind = line.Tail("s1", answer.Text());
    // The end of a text that silence was taken for the end of.
    const bool endOfText = kept->textEnd == TextEnd::Silence && IsLineEnd(answer.Text().substr(0, 1));
    if (!IsLineEnd(before) || endOfText || !IsTailOfStatus(behind, usual) || line.Surplus()) {
      Distrust(line, *kept);
      return Show(WrongLength{1, static_cast<std::int32_t>(before.size() + behind.size()), 0}), false;
    }
    Status status{};
    std::ranges::copy_n(answer.Text().begin(), status.size(), status.begin());
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
    SerialExchange line = Exchange(reader);
    line.Tell("1" + PaddedText(printer->Distance(), 2) + kEndOfText);
    line.Tell("2" + WireText(printer->Buffer1(), reader.DataBits()) + " " + kEndOfText);
    return true;
  });
}

void RejectPageNCS(clsTeskReader& reader) {
  Guarded("basNCS.RejectPageNCS", [&] { Exchange(reader).Tell(kReject); });
}

void EjectPageNCS(clsTeskReader& reader) {
  Guarded("basNCS.EjectPageNCS", [&] { Exchange(reader).Tell(kEject); });
}

constinit const Driver kDriver = {
    .family = Family::OpScan,
    .module = "basNCS",
    .initReader = InitReaderNCS,
    .closeReader = CloseReaderNCS,
    .readPage = ReadPageNCS,
    .rejectPage = [](clsTeskReader& r) { return RejectPageNCS(r), true; },
    .ejectPage = [](clsTeskReader& r) { return EjectPageNCS(r), true; },
    .print = [](clsTeskReader& r, bool) { return PrintNCS(r); },
};

}  // namespace tesk::basNCS
