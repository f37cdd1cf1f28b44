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
// A record tells nowhere how many rows it has: the first row number comes from counting what waits behind the
// line feed.
#include "drivers/basPeripheralDynamics.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Message.h"
#include "drivers/OldExchange.h"
#include "engine/clsTeskReader.h"

namespace tesk::basPeripheralDynamics {
namespace {

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
constexpr std::int32_t kThresholdLength = 2;

constexpr std::uint8_t kLineFeed = 10;
constexpr std::uint8_t kCarriageReturn = 13;

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

constexpr std::int32_t kStatusLength = 3;
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

// What the scanner still has to be told after its start.
void CompleteSetUp(OldExchange& line, std::int16_t status1, std::int16_t status2) {
  if ((status1 & 16) != 0) line.Tell("D");
  if ((status1 & 4) != 0) line.Tell("G");
  if ((status2 & 8) == 0) return;
  line.Rest(2);
  line.Tell("E");
  line.Rest(2);
}

// ---- Threshold

void Sleep(const clsTeskReader& reader, std::int64_t milliseconds) {
  if (milliseconds > 0) reader.Loop().Sleep(Milliseconds(milliseconds));
}

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
std::optional<std::int32_t> DigitValue(std::optional<std::uint8_t> digit) {
  if (!digit) return std::nullopt;
  if (*digit >= '0' && *digit <= '9') return *digit - '0';
  if (*digit >= 'A' && *digit <= 'F') return *digit - 'A' + 10;
  return std::nullopt;
}

// The threshold that the scanner answers with, 192 to 255; empty for anything else.
std::optional<std::int32_t> TakeThreshold(OldExchange& line) {
  const auto high = DigitValue(line.TakeByte());
  const auto low = DigitValue(line.TakeByte());
  if (!high || !low || *high < 12) return std::nullopt;
  return *high * 16 + *low;
}

// False: cancelled.
bool Step(clsTeskReader& reader, OldExchange& line, std::int32_t steps, std::int32_t pause) {
  const std::string_view command = steps > 0 ? kThresholdUp : kThresholdDown;
  for (std::int32_t left = steps > 0 ? steps : -steps; left > 0; --left) {
    line.Tell(command);
    reader.Loop().DoEvents(line.Port().Arrival());
    if (line.Cancelled()) return false;
    line.Clear();
    Sleep(reader, pause);
  }
  return true;
}

// ---- Reading a sheet

// The rows of one sheet as they come: from the last one up.
class Rows {
 public:
  explicit Rows(std::int16_t mark) : mark_(mark) {}

  void StartAt(std::int16_t row) {
    row_ = row;
    counted_ = true;
  }
  // More rows came than were counted: all of them have been placed too low.
  bool Overrun() const { return counted_ && row_ < 0; }
  bool Counted() const { return counted_; }
  // All the rows that were counted have been placed.
  bool Complete() const { return counted_ && row_ < 1 && !secondHalf_; }

  // Places one half of a row. Throws error 9 for a mark outside the array.
  void Place(std::uint8_t byte) {
    if (byte != kNoMarks) {
      for (std::int32_t i = 0; i < kColumnsPerByte; ++i) {
        if ((byte >> i & 1) != 0) side_.At(row_, (secondHalf_ ? kColumnsPerByte : 0) + i + 1) = mark_;
      }
    }
    if (secondHalf_) row_ = Narrow<std::int16_t>(row_ - 1);
    secondHalf_ = !secondHalf_;
  }

  SideArray& Side() { return side_; }

 private:
  static constexpr std::uint8_t kNoMarks = 64;
  static constexpr std::int32_t kColumnsPerByte = 6;

  SideArray side_{500, 14};
  std::int16_t mark_;
  std::int16_t row_ = 0;
  bool counted_ = false;
  bool secondHalf_ = false;
};

// Half of the bytes behind the line feed less two, rounded half up: the number of rows both where one
// carriage return ends the record and where two bytes do.
std::int16_t RowsIn(std::int32_t waiting) {
  return waiting == 0 ? std::int16_t{-1} : Narrow<std::int16_t>((waiting - 1) / 2);
}

// Takes the byte in front of the rows; rows are counted only behind a line feed.
void TakeFirst(clsTeskReader& reader, OldExchange& line, std::uint8_t byte, Rows& rows) {
  line.Rest(5);
  if (byte != kLineFeed) return;
  // On a slow line the record is not complete after the pause, and too low a count would move every row.
  const std::int16_t count = RowsIn(line.WaitingOnceQuiet());
  rows.StartAt(count);
  reader.SetSide1TimingMarks(count);
}

// Whether `byte`, behind the last row, begins an ending of two bytes: a carriage return and one more, or a
// line feed and a carriage return. Takes the second one.
bool EndsInTwo(OldExchange& line, std::uint8_t byte) {
  if (byte != kCarriageReturn && byte != kLineFeed) return false;
  if (line.Waiting() != 1) return false;
  const auto second = line.TakeByte();
  return (byte == kCarriageReturn || second == kCarriageReturn) && !line.FollowsWithoutGap();
}

// Takes one sheet from its first byte on. False: cancelled, or shown.
bool TakeSheet(clsTeskReader& reader, OldExchange& line, Rows& rows) {
  bool first = true;
  Wait wait = line.ForBytesWithoutLimit();
  for (; wait == Wait::Arrived && !line.Cancelled(); wait = line.ForBytes()) {
    const std::uint8_t byte = line.TakeByte().value();
    if (byte == kCarriageReturn && !line.FollowsWithoutGap()) {
      // What came without a line feed in front was never placed.
      const bool lost = rows.Overrun() || (!first && !rows.Counted());
      if (lost) ShowDataLoss(reader);
      return !lost;
    }
    if (first) {
      TakeFirst(reader, line, byte, rows);
    } else if (rows.Complete() && EndsInTwo(line, byte)) {
      return true;
    } else if (Attempt([&] { rows.Place(byte); })) {
      return ShowDataLoss(reader), false;
    }
    first = false;
  }
  // A record that breaks off would otherwise be waited for until somebody cancels.
  if (wait == Wait::TimedOut) ShowDataLoss(reader);
  return false;
}

}  // namespace

// ---- Starting and ending

bool InitReaderPD(clsTeskReader& reader) {
  return Guarded("basPeripheralDynamics.InitReaderPD", [&] {
    OldExchange line(reader);
    line.Port().SetInputLen(1);
    line.Ask(kStart);
    reader.Loop().Sleep(kAfterStart);
    std::int16_t status1 = 0;
    std::int16_t status2 = 0;
    if (!CheckStatusPD(reader, status1, status2)) return false;
    CompleteSetUp(line, status1, status2);
    line.Clear();
    return SetRecThresholdPD(reader, reader.SleepTime());
  });
}

void CloseReaderPD(clsTeskReader& reader) {
  Guarded("basPeripheralDynamics.CloseReaderPD", [&] {
    OldExchange line(reader);
    if (line.Port().PortOpen()) line.Tell(kEndReading);
  });
}

bool SetRecThresholdPD(clsTeskReader& reader, std::int32_t pause) {
  return Guarded("basPeripheralDynamics.SetRecThresholdPD", [&] {
    OldExchange line(reader);
    Sleep(reader, std::int64_t{pause} * 5);
    line.Ask(kThresholdUp);
    Sleep(reader, std::int64_t{pause} * 5);
    const ShortTimeOut timeOut(line.Timer(), kThresholdTimeOut);
    if (line.ForBytes(kThresholdLength) == Wait::Cancelled) return false;
    if (line.Waiting() == 0) return Show(kThresholdSilence), false;
    const auto current = TakeThreshold(line);
    if (!current) return Show(kThresholdInvalid), false;
    if (!Step(reader, line, reader.RecognitionThreshold() - *current, pause)) return false;
    line.ClearUntilQuiet();
    return true;
  });
}

// ---- Sheets

bool CheckStatusPD(clsTeskReader& reader, std::int16_t& status1, std::int16_t& status2) {
  return Guarded("basPeripheralDynamics.CheckStatusPD", [&] {
    OldExchange line(reader);
    line.Rest(5);
    line.Ask(kStatus);
    line.Rest(5);
    const Wait wait = line.ForBytes(kStatusLength);
    if (wait == Wait::TimedOut) Show(kStatusSilence);
    if (wait != Wait::Arrived) return false;
    line.TakeByte();
    status1 = line.TakeByte().value();
    status2 = line.TakeByte().value();
    for (const auto& condition : kConditions) {
      if ((status1 & condition.bit) == 0) continue;
      Show(condition.message);
      EjectPagePD(reader);
      return false;
    }
    return true;
  });
}

std::optional<Sheet> ReadPagePD(clsTeskReader& reader) {
  return Guarded("basPeripheralDynamics.ReadPagePD", [&]() -> std::optional<Sheet> {
    OldExchange line(reader);
    line.Clear();
    line.Port().SetInputLen(1);
    Rows rows(Narrow<std::int16_t>(reader.RecognitionThreshold() + 1));
    std::int16_t status1 = 0;
    std::int16_t status2 = 0;
    if (!CheckStatusPD(reader, status1, status2)) return std::nullopt;
    if ((status1 & kReadUnderWay) == 0) {
      line.Ask(kReadSheet);
      line.Rest(5);
    }
    if (!TakeSheet(reader, line, rows)) return std::nullopt;
    line.Tell(kEndReading);
    line.Rest(5);
    Sheet sheet;
    sheet.side1 = std::move(rows.Side());
    return sheet;
  });
}

void RejectPagePD(clsTeskReader& reader) {
  Guarded("basPeripheralDynamics.RejectPagePD", [&] {
    OldExchange(reader).Tell(kReject);
    reader.Loop().Sleep(kAfterReject);
  });
}

void EjectPagePD(clsTeskReader& reader) {
  Guarded("basPeripheralDynamics.EjectPagePD", [&] {
    OldExchange(reader).Tell(kEject);
    reader.Loop().Sleep(kAfterEject);
  });
}

}  // namespace tesk::basPeripheralDynamics
