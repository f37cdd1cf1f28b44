// The OMR-1100. A person puts in one sheet after the other; the scanner says of every position whether it is marked.
//
//   host     DC2 command DC2 "E"      a download: "I00" binary mode, ESC "E" feed on, ESC "D" feed off
//   scanner  "G" CR                   taken; else the command up to what it refuses, "?" CR
//   scanner  column... CR             a sheet, while the feed is on; two bytes a column, bit 5 set in each
//
// The scanner hears nothing while its transport runs. The feed is switched on for one sheet alone, and the answer to
// switching it off proves that the record in front of it was over: no byte of a record can be taken for that answer.
#include "drivers/basChatsworth.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Driver.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "engine/clsTeskReader.h"

namespace tesk::basChatsworth {
namespace {

// What the family keeps between calls.
struct Kept : SerialSession {
  bool feeds = true;  // or may do so: an earlier host may have left the feed on
};

constexpr std::string_view kBinaryMode = "I00";
constexpr std::string_view kFeedOn = "\x1B\x45";
constexpr std::string_view kFeedOff = "\x1B\x44";
constexpr std::string_view kTaken = "G\r";
constexpr std::string_view kRefusal = "?\r";
constexpr char kCarriageReturn = '\r';
constexpr std::size_t kLongestAnswer = 8;

std::string Framed(std::string_view command) { return "\x12" + std::string(command) + "\x12" + "E"; }

// ---- Messages

constexpr Message kSilence{"No Response", "There was no response from the Chatsworth scanner."};
constexpr Message kSheetSilence{"No Response",
                                "There was no response from the scanner while scanning a page."};
constexpr Message kRefused{"Scanner Error",
                           "The Chatsworth scanner refused a command.  Please reset the scanner and retry."};
constexpr Message kDataLoss{"Read Error",
                            "The Chatsworth scanner sent something else than one whole sheet.  Please scan "
                            "again every sheet that it has taken "
                            "since the last one that was read."};

// ---- Downloads

enum class Answer { Taken, Refused, Sheet, Silence, Cancelled };

// How a command is said again while the scanner may not hear it.
struct Repetition {
  Milliseconds every;
  Milliseconds most;      // gives up after so long,
  Milliseconds grace{0};  // or so long after its beginning once the host has cancelled
};

// The next sheet must not be quicker.
constexpr Milliseconds kBetweenSheets{100};
constexpr Milliseconds kStopping{500};

Milliseconds TimeOutOf(const SerialExchange& line) { return Milliseconds(line.Timer().Interval()); }

// Without the acknowledgements at its beginning: what was said twice may be answered twice.
std::string_view WithoutTaken(std::string_view bytes) {
  while (bytes.starts_with(kTaken)) bytes.remove_prefix(kTaken.size());
  return bytes;
}

Answer TakeAnswer(SerialExchange& line, bool repeated, Milliseconds every) {
  // Answers to what was repeated follow one another as quickly as it was said.
  constexpr Milliseconds kMargin{200};
  BytesOrLine answer(kLongestAnswer, kCarriageReturn);
  const Wait wait = line.Take(answer, kDespiteCancel);
  if (wait != Wait::Arrived) return wait == Wait::Cancelled ? Answer::Cancelled : Answer::Silence;
  const std::string all = answer.Text() + (repeated ? line.UntilQuiet(every + kMargin) : std::string());
  if (WithoutTaken(all).empty()) return Answer::Taken;
  return all.ends_with(kRefusal) && all.size() < kLongestAnswer ? Answer::Refused : Answer::Sheet;
}

// Says a command until the scanner answers. What comes instead, or stood in front of it, is a sheet that nobody took.
Answer Say(SerialExchange& line, std::string_view command, const Repetition& repetition) {
  const std::string frame = Framed(command);
  const TimePoint start = line.Now();
  if (!WithoutTaken(line.Ask(frame)).empty()) return Answer::Sheet;
  bool repeated = false;
  for (; !line.Follows(repetition.every); repeated = true) {
    const auto since = line.Now() - start;
    if (line.Cancelled() && since >= repetition.grace) return Answer::Cancelled;
    if (since >= repetition.most) return Answer::Silence;
    line.Tell(frame);
  }
  return TakeAnswer(line, repeated, repetition.every);
}

Answer Download(SerialExchange& line, std::string_view command, const Repetition& repetition) {
  const Answer answer = Say(line, command, repetition);
  if (answer != Answer::Taken) line.Session().outOfStep = true;
  return answer;
}

// True where the scanner has taken the command; else whatever went wrong but a cancel is shown.
bool Taken(Answer answer) {
  if (answer == Answer::Silence) Show(kSilence);
  if (answer == Answer::Refused) Show(kRefused);
  if (answer == Answer::Sheet) Show(kDataLoss);
  return answer == Answer::Taken;
}

// ---- The feed

// Tries to switch the feed off, for nobody would take the next sheet.
void StopFeed(SerialExchange& line, Kept& kept) {
  kept.feeds = Download(line, kFeedOff, {kBetweenSheets, kStopping, kStopping}) != Answer::Taken;
}

// False: cancelled, or shown.
bool StartFeed(SerialExchange& line, Kept& kept) {
  kept.feeds = true;
  // Said once: a sheet's record may come right behind the answer.
  return Taken(Download(line, kFeedOn, {TimeOutOf(line), TimeOutOf(line)}));
}

// Switches the feed off, however long a sheet takes to leave. False: cancelled, or shown.
bool EndFeed(SerialExchange& line, Kept& kept) {
  // What follows a record right away belongs to it, or to a second one.
  const Answer answer =
      line.Surplus() ? Answer::Sheet : Download(line, kFeedOff, {kBetweenSheets, TimeOutOf(line), kStopping});
  kept.feeds = answer != Answer::Taken;
  return Taken(answer);
}

// ---- A sheet

constexpr std::int32_t kMostColumns = 126;
constexpr std::int32_t kRows = 12;  // of the sheet: columns of the array
constexpr std::size_t kBytesPerColumn = 2;

// The bytes of a sheet up to the carriage return: seven bits each, of which bit 5 is always set.
class Record : public Shape {
 public:
  std::size_t Missing() const override { return ended_ || damaged_ ? 0 : 1; }
  void Take(std::uint8_t byte) override {
    ended_ = byte == static_cast<std::uint8_t>(kCarriageReturn);
    if (ended_) return;
    damaged_ = byte > kAllSeven || (byte & kAlwaysSet) == 0 || data_.size() >= kLongest;
    data_ += static_cast<char>(byte);
  }
  // Ended, and of one to the most columns, none of them by half.
  bool IsWhole() const { return ended_ && !data_.empty() && data_.size() % kBytesPerColumn == 0; }
  std::string_view Data() const { return data_; }

 private:
  static constexpr std::uint8_t kAlwaysSet = 0x20;
  static constexpr std::uint8_t kAllSeven = 0x7F;
  static constexpr std::size_t kLongest = kMostColumns * kBytesPerColumn;

  std::string data_;
  bool ended_ = false;
  bool damaged_ = false;
};

SideArray PlaceColumns(std::string_view data, std::int16_t mark) {
  // Of the first byte of a column; the second one's are six rows further on.
  constexpr std::uint8_t kBits[] = {1, 2, 4, 8, 16, 64};
  constexpr auto kHalf = static_cast<std::int32_t>(std::size(kBits));
  SideArray side(static_cast<std::int32_t>(data.size() / kBytesPerColumn), kRows);
  for (std::size_t i = 0; i < data.size(); ++i) {
    const auto column = static_cast<std::int32_t>(i / kBytesPerColumn) + 1;
    const std::int32_t before = i % kBytesPerColumn == 0 ? 0 : kHalf;
    for (std::int32_t bit = 0; bit < kHalf; ++bit) {
      if ((static_cast<std::uint8_t>(data[i]) & kBits[bit]) != 0) side.At(column, before + bit + 1) = mark;
    }
  }
  return side;
}

// False: cancelled, or shown.
bool TakeRecord(clsTeskReader& reader, SerialExchange& line, Record& record) {
  const Wait came = line.Await(reader.Feeder() ? Limits{} : kForPerson);
  if (came == Wait::TimedOut) Show(kSheetSilence);
  if (came != Wait::Arrived) return false;
  const Wait wait = line.Take(record, kEachPiece);
  if (wait == Wait::Arrived && record.IsWhole()) return true;
  line.Session().outOfStep = true;
  if (wait != Wait::Cancelled) Show(kDataLoss);
  return false;
}

std::optional<Sheet> ReadSheet(clsTeskReader& reader, std::int16_t mark) {
  const auto kept = reader.Kept<Kept>();
  SerialExchange line(reader, kept);
  Record record;
  // The answer to switching the feed off shows that the record was whole.
  if (!StartFeed(line, *kept) || !TakeRecord(reader, line, record) || !EndFeed(line, *kept)) {
    StopFeed(line, *kept);
    return std::nullopt;
  }
  Sheet sheet;
  sheet.side1 = PlaceColumns(record.Data(), mark);
  reader.SetSide1TimingMarks(Narrow<std::int16_t>(sheet.side1.Rows()));
  return sheet;
}

}  // namespace

bool InitReaderCT(clsTeskReader& reader) {
  return Guarded("basChatsworth.InitReaderCT", [&] {
    const auto kept = reader.Kept<Kept>();
    kept->Forget();
    SerialExchange line(reader, kept);
    // A sheet that an earlier host's feed has taken must not pass for the first one.
    return EndFeed(line, *kept) && Taken(Download(line, kBinaryMode, {kUnusualPause, TimeOutOf(line)}));
  });
}

void CloseReaderCT(clsTeskReader& reader) {
  Guarded("basChatsworth.CloseReaderCT", [&] {
    const auto kept = reader.Kept<Kept>();
    SerialExchange line(reader, kept);
    if (line.Port().PortOpen() && kept->feeds) StopFeed(line, *kept);
  });
}

std::optional<Sheet> ReadPageCT(clsTeskReader& reader) {
  return Guarded("basChatsworth.ReadPageCT", [&] {
    const auto mark = Narrow<std::int16_t>(reader.RecognitionThreshold() + 1);
    // A mark that looks like none would make every sheet a blank one.
    if (mark < 1) throw InvalidCall();
    return ReadSheet(reader, mark);
  });
}

constinit const Driver kDriver = {
    .family = Family::Chatsworth,
    .module = "basChatsworth",
    .initReader = InitReaderCT,
    .closeReader = [](clsTeskReader& reader) { return CloseReaderCT(reader), true; },
    .readPage = ReadPageCT,
    .rejectPage = [](clsTeskReader&) { return false; },
    .ejectPage = [](clsTeskReader&) { return false; },
};

}  // namespace tesk::basChatsworth
