// The state machine over the bytes of an OpScan record.
#include "drivers/opscanRecord.h"

#include "base/conversions.h"
#include "transport/basUtils.h"

namespace tesk::basNCS {
namespace {

constexpr std::int32_t kRows = 150;
constexpr std::int32_t kColumns = 48;  // mark positions, and bytes of a line
constexpr std::uint8_t kNak = 21;
constexpr std::uint8_t kLineFeed = 10;
constexpr std::uint8_t kCarriageReturn = 13;
constexpr std::int32_t kRunBase = 64;
constexpr std::size_t kTextPrefix = 2;         // characters before each text
constexpr std::size_t kLongestRecord = 65536;  // bytes; two full sides have 14700

bool IsEnd(std::uint8_t byte) { return byte == kCarriageReturn || byte == kLineFeed; }

}  // namespace

OpScanRecord::OpScanRecord(bool twoSided) : twoSided_(twoSided), lineBytes_(kColumns) {
  sheet_.side1 = SideArray(kRows, kColumns);
  if (twoSided) sheet_.side2 = SideArray(kRows, kColumns);
  sheet_.texts = {"?"};
}

std::optional<WrongLength> OpScanRecord::Take(std::uint8_t byte) {
  if (++taken_ > kLongestRecord) throw basUtils::SendsWithoutEnd();
  if (run_ != Run::None) {
    TakeInRun(byte);
  } else if (byte == kNak) {
    run_ = Run::Count;
  } else if (state_ == State::Marks) {
    return TakeInMarks(byte);
  } else {
    TakeInText(byte);
  }
  return std::nullopt;
}

std::optional<WrongLength> OpScanRecord::TakeInMarks(std::uint8_t byte) {
  if (byte == 'a') return TakeMarker(1);
  if (byte == 'b') return TakeMarker(2);
  if (byte == 'c') {
    state_ = State::Text;
    hasText_ = true;
    sheet_.texts.back().clear();
  } else if (IsEnd(byte)) {
    state_ = State::Ended;
  } else {
    Repeat(byte, 1);
  }
  return std::nullopt;
}

// Compatibility: the line that a marker ends is reported under the marker's side, so that the first "b" reports the
// last line of side 1 as one of side 2.
std::optional<WrongLength> OpScanRecord::TakeMarker(std::int32_t side) {
  std::int16_t& lines = lines_[side - 1];
  std::optional<WrongLength> wrong;
  if (lineBytes_ != kColumns) wrong = WrongLength{side, lineBytes_, lines};
  side_ = side;
  lines = Narrow<std::int16_t>(lines + 1);
  lineBytes_ = 0;
  return wrong;
}

void OpScanRecord::TakeInText(std::uint8_t byte) {
  if (byte == 'd') {
    sheet_.texts.back().erase(0, kTextPrefix);
    sheet_.texts.emplace_back();
  } else if (IsEnd(byte)) {
    state_ = State::Ended;
    // What follows the last "d" is no line.
    if (sheet_.texts.size() > 1) sheet_.texts.pop_back();
  } else {
    Repeat(byte, 1);
  }
}

void OpScanRecord::TakeInRun(std::uint8_t byte) {
  const bool counting = run_ == Run::Count;
  if (counting ? byte < kRunBase : byte < ' ') {
    // No scanner sends a run of less than nothing, or one of ends.
    broken_ = true;
    state_ = State::Ended;
  } else if (counting) {
    runLength_ = byte - kRunBase;
    run_ = Run::Character;
  } else {
    run_ = Run::None;
    Repeat(byte, runLength_);
  }
}

void OpScanRecord::Repeat(std::uint8_t character, std::int32_t times) {
  if (state_ == State::Text) {
    std::string& text = sheet_.texts.back();
    if (times > 0) text.append(static_cast<std::size_t>(times), static_cast<char>(character));
    // In front of every line, a text that is as long as one has the marks in it.
    if (Lines() == 0 && sheet_.texts.size() == 1 && text.size() >= kColumns) broken_ = true;
    return;
  }
  // Mark positions before any line began belong to another answer, and move all that follow.
  if (Lines() == 0) broken_ = true;
  lineBytes_ += times;
  markBytes_ += times;
  if (side_ == 2 && !twoSided_) return;
  for (std::int32_t i = 0; i < times; ++i) StoreMark(character);
}

std::size_t OpScanRecord::Lines() const {
  return static_cast<std::size_t>(lines_[0]) + static_cast<std::size_t>(lines_[1]);
}

WrongLength OpScanRecord::WrongEnd(std::size_t behind) const {
  return {side_, lineBytes_ + Narrow<std::int32_t>(behind), lines_[side_ - 1]};
}

Sheet OpScanRecord::Result() const {
  Sheet sheet = sheet_;
  sheet.side1TimingMarks = lines_[0];
  if (twoSided_) sheet.side2TimingMarks = lines_[1];
  return sheet;
}

void OpScanRecord::StoreMark(std::uint8_t character) {
  SideArray& side = side_ == 1 ? sheet_.side1 : sheet_.side2;
  Cursor& at = at_[side_ - 1];
  // Characters between "9" and "A" stand for a position without a value.
  if (character <= '9') side.At(at.row, at.column) = static_cast<std::int16_t>(character - '0');
  if (character >= 'A') side.At(at.row, at.column) = static_cast<std::int16_t>(character - 'A' + 10);
  if (++at.column <= kColumns) return;
  side.At(at.row, kColumns) = 0;  // Compatibility: the last column is blank whatever was sent for it
  at.column = 1;
  ++at.row;
}

}  // namespace tesk::basNCS
