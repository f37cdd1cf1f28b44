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
#include "drivers/Driver.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "drivers/sekonicAnswers.h"
#include "drivers/sekonicCommands.h"
#include "drivers/sekonicRecords.h"
#include "engine/clsTeskReader.h"
#include "transport/basUtils.h"

namespace tesk::basScanningSystems {
namespace {

// What the family keeps between calls.
struct Kept : SerialSession {
  // The scanner's number for how it reads, 0 until it was first asked. Chooses the threshold command and the
  // status texts of the SR-601, 607 and 700.
  std::int16_t readingMode = 0;
  std::size_t heads = 0;        // that speak of a sheet's status; 0: not known
  bool windowsEndInCr = false;  // the last item of a window reply was seen to end as the others do

  void StartAnew() {
    Forget();
    heads = 0;
    windowsEndInCr = false;
  }
};

SerialExchange Exchange(clsTeskReader& reader) { return {reader, reader.Kept<Kept>()}; }

constexpr char kAcknowledge = '\x06';
constexpr std::size_t kRejecterPosition = 5;  // in what is fitted, from 0
constexpr std::size_t kMostHeads = 2;

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

// The exchange did not go as it should: what was learnt of the scanner may be as wrong.
void LoseStep(clsTeskReader& reader) {
  const auto kept = reader.Kept<Kept>();
  kept->StartAnew();
  kept->outOfStep = true;
}

// Refuses a sheet; always False.
bool Refuse(clsTeskReader& reader) {
  LoseStep(reader);
  Show(kSilence);
  return false;
}

// Whether nothing waits while a sheet is read. What waits was said about something else than what comes next.
bool InStep(clsTeskReader& reader, SerialExchange& line) { return !line.Surplus() || Refuse(reader); }

// Waits for the first byte of a sheet's data; a time-out is an error. After a cancel there may be none.
void AwaitData(clsTeskReader& reader, SerialExchange& line) {
  const bool before = std::exchange(line.Session().outOfStep, true);
  line.Port().SetInputLen(1);
  basUtils::WaitForComPortData(line.Port(), line.Timer(),
                               {reader.Loop(), reader.SleepTime(), [&] { return reader.CancelScan(); }});
  line.Session().outOfStep = before;
}

// How the wait for the rest of the data ended: False after a cancel; a time-out is an error.
bool DataCame(Wait wait) {
  if (wait == Wait::TimedOut) throw RunTimeError(kErrorTimeOut, "There was no response from the scanner.");
  return wait == Wait::Arrived;
}

// ---- Starting

// The answer to a question of the initialisation, and what followed it. False after a time-out, which is
// shown, and after a cancel.
bool AskAtStart(SerialExchange& line, std::string_view question, Answer& answer, std::string& tail) {
  line.Ask(question);
  const Wait wait = TakeAnswer(line, answer);
  if (wait == Wait::TimedOut) Show(kInitSilence);
  if (wait != Wait::Arrived) return false;
  tail = TailOf(line, question, answer.Text());
  return !line.Cancelled();
}

// The same of a question that is answered with a line. Empty too for more than that, which is shown.
std::string AskForLine(SerialExchange& line, std::string_view question) {
  Line answer;
  std::string tail;
  if (!AskAtStart(line, question, answer, tail)) return {};
  if (!IsLineEnd(tail)) return Show(kInitRefused), std::string();
  return answer.Text();
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

void DownloadWindows(const clsTeskReader& reader, SerialExchange& line) {
  line.Tell(kForgetWindows);
  for (const auto& window : WindowsOf(reader)) {
    // Compatibility: the host's own window is rewritten, so that its next start sends the same.
    Normalise(Deref(window));
    line.Tell(WindowCommand(*window));
  }
}

bool IsNumber(std::string_view line) {
  const std::size_t end = line.find_last_not_of(" \r");
  const std::size_t begin = line.find_first_not_of(' ');
  return end != std::string_view::npos && begin <= end &&
         line.substr(begin, end - begin + 1).find_first_not_of("0123456789") == std::string_view::npos;
}

// The SR-601, 607 and 700 say how they read and what they have.
bool SetUpPageReader(clsTeskReader& reader, SerialExchange& line) {
  std::string reply = AskForLine(line, kReadingMode);
  if (reply.empty()) return false;
  if (!IsNumber(reply)) return Show(kInitRefused), false;
  const std::int16_t readingMode = ToInt16(Val(reply));
  reader.Kept<Kept>()->readingMode = readingMode;
  if (reader.Rejecter()) {
    reply = AskForLine(line, kFitted);
    if (reply.empty()) return false;
    reader.SetRejecter(reply.size() > kRejecterPosition && reply[kRejecterPosition] == '1');
  }
  line.Tell(ThresholdCommand(readingMode, reader.RecognitionThreshold()));
  // Compatibility: the first character of whichever reply came last.
  if (reply.front() == '1') line.Tell(DiscriminationCommand(reader.MarkDiscrimination()));
  if (reader.RecognitionMode() == teskRecognitionTypeWindow) DownloadWindows(reader, line);
  return true;
}

// ---- Sheets on their way out

// Sends a question about a sheet that leaves and takes the answer; empty after a time-out, which is shown.
std::string AskOnTheWayOut(SerialExchange& line, std::string_view question) {
  line.Ask(question);
  Bytes first(1);
  const Wait wait = line.Take(first, kDespiteCancel);
  if (wait == Wait::TimedOut) Show(kSilence);
  if (wait != Wait::Arrived) return {};
  const bool done = first.Text() == "0";
  return first.Text() + (done ? TailOf(line, question, first.Text()) : line.UntilQuiet(kLongSilence));
}

// ---- Feeding a sheet

bool ImprinterReady(const clsTeskReader& reader) {
  return reader.Printer() && reader.Printer()->Initialized() && reader.Printer()->Active();
}

void TellWithPause(SerialExchange& line, std::string_view command) {
  line.Tell(command);
  line.Rest(1);
}

void SetUpBarcodes(std::int32_t definitions, SerialExchange& line) {
  for (const std::string_view command : kBarcodeSetUp) TellWithPause(line, command);
  const auto most = static_cast<std::int32_t>(kMostBarcodes);
  for (std::int32_t i = 0; i < std::min(definitions, most); ++i) TellWithPause(line, kBarcodeField);
}

// How many heads speak; 0: a model with a head for the back side may use it in a one-sided read too.
std::size_t HeadsOf(const clsTeskReader& reader) {
  if (reader.TwoSided()) return kMostHeads;
  const auto profile = reader.Profile();
  return Deref(profile).Duplex() ? 0 : 1;
}

// The status of the heads. Where it is not known how many speak, silence tells once.
std::string AskStatus(clsTeskReader& reader) {
  const auto kept = reader.Kept<Kept>();
  if (kept->outOfStep) kept->heads = 0;
  if (const std::size_t heads = HeadsOf(reader); heads != 0) kept->heads = heads;
  const bool known = kept->heads != 0;
  HeadStatus status(known ? kept->heads : kMostHeads, known);
  const std::string codes = SendCommandSS(reader, kStatus, true, status);
  if (known && status.Missing() > 0) kept->outOfStep = true;
  // A head that finds fault may be the only one to speak, which says nothing of how many speak else.
  const bool shows = status.Text().size() == kMostHeads || status.Text().starts_with('0');
  if (!known && shows) kept->heads = status.Text().size();
  return codes;
}

// Shows what the scanner says against a sheet; always False. Where more comes behind a code without a message
// it was no status.
bool ShowStatus(clsTeskReader& reader, std::string_view code) {
  const bool listed = FindStatusText(reader.ReaderType(), reader.Kept<Kept>()->readingMode, code) != nullptr;
  if (!listed && Exchange(reader).Follows()) return Refuse(reader);
  return ReturnErrorSS(reader, code), false;
}

// Feeds the sheet and shows what the scanner says against it.
bool SheetFed(clsTeskReader& reader) {
  constexpr std::string_view kNoError = "48";
  const std::string status = AskStatus(reader);
  if (status.empty()) return false;
  const std::string back = status.substr(0, 2);
  // Compatibility: two characters, so the last two digits of a code of three.
  const std::string front = status.substr(status.size() - std::min<std::size_t>(status.size(), 2));
  if (front != kNoError) return ShowStatus(reader, front);
  if (reader.TwoSided() && back != kNoError) return ShowStatus(reader, back);
  return true;
}

// A count that ended early has had its end: another one behind it means that the first was a digit.
bool EndsCount(std::string_view tail, std::string_view count) {
  return IsLineEnd(tail) && (!count.ends_with('\r') || tail.find('\r') == std::string_view::npos);
}

using SetCount = void (clsTeskReader::*)(std::int16_t);

// Tells the engine the count of one head, unless the scanner did not say. False after a cancel, and for an answer
// that was cut off or is none: its rest would be taken for marks.
bool AskTimingMarks(clsTeskReader& reader, std::string_view head, SetCount setCount) {
  SerialExchange line = Exchange(reader);
  if (!InStep(reader, line)) return false;
  // What comes late is not to be taken for the other head's count.
  const bool trusted = !line.Session().outOfStep;
  Count answer;
  const std::string reply = SendCommandSS(reader, std::string(head).append(kTimingMarks), false, answer);
  if (reader.CancelScan()) return false;
  if (answer.Text().empty()) return true;
  if (reply.empty()) return LoseStep(reader), false;
  if (!answer.IsNumber() || !EndsCount(TailOf(line, kTimingMarks, reply), reply)) return Refuse(reader);
  if (trusted) (reader.*setCount)(ToInt16(Val(reply)));
  return !reader.CancelScan();
}

// Empty after a cancel, and after a message.
BarcodeArray ReadBarcodes(clsTeskReader& reader, SerialExchange& line, std::int32_t definitions) {
  constexpr std::string_view kFraming = "\x02\x03\r\n";
  if (!InStep(reader, line)) return {};
  line.Ask(kBarcodeData);
  AwaitData(reader, line);
  line.Rest(1);
  const std::int32_t waiting = line.Port().InBufferCount();
  Fields answer(std::min(static_cast<std::size_t>(definitions), kMostBarcodes));
  if (!DataCame(TakeAnswer(line, answer, kEachPiece))) return {};
  // Behind an answer that was not there as a whole, more of it may be on its way.
  const bool inPieces = std::cmp_greater(answer.Text().size(), waiting);
  const std::string tail = answer.Missing() == 0 ? line.Tail("BA05") : std::string();
  const bool alone = tail.find_first_not_of(kFraming) == std::string::npos;
  if (!alone || (inPieces && line.Follows())) return Refuse(reader), BarcodeArray();
  return ParseBarcodes(answer.Text());
}

// ---- Reading a sheet

// Whether a record stands alone: control characters behind it are framing, anything else is a row too many.
bool EndsAlone(SerialExchange& line) {
  const std::string tail = line.Tail("ED001");
  const bool framing = std::ranges::all_of(tail, [](char c) { return static_cast<unsigned char>(c) < ' '; });
  return framing && !line.Surplus();
}

// The marks of one side; empty after a cancel or a message.
std::optional<SideArray> ReadSide(clsTeskReader& reader, SerialExchange& line, std::string_view head,
                                  std::int32_t rows, ColumnNames names) {
  PageRecord record(rows, names);
  const std::string command = std::string(head) + PageCommand(rows);
  if (!InStep(reader, line)) return std::nullopt;
  line.Ask(command);
  AwaitData(reader, line);
  if (!DataCame(line.Take(record, kEachPiece))) return std::nullopt;
  if (record.WrongMode()) return LoseStep(reader), Show(kWrongMode), std::nullopt;
  if (!EndsAlone(line)) {
    // More rows than were asked for are rows of another sheet, and those that were stored too.
    LoseStep(reader);
    throw SubscriptOutOfRange();
  }
  return record.TakeSide();
}

// Copies of the windows of one side: the host may change its own while an answer is waited for.
std::vector<clsTeskReaderWindow> WindowsOfSide(const clsTeskReader& reader, std::int16_t number) {
  std::vector<clsTeskReaderWindow> windows;
  for (const auto& window : WindowsOf(reader)) {
    if (Deref(window).Page() == number) windows.push_back(*window);
  }
  return windows;
}

bool HasItems(const clsTeskReader& reader, std::int16_t number) {
  return std::ranges::any_of(WindowsOfSide(reader, number),
                             [](const clsTeskReaderWindow& window) { return window.NumRows() > 0; });
}

// As ReadSide, through the windows of the side, into an array of its extents. Only where `awaited` must a side
// without items say something.
std::optional<SideArray> ReadWindowsOfSide(clsTeskReader& reader, SerialExchange& line, std::int16_t number,
                                           SideArray side, bool awaited) {
  const auto kept = reader.Kept<Kept>();
  WindowItems items(WindowsOfSide(reader, number), side, kept->windowsEndInCr);
  const bool hasItems = items.Missing() > 0;
  if (!InStep(reader, line)) return std::nullopt;
  line.Ask(std::string(number == 1 ? std::string_view() : kBackSide).append(kWindowData));
  if (hasItems || awaited) AwaitData(reader, line);
  if (!DataCame(TakeAnswer(line, items, kEachPiece))) return std::nullopt;
  // An item too many shifts all behind it, and looks like a last one: nothing else may follow.
  const std::string reply = items.Text() + line.UntilQuiet(Milliseconds(std::max(reader.SleepTime(), 0)));
  if (line.Cancelled()) {
    if (!items.EndsInCr() || (awaited && reply.empty())) return std::nullopt;
    // A sheet that has arrived is kept, and the quiet that it needs gets its time.
    line.Rest(1);
    if (!InStep(reader, line)) return std::nullopt;
  }
  if (hasItems && items.EndsInCr()) kept->windowsEndInCr = true;
  const Spread spread = AddToArraySS(reader, reply, side, number);
  if (spread == Spread::Complete) return side;
  LoseStep(reader);
  if (spread == Spread::Incomplete) Show(kSilence);
  return std::nullopt;
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
    SerialExchange line = Exchange(reader);
    reader.Kept<Kept>()->StartAnew();
    FirstCharacter reply;
    std::string tail;
    if (!AskAtStart(line, kReset, reply, tail)) return false;
    if (reply.Text().front() != kAcknowledge) return Show(kInitRefused), false;
    const auto commands = CardSetUp(reader.ReaderType(), reader.RecognitionThreshold());
    for (const std::string& command : commands) line.Tell(command);
    return !commands.empty() || SetUpPageReader(reader, line);
  });
}

bool CloseReaderSS(clsTeskReader&) { return true; }

// ---- Commands and status

std::string SendCommandSS(clsTeskReader& reader, std::string_view command, bool bytewise, Answer& answer) {
  SerialExchange line = Exchange(reader);
  line.Ask(command);
  const Wait wait = TakeAnswer(line, answer);
  if (wait == Wait::TimedOut) Show(kSilence);
  if (wait != Wait::Arrived) return {};
  if (!bytewise) return answer.Text();
  std::string codes;
  for (const char c : answer.Text()) codes += NumberText(static_cast<unsigned char>(c));
  return codes;
}

void ReturnErrorSS(clsTeskReader& reader, std::string_view code) {
  Guarded("basScanningSystems.ReturnErrorSS", [&] {
    const StatusText* status = FindStatusText(reader.ReaderType(), reader.Kept<Kept>()->readingMode, code);
    if (status == nullptr) return;
    std::string text = LoadString(status->text);
    if (*status->afterCode != '\0') text += std::string(code) + LoadString(status->afterCode);
    ShowComposedMessage(kStatusTitle, text);
  });
}

// ---- Sheets

std::optional<Sheet> ReadPageSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.ReadPageSS", [&]() -> std::optional<Sheet> {
    SerialExchange line = Exchange(reader);
    // Whatever comes behind what waits must not be taken for this sheet's status.
    line.Surplus();
    line.Clear();
    const std::int32_t definitions = reader.Barcode() ? Deref(reader.Barcodes()).Count() : 0;
    if (definitions >= 1) SetUpBarcodes(definitions, line);
    if (ImprinterReady(reader)) {
      for (const std::string_view command : kImprinterSetUp) TellWithPause(line, command);
    }
    if (!SheetFed(reader)) return std::nullopt;
    if (!AskTimingMarks(reader, "", &clsTeskReader::SetSide1TimingMarks)) return std::nullopt;
    if (reader.TwoSided() && !AskTimingMarks(reader, kBackSide, &clsTeskReader::SetSide2TimingMarks)) {
      return std::nullopt;
    }
    BarcodeArray texts(1);
    if (definitions >= 1) texts = ReadBarcodes(reader, line, definitions);
    if (texts.empty() || reader.CancelScan()) return std::nullopt;
    const bool byWindows = reader.RecognitionMode() == teskRecognitionTypeWindow;
    auto sheet = byWindows ? ReadWindowsSS(reader) : ReadEntirePageSS(reader);
    if (!sheet) return std::nullopt;
    sheet->texts = std::move(texts);
    return sheet;
  });
}

std::optional<Sheet> ReadEntirePageSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.ReadEntirePageSS", [&]() -> std::optional<Sheet> {
    SerialExchange line = Exchange(reader);
    // Compatibility: the names of the card's columns hold for side 1 alone.
    auto side1 = ReadSide(reader, line, "", reader.Side1RowExtent(), NamesOfSide1(reader.ReaderType()));
    if (!side1) return std::nullopt;
    std::optional<SideArray> side2 = SideArray();
    if (reader.TwoSided()) {
      side2 = ReadSide(reader, line, kBackSide, reader.Side2RowExtent(), ColumnNames::FromZero);
    }
    if (!side2) return std::nullopt;
    return SheetOf(std::move(*side1), std::move(*side2));
  });
}

std::optional<Sheet> ReadWindowsSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.ReadWindowsSS", [&]() -> std::optional<Sheet> {
    SerialExchange line = Exchange(reader);
    const bool twoSided = reader.TwoSided();
    // A side without items has nothing to say; but a scanner that says nothing at all has read no sheet.
    const bool awaited = !HasItems(reader, 1) && !(twoSided && HasItems(reader, 2));
    auto side1 = ReadWindowsOfSide(reader, line, 1,
                                   SideArray(reader.Side1RowExtent(), reader.Side1ColExtent()), awaited);
    if (!side1) return std::nullopt;
    std::optional<SideArray> side2 = SideArray();
    if (twoSided) {
      side2 = ReadWindowsOfSide(reader, line, 2, SideArray(reader.Side2RowExtent(), reader.Side2ColExtent()),
                                awaited);
    }
    if (!side2) return std::nullopt;
    return SheetOf(std::move(*side1), std::move(*side2));
  });
}

Spread AddToArraySS(clsTeskReader& reader, std::string_view reply, SideArray& side, std::int16_t number) {
  return Guarded(
      "basScanningSystems.AddToArraySS",
      [&] {
        WindowReply record(WindowsOfSide(reader, number), side);
        for (const char c : reply) record.Take(static_cast<std::uint8_t>(c));
        return record.LastItemHasCome() ? Spread::Complete : Spread::Incomplete;
      },
      Spread::Failed);
}

// ---- Sending a sheet on

bool RejectPageSS(clsTeskReader& reader, bool reject) {
  return Guarded("basScanningSystems.RejectPageSS", [&] {
    if (!reader.Rejecter() && reader.Printer() && reader.Printer()->Initialized()) {
      return RejectPrintSS(reader);
    }
    Exchange(reader).Tell(reject ? kToReject : kToAccept);
    return true;
  });
}

bool RejectPrintSS(clsTeskReader& reader) {
  return Guarded("basScanningSystems.RejectPrintSS", [&] {
    SerialExchange line = Exchange(reader);
    return !AskOnTheWayOut(line, kFeedQuery).empty();
  });
}

bool PrintSS(clsTeskReader& reader, bool feed) {
  return Guarded("basScanningSystems.PrintSS", [&] {
    const auto printer = reader.Printer();
    if (!printer) return false;
    SerialExchange line = Exchange(reader);
    if (feed) AskOnTheWayOut(line, kFeedQuery);
    for (const std::string& command : ImprintCommands(*printer, reader.DataBits())) line.Tell(command);
    return AskOnTheWayOut(line, kPrintQuery).find('0') != std::string::npos;
  });
}

constinit const Driver kDriver = {
    .family = Family::SekonicSerial,
    .module = "basScanningSystems",
    .initReader = InitReaderSS,
    .closeReader = CloseReaderSS,
    .readPage = ReadPageSS,
    .rejectPage = [](clsTeskReader& r) { return RejectPageSS(r, r.Rejecter()); },
    .ejectPage = [](clsTeskReader& r) { return RejectPageSS(r, false); },
    .print = PrintSS,
};

}  // namespace tesk::basScanningSystems
