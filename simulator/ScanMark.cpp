// The scanner's side of the ScanMark wire.
//
//   host                              scanner
//   ESC command CR                    CR (taken) or BEL (refused)
//   ESC "QSTS" CR                     12 characters: 2 class, 3 detail, 9 flags
//   ESC "READ 5 Y" [" E"] CR          values..., CR; with E the sheet waits for EJCT
//
// Acknowledgement and refusal are one byte each: a host takes what is waiting when the first byte is
// there, and the rest of a longer answer would be taken for the answer to its next command.
#include "simulator/ScanMark.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "simulator/CommandFields.h"
#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr char kEscape = '\x1B';
constexpr char kCarriageReturn = '\r';
constexpr std::size_t kLongestLine = 1024;
constexpr std::size_t kLongestImprint = 125;
constexpr std::size_t kRowValues = 48;
constexpr std::string_view kRefusal = "\a";

constexpr std::array<ScanMarkModel, 10> kModels{{
    // reader                             raw    duplex feeder rejecter
    {teskReaderTypeScantronScanMark2000, false, false, false, false},
    {teskReaderTypeScantronScanMark2250, false, true, false, false},
    {teskReaderTypeScantronScanMark2500, false, true, true, true},
    {teskReaderTypeScantronScanMark4000, false, true, true, true},
    {teskReaderTypeScantronScanMark5500, false, true, true, true},
    {teskReaderTypeScantron8000, true, true, true, false},
    {teskReaderTypeScantron8400, true, true, true, false},
    {teskReaderTypeScantronScanMarkES2010, false, false, false, false},
    {teskReaderTypeScantronScanMarkES2260, false, true, true, false},
    {teskReaderTypeScantronScanMarkES2800, false, true, true, true},
}};

// The flag byte. Bit 32 means nothing and is always set: hosts must look at single bits.
constexpr std::uint8_t kFlagsIdle = 32;
constexpr std::uint8_t kFlagReady = 1;
constexpr std::uint8_t kFlagDoubleFeed = 16;
constexpr std::uint8_t kFlagJam = 64;

struct StatusFault {
  FaultKind kind;
  bool afterReading;  // told in the first status after the sheet, else in one before it
  char statusClass;
  char detail;
  std::uint8_t flag;
  std::size_t length;
};
constexpr std::array<StatusFault, 9> kStatusFaults{{
    {FaultKind::Jam, false, '0', '0', kFlagJam, 12},
    {FaultKind::JamReading, true, '0', '0', kFlagJam, 12},
    {FaultKind::DoubleFeed, true, '0', '0', kFlagDoubleFeed, 12},
    {FaultKind::Timing, true, '1', ' ', 0, 12},
    {FaultKind::FormError, true, '1', 'F', 0, 12},
    {FaultKind::CommandError, false, '2', '0', 0, 12},
    {FaultKind::UnknownStatus, false, '9', '0', 0, 12},
    {FaultKind::ShortStatus, true, '0', '0', 0, 7},
    {FaultKind::Empty, false, '0', '0', 0, 12},
}};

constexpr std::array kScanMarkFaults{
    FaultKind::Jam,
    FaultKind::JamReading,
    FaultKind::DoubleFeed,
    FaultKind::Timing,
    FaultKind::FormError,
    FaultKind::CommandError,
    FaultKind::UnknownStatus,
    FaultKind::ShortStatus,
    FaultKind::Empty,
    FaultKind::Silence,
    FaultKind::SilenceStatus,
    FaultKind::SilenceEject,
    FaultKind::SilenceReset,
    FaultKind::RefuseThreshold,
    FaultKind::RefuseFormStart,
    FaultKind::RefuseRegion,
    FaultKind::RefuseFormEnd,
    FaultKind::RefusePrinter,
    FaultKind::Garbage,
    FaultKind::Overrun,
    FaultKind::Short,
    FaultKind::Cut,
    FaultKind::Late,
    FaultKind::TooDark,
};

std::int16_t Darkest(const ScanMarkModel& model) { return model.raw ? 99 : 15; }

bool Has(teskReaderType reader) { return FindScanMarkModel(reader) != nullptr; }

Media MediaOf(teskReaderType reader) {
  const ScanMarkModel& model = *FindScanMarkModel(reader);
  return {Darkest(model), {50, 48, model.duplex}};
}

std::unique_ptr<SheetScanner> Create(teskReaderType reader, Options options) {
  return std::make_unique<ScanMark>(*FindScanMarkModel(reader), std::move(options));
}

std::string EncodeStatus(char statusClass, char detail, std::uint8_t flags) {
  std::string record(12, '0');
  record[1] = statusClass;
  record[2] = detail;
  record[8] = static_cast<char>(flags | kFlagsIdle);
  return record;
}

bool Printable(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char character) {
    return static_cast<unsigned char>(character) < 32 || character == '\x7F';
  });
}

}  // namespace

constinit const Family kScanMarkFamily{&Has, kScanMarkFaults, &MediaOf, &Create};

const ScanMarkModel* FindScanMarkModel(teskReaderType reader) {
  const auto* const found = std::find_if(kModels.begin(), kModels.end(),
                                         [&](const ScanMarkModel& model) { return model.reader == reader; });
  return found == kModels.end() ? nullptr : found;
}

struct ScanMark::Command {
  std::string_view name;
  Handler handler;
  bool inForm;  // allowed between a form's start and its end
  std::optional<FaultKind> refusal;
};

const ScanMark::Command ScanMark::kCommands[] = {
    {"SRST", &ScanMark::OnReset, true, std::nullopt},
    {"THR= ", &ScanMark::OnThreshold, false, FaultKind::RefuseThreshold},
    {"FRM=FS ", &ScanMark::OnFormStart, true, FaultKind::RefuseFormStart},
    {"FRM=MC ", &ScanMark::OnMarkColumns, true, FaultKind::RefuseRegion},
    {"FRM=DK ", &ScanMark::OnRegion, true, FaultKind::RefuseRegion},
    {"FRM=LS", &ScanMark::OnFormEnd, true, FaultKind::RefuseFormEnd},
    {"PRN$ 1 ", &ScanMark::OnPrinter, false, FaultKind::RefusePrinter},
    {"QSTS", &ScanMark::OnStatus, true, std::nullopt},
    {"READ 5 Y", &ScanMark::OnRead, false, std::nullopt},
    {"EJCT ", &ScanMark::OnEject, false, std::nullopt},
};

ScanMark::ScanMark(const ScanMarkModel& model, Options options)
    : SheetScanner(std::move(options), model.feeder), model_(model), form_(model.duplex, model.raw) {}

void ScanMark::OnByte(std::uint8_t byte, Time now) {
  const char character = static_cast<char>(byte);
  if (character == kCarriageReturn) {
    const std::string line = std::exchange(line_, {});
    OnLine(line, now);
    return;
  }
  if (character == kEscape && !line_.empty()) {
    Complain("bytes before an escape that no carriage return ended: " + Quoted(std::exchange(line_, {})));
  }
  if (line_.size() == kLongestLine) {
    Complain("a line without end: " + Quoted(std::exchange(line_, {}).substr(0, 40)) + "...");
  }
  line_ += character;
}

void ScanMark::OnLine(std::string_view line, Time now) {
  if (!line.starts_with(kEscape)) return Refuse("no escape before the command", line, now);
  const std::string_view text = line.substr(1);
  for (const Command& command : kCommands) {
    if (!text.starts_with(command.name)) continue;
    const std::string complaint = Run(command, text.substr(command.name.size()), now);
    if (!complaint.empty()) Refuse(complaint, text, now);
    return;
  }
  Refuse("unknown command", text, now);
}

std::string ScanMark::Run(const Command& command, std::string_view fields, Time now) {
  if (form_.Open() && !command.inForm) return "command in the middle of a form";
  if (command.refusal && TakeFault(*command.refusal, ++commands_[*command.refusal])) {
    Answer(kRefusal, now);
    return {};
  }
  return (this->*command.handler)(fields, now);
}

void ScanMark::Refuse(const std::string& complaint, std::string_view line, Time now) {
  Complain(complaint + ": " + Quoted(line));
  Answer(kRefusal, now);
}

std::string ScanMark::Acknowledge(std::string complaint, Time now) {
  if (complaint.empty()) Answer({&kCarriageReturn, 1}, now);
  return complaint;
}

// A reset drops what is still to be sent, but for data that a fault made late: the host is to see those.
std::string ScanMark::OnReset(std::string_view fields, Time now) {
  if (!fields.empty()) return "ill-formed reset";
  if (!lateOnWire_) DropReplies();
  lateOnWire_ = false;
  statusOwed_ = false;
  imprinterOn_ = false;
  form_.Clear();
  commands_.clear();
  if (Held()) Dispose(Exit::Passed, {}, false, now);
  if (TakeFault(FaultKind::SilenceReset, ++resets_)) return {};
  return Acknowledge({}, now);
}

std::string ScanMark::OnThreshold(std::string_view fields, Time now) {
  CommandFields parsed(fields);
  const std::int32_t threshold = parsed.Number();
  if (!model_.raw) return "read threshold for a scanner without one";
  if (!parsed.Complete() || threshold < 0 || threshold > Darkest(model_))
    return "read threshold outside 0 to 99";
  return Acknowledge({}, now);
}

std::string ScanMark::OnFormStart(std::string_view fields, Time now) {
  return Acknowledge(form_.Start(fields), now);
}

std::string ScanMark::OnMarkColumns(std::string_view fields, Time now) {
  return Acknowledge(form_.MarkColumns(fields), now);
}

std::string ScanMark::OnRegion(std::string_view fields, Time now) {
  return Acknowledge(form_.Region(fields), now);
}

std::string ScanMark::OnFormEnd(std::string_view fields, Time now) {
  return Acknowledge(fields.empty() ? form_.End() : "ill-formed end of a form", now);
}

std::string ScanMark::OnPrinter(std::string_view fields, Time now) {
  // Before a reject the imprinter is switched off with a blank at the end.
  if (fields != "Y" && fields != "N" && fields != "N ") return "ill-formed imprinter command";
  imprinterOn_ = fields == "Y";
  return Acknowledge({}, now);
}

std::string ScanMark::OnStatus(std::string_view fields, Time now) {
  if (!fields.empty()) return "ill-formed status query";
  if (!statusOwed_ && TakeFault(FaultKind::SilenceStatus, NextSheet())) return {};
  Answer(StatusRecord(now), now);
  return {};
}

std::string ScanMark::StatusRecord(Time now) {
  const bool afterReading = std::exchange(statusOwed_, false);
  const bool ready = SheetReady(now);
  for (const StatusFault& fault : kStatusFaults) {
    if (fault.afterReading != afterReading || (!afterReading && !ready)) continue;
    if (!TakeFault(fault.kind, afterReading ? LastSheet() : NextSheet())) continue;
    return EncodeStatus(fault.statusClass, fault.detail, fault.flag).substr(0, fault.length);
  }
  return EncodeStatus('0', '0', ready ? kFlagReady : 0);
}

std::string ScanMark::OnRead(std::string_view fields, Time now) {
  const bool hold = fields == " E";
  if (!hold && !fields.empty()) return "ill-formed read command";
  if (!form_.Complete()) return "read command without a form";
  if (Held()) return "read command while a sheet is held";
  if (!SheetReady(now)) return "read command while no sheet is ready";
  if (TakeFault(FaultKind::Silence, NextSheet())) return {};

  Milliseconds delay = Settings().timings.answer + Settings().timings.reading;
  const Sheet& sheet = Feed(hold, now + delay);
  if (TakeFault(FaultKind::Late, LastSheet())) {
    delay += Settings().timings.late;
    lateOnWire_ = true;
  }
  Reply(SheetData(sheet), now, delay);
  statusOwed_ = true;
  return {};
}

// A sheet file may hold a raw value of 13, which looks like the end of the data.
char ScanMark::WireValue(std::int16_t value) const {
  const std::int16_t inScale = std::clamp<std::int16_t>(value, 0, Darkest(model_));
  return static_cast<char>(model_.raw ? inScale : '0' + inScale);
}

std::string ScanMark::SheetData(const Sheet& sheet) {
  std::string data;
  for (const std::int16_t value : form_.Values(sheet)) data += WireValue(value);

  if (TakeFault(FaultKind::Garbage, LastSheet())) {
    Random random(Settings().seed + static_cast<std::uint64_t>(LastSheet()));
    for (char& byte : data) byte = static_cast<char>(random.Between(0, 255));
  }
  if (TakeFault(FaultKind::TooDark, LastSheet()) && !data.empty()) data[data.size() / 3] = '~';
  if (TakeFault(FaultKind::Overrun, LastSheet())) data.append(kRowValues, WireValue(0));
  if (TakeFault(FaultKind::Short, LastSheet())) data.resize(data.size() / 2);
  data += kCarriageReturn;
  if (const auto cut = TakeFault(FaultKind::Cut, LastSheet()))
    data.resize(std::min(cut->byte, data.size() - 1));
  return data;
}

std::string ScanMark::OnEject(std::string_view fields, Time now) {
  if (fields == "C") {
    if (!model_.rejecter) return "reject for a scanner without a reject exit";
  } else if (!fields.starts_with("A ") || !Printable(fields)) {
    return "ill-formed eject command";
  } else if (fields.size() - 2 > kLongestImprint) {
    return "imprint of more than 125 characters";
  }
  if (TakeFault(FaultKind::SilenceEject, LastSheet())) return {};
  const bool reject = fields == "C";
  Dispose(reject ? Exit::Rejected : Exit::Accepted, std::string(reject ? "" : fields.substr(2)), imprinterOn_,
          now);
  return Acknowledge({}, now);
}

}  // namespace tesk::simulator
