// Finding the end of a record, and placing its rows.
#include "drivers/vmrRecord.h"

#include <algorithm>

namespace tesk::basPeripheralDynamics {
namespace {

constexpr char kLineFeed = '\n';
constexpr char kCarriageReturn = '\r';
constexpr std::size_t kLongestRecord = 0xFFFF;  // bytes; a count of more rows has no room
constexpr std::uint8_t kFlag = 64;              // alone: no marks; some scanners add it to marks too
constexpr std::uint8_t kMarks = 63;             // one bit a position

bool HasFlag(char byte) { return (static_cast<std::uint8_t>(byte) & kFlag) != 0; }
bool ShowsFlag(char byte) { return HasFlag(byte) && (static_cast<std::uint8_t>(byte) & kMarks) != 0; }
bool LooksLikeEnd(char byte) { return byte == kCarriageReturn || byte == kLineFeed; }

// The length of the ending in bytes where `bytes` may be a whole record: full rows, and behind them a carriage
// return, alone or in a pair of line ends. 0: they are none.
std::size_t EndingOf(std::string_view bytes) {
  if (bytes.empty()) return 0;
  const char last = bytes.back();
  if (bytes.size() % 2 == 1) return last == kCarriageReturn ? 1 : 0;
  const char before = bytes[bytes.size() - 2];
  const bool pair = LooksLikeEnd(before) && LooksLikeEnd(last);
  return pair && (before == kCarriageReturn || last == kCarriageReturn) ? 2 : 0;
}

}  // namespace

void VmrRecord::Take(std::uint8_t value) {
  const char byte = static_cast<char>(value);
  bytes_ += byte;
  if (bytes_.size() > kLongestRecord) {
    now_ = Now::Damaged;
  } else if (end_ || (!known_.bare && LooksLikeEnd(byte))) {
    now_ = AtEnd();
  } else {
    known_.flags |= ShowsFlag(byte);
    known_.bare |= !HasFlag(byte);
    now_ = Ended() ? Now::MayBeOver : Now::Begun;
  }
}

bool VmrRecord::Ended() const {
  const std::size_t ending = EndingOf(bytes_);
  return ending != 0 && (known_.ending == 0 || ending == known_.ending);
}

// From what looks like the first byte of the ending on. Where nothing shows yet that the scanner adds bit 64,
// more bytes than an ending has make that byte data.
VmrRecord::Now VmrRecord::AtEnd() {
  if (!end_) end_ = bytes_.size() - 1;
  const std::size_t length = bytes_.size() - *end_;
  const bool fullRows = *end_ % 2 == 0;
  const bool ended = Ended();
  if (length <= 2 && fullRows && ended) {
    return known_.ending != 0 && known_.flags ? Now::Over : Now::MayBeOver;
  }
  if (!known_.flags) return length > 2 && ended ? Now::MayBeOver : Now::Begun;
  const bool half = length == 1 && fullRows && known_.ending != 1;
  return half ? Now::Begun : Now::Damaged;
}

bool VmrRecord::EndMayBeData() const {
  return !known_.flags && (known_.rows == 0 || Data().size() / 2 != known_.rows);
}

bool VmrRecord::Damaged() const {
  const bool flags = known_.flags || std::ranges::any_of(Data(), ShowsFlag);
  return now_ == Now::Damaged || (flags && std::ranges::any_of(Data(), LooksLikeEnd));
}

std::string_view VmrRecord::Data() const {
  return std::string_view(bytes_).substr(0, bytes_.size() - EndingOf(bytes_));
}

void VmrRecord::Teach(RecordHabits& known) const {
  if (bytes_.empty()) return;
  known.ending = EndingOf(bytes_);
  known.rows = std::max(known.rows, Data().size() / 2);
  known.flags |= std::ranges::any_of(Data(), ShowsFlag);
  known.bare |= !std::ranges::all_of(Data(), HasFlag);
}

SideArray PlaceRows(std::string_view data, std::int16_t mark) {
  constexpr std::int32_t kColumnsPerByte = 6;
  constexpr std::uint8_t kNoMarks = kFlag;
  SideArray side(500, 14);
  auto row = static_cast<std::int32_t>(data.size() / 2);
  bool secondHalf = false;
  for (const char half : data) {
    const auto byte = static_cast<std::uint8_t>(half);
    for (std::int32_t i = 0; byte != kNoMarks && i < kColumnsPerByte; ++i) {
      if ((byte >> i & 1) != 0) side.At(row, (secondHalf ? kColumnsPerByte : 0) + i + 1) = mark;
    }
    if (secondHalf) --row;
    secondHalf = !secondHalf;
  }
  return side;
}

}  // namespace tesk::basPeripheralDynamics
