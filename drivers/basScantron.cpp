// The ScanMark family. The host downloads a form before any sheet is read; the scanner then sends one
// darkness value per mark position.
//
//   host     ESC SRST CR                    reset
//   scanner  CR ...                         a line that begins with CR acknowledges
//   host     ESC FRM=FS 50 0 48 N N N CR    form: one sheet definition ...
//   host     ESC FRM=DK 1 1 1 50 48 L 50 48 CR
//   host     ESC FRM=LS CR                  ... end of form; each command is acknowledged as above
//   host     ESC QSTS CR                    is a sheet there?
//   scanner  12 characters                  2: class, 3: detail, 9: flags (64 jam, 16 double feed, 1 ready)
//   host     ESC READ 5 Y E CR              read, and hold the sheet (without E: let it go on)
//   scanner  values ... CR                  one byte per mark position
//   host     ESC EJCT A text CR             send the held sheet on (EJCT C: to the reject exit)
#include "drivers/basScantron.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Driver.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "engine/clsTeskReader.h"
#include "transport/basUtils.h"

namespace tesk::basScantron {
namespace {

// What the family keeps between calls: what to take from a data byte to get its value. Set by every form
// download.
struct Kept : SerialSession {
  std::int16_t dataOffset = 0;
};

SerialExchange Exchange(clsTeskReader& reader) { return {reader, reader.Kept<Kept>()}; }

constexpr char kCarriageReturn = '\r';
constexpr std::int32_t kValuesPerRow = 48;    // of every model, whatever the form's column count
constexpr std::size_t kLongestImprint = 125;  // characters
constexpr std::int64_t kMostPlaces = 100000;  // of a window; more than any sheet has

// How long the transport may take to a second acknowledgement behind a reject.
constexpr Milliseconds kTransportPatience{1500};

// ---- Models that differ from the others

struct Dialect {
  std::int16_t dataOffset;  // raw values, or characters from "0" on
  bool hasThreshold;        // takes "THR="
  bool markColumns;         // whole sides as "MC" with a mask, else as "DK"
};

constexpr Dialect kCharacterValues{'0', false, false};
constexpr Dialect kRawValues{0, true, true};
constexpr std::array kRawModels = {teskReaderTypeScantron8000, teskReaderTypeScantron8400};

const Dialect& DialectOf(teskReaderType type) {
  return std::ranges::find(kRawModels, type) != kRawModels.end() ? kRawValues : kCharacterValues;
}

// ---- Messages

constexpr Message kResetSilence{"No Response",
                                "There was no response from the Scantron scanner. Could not initialize!"};
constexpr Message kResetRefused{
    "Reset Error",
    "An error occurred trying to reset the Scantron scanner.  Please power the scanner off and on and retry "
    "the operation."};
constexpr Message kStatusSilence{"Initialize Error",
                                 "There was no response from the Scantron scanner. Could not initialize!"};
constexpr Message kPaperJam{"Paper Jam",
                            "The Scantron scanner reports a paper jam. Please clear the jam and try again."};
constexpr Message kDoubleFeed{"Double Feed",
                              "The Scantron scanner reports a double feed. Please rescan the page."};
constexpr Message kTimingLine{
    "Initialize Error",
    "The Scantron scanner reported a timing line error. Make sure that the form corresponds to the open "
    "template and that it was not skewed when scanning. Please rescan."};
constexpr Message kCommandError{"Command Error", "Your Scantron scanner reported a command error. Error #"};
constexpr Message kPageSilence{
    "Read Error",
    "There was no response from the Scantron scanner. The scanner timed out waiting for scanned data."};
constexpr Message kWindowsSilence{
    "Read Error",
    "There was no response from the Scantron scanner. The scanner timed out waiting for the scanned data."};
constexpr Message kDataSilence{"Read Error",
                               "There was no response from the Scantron scanner. The scanner timed out "
                               "waiting to receive the scanned data."};
constexpr Message kEjectSilence{"Eject Page Error",
                                "There was no response from the Scantron scanner. Could not eject the page!"};

constexpr const char* kDownloadTitle = "Initialize Error";
constexpr const char* kThresholdRefused =
    "An error occurred trying to download the form definition to the Scantron scanner when issuing the "
    "scanner threshold command.";
constexpr const char* kFormStartRefused =
    "An error occurred trying to download the form definition to the Scantron scanner when issuing the form "
    "start command.";
constexpr const char* kFormEndRefused =
    "An error occurred trying to download the form definition to the Scantron scanner while issuing the end "
    "of form command.";
// Compatibility: the three differ in blanks and the final full stop.
constexpr const char* kSide1Refused =
    "An error occurred trying to download the form definition to the Scantron scanner.  Invalid sheet "
    "definition.";
constexpr const char* kSide2Refused =
    "An error occurred trying to download the form definition to the Scantron scanner.  Invalid sheet "
    "definition";
constexpr const char* kSide2WindowRefused =
    "An error occurred trying to download the form definition to the Scantron scanner. Invalid sheet "
    "definition";

// ---- Sending and waiting

std::string Command(std::string_view text) { return "\x1b" + std::string(text) + kCarriageReturn; }

// Waits for an answer. A time-out is shown where there is a message for it; a cancel never.
bool Answered(SerialExchange& line, Shape& answer, const Message* silence, const Limits& limits = {}) {
  const Wait wait = line.Take(answer, limits);
  if (wait == Wait::TimedOut && silence != nullptr) Show(*silence);
  return wait == Wait::Arrived;
}

// Sends a command whose answer is decided by its first byte; whatever line follows that is the answer's own. A
// scanner acknowledges all commands alike: what stands behind the first tells what to await behind the others.
// Empty after a cancel or a time-out.
std::optional<bool> Acknowledged(SerialExchange& line, const std::string& command, const Message* silence) {
  line.Ask(command);
  Bytes first(1);
  if (!Answered(line, first, silence)) return std::nullopt;
  line.Tail("acknowledgement", command + first.Text());
  return first.Text()[0] == kCarriageReturn;
}

bool ImprinterActive(const clsTeskReader& reader) { return reader.Printer() && reader.Printer()->Active(); }

// Copies of the engine's read windows: the host may change its own while a command waits.
std::vector<clsTeskReaderWindow> WindowsOf(const clsTeskReader& reader) {
  const clsTeskReaderWindows& list = Deref(reader.Windows());
  std::vector<clsTeskReaderWindow> windows;
  for (std::int32_t position = 1; position <= list.Count(); ++position) {
    windows.push_back(Deref(list.Item(position)));
  }
  return windows;
}

// ---- Form download

// The positions of a window along one axis, low to high.
struct Span {
  std::int16_t first;
  std::int16_t last;
};

Span SpanOf(std::int16_t start, std::int16_t count, std::int16_t gap) {
  const auto end = Narrow<std::int16_t>(std::int32_t{start} + std::int32_t{count} * gap - gap);
  return gap > 0 ? Span{start, end} : Span{end, start};
}

std::string WindowFields(const clsTeskReaderWindow& window) {
  const Span rows = SpanOf(window.StartRow(), window.NumRows(), window.RowGap());
  const Span columns = SpanOf(window.StartCol(), window.NumCols(), window.ColGap());
  std::string fields = NumberText(rows.first) + " " + NumberText(columns.first) + " " +
                       NumberText(rows.last) + " " + NumberText(columns.last) + " ";
  const bool byLine = window.Orientation() == 1;
  return fields + (byLine ? "L " : "C ") + NumberText(byLine ? window.NumRows() : window.NumCols()) + " " +
         NumberText(byLine ? window.NumCols() : window.NumRows());
}

// The command for a whole side of r x c mark positions.
std::string WholeSide(const Dialect& dialect, int side, std::int16_t r, std::int16_t c) {
  const std::string extent = NumberText(r) + " " + NumberText(c);
  const std::string region = "1 1 " + extent + " L " + extent;
  if (!dialect.markColumns) return "FRM=DK " + NumberText(side) + " " + region;
  if (c < 0) throw InvalidCall();
  return "FRM=MC Y N 1 " + NumberText(side) + " " + region + " " +
         std::string(static_cast<std::size_t>(c), '1');
}

// One download, from copies of the geometry and the windows.
class Download {
 public:
  explicit Download(clsTeskReader& reader)
      : reader_(reader),
        dialect_(DialectOf(reader.ReaderType())),
        twoSided_(reader.TwoSided()),
        windowMode_(reader.RecognitionMode() != teskRecognitionTypePage),
        side1Rows_(reader.Side1Rows()),
        side1Cols_(reader.Side1Cols()),
        side2Rows_(reader.Side2Rows()),
        side2Cols_(reader.Side2Cols()) {
    if (windowMode_) windows_ = WindowsOf(reader);
  }

  bool Run() {
    reader_.Kept<Kept>()->dataOffset = dialect_.dataOffset;
    const std::string threshold = "THR= " + NumberText(reader_.RecognitionThreshold());
    if (dialect_.hasThreshold && !Send(threshold, kThresholdRefused)) return false;
    for (std::int32_t sheet = 1; sheet <= side1Rows_.UpperBound(); ++sheet) {
      if (!Send(FormStart(sheet), kFormStartRefused)) return false;
      if (!Side1(sheet)) return false;
      if (twoSided_ && !Side2(sheet)) return false;
    }
    return Send("FRM=LS", kFormEndRefused);
  }

 private:
  bool Send(const std::string& text, const char* refusal) {
    if (SendCommandST(reader_, Command(text))) return true;
    if (!reader_.CancelScan()) ShowMessage(kDownloadTitle, refusal);
    return false;
  }

  // As Send, for a region: the refusal says which one.
  bool SendRegion(const std::string& text, const char* refusal, std::int32_t sheet,
                  const std::string& where) {
    if (SendCommandST(reader_, Command(text))) return true;
    if (!reader_.CancelScan()) {
      ShowComposedMessage(kDownloadTitle, LoadString(refusal) + "|" + LoadString("Sheet: ") +
                                              NumberText(sheet) + "|" + where);
    }
    return false;
  }

  std::string FormStart(std::int32_t sheet) const {
    const std::string side2 = twoSided_ ? NumberText(side2Rows_.At(sheet)) : "0";
    return "FRM=FS " + NumberText(side1Rows_.At(sheet)) + " " + side2 + " " +
           NumberText(side1Cols_.At(sheet)) + " N N N";
  }

  bool Side1(std::int32_t sheet) {
    const std::string where = LoadString("Side: 1");
    if (!windowMode_) {
      const std::int16_t rows = side1Rows_.At(sheet);
      return rows <= 0 ||
             SendRegion(WholeSide(dialect_, 1, rows, side1Cols_.At(sheet)), kSide1Refused, sheet, where);
    }
    return std::ranges::all_of(windows_, [&](const clsTeskReaderWindow& window) {
      return window.Page() > 1 || SendRegion("FRM=DK 1 " + WindowFields(window), kSide1Refused, sheet, where);
    });
  }

  bool Side2(std::int32_t sheet) {
    const std::string where = LoadString("Side: 2");
    if (!windowMode_) {
      const std::int16_t rows = side2Rows_.At(sheet);
      return rows <= 0 ||
             SendRegion(WholeSide(dialect_, 2, rows, side2Cols_.At(sheet)), kSide2Refused, sheet, where);
    }
    std::int32_t position = 0;
    return std::ranges::all_of(windows_, [&](const clsTeskReaderWindow& window) {
      ++position;
      const std::string field = where + "|" + LoadString("Field: ") + NumberText(position);
      return window.Page() != 2 ||
             SendRegion("FRM=DK 2 " + WindowFields(window), kSide2WindowRefused, sheet, field);
    });
  }

  clsTeskReader& reader_;
  const Dialect& dialect_;
  bool twoSided_;
  bool windowMode_;
  Int16Array side1Rows_;
  Int16Array side1Cols_;
  Int16Array side2Rows_;
  Int16Array side2Cols_;
  std::vector<clsTeskReaderWindow> windows_;
};

// ---- Status

constexpr std::size_t kStatusLength = 12;
constexpr unsigned kFlagJam = 64;
constexpr unsigned kFlagDoubleFeed = 16;
constexpr unsigned kFlagReady = 1;

std::int32_t DecodeFlags(unsigned flags) {
  if ((flags & kFlagJam) != 0) return Show(kPaperJam), -1;
  if ((flags & kFlagDoubleFeed) != 0) return Show(kDoubleFeed), -1;
  return static_cast<std::int32_t>(flags & kFlagReady);
}

enum class Asked { BeforeSheet, AfterSheet };

struct Status {
  std::string record;  // empty after a message or a cancel
  bool alone = false;  // nothing but line ends came around it
};

// Where the record is one that came before, what stood behind it is known and nothing else is waited for. A
// byte of something else in front would have made it another record, which the silence behind it shows.
Status AskStatus(SerialExchange& line, Asked asked) {
  const bool after = asked == Asked::AfterSheet;
  // Where every value had come, the sheet's own end may have come late; before a sheet it is nobody's.
  const bool clean = IsLineEnd(line.Ask(Command("QSTS"))) || !after;
  Bytes record(kStatusLength);
  if (!Answered(line, record, &kStatusSilence, after ? kDespiteCancel : Limits())) return {};
  // The records of a scanner are all of one length: a byte more is of something else, whatever it is.
  const std::size_t usual = line.Session().TailLengths("QSTS").longest;
  const std::string tail = line.Tail("QSTS", record.Text());
  return {record.Text(), clean && IsLineEnd(tail) && tail.size() <= usual && !line.Surplus()};
}

std::int32_t DecodeStatus(const std::string& record) {
  const char statusClass = record[1];
  if (statusClass == '0') return DecodeFlags(static_cast<unsigned char>(record[8]));
  if (statusClass == '1' && record[2] == ' ') Show(kTimingLine);
  if (statusClass == '2') {
    // Compatibility: the number is the code of the class character itself, so it is always 50.
    ShowComposedMessage(kCommandError.title, LoadString(kCommandError.text) + NumberText(statusClass));
  }
  return -1;
}

// -1: error, time-out, cancel or a status that nobody knows; else whether a sheet is ready.
std::int32_t CheckStatus(clsTeskReader& reader, Asked asked) {
  SerialExchange line = Exchange(reader);
  Status status = AskStatus(line, asked);
  if (!status.record.empty() && !status.alone) {
    // More than a record: its beginning was said about something else. Behind a sheet that can only have been
    // the sheet's own data.
    line.Session().Distrust();
    if (asked == Asked::AfterSheet) return Show(kDataSilence), -1;
    status = AskStatus(line, asked);
  }
  return status.alone ? DecodeStatus(status.record) : -1;
}

// ---- Reading a sheet

// Where a value goes; side is 1 or 2.
struct Place {
  int side;
  std::int32_t row;
  std::int32_t column;
};

// The values of one sheet as they come off the line: one for each place, then a carriage return. Fewer are a
// shorter sheet, which the carriage return ends.
class Values : public Shape {
 public:
  Values(clsTeskReader& reader, std::vector<Place> places)
      : reader_(reader),
        places_(std::move(places)),
        offset_(reader.Kept<Kept>()->dataOffset),
        pageMode_(reader.RecognitionMode() == teskRecognitionTypePage) {
    sheet_.side1 = SideArray(reader.Side1RowExtent(), reader.Side1ColExtent());
    BeginSide2();
  }

  std::size_t Missing() const override { return ended_ || surplus_ ? 0 : places_.size() - count_ + 1; }
  // Error 9 for a place outside its side.
  void Take(std::uint8_t byte) override {
    if (byte == kCarriageReturn) {
      ended_ = true;
    } else if (!Full()) {
      Store(byte);
    } else {
      // Compatibility: side 2 of a page has no limit of its own; a row beyond its extent is an error.
      if (pageMode_ && !places_.empty() && places_.back().side == 2) throw SubscriptOutOfRange();
      surplus_ = true;
    }
  }

  bool Full() const { return count_ == places_.size(); }
  // There were more values than places.
  bool Surplus() const { return surplus_; }
  bool Empty() const { return count_ == 0; }

  Sheet TakeSheet() {
    sheet_.missing = static_cast<std::int32_t>(places_.size() - count_);
    return std::move(sheet_);
  }

 private:
  void Store(std::uint8_t byte) {
    const Place& at = places_[count_++];
    SideArray& side = at.side == 1 ? sheet_.side1 : sheet_.side2;
    side.At(at.row, at.column) = static_cast<std::int16_t>(byte - offset_);
    if (pageMode_) CountRow(at);
    BeginSide2();
  }

  void CountRow(const Place& at) {
    const auto row = Narrow<std::int16_t>(at.row);
    at.side == 1 ? reader_.SetSide1TimingMarks(row) : reader_.SetSide2TimingMarks(row);
  }

  // Side 2 is there as soon as its values are due.
  void BeginSide2() {
    if (Full() || places_[count_].side == 1 || !sheet_.side2.Empty()) return;
    sheet_.side2 = SideArray(reader_.Side2RowExtent(), reader_.Side2ColExtent());
  }

  clsTeskReader& reader_;
  std::vector<Place> places_;
  std::int16_t offset_;
  bool pageMode_;
  std::size_t count_ = 0;
  bool ended_ = false;
  bool surplus_ = false;
  Sheet sheet_;
};

// The places of whole sides, row by row.
std::vector<Place> PlacesOfPage(const clsTeskReader& reader) {
  std::vector<Place> places;
  const auto add = [&](int side, std::int32_t rows) {
    for (std::int32_t row = 1; row <= rows; ++row) {
      for (std::int32_t column = 1; column <= kValuesPerRow; ++column) places.push_back({side, row, column});
    }
  };
  add(1, reader.Side1RowExtent());
  if (reader.DuplexForm()) add(2, reader.Side2RowExtent());
  return places;
}

// The positions of a window along one axis in the order in which the scanner sends them.
struct Walk {
  std::int16_t first;
  std::int16_t step;
  std::int16_t count;

  std::int32_t At(std::int16_t i) const { return first + std::int32_t{i} * step; }
};

Walk WalkOf(std::int16_t start, std::int16_t count, std::int16_t gap) {
  const std::int32_t first = gap > 0 ? start : start + (std::int32_t{count} - 1) * gap;
  return {Narrow<std::int16_t>(first), Narrow<std::int16_t>(std::abs(std::int32_t{gap})), count};
}

void AddWindow(std::vector<Place>& places, int side, const clsTeskReaderWindow& window) {
  const Walk rows = WalkOf(window.StartRow(), window.NumRows(), window.RowGap());
  const Walk columns = WalkOf(window.StartCol(), window.NumCols(), window.ColGap());
  const bool byColumn = window.Orientation() == 0;
  const Walk& outer = byColumn ? columns : rows;
  const Walk& inner = byColumn ? rows : columns;
  if (std::int64_t{outer.count} * inner.count > kMostPlaces) throw InvalidCall();
  for (std::int16_t i = 0; i < outer.count; ++i) {
    for (std::int16_t j = 0; j < inner.count; ++j) {
      places.push_back({side, byColumn ? inner.At(j) : outer.At(i), byColumn ? outer.At(i) : inner.At(j)});
    }
  }
}

std::vector<Place> PlacesOfWindows(const clsTeskReader& reader) {
  std::vector<Place> places;
  int side = 1;
  for (const clsTeskReaderWindow& window : WindowsOf(reader)) {
    // Compatibility: from the first window of a page above 1 on, every window is stored in side 2.
    if (window.Page() > 1) side = 2;
    AddWindow(places, side, window);
  }
  return places;
}

// Waits until the scanner has a sheet; without a feeder for as long as it takes a person to insert one.
bool SheetReady(clsTeskReader& reader) {
  SerialExchange line = Exchange(reader);
  std::int32_t status = CheckStatusST(reader);
  while (status == 0 && !reader.Feeder()) {
    line.Poll();
    if (reader.CancelScan()) return false;
    status = CheckStatusST(reader);
  }
  reader.SetHopperEmpty(status == 0);
  return status > 0;
}

// Takes the values and their end. False after a cancel, and after a message. What follows an end that came too
// early, a damaged value, stands in front of the scanner's next answer or waits already.
bool TakeValues(SerialExchange& line, Values& values) {
  const Wait wait = line.Take(values);
  if (wait == Wait::Cancelled) return false;
  // Where every place has its value, only the end can be missing.
  if (!values.Surplus() && (wait == Wait::Arrived || values.Full()) && !line.Surplus()) return true;
  line.Session().Distrust();
  return Show(kDataSilence), false;
}

// Feeds a sheet, takes its values, and checks how the sheet fared.
std::optional<Sheet> ReadSheet(clsTeskReader& reader, const Message& silence, std::vector<Place> places) {
  if (!SheetReady(reader)) return std::nullopt;
  SerialExchange line = Exchange(reader);
  const bool hold = reader.Rejecter() || ImprinterActive(reader);
  Values values(reader, std::move(places));
  line.Ask(Command(hold ? "READ 5 Y E" : "READ 5 Y"));
  const Wait began = line.Await();
  if (began == Wait::TimedOut) Show(silence);
  if (began != Wait::Arrived) return std::nullopt;
  if (!TakeValues(line, values)) return std::nullopt;
  if (CheckStatus(reader, Asked::AfterSheet) == -1) return std::nullopt;
  // Without a single value it is no sheet, whatever the scanner says.
  if (values.Empty()) return Show(kDataSilence), std::nullopt;
  return values.TakeSheet();
}

// ---- Imprint

std::string ImprintText(const clsTeskReader& reader) {
  if (!ImprinterActive(reader)) return {};
  const auto blanks = static_cast<std::size_t>(std::max<std::int16_t>(reader.Printer()->Distance(), 0));
  return (std::string(blanks, ' ') + WireText(reader.Printer()->Buffer1(), reader.DataBits()))
      .substr(0, kLongestImprint);
}

}  // namespace

// ---- Starting and ending

bool InitReaderST(clsTeskReader& reader) {
  return Guarded("basScantron.InitReaderST", [&] {
    reader.Kept<Kept>()->Forget();
    if (!ResetReaderST(reader)) return false;
    if (DownloadFormST(reader) && EnablePrinterST(reader)) return true;
    ResetReaderST(reader);
    return false;
  });
}

bool CloseReaderST(clsTeskReader& reader) {
  return Guarded("basScantron.CloseReaderST", [&] { return ResetReaderST(reader); });
}

bool ResetReaderST(clsTeskReader& reader) {
  return Guarded("basScantron.ResetReaderST", [&] {
    SerialExchange line = Exchange(reader);
    if (!line.Port().PortOpen()) return true;
    const auto acknowledged = Acknowledged(line, Command("SRST"), &kResetSilence);
    // After a cancel in the middle of a sheet, what came first may be the sheet's.
    const bool ofSheet = line.Cancelled() && line.Session().outOfStep;
    if (acknowledged == false && !ofSheet) Show(kResetRefused);
    return acknowledged == true;
  });
}

bool DownloadFormST(clsTeskReader& reader) {
  return Guarded("basScantron.DownloadFormST", [&] { return Download(reader).Run(); });
}

bool EnablePrinterST(clsTeskReader& reader) {
  return Guarded("basScantron.EnablePrinterST", [&] {
    return SendCommandST(reader, Command(ImprinterActive(reader) ? "PRN$ 1 Y" : "PRN$ 1 N"));
  });
}

bool SendCommandST(clsTeskReader& reader, std::string_view command) {
  return Guarded("basScantron.SendCommandST", [&] {
    SerialExchange line = Exchange(reader);
    return Acknowledged(line, std::string(command), nullptr) == true;
  });
}

// ---- Sheets

std::int32_t CheckStatusST(clsTeskReader& reader) {
  return Guarded(
      "basScantron.CheckStatusST", [&] { return CheckStatus(reader, Asked::BeforeSheet); }, -1);
}

std::optional<Sheet> ReadPageST(clsTeskReader& reader) {
  auto sheet = Guarded("basScantron.ReadPageST", [&] {
    reader.SetSide1TimingMarks(0);
    reader.SetSide2TimingMarks(0);
    return ReadSheet(reader, kPageSilence, PlacesOfPage(reader));
  });
  if (!sheet) ClearBufferST(reader);
  return sheet;
}

std::optional<Sheet> ReadWindowsST(clsTeskReader& reader) {
  auto sheet = Guarded("basScantron.ReadWindowsST",
                       [&] { return ReadSheet(reader, kWindowsSilence, PlacesOfWindows(reader)); });
  if (!sheet) ClearBufferST(reader);
  return sheet;
}

bool RejectPageST(clsTeskReader& reader, bool reject) {
  return Guarded("basScantron.RejectPageST", [&] {
    SerialExchange line = Exchange(reader);
    // No acknowledgement of its own is awaited for the imprinter; the transport's may come well behind it.
    if (reject) line.Ask(Command("PRN$ 1 N "));
    const std::string command = Command(reject ? "EJCT C" : "EJCT A " + ImprintText(reader));
    if (reject) {
      line.Tell(command);
    } else {
      line.Ask(command);
    }
    Bytes first(1);
    if (!Answered(line, first, &kEjectSilence)) return false;
    line.Tail(reject ? "EJCT C" : "EJCT A", first.Text(), reject ? kTransportPatience : kUnusualPause);
    // Gives the sheet time to leave before the next read.
    if (reject) line.Rest(15);
    return true;
  });
}

void ClearBufferST(clsTeskReader& reader) {
  // Ignored: the fault that matters is the one that led here.
  static_cast<void>(Attempt([&] { basUtils::DiscardInput(*Deref(reader.fComm()).mscComm()); }));
}

constinit const Driver kDriver = {
    .family = Family::ScanMark,
    .module = "basScantron",
    .initReader = InitReaderST,
    .closeReader = CloseReaderST,
    .readPage =
        [](clsTeskReader& r) {
          return r.RecognitionMode() == teskRecognitionTypePage ? ReadPageST(r) : ReadWindowsST(r);
        },
    .rejectPage = [](clsTeskReader& r) { return RejectPageST(r, r.Rejecter()); },
    .ejectPage = [](clsTeskReader& r) { return RejectPageST(r, false); },
};

}  // namespace tesk::basScantron
