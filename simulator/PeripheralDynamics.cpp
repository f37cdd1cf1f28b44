// The scanner's side of the VMR138 wire. Commands are single characters without a terminator.
//
//   host          scanner
//   "0"           nothing; everything else is understood only afterwards, and a reading is over
//   "Q"           3 characters: a blank, status 1, status 2
//   "D" "G" "E"   nothing; each once, where the status asks for it
//   "+" "-"       the threshold after the step, two hexadecimal digits
//   "8"           LF, two bytes a row from the last row up, CR, once a sheet has been inserted
//   "9"           nothing; ends the reading
//   "3" "4"       nothing; the sheet leaves by the reject or the normal exit
#include "simulator/PeripheralDynamics.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr std::int32_t kLowestThreshold = 192;
constexpr std::int32_t kHighestThreshold = 255;
constexpr std::int32_t kColumns = 12;
constexpr std::int32_t kColumnsPerByte = 6;
constexpr std::int32_t kMostRows = 500;
constexpr std::int16_t kDarkest = 255;
constexpr std::int16_t kMarked =
    128;  // darkness from which the scanner sees a mark, between erasure and pencil

struct StatusBit {
  FaultKind kind;
  std::uint8_t bit;
};
constexpr std::array<StatusBit, 3> kStatusFaults{{
    {FaultKind::BackSensor, 1},
    {FaultKind::FrontSensor, 2},
    {FaultKind::Jam, 64},
}};
constexpr std::uint8_t kReading = 32;

constexpr std::array kPeripheralDynamicsFaults{
    FaultKind::Jam,
    FaultKind::FrontSensor,
    FaultKind::BackSensor,
    FaultKind::UnderWay,
    FaultKind::SilenceStatus,
    FaultKind::ShortStatus,
    FaultKind::SilenceThreshold,
    FaultKind::InvalidThreshold,
    FaultKind::Silence,
    FaultKind::Garbage,
    FaultKind::NoLineFeed,
    FaultKind::TwoByteEnd,
    FaultKind::TooManyRows,
    FaultKind::Short,
    FaultKind::Cut,
    FaultKind::Late,
};

bool Has(teskReaderType reader) { return reader == teskReaderTypePDIVMR138; }

Media MediaOf(teskReaderType /*reader*/) { return {kDarkest, {50, kColumns, false}}; }

std::unique_ptr<SheetScanner> Create(teskReaderType /*reader*/, Options options) {
  return std::make_unique<PeripheralDynamics>(std::move(options));
}

// Six positions of a row as one byte, the leftmost in bit 1; 64 is always set.
char HalfRow(const SideArray& side, std::int32_t row, std::int32_t firstColumn) {
  int byte = 64;
  for (std::int32_t i = 0; i < kColumnsPerByte; ++i) {
    const std::int32_t column = firstColumn + i;
    const bool onSheet = row <= side.Rows() && column <= side.Columns();
    if (onSheet && side.At(row, column) >= kMarked) byte |= 1 << i;
  }
  return static_cast<char>(byte);
}

}  // namespace

constinit const Family kPeripheralDynamicsFamily{&Has, kPeripheralDynamicsFaults, &MediaOf, &Create};

struct PeripheralDynamics::Command {
  char name;
  Handler handler;
};

const PeripheralDynamics::Command PeripheralDynamics::kCommands[] = {
    {'0', &PeripheralDynamics::OnStart},     {'D', &PeripheralDynamics::OnSetUp},
    {'G', &PeripheralDynamics::OnSetUp},     {'E', &PeripheralDynamics::OnSetUp},
    {'+', &PeripheralDynamics::OnThreshold}, {'-', &PeripheralDynamics::OnThreshold},
    {'Q', &PeripheralDynamics::OnStatus},    {'8', &PeripheralDynamics::OnRead},
    {'9', &PeripheralDynamics::OnEnd},       {'3', &PeripheralDynamics::OnDispose},
    {'4', &PeripheralDynamics::OnDispose},
};

void PeripheralDynamics::OnByte(std::uint8_t byte, Time now) {
  Settle(now);
  const char command = static_cast<char>(byte);
  const auto* const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                         [&](const Command& c) { return c.name == command; });
  std::string complaint = "unknown command";
  if (found != std::end(kCommands)) {
    const bool early = !started_ && command != '0' && command != '9';
    complaint = early ? "command before the start" : (this->*found->handler)(command, now);
  }
  if (!complaint.empty()) Complain(complaint + ": " + Quoted({&command, 1}));
}

std::string PeripheralDynamics::OnStart(char, Time) {
  started_ = true;
  return OnEnd({}, {});
}

std::string PeripheralDynamics::OnSetUp(char command, Time) {
  const std::size_t at = missing_.find(command);
  if (at == std::string::npos) return "set-up that the status does not ask for";
  missing_.erase(at, 1);
  return {};
}

std::string PeripheralDynamics::OnThreshold(char command, Time now) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  threshold_ = std::clamp(threshold_ + (command == '+' ? 1 : -1), kLowestThreshold, kHighestThreshold);
  ++thresholdCommands_;
  if (TakeFault(FaultKind::SilenceThreshold, thresholdCommands_)) return {};
  const auto value = static_cast<std::size_t>(threshold_);
  std::string answer{kHex[value / 16], kHex[value % 16]};
  if (TakeFault(FaultKind::InvalidThreshold, thresholdCommands_)) answer = "G0";
  Answer(answer, now);
  return {};
}

std::string PeripheralDynamics::OnStatus(char, Time now) {
  if (TakeFault(FaultKind::SilenceStatus, NextSheet())) return {};
  // A scanner that has not been set up takes no sheet.
  if (SetUp() && SheetsLeft() > 0 && TakeFault(FaultKind::UnderWay, NextSheet())) BeginReading(now);
  const bool cutShort = TakeFault(FaultKind::ShortStatus, NextSheet()).has_value();
  Answer(StatusReply().substr(0, cutShort ? 1 : 3), now);
  return {};
}

std::string PeripheralDynamics::StatusReply() {
  std::uint8_t status1 = 0;
  for (const StatusBit& fault : kStatusFaults) {
    if (TakeFault(fault.kind, NextSheet())) status1 |= fault.bit;
  }
  const auto missing = [&](char command) { return missing_.find(command) != std::string::npos; };
  if (missing('D')) status1 |= 16;
  if (missing('G')) status1 |= 4;
  if (UnderWay() || waiting_) status1 |= kReading;
  return {' ', static_cast<char>(status1), static_cast<char>(missing('E') ? 8 : 0)};
}

std::string PeripheralDynamics::OnRead(char, Time now) {
  if (!SetUp()) return "read command before the set-up";
  if (UnderWay() || waiting_) return "read command while a sheet is being read";
  if (!ended_) return "read command before the last reading was ended";
  if (SheetsLeft() == 0 || TakeFault(FaultKind::Silence, NextSheet())) {
    waiting_ = true;
  } else {
    BeginReading(now);
  }
  return {};
}

void PeripheralDynamics::BeginReading(Time now) {
  if (Held()) Release(Exit::Passed, {}, false, now);
  ended_ = false;
  Begin(RecordOf(Upcoming()), now);
}

// What is on its way to the host when the reading ends still arrives.
std::string PeripheralDynamics::OnEnd(char, Time) {
  if (UnderWay()) Abandon();
  waiting_ = false;
  ended_ = true;
  return {};
}

std::string PeripheralDynamics::OnDispose(char command, Time now) {
  Release(command == '3' ? Exit::Rejected : Exit::Accepted, {}, false, now);
  return {};
}

std::string PeripheralDynamics::RecordOf(const Sheet& sheet) {
  std::int32_t rows = std::min(sheet.side1.Rows(), kMostRows);
  if (TakeFault(FaultKind::TooManyRows, NextSheet())) rows = kMostRows + 1;
  std::string data;
  for (std::int32_t row = rows; row >= 1; --row) {
    data += HalfRow(sheet.side1, row, 1);
    data += HalfRow(sheet.side1, row, 1 + kColumnsPerByte);
  }
  // The row too many is one full of marks.
  if (rows > kMostRows) data.replace(0, 2, "\x7F\x7F");
  if (TakeFault(FaultKind::Garbage, NextSheet())) {
    Random random(Settings().seed + static_cast<std::uint64_t>(NextSheet()));
    for (char& byte : data) byte = static_cast<char>(random.Between(0, 255));
  }
  if (TakeFault(FaultKind::Short, NextSheet())) data.resize(data.size() / 2);
  std::string record = (TakeFault(FaultKind::NoLineFeed, NextSheet()) ? "" : "\n") + data + "\r";
  if (TakeFault(FaultKind::TwoByteEnd, NextSheet())) record += '\n';
  if (const auto cut = TakeFault(FaultKind::Cut, NextSheet())) {
    record.resize(std::min(cut->byte, record.size() - 1));
  }
  return record;
}

}  // namespace tesk::simulator
