// The grammar of control sequences, and what most terminals send.
#include "setup/terminal/TerminalKeys.h"

#include <algorithm>
#include <iterator>

#include "setup/terminal/Curses.h"

namespace tesk {
namespace {

using Duration = KeyDecoder::Duration;

// A sequence may come in pieces over a slow line: what follows an Escape within this time is no Escape key.
constexpr Duration kEscapePatience(300);
constexpr Duration kSequencePatience(500);

constexpr char kStart = kEscape;
constexpr char kBell = 7;
constexpr std::string_view kPasteBegin = "\x1b[200~";
constexpr std::string_view kPasteEnd = "\x1b[201~";
constexpr std::size_t kMouseReport = 3;  // bytes behind "ESC [ M"
// Added to the character: pasted text is typed where text is taken, and presses nothing.
constexpr int kPasted = 1 << 20;

struct CommonKey {
  std::string_view sequence;
  int key;
};

// The numeric keypad sends digits in its own mode, too.
constexpr CommonKey kCommonKeys[] = {
    {"\x1b[A", KEY_UP},      {"\x1b[B", KEY_DOWN},   {"\x1b[C", KEY_RIGHT}, {"\x1b[D", KEY_LEFT},
    {"\x1bOA", KEY_UP},      {"\x1bOB", KEY_DOWN},   {"\x1bOC", KEY_RIGHT}, {"\x1bOD", KEY_LEFT},
    {"\x1b[H", KEY_HOME},    {"\x1b[F", KEY_END},    {"\x1bOH", KEY_HOME},  {"\x1bOF", KEY_END},
    {"\x1b[1~", KEY_HOME},   {"\x1b[4~", KEY_END},   {"\x1b[7~", KEY_HOME}, {"\x1b[8~", KEY_END},
    {"\x1b[5~", KEY_PPAGE},  {"\x1b[6~", KEY_NPAGE}, {"\x1b[3~", KEY_DC},   {"\x1b[Z", KEY_BTAB},
    {"\x1b[21~", KEY_F(10)}, {"\x1bOM", KEY_ENTER},  {"\x1bOk", '+'},       {"\x1bOm", '-'},
    {"\x1bOn", '.'},         {"\x1bOp", '0'},        {"\x1bOq", '1'},       {"\x1bOr", '2'},
    {"\x1bOs", '3'},         {"\x1bOt", '4'},        {"\x1bOu", '5'},       {"\x1bOv", '6'},
    {"\x1bOw", '7'},         {"\x1bOx", '8'},        {"\x1bOy", '9'},
};

bool IsPrintable(int key) { return key >= kBlank && key < 127; }
bool IsBetween(char c, char first, char last) { return c >= first && c <= last; }

// Behind "ESC [", from `at`. 0: not finished.
std::size_t ControlExtent(std::string_view bytes, std::size_t at) {
  const std::size_t begin = at;
  // The Linux console's F1 to F5.
  if (at < bytes.size() && bytes[at] == '[') return at + 1 < bytes.size() ? at + 2 : 0;
  for (; at < bytes.size(); ++at) {
    // A terminal of the rxvt kind ends its keys with Shift so; elsewhere it stands before the end.
    const bool shifted = bytes[at] == '$' && at > begin && bytes[begin] != '?';
    if (shifted || IsBetween(bytes[at], '@', '~')) return at + 1;
    if (!IsBetween(bytes[at], ' ', '?')) return at;  // broken off
  }
  return 0;
}

// Behind "ESC O".
std::size_t ShiftExtent(std::string_view bytes, std::size_t at) {
  while (at < bytes.size() && (IsBetween(bytes[at], '0', '9') || bytes[at] == ';')) ++at;
  if (at == bytes.size()) return 0;
  return IsBetween(bytes[at], ' ', '~') ? at + 1 : at;
}

// A terminal's answer to somebody's question: up to a bell or "ESC \".
std::size_t StringExtent(std::string_view bytes, std::size_t at) {
  const std::size_t end = bytes.find_first_of(std::string{kBell, kStart}, at);
  if (end == std::string_view::npos) return 0;
  if (bytes[end] == kBell) return end + 1;
  if (end + 1 == bytes.size()) return 0;
  return bytes[end + 1] == '\\' ? end + 2 : end;
}

}  // namespace

bool IsEnter(int key) { return key == '\n' || key == '\r' || key == KEY_ENTER; }
bool IsBackspace(int key) { return key == KEY_BACKSPACE || key == 127 || key == '\b'; }

char TextOf(int key) {
  const int character = key & ~kPasted;
  return key > 0 && IsPrintable(character) ? static_cast<char>(character) : '\0';
}

void KeyDecoder::Describe(const std::string& sequence, int key) {
  if (sequence.size() > 1 && sequence.front() == kStart) described_[sequence] = key;
}

void KeyDecoder::Receive(std::string_view bytes, TimePoint now) {
  if (bytes.empty()) return;
  waiting_ += bytes;
  last_ = now;
}

int KeyDecoder::Next(TimePoint now) {
  while (!waiting_.empty()) {
    const std::size_t extent = Extent();
    if (extent == 0) return now - last_ < Allowed() ? ERR : GiveUp();
    const std::string sequence = waiting_.substr(0, extent);
    waiting_.erase(0, extent);
    const int key = pasting_ ? PastedKeyOf(sequence) : KeyOf(sequence);
    if (key != ERR) return key;
  }
  // The end of what is pasted may have been lost.
  if (now - last_ >= kSequencePatience) pasting_ = false;
  return ERR;
}

KeyDecoder::Duration KeyDecoder::Patience(TimePoint now, Duration atMost) const {
  if (waiting_.empty()) return atMost;
  const auto left = std::chrono::ceil<Duration>(last_ + Allowed() - now);
  return std::clamp(left, Duration::zero(), atMost);
}

bool KeyDecoder::IsLoneEscape() const { return waiting_.find_first_not_of(kStart) == std::string::npos; }

Duration KeyDecoder::Allowed() const { return IsLoneEscape() ? kEscapePatience : kSequencePatience; }

int KeyDecoder::GiveUp() {
  const bool isKey = IsLoneEscape() && !pasting_;
  waiting_.clear();
  return isKey ? kEscape : ERR;
}

// Of the first key among what waits, in bytes; 0 while it is not finished.
std::size_t KeyDecoder::Extent() const {
  if (waiting_.front() != kStart) return 1;
  return pasting_ ? PastedExtent() : SequenceExtent();
}

std::size_t KeyDecoder::PastedExtent() const {
  if (waiting_.starts_with(kPasteEnd)) return kPasteEnd.size();
  return kPasteEnd.starts_with(waiting_) ? 0 : 1;
}

// A second Escape in front stands for Alt with a key that has a sequence.
std::size_t KeyDecoder::SequenceExtent() const {
  const std::size_t at = waiting_.find_first_not_of(kStart);
  if (at == std::string::npos) return 0;
  switch (waiting_[at]) {
    case '[': {
      const std::size_t end = ControlExtent(waiting_, at + 1);
      const bool mouse = end == at + 2 && waiting_[end - 1] == 'M' && !described_.contains("\x1b[M");
      if (!mouse) return end;
      return waiting_.size() < end + kMouseReport ? 0 : end + kMouseReport;
    }
    case 'O':
      return ShiftExtent(waiting_, at + 1);
    case ']':
    case 'P':
    case 'X':
    case '^':
    case '_':
      return StringExtent(waiting_, at + 1);
    default:
      return at + 1;
  }
}

int KeyDecoder::KeyOf(const std::string& sequence) {
  if (sequence.size() == 1) return static_cast<unsigned char>(sequence[0]) < 128 ? sequence[0] : ERR;
  if (sequence == kPasteBegin) pasting_ = true;
  if (const auto own = described_.find(sequence); own != described_.end()) return own->second;
  const auto common = std::ranges::find(kCommonKeys, sequence, &CommonKey::sequence);
  return common == std::end(kCommonKeys) ? ERR : common->key;
}

int KeyDecoder::PastedKeyOf(const std::string& sequence) {
  if (sequence == kPasteEnd) pasting_ = false;
  return sequence.size() == 1 && IsPrintable(sequence[0]) ? kPasted | sequence[0] : ERR;
}

}  // namespace tesk
