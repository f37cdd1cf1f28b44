// The scanner's side of the OpScan wire.
//
//   host                     scanner
//   "s0"                     51 bytes, CR LF: 34 is the report letter, 48 the scan mode, counted from 0
//   "e" mode EOT             nothing; every change passes through mode "w"
//   "r"                      nothing; reading is allowed from now on, in mode "i" alone
//   DC1                      "a" line... "b" line... ["c" (prefix text "d")...] CR, once there is a sheet
//   "s1"                     5 bytes: 1 and 2 hold the faults of the sheet
//   "1" dd EOT, "2" text EOT, DC2, ESC DC2, SO    nothing
//
// Letters of reports come in either case. Runs of four and more are sent as NAK, count, character in most
// rows and plainly in the others.
#include "simulator/OpScan.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr char kEot = '\x04';
constexpr char kDc1 = '\x11';
constexpr char kDc2 = '\x12';
constexpr char kNak = '\x15';
constexpr char kSo = '\x0E';
constexpr char kEscape = '\x1B';
constexpr char kCarriageReturn = '\r';

constexpr std::string_view kModes = "ietdwsy";
constexpr char kReadingMode = 'i';
constexpr char kPassageMode = 'w';
constexpr std::int32_t kWidth = 48;
constexpr std::int32_t kMostRows = 150;
constexpr std::int16_t kDarkest = 15;
constexpr std::size_t kLongestCommand = 200;

constexpr std::array<OpScanModel, 9> kModels{{
    // reader                     feeder rejecter
    {teskReaderTypeNCSOpScan2, false, false},
    {teskReaderTypeNCSOpScaniNSIGHT2, false, false},
    {teskReaderTypeNCSOpScan3, true, true},
    {teskReaderTypeNCSOpScan4, true, true},
    {teskReaderTypeNCSOpScaniNSIGHT4, true, true},
    {teskReaderTypeNCSOpScan5, true, false},
    {teskReaderTypeNCSOpScan6, true, false},
    {teskReaderTypeNCSOpScan7, true, true},
    {teskReaderTypeNCSOpScan8, true, true},
}};

struct StatusFault {
  FaultKind kind;
  char byte1;
  char byte2;
};
constexpr std::array<StatusFault, 6> kStatusFaults{{
    {FaultKind::Skew, 2, 0},
    {FaultKind::DoubleFeed, 1, 0},
    {FaultKind::Jam, 0, 8},
    {FaultKind::JamReading, 0, 8},
    {FaultKind::ReadHead, 0, 4},
    {FaultKind::UnknownStatus, 0, 1},
}};

constexpr std::array kOpScanFaults{
    FaultKind::Jam,           FaultKind::JamReading,    FaultKind::DoubleFeed,  FaultKind::Skew,
    FaultKind::ReadHead,      FaultKind::UnknownStatus, FaultKind::ShortStatus, FaultKind::Silence,
    FaultKind::SilenceStatus, FaultKind::SilenceMode,   FaultKind::ShortMode,   FaultKind::UnknownMode,
    FaultKind::StuckMode,     FaultKind::Garbage,       FaultKind::WrongCount,  FaultKind::TooManyRows,
    FaultKind::Short,         FaultKind::QuietEnd,      FaultKind::Cut,         FaultKind::Late,
};

bool Has(teskReaderType reader) { return FindOpScanModel(reader) != nullptr; }

Media MediaOf(teskReaderType /*reader*/) { return {kDarkest, {50, kWidth, true}}; }

std::unique_ptr<SheetScanner> Create(teskReaderType reader, Options options) {
  return std::make_unique<OpScan>(*FindOpScanModel(reader), std::move(options));
}

char OtherCase(char letter) { return static_cast<char>(letter ^ 0x20); }

char Digit(std::int16_t value) { return "0123456789ABCDEF"[std::clamp<std::int16_t>(value, 0, kDarkest)]; }

std::string WithRuns(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const std::size_t length = std::min({text.find_first_not_of(text.front()), text.size(), std::size_t{48}});
    if (length >= 4) {
      bytes += {kNak, static_cast<char>(64 + length), text.front()};
    } else {
      bytes += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return bytes;
}

// One line per row, each behind the side's marker; one position less in the row `shortRow` (0: in none).
std::string Lines(char marker, const SideArray& side, std::int32_t rows, std::int32_t shortRow) {
  std::string lines;
  for (std::int32_t row = 1; row <= rows; ++row) {
    std::string digits;
    for (std::int32_t column = 1; column <= kWidth - (row == shortRow ? 1 : 0); ++column) {
      const bool onSheet = row <= side.Rows() && column <= side.Columns();
      digits += Digit(onSheet ? side.At(row, column) : std::int16_t{0});
    }
    lines += marker + (row % 3 == 0 ? digits : WithRuns(digits));
  }
  return lines;
}

// A text as the section can carry it: "d" would end it, and control characters mean something else.
std::string Carried(std::string_view text) {
  std::string carried(text);
  for (char& c : carried) {
    if (c == 'd' || c < ' ' || c > '~') c = '?';
  }
  return carried;
}

std::string TextSection(const Sheet& sheet) {
  std::string section;
  for (const std::string& text : sheet.barcodes) {
    section += std::string(section.empty() ? "c" : "") + "B1" + WithRuns(Carried(text)) + "d";
  }
  return section;
}

// The first half of a record, ended as a record ends. A run that the cut would fall into goes whole: its
// character would otherwise be the end.
std::string FirstHalf(const std::string& record) {
  std::size_t length = record.size() / 2;
  while (length > 0 && record.substr(length < 2 ? 0 : length - 2, 2).find(kNak) != std::string::npos)
    --length;
  return record.substr(0, length) + kCarriageReturn;
}

}  // namespace

constinit const Family kOpScanFamily{&Has, kOpScanFaults, &MediaOf, &Create};

const OpScanModel* FindOpScanModel(teskReaderType reader) {
  const auto* const found = std::find_if(kModels.begin(), kModels.end(),
                                         [&](const OpScanModel& model) { return model.reader == reader; });
  return found == kModels.end() ? nullptr : found;
}

struct OpScan::Command {
  char first;
  std::size_t length;  // 0: up to EOT
  Handler handler;
};

const OpScan::Command OpScan::kCommands[] = {
    {'r', 1, &OpScan::OnStart},      {kDc1, 1, &OpScan::OnRead},    {'e', 3, &OpScan::OnSetMode},
    {'s', 2, &OpScan::OnStatus},     {kSo, 1, &OpScan::OnClose},    {kDc2, 1, &OpScan::OnEject},
    {kEscape, 2, &OpScan::OnReject}, {'1', 0, &OpScan::OnPosition}, {'2', 0, &OpScan::OnImprint},
};

OpScan::OpScan(const OpScanModel& model, Options options)
    : AwaitingScanner(std::move(options), model.feeder), model_(model) {}

void OpScan::PowerOn(char mode, char reportLetter) {
  mode_ = askedMode_ = mode;
  reportLetter_ = reportLetter;
  pendingMode_.reset();
  started_ = false;
}

void OpScan::OnByte(std::uint8_t byte, Time now) {
  Settle(now);
  command_ += static_cast<char>(byte);
  const auto* const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                         [&](const Command& c) { return c.first == command_.front(); });
  if (found == std::end(kCommands))
    return Complain("unknown command: " + Quoted(std::exchange(command_, {})));
  const bool ended = found->length == 0 ? command_.back() == kEot : command_.size() == found->length;
  if (!ended && command_.size() < kLongestCommand) return;
  const std::string command = std::exchange(command_, {});
  const std::string complaint = ended ? (this->*found->handler)(command, now) : "a command without end";
  if (!complaint.empty()) Complain(complaint + ": " + Quoted(command));
}

std::string OpScan::OnStart(std::string_view, Time) {
  if (mode_ != kReadingMode) return "start outside the reading mode";
  started_ = true;
  return {};
}

std::string OpScan::OnRead(std::string_view, Time now) {
  if (pendingMode_) {
    mode_ = *std::exchange(pendingMode_, std::nullopt);
    reportLetter_ = 'N';
    return {};
  }
  if (mode_ != kReadingMode) return "read command outside the reading mode";
  if (!started_) return "read command before the start";
  if (UnderWay()) return "read command while a sheet is being read";
  if (Held()) Release(Exit::Passed, {}, false, now);
  if (SheetsLeft() == 0 || TakeFault(FaultKind::Silence, NextSheet())) return {};
  Begin(RecordOf(Upcoming()), now);
  return {};
}

std::string OpScan::OnSetMode(std::string_view command, Time) {
  const char mode = command[1];
  if (command[2] != kEot || kModes.find(mode) == std::string_view::npos) return "ill-formed scan mode";
  if (mode != kPassageMode && std::exchange(askedMode_, mode) != kPassageMode) {
    return "change of scan mode that does not pass through \"w\"";
  }
  askedMode_ = mode;
  started_ = false;
  if (TakeFault(FaultKind::StuckMode, ++modeCommands_)) modeStuck_ = true;
  const char taken = modeStuck_ ? mode_ : mode;
  const bool waits = reportLetter_ == 'A' || reportLetter_ == 'I';
  if (waits) {
    pendingMode_ = taken;
  } else {
    mode_ = taken;
  }
  return {};
}

std::string OpScan::OnReport(std::string_view, Time now) {
  ++reports_;
  if (TakeFault(FaultKind::SilenceMode, reports_)) return {};
  Answer(ModeReport(), now);
  return {};
}

std::string OpScan::ModeReport() {
  std::string report = "OPSCAN OPTICAL MARK READER";
  report.resize(51, '0');
  const bool otherCase = reports_ % 2 == 0;
  report[34] = otherCase ? OtherCase(reportLetter_) : reportLetter_;
  report[48] = otherCase ? OtherCase(mode_) : mode_;
  if (TakeFault(FaultKind::UnknownMode, reports_)) report[48] = 'z';
  report += "\r\n";
  if (TakeFault(FaultKind::ShortMode, reports_)) report.resize(20);
  return report;
}

// "s0" asks for the scan mode, "s1" for the sheet.
std::string OpScan::OnStatus(std::string_view command, Time now) {
  if (command == "s0") return OnReport(command, now);
  if (command != "s1") return "ill-formed status query";
  if (TakeFault(FaultKind::SilenceStatus, LastSheet())) return {};
  Answer(StatusRecord(), now);
  return {};
}

std::string OpScan::StatusRecord() {
  std::string record(5, '\0');
  // The upper bits say things that are no faults.
  record[1] = record[2] = '\x20';
  if (std::exchange(toldOf_, LastSheet()) == LastSheet()) return record;
  for (const StatusFault& fault : kStatusFaults) {
    if (!TakeFault(fault.kind, LastSheet())) continue;
    record[1] = static_cast<char>(record[1] | fault.byte1);
    record[2] = static_cast<char>(record[2] | fault.byte2);
  }
  if (TakeFault(FaultKind::ShortStatus, LastSheet())) record.resize(3);
  return record;
}

std::string OpScan::OnClose(std::string_view, Time) {
  started_ = false;
  Abandon();
  return {};
}

std::string OpScan::OnEject(std::string_view, Time now) {
  Release(Exit::Accepted, std::exchange(imprint_, {}), true, now);
  return {};
}

std::string OpScan::OnReject(std::string_view command, Time now) {
  if (command[1] != kDc2) return "unknown command";
  if (!model_.rejecter) return "reject for a scanner without a reject exit";
  imprint_.clear();
  Release(Exit::Rejected, {}, false, now);
  return {};
}

std::string OpScan::OnPosition(std::string_view command, Time) {
  const std::string_view digits = command.substr(1, command.size() - 2);
  if (digits.size() < 2 || digits.find_first_not_of("0123456789") != std::string_view::npos) {
    return "imprint position that is not two digits or more";
  }
  imprintPosition_ = digits;
  return {};
}

std::string OpScan::OnImprint(std::string_view command, Time) {
  const std::string_view text = command.substr(1, command.size() - 2);
  if (text.empty() || text.back() != ' ') return "imprint without a blank at its end";
  imprint_ = text.substr(0, text.size() - 1);
  return {};
}

std::string OpScan::RecordOf(const Sheet& sheet) {
  const auto& faults = Settings().faults;
  const auto ordered = [&](FaultKind kind) {
    return std::any_of(faults.begin(), faults.end(),
                       [&](const Fault& fault) { return fault.kind == kind && fault.number == NextSheet(); });
  };
  // A jam is told in the status of a sheet that has not been read.
  if (ordered(FaultKind::Jam)) return {kCarriageReturn};

  std::int32_t rows = std::min(sheet.side1.Rows(), kMostRows);
  if (TakeFault(FaultKind::TooManyRows, NextSheet())) rows = kMostRows + 1;
  const bool wrongCount = TakeFault(FaultKind::WrongCount, NextSheet()).has_value();
  std::string record = Lines('a', sheet.side1, rows, wrongCount ? std::max(rows / 2, 1) : 0) +
                       Lines('b', sheet.side2, std::min(sheet.side2.Rows(), kMostRows), 0);
  if (ordered(FaultKind::JamReading)) return FirstHalf(record);
  const std::string text = TextSection(sheet);
  record += text;
  if (!TakeFault(FaultKind::QuietEnd, NextSheet()) || text.empty()) record += kCarriageReturn;
  return SpoilRecord(std::move(record));
}

std::string OpScan::SpoilRecord(std::string record) {
  if (TakeFault(FaultKind::Garbage, NextSheet())) {
    Random random(Settings().seed + static_cast<std::uint64_t>(NextSheet()));
    for (char& byte : record) byte = static_cast<char>(random.Between(0, 127));
  }
  if (TakeFault(FaultKind::Short, NextSheet())) record = FirstHalf(record);
  if (const auto cut = TakeFault(FaultKind::Cut, NextSheet())) {
    record.resize(std::min(cut->byte, record.size() - 1));
  }
  return record;
}

}  // namespace tesk::simulator
