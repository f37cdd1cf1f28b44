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
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Message.h"
#include "drivers/SerialExchange.h"
#include "engine/clsTeskReader.h"
#include "transport/basUtils.h"

namespace tesk::basScantron {
namespace {

// What the family keeps between calls: what to take from a data byte to get its value. Set by every form
// download.
struct Kept {
  std::int16_t dataOffset = 0;
} kept;

constexpr char kCarriageReturn = '\r';
constexpr std::int32_t kValuesPerRow = 48;    // of every model, whatever the form's column count
constexpr std::size_t kLongestImprint = 125;  // characters

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
// Kept: the three differ in blanks and the final full stop.
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

// Waits for the first byte of an answer. A time-out is shown where there is a message for it; a cancel never.
bool Answered(SerialExchange& line, const Message* silence) {
  const Wait wait = line.ForBytes();
  if (wait == Wait::TimedOut && silence != nullptr) Show(*silence);
  return wait == Wait::Arrived;
}

bool IsAcknowledgement(const std::string& reply) { return !reply.empty() && reply[0] == kCarriageReturn; }

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
    kept.dataOffset = dialect_.dataOffset;
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

// Asks for the record; empty after a message or a cancel. `tail` is what came behind it.
std::string AskStatus(SerialExchange& line, std::string& tail) {
  line.Ask(Command("QSTS"));
  if (!Answered(line, &kStatusSilence)) return {};
  const Wait whole = line.ForBytes(kStatusLength);
  if (whole == Wait::TimedOut) Show(kStatusSilence);
  if (whole != Wait::Arrived) return {};
  std::string record;
  while (record.size() < kStatusLength) record += static_cast<char>(line.TakeByte().value());
  tail = line.TakeReply();
  return record;
}

bool IsLineEnd(const std::string& text) { return text.find_first_not_of("\r\n") == std::string::npos; }

std::int32_t DecodeStatus(const std::string& record) {
  const char statusClass = record[1];
  if (statusClass == '0') return DecodeFlags(static_cast<unsigned char>(record[8]));
  if (statusClass == '1' && record[2] == ' ') Show(kTimingLine);
  if (statusClass == '2') {
    // Kept: the number is the code of the class character itself, so it is always 50.
    ShowComposedMessage(kCommandError.title, LoadString(kCommandError.text) + NumberText(statusClass));
  }
  return -1;
}

// ---- Reading a sheet

// The values of one sheet as they come off the line, until a carriage return ends them.
class Values {
 public:
  explicit Values(SerialExchange& line) : line_(line), offset_(kept.dataOffset) {
    line_.Timer().SetEnabled(true);
  }

  // The next value; empty once the data has ended or the wait for it failed, which has been shown.
  std::optional<std::int16_t> Next() {
    while (!ended_ && !failed_) {
      if (const auto byte = line_.TakeByte()) {
        if (*byte != kCarriageReturn) return static_cast<std::int16_t>(*byte - offset_);
        ended_ = true;
      } else if (line_.Cancelled()) {
        failed_ = true;
      } else if (!line_.Timer().Enabled()) {
        Show(kDataSilence);
        failed_ = true;
      } else {
        line_.Poll();
      }
    }
    return std::nullopt;
  }

  bool Ended() const { return ended_; }
  bool Failed() const { return failed_; }

  // Takes what is left of a record that holds more than anybody asked for, its end included, so that it is
  // not taken for the next answer.
  void SkipRest() {
    while (!ended_ && line_.Timer().Enabled() && !line_.Cancelled() && line_.FollowsWithoutGap()) {
      ended_ = line_.TakeByte() == static_cast<std::uint8_t>(kCarriageReturn);
    }
    line_.Timer().SetEnabled(false);
  }

 private:
  SerialExchange& line_;
  std::int16_t offset_;
  bool ended_ = false;
  bool failed_ = false;
};

struct Sides {
  SideArray side1;
  SideArray side2;  // empty where side 2 is not read
};

// Waits until the scanner has a sheet; without a feeder for as long as it takes a person to insert one.
bool SheetReady(clsTeskReader& reader, SerialExchange& line) {
  std::int32_t status = CheckStatusST(reader);
  while (status == 0 && !reader.Feeder()) {
    line.Poll();
    if (reader.CancelScan()) return false;
    status = CheckStatusST(reader);
  }
  return status > 0;
}

// Feeds a sheet and hands its values to `store`; then checks how the sheet fared and hands the sides over.
template <class Store>
bool ReadSheet(clsTeskReader& reader, const Message& silence, Store store) {
  SerialExchange line(reader);
  line.Clear();
  if (!SheetReady(reader, line)) return false;
  const bool hold = reader.Rejecter() || ImprinterActive(reader);
  line.Ask(Command(hold ? "READ 5 Y E" : "READ 5 Y"));
  if (!Answered(line, &silence)) return false;

  Values values(line);
  Sides sides;
  store(values, sides);
  if (values.Failed()) return false;
  values.SkipRest();
  if (CheckStatusST(reader) == -1) return false;
  line.Clear();
  reader.SetSide1Array(std::move(sides.side1));
  reader.SetSide2Array(std::move(sides.side2));
  return true;
}

// Stores values row by row, as many rows as `lastRow` allows; `counted` is told each row that got a value.
void FillSide(Values& values, SideArray& side, std::int32_t lastRow,
              void (clsTeskReader::*counted)(std::int16_t), clsTeskReader& reader) {
  for (std::int32_t row = 1; row <= lastRow; ++row) {
    for (std::int32_t column = 1; column <= kValuesPerRow; ++column) {
      const auto value = values.Next();
      if (!value) return;
      side.At(row, column) = *value;
      (reader.*counted)(Narrow<std::int16_t>(row));
    }
  }
}

void FillPage(clsTeskReader& reader, Values& values, Sides& sides) {
  sides.side1 = SideArray(reader.Side1RowExtent(), reader.Side1ColExtent());
  FillSide(values, sides.side1, reader.Side1RowExtent(), &clsTeskReader::SetSide1TimingMarks, reader);
  if (!reader.DuplexForm() || reader.Side2RowExtent() < 1 || values.Ended() || values.Failed()) return;
  sides.side2 = SideArray(reader.Side2RowExtent(), reader.Side2ColExtent());
  // Kept: side 2 has no row limit of its own; a row beyond its extent is an error.
  FillSide(values, sides.side2, std::numeric_limits<std::int32_t>::max(), &clsTeskReader::SetSide2TimingMarks,
           reader);
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

// False once the data has ended.
bool FillWindow(Values& values, SideArray& side, const clsTeskReaderWindow& window) {
  const Walk rows = WalkOf(window.StartRow(), window.NumRows(), window.RowGap());
  const Walk columns = WalkOf(window.StartCol(), window.NumCols(), window.ColGap());
  const bool byColumn = window.Orientation() == 0;
  const Walk& outer = byColumn ? columns : rows;
  const Walk& inner = byColumn ? rows : columns;
  for (std::int16_t i = 0; i < outer.count; ++i) {
    for (std::int16_t j = 0; j < inner.count; ++j) {
      const auto value = values.Next();
      if (!value) return false;
      const std::int32_t row = byColumn ? inner.At(j) : outer.At(i);
      const std::int32_t column = byColumn ? outer.At(i) : inner.At(j);
      side.At(row, column) = *value;
    }
  }
  return true;
}

void FillWindows(clsTeskReader& reader, const std::vector<clsTeskReaderWindow>& windows, Values& values,
                 Sides& sides) {
  sides.side1 = SideArray(reader.Side1RowExtent(), reader.Side1ColExtent());
  bool onSide2 = false;
  for (const clsTeskReaderWindow& window : windows) {
    // Kept: from the first window of a page above 1 on, every window is stored in side 2.
    if (!onSide2 && window.Page() > 1) {
      onSide2 = true;
      sides.side2 = SideArray(reader.Side2RowExtent(), reader.Side2ColExtent());
    }
    if (!FillWindow(values, onSide2 ? sides.side2 : sides.side1, window)) return;
  }
}

// ---- Imprint

std::string ImprintText(const clsTeskReader& reader) {
  if (!ImprinterActive(reader)) return {};
  const auto blanks = static_cast<std::size_t>(std::max<std::int16_t>(reader.Printer()->Distance(), 0));
  return (std::string(blanks, ' ') + WireText(reader.Printer()->Buffer1())).substr(0, kLongestImprint);
}

}  // namespace

// ---- Starting and ending

bool InitReaderST(clsTeskReader& reader) {
  return Guarded("basScantron.InitReaderST", [&] {
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
    SerialExchange line(reader);
    if (!line.Port().PortOpen()) return true;
    line.Ask(Command("SRST"));
    if (!Answered(line, &kResetSilence)) return false;
    if (IsAcknowledgement(line.TakeReply())) return true;
    Show(kResetRefused);
    return false;
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
    SerialExchange line(reader);
    line.Ask(command);
    return Answered(line, nullptr) && IsAcknowledgement(line.TakeReply());
  });
}

// ---- Sheets

std::int32_t CheckStatusST(clsTeskReader& reader) {
  return Guarded(
      "basScantron.CheckStatusST",
      [&]() -> std::int32_t {
        SerialExchange line(reader);
        std::string tail;
        std::string record = AskStatus(line, tail);
        // More than a record: its beginning was a late answer to something else. Taken as it stands it
        // would be misread, and its end taken for the first mark of the sheet.
        if (!record.empty() && !IsLineEnd(tail)) record = AskStatus(line, tail);
        return record.empty() || !IsLineEnd(tail) ? -1 : DecodeStatus(record);
      },
      -1);
}

bool ReadPageST(clsTeskReader& reader) {
  const bool read = Guarded("basScantron.ReadPageST", [&] {
    reader.SetSide1TimingMarks(0);
    reader.SetSide2TimingMarks(0);
    return ReadSheet(reader, kPageSilence,
                     [&](Values& values, Sides& sides) { FillPage(reader, values, sides); });
  });
  if (!read) ClearBufferST(reader);
  return read;
}

bool ReadWindowsST(clsTeskReader& reader) {
  const bool read = Guarded("basScantron.ReadWindowsST", [&] {
    const auto windows = WindowsOf(reader);
    return ReadSheet(reader, kWindowsSilence,
                     [&](Values& values, Sides& sides) { FillWindows(reader, windows, values, sides); });
  });
  if (!read) ClearBufferST(reader);
  return read;
}

bool RejectPageST(clsTeskReader& reader, bool reject) {
  return Guarded("basScantron.RejectPageST", [&] {
    SerialExchange line(reader);
    // No acknowledgement is awaited for the imprinter.
    if (reject) line.Tell(Command("PRN$ 1 N "));
    line.Tell(Command(reject ? "EJCT C" : "EJCT A " + ImprintText(reader)));
    if (!Answered(line, &kEjectSilence)) return false;
    line.TakeReply();
    // Gives the sheet time to leave before the next read.
    if (reject) line.Rest(15);
    line.Clear();
    return true;
  });
}

void ClearBufferST(clsTeskReader& reader) {
  // Ignored: the fault that matters is the one that led here.
  static_cast<void>(Attempt([&] { basUtils::DiscardInput(*Deref(reader.fComm()).mscComm()); }));
}

}  // namespace tesk::basScantron
