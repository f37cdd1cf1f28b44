// The scanner's side of the OMR-1100's wire. A person puts in one sheet after the other.
//
//   host     DC2 command DC2 "E"
//   scanner  "G" CR                     taken
//   scanner  the command up to what it refuses, "?" CR
//
//   "I00"    binary mode; before it the scanner reads sheets and says nothing of them
//   ESC "E"  feed on: sheets are taken in, and each one's record is sent
//   ESC "D"  feed off
//
// It hears nothing while its transport runs.
#include "simulator/Chatsworth.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr std::int32_t kRows = 12;  // of a card; columns of a side
constexpr std::int32_t kMostColumns = 126;
constexpr std::int16_t kDarkest = 1;  // a mark or none
constexpr Milliseconds kNextByHand{
    1000};                             // where the host leaves the feed on, until the next sheet is put in
constexpr Milliseconds kLeaving{100};  // from the end of a sheet's record until the transport stands still

constexpr std::array kChatsworthFaults{
    FaultKind::Silence,   FaultKind::Garbage,     FaultKind::Short,           FaultKind::Cut,
    FaultKind::Late,      FaultKind::TooManyRows, FaultKind::SilenceIdentify, FaultKind::GarbageIdentify,
    FaultKind::NoVersion, FaultKind::CutIdentify,
};

bool Has(teskReaderType reader) { return reader == teskReaderTypeChatsworthOMR1100; }

Media MediaOf(teskReaderType /*reader*/) { return {kDarkest, {50, kRows, false}}; }

std::unique_ptr<SheetScanner> Create(teskReaderType /*reader*/, Options options) {
  return std::make_unique<Chatsworth>(std::move(options));
}

// Half a column: six rows, of which the last one is bit 6; bit 5 is always set.
char HalfColumn(const SideArray& side, std::int32_t column, std::int32_t firstRow) {
  constexpr std::array<int, 6> kBits{1, 2, 4, 8, 16, 64};
  int byte = 32;
  for (std::size_t i = 0; i < kBits.size(); ++i) {
    const std::int32_t row = firstRow + static_cast<std::int32_t>(i);
    if (row <= side.Columns() && side.At(column, row) > 0) byte |= kBits.at(i);
  }
  return static_cast<char>(byte);
}

}  // namespace

constinit const Family kChatsworthFamily{&Has, kChatsworthFaults, &MediaOf, &Create};

void Chatsworth::OnByte(std::uint8_t byte, Time now) {
  if (Hears(now)) return EZData::OnByte(byte, now);
  Deafen();
}

// Lets time pass. A sheet that has been read leaves, and where the feed is on the next one is put in.
bool Chatsworth::Hears(Time now) {
  for (;;) {
    Settle(now);
    if (!Held()) return true;
    const Time left = due_ + kLeaving;
    if (now < left) return false;
    Release(Exit::Passed, {}, false, left);
    if (feeds_) FeedNext(left + kNextByHand);
  }
}

bool Chatsworth::OnCommand(const std::string& command, Time now) {
  const bool on = command == "\x1B\x45";
  if (command != "I00" && !on && command != "\x1B\x44") {
    Answer(command.substr(0, 1) + "?\r", now);
    return false;
  }
  if (on && TakeFault(FaultKind::Silence, NextSheet())) return true;
  if (!on && UnderWay() && command != "I00") Abandon();
  Answer("G\r", now);
  binary_ = binary_ || command == "I00";
  if (command == "I00" || on == feeds_) return true;
  feeds_ = on;
  if (on) FeedNext(now);
  return true;
}

void Chatsworth::FeedNext(Time now) {
  if (SheetsLeft() == 0) return;
  Begin(binary_ ? RecordOf(Upcoming()) : std::string(), now);
  due_ = DueOr(now);
}

std::string Chatsworth::RecordOf(const Sheet& sheet) {
  std::string data;
  for (std::int32_t column = 1; column <= std::min(sheet.side1.Rows(), kMostColumns); ++column) {
    data += HalfColumn(sheet.side1, column, 1);
    data += HalfColumn(sheet.side1, column, 1 + kRows / 2);
  }
  if (TakeFault(FaultKind::TooManyRows, NextSheet())) data.resize(2 * (kMostColumns + 1), ' ');
  if (TakeFault(FaultKind::Garbage, NextSheet())) {
    Random random(Settings().seed + static_cast<std::uint64_t>(NextSheet()));
    for (char& byte : data) byte = static_cast<char>(random.Between(0, 255));
  }
  if (TakeFault(FaultKind::Short, NextSheet())) data.resize(data.size() / 2 - data.size() / 2 % 2 + 1);
  std::string record = data + "\r";
  if (const auto cut = TakeFault(FaultKind::Cut, NextSheet())) {
    record.resize(std::min(cut->byte, record.size() - 1));
  }
  return record;
}

}  // namespace tesk::simulator
