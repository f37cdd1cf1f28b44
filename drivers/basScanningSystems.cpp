// The Sekonic serial family. The scanner names the marked positions of each row by character and gives a
// darkness character for each. "/" before a command addresses the head of the back side.
//
//   host     CAN CR                     reset
//   scanner  ACK ...                    anything else: not ready
//   host     ENQ OM CR                  SR-601, 607, 700: reading mode?
//   scanner  number
//   host     ENQ O CR                   what is fitted?
//   scanner  6th character "1": a rejecter
//   host     DLE DL1 CR, DC3 DD03 CR    set-up commands, none is acknowledged
//   host     DLE Q CR                   windows: forget the old ones, then one command each
//   host     DLE W CR STX 020110030501112 CR
//
//   host     ? CR                       feed a sheet
//   scanner  status, one byte per head
//   host     ENQ T CR                   timing marks?
//   scanner  3 digits
//   host     DC3 BA05 CR                barcodes?
//   scanner  texts
//   host     DLE ED001050 CR            the marks of 50 rows
//   scanner  rows, each ended by blank CR
//   host     DLE R* CR                  or those of the windows
//   scanner  items, each ended by CR
//   host     DC3 R04 CR                 send the sheet on (R05: to the reject exit)
#include "drivers/basScanningSystems.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Message.h"
#include "drivers/OldExchange.h"
#include "drivers/sekonicCommands.h"
#include "drivers/sekonicRecords.h"
#include "engine/clsTeskReader.h"
#include "transport/basUtils.h"

namespace tesk::basScanningSystems {
namespace {

// What the family keeps between calls: the scanner's number for how it reads, 0 until it was first asked.
// Chooses the threshold command and the status texts of the SR-601, 607 and 700.
struct Kept {
  std::int16_t readingMode = 0;
} kept;

constexpr char kAcknowledge = '\x06';
constexpr std::size_t kRejecterPosition = 5;  // in what is fitted, from 0
constexpr std::size_t kLongestAnswer = 4096;  // bytes
constexpr std::size_t kLongestData = 262144;  // bytes of a sheet's marks

// ---- Messages

constexpr Message kInitSilence{"Initialization Error",
                               "There was no response from the Sekonic scanner while initializing."};
constexpr Message kInitRefused{"Initialization Error",
                               "An error occurred while initializing the Sekonic scanner."};
constexpr Message kSilence{"No Response", "There was no response from the Sekonic scanner."};
constexpr Message kWrongMode{
    "Read Error",
    "The Sekonic SR-430 appears to be in the wrong reading mode.  Please ensure that dip switch 6 is in the "
    "default position; Check the manual that came with your hardware for further instructions on how to do "
    "this."};
constexpr const char* kStatusTitle = "Scanner Error";

// ---- Waiting

// All of an answer whose first byte is there: it has ended when the line was silent for SleepTime, and for a
// moment at least. Empty when the host cancels meanwhile.
std::string TakeAnswer(OldExchange& line, std::size_t longest = kLongestAnswer) {
  std::string answer;
  do {
    while (const auto byte = line.TakeByte()) {
      answer += static_cast<char>(*byte);
      if (answer.size() > longest) throw basUtils::SendsWithoutEnd();
    }
  } while (line.FollowsWithinSleepTime());
  return line.Cancelled() ? std::string() : answer;
}

// Waits for the next byte of a sheet's data. False after a cancel; a time-out is an error.
bool DataArrived(OldExchange& line) {
  const Wait wait = line.ForBytes();
  if (wait == Wait::TimedOut) throw RunTimeError(kErrorTimeOut, "There was no response from the scanner.");
  return wait == Wait::Arrived;
}

// ---- Starting

// The answer to a question of the initialisation; empty after a time-out, which is shown, and after a cancel.
std::string AskAtStart(OldExchange& line, std::string_view question) {
  line.Ask(question);
  const Wait wait = line.ForBytes();
  if (wait == Wait::TimedOut) Show(kInitSilence);
  return wait == Wait::Arrived ? TakeAnswer(line) : std::string();
}

// ---- Windows

// The engine's own window objects, as they are now.
std::vector<std::shared_ptr<clsTeskReaderWindow>> WindowsOf(const clsTeskReader& reader) {
  const clsTeskReaderWindows& list = Deref(reader.Windows());
  std::vector<std::shared_ptr<clsTeskReaderWindow>> windows;
  for (std::int32_t position = 1; position <= list.Count(); ++position) {
    windows.push_back(list.Item(position));
  }
  return windows;
}

void DownloadWindows(const clsTeskReader& reader, OldExchange& line) {
  line.Tell(kForgetWindows);
  for (const auto& window : WindowsOf(reader)) {
    // Kept: the host's own window is rewritten, so that its next start sends the same.
    Normalise(Deref(window));
    line.Tell(WindowCommand(*window));
  }
}

// The SR-601, 607 and 700 say how they read and what they have.
bool SetUpPageReader(clsTeskReader& reader, OldExchange& line) {
  std::string reply = AskAtStart(line, kReadingMode);
  if (reply.empty()) return false;
  kept.readingMode = ToInt16(Val(reply));
  if (reader.Rejecter()) {
    reply = AskAtStart(line, kFitted);
    if (reply.empty()) return false;
    reader.SetRejecter(reply.size() > kRejecterPosition && reply[kRejecterPosition] == '1');
  }
  line.Tell(ThresholdCommand(kept.readingMode, reader.RecognitionThreshold()));
  // Kept: the first character of whichever reply came last.
  if (reply.front() == '1') line.Tell(DiscriminationCommand(reader.MarkDiscrimination()));
  if (reader.RecognitionMode() == teskRecognitionTypeWindow) DownloadWindows(reader, line);
  return true;
}

// ---- Sheets on their way out

// Sends a question about a sheet that leaves and takes the answer; empty after a time-out, which is shown.
std::string AskOnTheWayOut(OldExchange& line, std::string_view question) {
  line.Ask(question);
  const Wait wait = line.ForBytesDespiteCancel();
  if (wait == Wait::TimedOut) Show(kSilence);
  return wait == Wait::Arrived ? line.TakeReply() : std::string();
}

// ---- Feeding a sheet

bool ImprinterReady(const clsTeskReader& reader) {
  return reader.Printer() && reader.Printer()->Initialized() && reader.Printer()->Active();
}

void TellWithPause(OldExchange& line, std::string_view command) {
  line.Tell(command);
  line.Rest(1);
}

void SetUpBarcodes(std::int32_t definitions, OldExchange& line) {
  for (const std::string_view command : kBarcodeSetUp) TellWithPause(line, command);
  const auto most = static_cast<std::int32_t>(kMostBarcodes);
  for (std::int32_t i = 0; i < std::min(definitions, most); ++i) TellWithPause(line, kBarcodeField);
}

// The codes of the heads that come behind the first answer; empty where there are none.
std::string LateStatus(clsTeskReader& reader) {
  OldExchange line(reader);
  std::string codes;
  if (!line.ComesSoon()) return codes;
  for (const char c : line.TakeReply()) codes += NumberText(static_cast<unsigned char>(c));
  return codes;
}

// Feeds the sheet and shows what the scanner says against it.
bool SheetFed(clsTeskReader& reader) {
  constexpr std::string_view kNoError = "48";
  std::string status = SendCommandSS(reader, kStatus, true);
  if (status.empty()) return false;
  // Of two heads the second may speak later than the first; its fault must not be missed.
  if (reader.TwoSided() && status.size() <= kNoError.size()) status += LateStatus(reader);
  const std::string back = status.substr(0, 2);
  // Kept: two characters, so the last two digits of a code of three.
  const std::string front = status.substr(status.size() - std::min<std::size_t>(status.size(), 2));
  if (front != kNoError) return ReturnErrorSS(reader, front), false;
  if (reader.TwoSided() && back != kNoError) return ReturnErrorSS(reader, back), false;
  return true;
}

// The count of one head, left as it is where the scanner did not say. False after a cancel, and for an answer
// that was cut off: its rest would be taken for marks.
bool AskTimingMarks(clsTeskReader& reader, std::string_view head, std::optional<std::int16_t>& count) {
  constexpr std::size_t kDigits = 3;
  std::string reply = SendCommandSS(reader, std::string(head).append(kTimingMarks), false);
  OldExchange line(reader);
  while (!reply.empty() && reply.size() < kDigits && reply.back() != '\r') {
    if (!line.ComesSoon()) return false;
    reply += line.TakeReply();
  }
  if (!reply.empty()) count = ToInt16(Val(reply.substr(0, kDigits)));
  return !reader.CancelScan();
}

// Empty where none are wanted, or after a cancel.
BarcodeArray ReadBarcodes(OldExchange& line) {
  line.Ask(kBarcodeData);
  if (!DataArrived(line)) return {};
  line.Rest(1);
  return ParseBarcodes(TakeAnswer(line));
}

// ---- Reading a sheet

// The marks of one side; empty after a cancel or a message.
std::optional<SideArray> ReadSide(OldExchange& line, std::string_view head, std::int32_t rows,
                                  ColumnNames names) {
  PageRecord record(rows, names);
  line.Ask(std::string(head) + PageCommand(rows));
  while (!record.Ended()) {
    const auto byte = line.TakeByte();
    if (byte) record.Take(*byte);
    if (record.WrongMode()) return Show(kWrongMode), std::nullopt;
    if (!byte && !DataArrived(line)) return std::nullopt;
  }
  // More rows than were asked for are rows of another sheet, and those that were stored too.
  for (const char c : TakeAnswer(line)) {
    if (static_cast<unsigned char>(c) >= ' ') record.Take(static_cast<std::uint8_t>(c));
  }
  if (line.Cancelled()) return std::nullopt;
  return record.TakeSide();
}

bool HasWindows(const clsTeskReader& reader, std::int16_t number) {
  const auto windows = WindowsOf(reader);
  return std::ranges::any_of(windows, [&](const auto& window) { return Deref(window).Page() == number; });
}

// As ReadSide, through the windows of the side.
std::optional<SideArray> ReadWindowsOfSide(clsTeskReader& reader, OldExchange& line, std::string_view head,
                                           std::int16_t number, const SideArray& empty) {
  line.Ask(std::string(head).append(kWindowData));
  std::string reply;
  // A side without windows has nothing to say.
  bool awaited = HasWindows(reader, number);
  for (;;) {
    if (awaited && !DataArrived(line)) return std::nullopt;
    reply += TakeAnswer(line, kLongestData);
    if (line.Cancelled()) return std::nullopt;
    if (reply.size() > kLongestData) throw basUtils::SendsWithoutEnd();
    SideArray side = empty;
    const Spread spread = AddToArraySS(reader, reply, side, number);
    if (spread == Spread::Failed) return std::nullopt;
    if (spread == Spread::Complete) return side;
    awaited = true;
  }
}

// side2: empty where it was not read.
Sheet SheetOf(SideArray side1, SideArray side2) {
  Sheet sheet;
  sheet.side1 = std::move(side1);
  sheet.side2 = std::move(side2);
  return sheet;
}

}  // namespace

// ---- Starting and ending

bool InitReaderSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.InitReaderSS", [&] {
    OldExchange line(reader);
    const std::string reply = AskAtStart(line, kReset);
    if (reply.empty()) return false;
    if (reply.front() != kAcknowledge) return Show(kInitRefused), false;
    const auto commands = CardSetUp(reader.ReaderType(), reader.RecognitionThreshold());
    for (const std::string& command : commands) line.Tell(command);
    return !commands.empty() || SetUpPageReader(reader, line);
  });
}

bool CloseReaderSS(clsTeskReader&) { return true; }

// ---- Commands and status

std::string SendCommandSS(clsTeskReader& reader, std::string_view command, bool bytewise) {
  return Guarded("basScanningSystems.SendCommandSS", [&] {
    OldExchange line(reader);
    line.Ask(command);
    const Wait wait = line.ForBytes();
    if (wait == Wait::TimedOut) Show(kSilence);
    std::string bytes = wait == Wait::Arrived ? TakeAnswer(line) : std::string();
    if (!bytewise) return bytes;
    std::string codes;
    for (const char c : bytes) codes += NumberText(static_cast<unsigned char>(c));
    return codes;
  });
}

void ReturnErrorSS(clsTeskReader& reader, std::string_view code) {
  Guarded("basScanningSystems.ReturnErrorSS", [&] {
    const StatusText* status = FindStatusText(reader.ReaderType(), kept.readingMode, code);
    if (status == nullptr) return;
    std::string text = LoadString(status->text);
    if (*status->afterCode != '\0') text += std::string(code) + LoadString(status->afterCode);
    ShowComposedMessage(kStatusTitle, text);
  });
}

// ---- Sheets

std::optional<Sheet> ReadPageSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.ReadPageSS", [&]() -> std::optional<Sheet> {
    OldExchange line(reader);
    line.Clear();
    const std::int32_t definitions = reader.Barcode() ? Deref(reader.Barcodes()).Count() : 0;
    if (definitions >= 1) SetUpBarcodes(definitions, line);
    if (ImprinterReady(reader)) {
      for (const std::string_view command : kImprinterSetUp) TellWithPause(line, command);
    }
    if (!SheetFed(reader)) return std::nullopt;
    std::optional<std::int16_t> marks1;
    std::optional<std::int16_t> marks2;
    if (!AskTimingMarks(reader, "", marks1)) return std::nullopt;
    if (reader.TwoSided() && !AskTimingMarks(reader, kBackSide, marks2)) return std::nullopt;
    BarcodeArray texts;
    if (definitions >= 1) texts = ReadBarcodes(line);
    if (reader.CancelScan()) return std::nullopt;
    const bool byWindows = reader.RecognitionMode() == teskRecognitionTypeWindow;
    auto sheet = byWindows ? ReadWindowsSS(reader) : ReadEntirePageSS(reader);
    if (!sheet) return std::nullopt;
    sheet->side1TimingMarks = marks1;
    sheet->side2TimingMarks = marks2;
    if (!texts.empty()) sheet->texts = std::move(texts);
    return sheet;
  });
}

std::optional<Sheet> ReadEntirePageSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.ReadEntirePageSS", [&]() -> std::optional<Sheet> {
    OldExchange line(reader);
    // Kept: the names of the card's columns hold for side 1 alone.
    auto side1 = ReadSide(line, "", reader.Side1RowExtent(), NamesOfSide1(reader.ReaderType()));
    if (!side1) return std::nullopt;
    std::optional<SideArray> side2 = SideArray();
    if (reader.TwoSided()) side2 = ReadSide(line, kBackSide, reader.Side2RowExtent(), ColumnNames::FromZero);
    if (!side2) return std::nullopt;
    return SheetOf(std::move(*side1), std::move(*side2));
  });
}

std::optional<Sheet> ReadWindowsSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.ReadWindowsSS", [&]() -> std::optional<Sheet> {
    OldExchange line(reader);
    auto side1 =
        ReadWindowsOfSide(reader, line, "", 1, SideArray(reader.Side1RowExtent(), reader.Side1ColExtent()));
    if (!side1) return std::nullopt;
    std::optional<SideArray> side2 = SideArray();
    if (reader.TwoSided()) {
      side2 = ReadWindowsOfSide(reader, line, kBackSide, 2,
                                SideArray(reader.Side2RowExtent(), reader.Side2ColExtent()));
    }
    if (!side2) return std::nullopt;
    return SheetOf(std::move(*side1), std::move(*side2));
  });
}

Spread AddToArraySS(clsTeskReader& reader, std::string_view reply, SideArray& side, std::int16_t number) {
  return Guarded(
      "basScanningSystems.AddToArraySS",
      [&] {
        std::vector<clsTeskReaderWindow> windows;
        for (const auto& window : WindowsOf(reader)) {
          if (Deref(window).Page() == number) windows.push_back(*window);
        }
        WindowReply record(std::move(windows), side);
        for (const char c : reply) record.Take(static_cast<std::uint8_t>(c));
        return record.Complete() ? Spread::Complete : Spread::Incomplete;
      },
      Spread::Failed);
}

// ---- Sending a sheet on

bool RejectPageSS(clsTeskReader& reader, bool reject) {
  return Guarded("basScanningSystems.RejectPageSS", [&] {
    if (!reader.Rejecter() && reader.Printer() && reader.Printer()->Initialized()) {
      return RejectPrintSS(reader);
    }
    OldExchange(reader).Tell(reject ? kToReject : kToAccept);
    return true;
  });
}

bool RejectPrintSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.RejectPrintSS", [&] {
    OldExchange line(reader);
    return !AskOnTheWayOut(line, kFeedQuery).empty();
  });
}

bool PrintSS(clsTeskReader& reader, bool feed) {
  return Guarded("basScanningSystems.PrintSS", [&] {
    const auto printer = reader.Printer();
    if (!printer) return false;
    OldExchange line(reader);
    if (feed) AskOnTheWayOut(line, kFeedQuery);
    for (const std::string& command : ImprintCommands(*printer)) line.Tell(command);
    return AskOnTheWayOut(line, kPrintQuery).find('0') != std::string::npos;
  });
}

}  // namespace tesk::basScanningSystems
