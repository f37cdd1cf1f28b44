// The scanner's side of the Sekonic serial wire.
//
//   host                              scanner
//   CAN CR                            ACK CR
//   ENQ OM CR, ENQ O CR               a number, CR; six characters, CR (the card readers are not asked)
//   ? CR                              feeds; a status character per head, the back's first
//   ENQ T CR                          three digits, CR
//   DC3 BA05 CR                       one text per barcode field, each with a CR
//   DLE ED001 rows CR                 rows of (column, darkness), each ended by a blank and CR
//   DLE R* CR                         items of (choice, darkness) with "," between, each ended by CR
//   ?F CR, ?P CR                      "0" done, "1" not done
//
// "/" before a command means the head of the back side. Nothing else is answered.
#include "simulator/SekonicSerial.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr char kCarriageReturn = '\r';
constexpr std::string_view kReset = "\030";
constexpr std::size_t kLongestLine = 256;
constexpr std::size_t kMostBarcodeFields = 8;
constexpr std::string_view kDone = "0";
constexpr std::string_view kNotDone = "1";

// The status character of each fault, which depends on the model and its reading mode. "0": no fault.
struct StatusFault {
  FaultKind kind;
  char cards, modesBelow2, mode2, modesAbove2;
};
constexpr StatusFault kEmptyHopper{FaultKind::Empty, '3', '6', '5', '3'};
constexpr StatusFault kStatusFaults[] = {
    kEmptyHopper,
    {FaultKind::Jam, '1', '2', '2', '1'},
    {FaultKind::JamReading, '2', '2', '2', '2'},
    {FaultKind::DoubleFeed, '6', '2', '6', '6'},
    {FaultKind::Timing, '@', '4', '4', '@'},
    {FaultKind::Skew, ':', '4', ':', '4'},
    {FaultKind::CoverOpen, 'D', '5', '9', 'D'},
    {FaultKind::CommandError, 'P', '1', '1', 'P'},
    {FaultKind::UnknownStatus, '~', '~', '~', '~'},
};

constexpr std::array kSekonicFaults{
    FaultKind::Empty,
    FaultKind::Jam,
    FaultKind::JamReading,
    FaultKind::DoubleFeed,
    FaultKind::Timing,
    FaultKind::Skew,
    FaultKind::CoverOpen,
    FaultKind::CommandError,
    FaultKind::UnknownStatus,
    FaultKind::StatusCode,
    FaultKind::StatusCodeBack,
    FaultKind::RefuseReset,
    FaultKind::RefusePrinter,
    FaultKind::Silence,
    FaultKind::SilenceReset,
    FaultKind::SilenceMode,
    FaultKind::SilenceFitted,
    FaultKind::SilenceStatus,
    FaultKind::SilenceTimingMarks,
    FaultKind::SilenceBarcodes,
    FaultKind::SilencePrint,
    FaultKind::SilenceEject,
    FaultKind::WrongMode,
    FaultKind::Garbage,
    FaultKind::Overrun,
    FaultKind::Short,
    FaultKind::Cut,
    FaultKind::Late,
};

char CodeFor(const StatusFault& fault, const SekonicModel& model) {
  if (model.cards) return fault.cards;
  if (model.readingMode < 2) return fault.modesBelow2;
  return model.readingMode == 2 ? fault.mode2 : fault.modesAbove2;
}

bool Has(teskReaderType reader) { return FindSekonicModel(reader) != nullptr; }

Media MediaOf(teskReaderType reader) {
  const SekonicModel& model = *FindSekonicModel(reader);
  return {model.darkest, {50, model.columns, model.duplex}};
}

std::unique_ptr<SheetScanner> Create(teskReaderType reader, Options options) {
  return std::make_unique<SekonicSerial>(*FindSekonicModel(reader), std::move(options));
}

std::string ThreeDigits(std::int32_t value) {
  const std::string text = std::to_string(std::clamp(value, 0, 999));
  return std::string(3 - text.size(), '0') + text;
}

bool Printable(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char c) { return static_cast<unsigned char>(c) < 32 || c == '\x7F'; });
}

}  // namespace

constinit const Family kSekonicSerialFamily{&Has, kSekonicFaults, &MediaOf, &Create};

// ---- Commands

enum class For { All, Cards, Sr430, Pages };
enum class Ends { WithName, WithFields };

struct SekonicSerial::Command {
  std::string_view name;
  Ends ends;
  For models;
  bool eitherHead;  // "/" may stand before it
  Handler handler;
};

// A name that another one begins with comes after it.
const SekonicSerial::Command SekonicSerial::kCommands[] = {
    {kReset, Ends::WithName, For::All, false, &SekonicSerial::OnReset},
    {"\005OM", Ends::WithName, For::Pages, false, &SekonicSerial::OnMode},
    {"\005O", Ends::WithName, For::Pages, false, &SekonicSerial::OnFitted},
    {"\005T", Ends::WithName, For::All, true, &SekonicSerial::OnTimingMarks},
    {"\020T", Ends::WithName, For::Cards, false, &SekonicSerial::OnSetUp},
    {"\020DL", Ends::WithFields, For::All, false, &SekonicSerial::OnThreshold},
    {"\020Q", Ends::WithName, For::Pages, false, &SekonicSerial::OnForgetWindows},
    {"\020W", Ends::WithName, For::Pages, true, &SekonicSerial::OnWindow},
    {"\020ED001", Ends::WithFields, For::All, true, &SekonicSerial::OnPageData},
    {"\020R*", Ends::WithName, For::Pages, true, &SekonicSerial::OnWindowData},
    {"\02315", Ends::WithName, For::Sr430, false, &SekonicSerial::OnSwitchOn},
    {"\023DD", Ends::WithFields, For::Pages, false, &SekonicSerial::OnDiscrimination},
    {"\023BA00", Ends::WithName, For::Pages, false, &SekonicSerial::OnForgetBarcodes},
    {"\023BA01", Ends::WithName, For::Pages, false, &SekonicSerial::OnBarcodesOn},
    {"\023BA10999", Ends::WithName, For::Pages, false, &SekonicSerial::OnBarcodeField},
    {"\023BA05", Ends::WithName, For::Pages, false, &SekonicSerial::OnBarcodeData},
    {"\023P10", Ends::WithName, For::Pages, false, &SekonicSerial::OnImprinterSetUp},
    {"\023P3100", Ends::WithName, For::Pages, false, &SekonicSerial::OnImprinterSetUp},
    {"\023P32", Ends::WithFields, For::Pages, false, &SekonicSerial::OnImprintPosition},
    {"\023P4", Ends::WithFields, For::Pages, false, &SekonicSerial::OnImprintLine},
    {"\023P2", Ends::WithFields, For::Pages, false, &SekonicSerial::OnEmptyImprintLine},
    {"\023R05", Ends::WithName, For::Pages, false, &SekonicSerial::OnReject},
    {"\023R04", Ends::WithName, For::Pages, false, &SekonicSerial::OnAccept},
    {"?F", Ends::WithName, For::Pages, false, &SekonicSerial::OnFeed},
    {"?P", Ends::WithName, For::Pages, false, &SekonicSerial::OnPrint},
    {"?", Ends::WithName, For::All, false, &SekonicSerial::OnStatus},
};

SekonicSerial::SekonicSerial(const SekonicModel& model, Options options)
    : SheetScanner(std::move(options), true), model_(model) {}

void SekonicSerial::OnByte(std::uint8_t byte, Time now) {
  if (byte == static_cast<std::uint8_t>(kCarriageReturn)) {
    OnLine(std::exchange(line_, {}), now);
    return;
  }
  if (line_.size() == kLongestLine) {
    Complain("a line without end: " + Quoted(std::exchange(line_, {}).substr(0, 40)) + "...");
  }
  line_ += static_cast<char>(byte);
}

void SekonicSerial::OnLine(std::string_view line, Time now) {
  // A reset ends whatever a host has left unfinished.
  if (line == kReset) pending_ = Pending::None;
  const std::string complaint = pending_ == Pending::None ? OnCommand(line, now) : OnData(line);
  if (!complaint.empty()) Complain(complaint + ": " + Quoted(line));
}

std::string SekonicSerial::OnCommand(std::string_view line, Time now) {
  const std::size_t head = line.starts_with('/') ? 1 : 0;
  const std::string_view text = line.substr(head);
  for (const Command& command : kCommands) {
    if (!text.starts_with(command.name)) continue;
    const std::string_view fields = text.substr(command.name.size());
    if (command.ends == Ends::WithName && !fields.empty()) return "ill-formed command";
    if (head == 1 && !command.eitherHead) return "command that is not for a head";
    if (head == 1 && !model_.duplex) return "command for the back side of a scanner of one side";
    const bool has = command.models == For::All || (command.models == For::Pages) != model_.cards;
    const bool misses430 = command.models == For::Sr430 && model_.reader != teskReaderTypeSekonicSR430;
    if (!has || misses430) return "command that this model has not";
    return (this->*command.handler)({fields, head, now});
  }
  return "unknown command";
}

std::string SekonicSerial::OnData(std::string_view line) {
  if (std::exchange(pending_, Pending::None) == Pending::Window) return TakeWindow(line);
  const bool plain = model_.reader == teskReaderTypeScanningSystemsSR410;
  return line == (plain ? "1" : "\0022") ? "" : "ill-formed set-up data";
}

// ---- Set-up

// A reset drops what is still to be sent and lets a sheet go.
std::string SekonicSerial::OnReset(const Call& call) {
  DropReplies();
  for (auto& windows : windows_) windows.clear();
  windowsForgotten_ = false;
  barcodesOn_ = false;
  barcodeFields_ = 0;
  lastAnswer_ = '\0';
  LetGo(Exit::Passed, call.now);
  const std::int32_t reset = ++asked_[FaultKind::SilenceReset];
  if (TakeFault(FaultKind::SilenceReset, reset)) return {};
  Answer(TakeFault(FaultKind::RefuseReset, reset) ? "\x15\r" : "\x06\r", call.now);
  return {};
}

std::string SekonicSerial::OnSetUp(const Call&) {
  pending_ = Pending::SetUp;
  return {};
}

std::string SekonicSerial::OnSwitchOn(const Call&) { return {}; }

std::string SekonicSerial::OnThreshold(const Call& call) {
  const bool byLevel = !model_.cards && model_.readingMode < 2;
  const std::size_t digits = byLevel ? 1 : 2;
  const std::int32_t threshold = SekonicDigits(call.fields, 0, digits);
  if (call.fields.size() != digits || threshold < 0) return "ill-formed threshold";
  const std::int32_t lowest = byLevel || model_.cards ? 1 : 0;
  const std::int32_t highest = byLevel ? 3 + model_.readingMode : model_.darkest;
  return threshold < lowest || threshold > highest ? "threshold that the model has not" : "";
}

std::string SekonicSerial::OnDiscrimination(const Call& call) {
  if (call.fields.size() != 2 || SekonicDigits(call.fields, 0, 2) < 0)
    return "ill-formed mark discrimination";
  return lastAnswer_ == '1' ? "" : "mark discrimination for a scanner that said it has none";
}

std::string SekonicSerial::OnMode(const Call& call) {
  if (Silenced(FaultKind::SilenceMode)) return {};
  const std::string answer = std::to_string(model_.readingMode) + kCarriageReturn;
  lastAnswer_ = answer.front();
  Answer(answer, call.now);
  return {};
}

std::string SekonicSerial::OnFitted(const Call& call) {
  if (Silenced(FaultKind::SilenceFitted)) return {};
  lastAnswer_ = model_.readingMode % 2 == 1 ? '1' : '0';
  Answer(std::string{lastAnswer_, '0', '0', '0', '0', model_.rejecter ? '1' : '0', kCarriageReturn},
         call.now);
  return {};
}

std::string SekonicSerial::OnForgetWindows(const Call&) {
  for (auto& windows : windows_) windows.clear();
  windowsForgotten_ = true;
  return {};
}

std::string SekonicSerial::OnWindow(const Call& call) {
  pending_ = Pending::Window;
  pendingHead_ = call.head;
  return {};
}

std::string SekonicSerial::TakeWindow(std::string_view line) {
  if (!windowsForgotten_) return "window before the old ones were forgotten";
  const auto window = SekonicWindow::Parse(line, model_.columns);
  if (!window) return "ill-formed window";
  windows_.at(pendingHead_).push_back(*window);
  return {};
}

// ---- Feeding

char SekonicSerial::FrontStatus(Time now) {
  if (!SheetReady(now)) return CodeFor(kEmptyHopper, model_);
  for (const StatusFault& fault : kStatusFaults) {
    if (TakeFault(fault.kind, NextSheet())) return CodeFor(fault, model_);
  }
  const auto code = TakeFault(FaultKind::StatusCode, NextSheet());
  return code ? static_cast<char>(code->byte) : kDone.front();
}

// A sheet that the front's status speaks against is put back on the stock by the operator.
std::string SekonicSerial::OnStatus(const Call& call) {
  LetGo(Exit::Passed, call.now);
  if (TakeFault(FaultKind::SilenceStatus, NextSheet())) return {};
  const auto back = TakeFault(FaultKind::StatusCodeBack, NextSheet());
  const char front = FrontStatus(call.now);
  std::string status(1, front);
  if (model_.duplex) status.insert(0, 1, back ? static_cast<char>(back->byte) : kDone.front());
  const Milliseconds delay = Settings().timings.answer + Settings().timings.reading;
  if (front == kDone.front()) {
    sheet_ = Feed(!model_.cards, call.now + delay);
    sheetIn_ = true;
    imprint_ = {};
    printed_ = false;
    wrongMode_ = TakeFault(FaultKind::WrongMode, LastSheet()).has_value();
  }
  Reply(status, call.now, delay);
  return {};
}

std::string SekonicSerial::OnTimingMarks(const Call& call) {
  if (!sheetIn_) return "timing-mark query without a sheet";
  if (TakeFault(FaultKind::SilenceTimingMarks, LastSheet())) return {};
  Answer(ThreeDigits(Side(call.head).Rows()) + kCarriageReturn, call.now);
  return {};
}

// ---- Marks

// surplus: what one row or item too many looks like.
void SekonicSerial::SendMarks(std::string data, std::string_view surplus, Time now) {
  const std::int32_t sheet = LastSheet();
  if (TakeFault(FaultKind::Silence, sheet)) return;
  if (TakeFault(FaultKind::Garbage, sheet)) {
    Random random(Settings().seed + static_cast<std::uint64_t>(sheet));
    // The line carries seven bits.
    for (char& byte : data) byte = static_cast<char>(random.Between(0, 127));
  }
  if (TakeFault(FaultKind::Overrun, sheet)) data += surplus;
  if (TakeFault(FaultKind::Short, sheet)) data.resize(data.size() / 2);
  if (const auto cut = TakeFault(FaultKind::Cut, sheet)) {
    data.resize(std::min(cut->byte, data.empty() ? 0 : data.size() - 1));
  }
  Milliseconds delay = Settings().timings.answer;
  if (TakeFault(FaultKind::Late, sheet)) delay += Settings().timings.late;
  Reply(data, now, delay);
}

std::string SekonicSerial::OnPageData(const Call& call) {
  const std::int32_t rows = SekonicDigits(call.fields, 0, 3);
  if (call.fields.size() != 3 || rows < 1) return "ill-formed page query";
  if (!sheetIn_) return "page query without a sheet";
  const bool card = model_.reader == teskReaderTypeSekonicSR430 && call.head == 0 && !wrongMode_;
  SendMarks(SekonicPageRows(model_, Side(call.head), rows, card), "01 \r", call.now);
  return {};
}

std::string SekonicSerial::OnWindowData(const Call& call) {
  if (!sheetIn_) return "window query without a sheet";
  SendMarks(SekonicWindowItems(model_, Side(call.head), windows_.at(call.head)), "11\r", call.now);
  return {};
}

// ---- Barcodes

std::string SekonicSerial::OnForgetBarcodes(const Call&) {
  barcodesOn_ = false;
  barcodeFields_ = 0;
  return {};
}

std::string SekonicSerial::OnBarcodesOn(const Call&) {
  barcodesOn_ = true;
  return {};
}

std::string SekonicSerial::OnBarcodeField(const Call&) {
  if (!barcodesOn_) return "barcode field before barcodes were switched on";
  if (barcodeFields_ == kMostBarcodeFields) return "more than eight barcode fields";
  ++barcodeFields_;
  return {};
}

std::string SekonicSerial::OnBarcodeData(const Call& call) {
  if (barcodeFields_ == 0) return "barcode query without a field";
  if (!sheetIn_) return "barcode query without a sheet";
  if (TakeFault(FaultKind::SilenceBarcodes, LastSheet())) return {};
  std::string texts;
  for (std::size_t i = 0; i < barcodeFields_; ++i) {
    if (i < sheet_.barcodes.size()) texts += sheet_.barcodes[i];
    texts += kCarriageReturn;
  }
  Answer(texts, call.now);
  return {};
}

// ---- Imprinter and exits

std::string SekonicSerial::OnImprinterSetUp(const Call&) { return {}; }

std::string SekonicSerial::OnImprintPosition(const Call& call) {
  return call.fields.size() == 3 && SekonicDigits(call.fields, 0, 3) >= 0 ? "" : "ill-formed print position";
}

std::string SekonicSerial::OnImprintLine(const Call& call) {
  const std::int32_t number = SekonicDigits(call.fields, 0, 1);
  if (number < 0 || number > 2) return "imprint line outside 0 to 2";
  const std::string_view text = call.fields.substr(1);
  if (text.size() < 2 || !text.ends_with(' ') || !Printable(text)) return "ill-formed imprint line";
  imprint_.at(static_cast<std::size_t>(number)) = text.substr(0, text.size() - 1);
  return {};
}

std::string SekonicSerial::OnEmptyImprintLine(const Call& call) {
  const std::int32_t number = SekonicDigits(call.fields, 0, 1);
  if (call.fields.size() != 1 || number < 0 || number > 2) return "ill-formed empty imprint line";
  imprint_.at(static_cast<std::size_t>(number)).clear();
  return {};
}

std::string SekonicSerial::OnPrint(const Call& call) {
  if (TakeFault(FaultKind::SilencePrint, LastSheet())) return {};
  const bool done = Held() && !TakeFault(FaultKind::RefusePrinter, ++asked_[FaultKind::RefusePrinter]);
  printed_ = printed_ || done;
  Answer(done ? kDone : kNotDone, call.now);
  return {};
}

std::string SekonicSerial::OnFeed(const Call& call) {
  if (TakeFault(FaultKind::SilenceEject, LastSheet())) return {};
  LetGo(Exit::Accepted, call.now);
  Answer(kDone, call.now);
  return {};
}

std::string SekonicSerial::OnReject(const Call& call) {
  if (!model_.rejecter) return "reject for a scanner without a reject exit";
  LetGo(Exit::Rejected, call.now);
  return {};
}

std::string SekonicSerial::OnAccept(const Call& call) {
  LetGo(Exit::Accepted, call.now);
  return {};
}

// A sheet that has left cannot be asked about. The lines of an imprint are joined with "|".
void SekonicSerial::LetGo(Exit exit, Time now) {
  sheetIn_ = false;
  if (!Held()) return;
  std::string text;
  for (const std::string& line : imprint_) {
    if (printed_ && !line.empty()) text += (text.empty() ? "" : "|") + line;
  }
  Dispose(exit, text, printed_, now);
}

}  // namespace tesk::simulator
