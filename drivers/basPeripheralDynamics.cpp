// The VMR138. Commands are single characters; the scanner applies a threshold of its own and says of every
// position whether it is marked.
//
//   host     "0"                      start; then, as the status asks for them, "D", "G", "E"
//   host     "Q"                      status?
//   scanner  3 characters             2: status 1, 3: status 2
//   host     "+" | "-"                threshold one step up or down
//   scanner  2 hexadecimal digits     the threshold, 192 to 255
//   host     "8"                      read a sheet
//   scanner  LF row... CR             last row first; two bytes a row, columns 1 to 6 and 7 to 12, bit 1 first
//   host     "9"                      end of reading; also closes
//   host     "3" | "4"                reject or eject the sheet
//
// A record tells nowhere how many rows it has: the number of its bytes does, so the rows are placed when all of
// it is here.
#include "drivers/basPeripheralDynamics.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Driver.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "drivers/vmrRecord.h"
#include "engine/clsTeskReader.h"

namespace tesk::basPeripheralDynamics {
namespace {

struct Kept : SerialSession {
  RecordHabits habits;
};

SerialExchange Exchange(clsTeskReader& reader) { return {reader, reader.Kept<Kept>()}; }

constexpr std::string_view kStart = "0";
constexpr std::string_view kStatus = "Q";
constexpr std::string_view kThresholdUp = "+";
constexpr std::string_view kThresholdDown = "-";
constexpr std::string_view kReadSheet = "8";
constexpr std::string_view kEndReading = "9";
constexpr std::string_view kReject = "3";
constexpr std::string_view kEject = "4";

constexpr Milliseconds kAfterStart{500};
constexpr Milliseconds kAfterReject{1000};
constexpr Milliseconds kAfterEject{100};
constexpr std::int32_t kThresholdTimeOut = 1000;  // milliseconds

constexpr char kLineFeed = '\n';
constexpr char kCarriageReturn = '\r';

// ---- Messages

constexpr Message kThresholdSilence{"Threshold Initialization Error",
                                    "There was no response from the PDI scanner while initializing."};
constexpr Message kThresholdInvalid{
    "Threshold Initialization Error",
    "The PDI scanner returned an invalid threshold setting.  Please reset the "
    "scanner and retry."};
constexpr Message kStatusSilence{
    "Status Error",
    "The PDI scanner did not respond to a STATUS request.  Make sure the scanner is connected and powered "
    "on."};
constexpr Message kDataLoss{
    "Read Error",
    "An unexpected value was encountered while reading data.  Possible loss of data encountered during "
    "scanning process.  Try increasing the value of System Pause option."};

void ShowDataLoss(const clsTeskReader& reader) {
  ShowComposedMessage(kDataLoss.title, LoadString(kDataLoss.text) + "|" + LoadString("System Pause: ") +
                                           NumberText(reader.SleepTime()));
}

// ---- Status

constexpr std::size_t kStatusLength = 3;
constexpr std::int16_t kReadUnderWay = 32;  // status 1

// Status 1, in the order in which the bits are looked for; the first is shown.
constexpr struct {
  std::int16_t bit;
  Message message;
} kConditions[] = {
    {2,
     {"Status Error",
      "The PDI scanner reports a front sensor error.  Either a form is present or the scanner is improperly "
      "closed. Please clear any form from the front of the scanner and try again."}},
    {1,
     {"Status Error",
      "The PDI scanner reports a back sensor error.  Either a form is present or the scanner is improperly "
      "closed.  Please clear any form from inside the scanner and try again."}},
    {64,
     {"Status Error",
      "The PDI scanner reports a paper jam.  Clear the form from the paper transport and retry."}},
};

struct Status {
  std::int16_t first = 0;
  std::int16_t second = 0;
  bool begun = false;  // the line feed of a sheet that was under way came with the status, and was taken

  bool UnderWay() const { return (first & kReadUnderWay) != 0; }
};

// Whether nothing stands behind a status but, where a sheet is under way, the line feed of its record. A byte
// of something else in front would push one of the status's own there.
bool StandsAlone(SerialExchange& line, const std::string& text, Status& status) {
  if (!status.UnderWay()) return line.Tail("Q", text, Milliseconds(0)).empty() && !line.Surplus();
  if (!line.Follows()) return true;
  Bytes behind(1);
  status.begun = line.Take(behind) == Wait::Arrived && behind.Text()[0] == kLineFeed;
  return status.begun;
}

// Empty after a message or a cancel. More than a status is asked for once more.
std::optional<Status> AskStatus(SerialExchange& line) {
  for (int attempt = 1; attempt <= 2; ++attempt) {
    line.Ask(kStatus);
    line.Rest(5);
    Bytes answer(kStatusLength);
    const Wait wait = line.Take(answer);
    if (wait == Wait::Cancelled) return std::nullopt;
    if (wait == Wait::TimedOut) break;
    const std::string& text = answer.Text();
    Status status{static_cast<std::uint8_t>(text[1]), static_cast<std::uint8_t>(text[2])};
    if (StandsAlone(line, text, status)) return status;
    line.Session().outOfStep = true;
  }
  Show(kStatusSilence);
  return std::nullopt;
}

// Empty after a message or a cancel; after an error the sheet has been ejected.
std::optional<Status> CheckStatus(clsTeskReader& reader) {
  return Guarded("basPeripheralDynamics.CheckStatusPD", [&]() -> std::optional<Status> {
    SerialExchange line = Exchange(reader);
    line.Rest(5);
    const auto status = AskStatus(line);
    if (!status) return std::nullopt;
    for (const auto& condition : kConditions) {
      if ((status->first & condition.bit) == 0) continue;
      Show(condition.message);
      EjectPagePD(reader);
      return std::nullopt;
    }
    return status;
  });
}

// What the scanner still has to be told after its start.
void CompleteSetUp(SerialExchange& line, const Status& status) {
  if ((status.first & 16) != 0) line.Tell("D");
  if ((status.first & 4) != 0) line.Tell("G");
  if ((status.second & 8) == 0) return;
  line.Rest(2);
  line.Tell("E");
  line.Rest(2);
}

// ---- Threshold

constexpr std::size_t kThresholdLength = 2;

// The timer with an interval of its own; the engine's time-out is back at the end.
class ShortTimeOut {
 public:
  ShortTimeOut(OneShotTimer& timer, std::int32_t milliseconds) : timer_(timer), before_(timer.Interval()) {
    timer_.SetInterval(milliseconds);
  }
  ShortTimeOut(const ShortTimeOut&) = delete;
  ShortTimeOut& operator=(const ShortTimeOut&) = delete;
  ~ShortTimeOut() { timer_.SetInterval(before_); }

 private:
  OneShotTimer& timer_;
  std::int32_t before_;
};

// The value of an upper-case hexadecimal digit.
std::optional<std::int32_t> DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return std::nullopt;
}

// The threshold that the scanner answers with, 192 to 255; empty for anything else.
std::optional<std::int32_t> ThresholdOf(const std::string& answer) {
  if (answer.size() != kThresholdLength) return std::nullopt;
  const auto high = DigitValue(answer[0]);
  const auto low = DigitValue(answer[1]);
  if (!high || !low || *high < 12) return std::nullopt;
  return *high * 16 + *low;
}

// Empty after a message or a cancel.
std::optional<std::int32_t> AskThreshold(SerialExchange& line, Milliseconds pause) {
  line.Ask(kThresholdUp);
  line.Pause(pause * 5);
  const ShortTimeOut timeOut(line.Timer(), kThresholdTimeOut);
  Bytes answer(kThresholdLength);
  if (line.Take(answer, kEachPiece) == Wait::Cancelled) return std::nullopt;
  if (answer.Text().empty()) return Show(kThresholdSilence), std::nullopt;
  const auto threshold = ThresholdOf(answer.Text());
  // More than two digits: these need not be its own.
  if (threshold && !line.Follows()) return threshold;
  return Show(kThresholdInvalid), std::nullopt;
}

// False: cancelled.
bool Step(clsTeskReader& reader, SerialExchange& line, std::int32_t steps, Milliseconds pause) {
  const std::string_view command = steps > 0 ? kThresholdUp : kThresholdDown;
  for (std::int32_t left = steps > 0 ? steps : -steps; left > 0; --left) {
    line.Tell(command);
    reader.Loop().DoEvents(line.Port().Arrival());
    if (line.Cancelled()) return false;
    line.Clear();
    line.Pause(pause);
  }
  return true;
}

// Takes the answers to the steps, two characters each. A slow line may need longer for them than the time-out.
void DiscardAnswers(SerialExchange& line, std::int32_t steps) {
  const std::int64_t most = std::int64_t{kThresholdLength} * std::abs(std::int64_t{steps});
  for (std::int64_t turn = 0; turn < most && line.Follows(); ++turn) line.Clear();
  line.UntilQuiet();
}

// ---- Reading a sheet

// What came is no sheet, and nobody knows what comes next.
bool Refuse(const clsTeskReader& reader, SerialExchange& line) {
  line.Session().outOfStep = true;
  ShowDataLoss(reader);
  return false;
}

// No scanner or adaptor pauses so long within a record.
constexpr Milliseconds kLongSilence{1000};

// Whether more comes behind what may be the end. Where that may be marks, a cancel cuts the wait no shorter:
// half a sheet would pass for one that has arrived.
bool GoesOn(SerialExchange& line, const VmrRecord& record) {
  if (!record.EndMayBeData()) return line.Follows();
  const bool before = line.Session().outOfStep;
  const ShortTimeOut timeOut(line.Timer(), static_cast<std::int32_t>(kLongSilence.count()));
  const bool more = line.Await({Limits::Time::Answer, kLongSilence}) == Wait::Arrived;
  line.Session().outOfStep = before;
  return more;
}

// A host that cancels keeps a sheet that has arrived; one that still comes it gives up.
Wait TakeToItsEnd(SerialExchange& line, VmrRecord& record) {
  Wait wait = line.Take(record, kEachPiece);
  while (wait == Wait::Arrived && record.MayBeOver()) {
    const bool waits = line.Port().InBufferCount() > 0;
    if (!waits && !GoesOn(line, record)) return wait;
    if (!waits && line.Cancelled()) {
      line.Session().outOfStep = true;
      return Wait::Cancelled;
    }
    record.GoOn();
    wait = line.Take(record, kEachPiece);
  }
  return wait;
}

// False: cancelled, or shown.
bool TakeRows(clsTeskReader& reader, SerialExchange& line, VmrRecord& record) {
  const Wait wait = TakeToItsEnd(line, record);
  if (wait == Wait::Cancelled) return false;
  // A record that breaks off would otherwise be waited for until somebody cancels.
  if (wait == Wait::TimedOut || record.Damaged()) return Refuse(reader, line);
  reader.SetSide1TimingMarks(Narrow<std::int16_t>(record.Data().size() / 2));
  return true;
}

// Waits for a sheet, of which the line feed may have begun it already, and takes all of it. False: cancelled,
// or shown.
bool TakeSheet(clsTeskReader& reader, SerialExchange& line, bool begun, VmrRecord& record) {
  if (!begun) {
    Bytes first(1);
    if (line.Take(first, kForPerson) != Wait::Arrived) return false;
    const bool ends = first.Text()[0] == kCarriageReturn;
    if (ends ? line.Follows() : first.Text()[0] != kLineFeed) return Refuse(reader, line);
    // Compatibility: an ending alone is a sheet, of which no rows were counted.
    if (ends) return reader.SetSide1TimingMarks(-1), true;
  }
  line.Rest(5);
  return TakeRows(reader, line, record);
}

// The end of a reading, for which the scanner gets its time. False: something came behind the record, shown.
bool EndReading(clsTeskReader& reader, SerialExchange& line) {
  const Milliseconds pause(std::int64_t{5} * std::max(reader.SleepTime(), 0));
  line.Tell(kEndReading);
  line.Pause(std::max(pause, line.Moment()));
  return !line.Surplus() || Refuse(reader, line);
}

std::optional<Sheet> ReadSheet(clsTeskReader& reader, std::int16_t mark) {
  const auto status = CheckStatus(reader);
  if (!status) return std::nullopt;
  const auto kept = reader.Kept<Kept>();
  SerialExchange line(reader, kept);
  if (!status->UnderWay()) {
    // The next sheet stays where it is when nobody waits for it any more.
    if (reader.CancelScan()) return std::nullopt;
    line.Ask(kReadSheet);
    line.Rest(5);
  }
  VmrRecord record(kept->habits);
  if (!TakeSheet(reader, line, status->begun, record)) return std::nullopt;
  Sheet sheet;
  const auto misplaced = Attempt([&] { sheet.side1 = PlaceRows(record.Data(), mark); });
  if (misplaced ? !Refuse(reader, line) : !EndReading(reader, line)) return std::nullopt;
  record.Teach(kept->habits);
  return sheet;
}

}  // namespace

// ---- Starting and ending

bool InitReaderPD(clsTeskReader& reader) {
  return Guarded("basPeripheralDynamics.InitReaderPD", [&] {
    const auto kept = reader.Kept<Kept>();
    kept->Forget();
    kept->habits = {};
    SerialExchange line(reader, kept);
    line.Ask(kStart);
    line.Pause(kAfterStart);
    Status status;
    if (!CheckStatusPD(reader, status.first, status.second)) return false;
    CompleteSetUp(line, status);
    line.Clear();
    return SetRecThresholdPD(reader, reader.SleepTime());
  });
}

void CloseReaderPD(clsTeskReader& reader) {
  Guarded("basPeripheralDynamics.CloseReaderPD", [&] {
    SerialExchange line = Exchange(reader);
    if (line.Port().PortOpen()) line.Tell(kEndReading);
  });
}

bool SetRecThresholdPD(clsTeskReader& reader, std::int32_t pause) {
  return Guarded("basPeripheralDynamics.SetRecThresholdPD", [&] {
    SerialExchange line = Exchange(reader);
    const Milliseconds step(std::max(pause, 0));
    line.Pause(step * 5);
    const auto current = AskThreshold(line, step);
    if (!current) return false;
    const std::int32_t steps = reader.RecognitionThreshold() - *current;
    if (!Step(reader, line, steps, step)) return false;
    DiscardAnswers(line, steps);
    return true;
  });
}

// ---- Sheets

bool CheckStatusPD(clsTeskReader& reader, std::int16_t& status1, std::int16_t& status2) {
  const auto status = CheckStatus(reader);
  if (!status) return false;
  status1 = status->first;
  status2 = status->second;
  return true;
}

std::optional<Sheet> ReadPagePD(clsTeskReader& reader) {
  return Guarded("basPeripheralDynamics.ReadPagePD",
                 [&] { return ReadSheet(reader, Narrow<std::int16_t>(reader.RecognitionThreshold() + 1)); });
}

void RejectPagePD(clsTeskReader& reader) {
  Guarded("basPeripheralDynamics.RejectPagePD", [&] {
    SerialExchange line = Exchange(reader);
    line.Tell(kReject);
    line.Pause(kAfterReject);
  });
}

void EjectPagePD(clsTeskReader& reader) {
  Guarded("basPeripheralDynamics.EjectPagePD", [&] {
    SerialExchange line = Exchange(reader);
    line.Tell(kEject);
    line.Pause(kAfterEject);
  });
}

constinit const Driver kDriver = {
    .family = Family::PeripheralDynamics,
    .module = "basPeripheralDynamics",
    .initReader = InitReaderPD,
    // Compatibility: hosts are told that closing failed.
    .closeReader = [](clsTeskReader& r) { return CloseReaderPD(r), false; },
    .readPage = ReadPagePD,
    .rejectPage = [](clsTeskReader& r) { return RejectPagePD(r), true; },
    .ejectPage = [](clsTeskReader& r) { return EjectPagePD(r), true; },
};

}  // namespace tesk::basPeripheralDynamics
