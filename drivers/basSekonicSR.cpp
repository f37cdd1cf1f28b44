// The Sekonic USB family. No bytes pass through our hands: every step is a call into the maker's library.
//
//   once        OpenDeviceUSB   GetReadingMethod (SetReadingMethod)   GetNumberOfColumnsToRead (Set...)
//               SetBackSensorUnit   GetSheetFeedMode (Set...)   GetBarcodeReaderUnit (Set...)
//   per sheet   SetBarCodeArea (SetBarCodeReadType, SetBarCodeCheckDigit x 3)   where barcodes are wanted
//               GetNumberOfColumnsToRead   FeedSheet   GetLastError: 0, or what went wrong
//               GetMarks front   GetMarks back   where both sides are wanted
//               GetBarcodeInfo   GetBarcodeData x n   where barcodes are wanted
//               SetPrintOrder   SetPrintPosition   SetPrintString x 3   where the sheet is to be printed on
//               EjectSheet   to one of four stacker codes
//   at the end  CloseDevice
//
// A Set in brackets is made only where the Get before it says something else than what is wanted. FeedSheet
// returns once the sheet has been read: nothing can interrupt it.
#include "drivers/basSekonicSR.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "drivers/Driver.h"
#include "drivers/Message.h"
#include "drivers/sekonicErrors.h"
#include "engine/OmrLibrary.h"
#include "engine/clsTeskReader.h"

namespace tesk::basSekonicSR {
namespace {

constexpr std::int32_t kRows = 200;    // the most that a sheet has
constexpr std::int32_t kColumns = 48;  // the most, and what the set-up asks for
constexpr std::size_t kMarkBytes = std::size_t{kRows} * std::size_t{kColumns};
constexpr std::size_t kTextBytes = 256;          // of a barcode, its final zero included
constexpr std::size_t kInformationFields = 256;  // more than any barcode information takes
constexpr std::int32_t kMostBarcodes = 99;       // on one sheet; a library that reports more is not believed

// What the set-up wants.
constexpr std::int32_t kReadingMethod = 3;
constexpr std::int32_t kOtherReadingMethod = 0;  // deliberately left alone
constexpr std::int32_t kFeedMode = 0;
constexpr std::int32_t kBarcodeUnitOff = 0;
constexpr std::int32_t kBarcodeReadType = 23;
constexpr std::array<std::uint8_t, 3> kUncheckedCodes = {'a', 'b', 'c'};

// ---- Messages

constexpr const char* kInitTitle = "Initialization Error";
constexpr Message kOpenFailed{
    kInitTitle,
    "An error occurred opening the USB port. Make sure your cable is plugged in and "
    "the scanner has power."};
constexpr Message kGetMethodFailed{
    kInitTitle,
    "An error occurred trying to initialize the scanner settings. Cannot read (GetReadingMethod)."};
constexpr Message kSetMethodFailed{
    kInitTitle,
    "An error occurred trying to initialize the scanner settings. Cannot read (SetReadingMethod)."};
constexpr Message kSetColumnsFailed{
    kInitTitle,
    "An error occurred trying to initialize the scanner settings. Cannot read "
    "(SetNumberOfColumnsToRead)."};
constexpr Message kGetFeedModeFailed{
    kInitTitle,
    "An error occurred trying to initialize the scanner settings. Cannot read (GetSheetFeedMode)."};
constexpr Message kSetFeedModeFailed{
    kInitTitle,
    "An error occurred trying to initialize the scanner settings. Cannot read (SetSheetFeedMode)."};
constexpr Message kBarcodeUnitFailed{
    kInitTitle,
    "An error occurred trying to initialize the scanner settings. Cannot read "
    "(SetBarcodeReaderUnit)."};
constexpr Message kImprintFailed{
    "Print Error", "An error occurred trying to set up the imprinter. The sheet was not printed on."};

constexpr const char* kHostProduct = "Quillon";
constexpr const char* kMissingTitle = "Sekonic File Missing";
constexpr std::array kMissingLines = {
    "Please obtain the OMRAPI.DLL file from your Sekonic scanner installation CD-ROM, close {0} and then "
    "copy "
    "the DLL to your Windows\\System32 directory.",
    "If you don't have access to the installation media, please contact Sekonic or the Sekonic reseller from "
    "whom you purchased the scanner to obtain the DLL. Once the DLL is in place, try running {0} again.",
};

constexpr const char* kReadTitle = "Read Error";
constexpr const char* kNotBelievable =
    "The Sekonic library OMRAPI.DLL returned data that cannot be right. The page cannot be read.";

bool Fail(const Message& message) {
  ShowMessage(message.title, message.text);
  return false;
}

void ShowLibraryMissing(const clsTeskReader& reader) {
  const auto& loader = reader.OmrLoader();
  const std::string obstacle = loader ? loader->Obstacle() : "";
  std::string text;
  for (const char* line : kMissingLines) {
    text += (text.empty() ? "" : "|") + Replace(LoadString(line), "{0}", kHostProduct);
  }
  if (!obstacle.empty()) text += "|" + Replace(LoadString(obstacle), "{0}", kHostProduct);
  ShowComposedMessage(kMissingTitle, text);
}

// Tells what the library did that no library in order does.
void ReportBadAnswer(const std::string& what) {
  ShowComposedMessage(kReadTitle, LoadString(kNotBelievable) + "|" + what);
}

void ReportBadAnswer(const char* what, std::int32_t value) {
  ReportBadAnswer(LoadString(what) + NumberText(value));
}

void ReportOverrun() { ReportBadAnswer(LoadString("It wrote beyond the memory that it was given.")); }

// ---- Memory that the library writes to

// Room for the library, all 0, and behind it a strip that shows whether the library kept to its room.
template <class Item>
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t size) : size_(size), items_(size + kStrip, kUntouched) {
    std::fill_n(items_.begin(), size_, Item{});
  }

  std::span<Item> Room() { return std::span(items_).first(size_); }
  bool Kept() const {
    return std::all_of(items_.begin() + static_cast<std::ptrdiff_t>(size_), items_.end(),
                       [](Item item) { return item == kUntouched; });
  }

 private:
  static constexpr std::size_t kStrip = 4096;
  static constexpr Item kUntouched = 0x5A;

  std::size_t size_;
  std::vector<Item> items_;
};

// ---- Starting

// The library from a start on. The scanner is closed at the latest when the engine lets go of it.
struct ClosesScanner {
  std::shared_ptr<OmrLibrary> library;
  bool open = false;

  // Ignored: nobody is left to be told.
  void operator()(OmrLibrary*) const {
    if (open) static_cast<void>(Attempt([&] { library->OMR_CloseDevice(); }));
  }
};

std::shared_ptr<OmrLibrary> Load(const clsTeskReader& reader) {
  const auto& loader = reader.OmrLoader();
  auto library = loader ? loader->Load() : nullptr;
  if (!library) return nullptr;
  OmrLibrary* const functions = library.get();
  return {functions, ClosesScanner{std::move(library)}};
}

void NoteOpen(const std::shared_ptr<OmrLibrary>& library, bool open) {
  if (auto* const closes = std::get_deleter<ClosesScanner>(library)) closes->open = open;
}

std::shared_ptr<OmrLibrary> LibraryOf(const clsTeskReader& reader) {
  Deref(reader.Omr());
  return reader.Omr();
}

bool WantsBarcodes(const clsTeskReader& reader) {
  const auto barcodes = reader.Barcodes();
  return reader.Barcode() && barcodes && barcodes->Count() >= 1;
}

bool OpenDevice(OmrLibrary& library) {
  if (library.OMR_OpenDeviceUSB() == 0) return true;
  library.OMR_GetLastError();  // taken so that nobody meets it later; the message says more
  return Fail(kOpenFailed);
}

bool SetUpReadingMethod(OmrLibrary& library) {
  std::int32_t method = 0;
  std::int32_t parameter = 0;
  if (library.OMR_GetReadingMethod(method, parameter) != 0) return Fail(kGetMethodFailed);
  if (method == kReadingMethod || method == kOtherReadingMethod) return true;
  return library.OMR_SetReadingMethod(kReadingMethod, parameter) == 0 || Fail(kSetMethodFailed);
}

bool SetUpColumns(OmrLibrary& library) {
  return library.OMR_GetNumberOfColumnsToRead() == kColumns ||
         library.OMR_SetNumberOfColumnsToRead(kColumns) == 0 || Fail(kSetColumnsFailed);
}

bool SetUpFeedMode(OmrLibrary& library) {
  std::int32_t mode = 0;
  std::int32_t parameter = 0;
  if (library.OMR_GetSheetFeedMode(mode, parameter) != 0) return Fail(kGetFeedModeFailed);
  return mode == kFeedMode || library.OMR_SetSheetFeedMode(kFeedMode, 0) == 0 || Fail(kSetFeedModeFailed);
}

bool SetUp(const clsTeskReader& reader, OmrLibrary& library) {
  if (!SetUpReadingMethod(library) || !SetUpColumns(library)) return false;
  library.OMR_SetBackSensorUnit(reader.TwoSided() ? 1
                                                  : 0);  // unchecked: single-sided models have no such unit
  return SetUpFeedMode(library);
}

// ---- Barcodes

OmrBarcodeArea AreaOf(const clsTeskReaderBarcodes& barcodes) {
  OmrBarcodeArea area;
  std::int32_t end = 0;
  for (std::int32_t position = 1; position <= barcodes.Count(); ++position) {
    const auto barcode = barcodes.Item(AtPosition(position));
    const std::int32_t side = Deref(barcode).Page() > 1 ? 1 : 0;
    const std::int32_t start = barcode->Distance();
    const std::int32_t last = start + std::max<std::int32_t>(barcode->Length(), 0);
    const bool first = position == 1;
    area.side = first || area.side == side ? side : 2;
    area.start = first ? start : std::min(area.start, start);
    end = first ? last : std::max(end, last);
    area.orientation = first || area.orientation == barcode->Orientation() ? barcode->Orientation() : 0;
  }
  area.length = end - area.start;
  return area;
}

void SetUpBarcodes(const clsTeskReader& reader, OmrLibrary& library) {
  // Compatibility: here, unlike elsewhere, not 0 means that the call was taken.
  if (library.OMR_SetBarCodeArea(AreaOf(Deref(reader.Barcodes()))) == 0) return;
  library.OMR_SetBarCodeReadType(kBarcodeReadType);
  for (const std::uint8_t code : kUncheckedCodes) library.OMR_SetBarCodeCheckDigit(code, 0);
}

// The text of one barcode; one that could not be read is empty. Nothing where the library is not to be
// believed, which has been shown.
std::optional<std::string> TakeBarcode(OmrLibrary& library, std::int32_t index) {
  GuardedBuffer<char> buffer(kTextBytes);
  std::int32_t length = 0;
  std::int32_t value = 0;
  const bool failed = library.OMR_GetBarcodeData(index, length, value, buffer.Room()) != 0;
  if (!buffer.Kept()) return ReportOverrun(), std::nullopt;
  if (failed) return std::string();
  const auto room = buffer.Room();
  const auto end = std::ranges::find(room, '\0');
  if (end == room.end()) return ReportBadAnswer(LoadString("A barcode text has no end.")), std::nullopt;
  if (length < 0 || length >= static_cast<std::int32_t>(kTextBytes)) {
    return ReportBadAnswer("Barcode length: ", length), std::nullopt;
  }
  // What the length counts is the library's; the text ends where it ends.
  return library.FromAnsi(std::string(room.begin(), end));
}

// One text per barcode that was read, a single empty one where none was.
std::optional<BarcodeArray> TakeBarcodes(OmrLibrary& library) {
  GuardedBuffer<std::int32_t> information(kInformationFields);
  std::int32_t count = 0;
  // A scanner that has no barcode unit has no information either: its sheets have no barcodes.
  const bool none = library.OMR_GetBarcodeInfo(information.Room(), count) != 0;
  if (!information.Kept()) return ReportOverrun(), std::nullopt;
  if (none) return BarcodeArray(1);
  if (count < 0 || count > kMostBarcodes) return ReportBadAnswer("Barcodes: ", count), std::nullopt;
  BarcodeArray texts;
  for (std::int32_t index = 0; index < count; ++index) {
    auto text = TakeBarcode(library, index);
    if (!text) return std::nullopt;
    texts.push_back(std::move(*text));
  }
  if (texts.empty()) texts.resize(1);
  return texts;
}

// ---- Reading a sheet

struct SideOfSheet {
  std::int32_t number;
  Message failure;
};

constexpr SideOfSheet kFront{
    0,
    {kReadTitle, "An error occurred trying to get the data from the front side of the form. Cannot read."}};
constexpr SideOfSheet kBack{
    1, {kReadTitle, "An error occurred trying to get the data from the back side of the form. Cannot read."}};

struct Side {
  SideArray marks{kRows, kColumns};
  std::int16_t rows = 0;  // that have values
};

// False where no sheet was read; what there was to show has been shown.
bool Feed(clsTeskReader& reader, OmrLibrary& library) {
  // The last chance to cancel: the feeding itself lets no messages run.
  reader.Loop().DoEvents(kNoArrivalHandle);
  if (reader.CancelScan()) return false;
  library.OMR_FeedSheet();
  const std::int32_t code = library.OMR_GetLastError();
  const auto known = static_cast<std::uint32_t>(code);
  if (code == 0 || std::ranges::find(kTimingLineErrors, known) != std::end(kTimingLineErrors)) return true;
  reader.SetHopperEmpty(known == kNothingRead);
  if (!reader.HopperEmpty()) ReturnErrorSR(code);
  return false;
}

std::optional<Side> TakeSide(OmrLibrary& library, const SideOfSheet& which, std::int32_t columns) {
  GuardedBuffer<std::uint8_t> buffer(kMarkBytes);
  std::int32_t rows = kRows;
  const bool failed = library.OMR_GetMarks(which.number, rows, buffer.Room()) == 0;
  if (!buffer.Kept()) return ReportOverrun(), std::nullopt;
  if (failed) return Fail(which.failure), std::nullopt;
  if (rows < 0 || rows > kRows) return ReportBadAnswer("Rows: ", rows), std::nullopt;
  Side side;
  side.rows = static_cast<std::int16_t>(rows);
  auto mark = buffer.Room().begin();
  for (std::int32_t row = 1; row <= rows; ++row) {
    for (std::int32_t column = 1; column <= columns; ++column) side.marks.At(row, column) = *mark++;
  }
  return side;
}

struct Page {
  Side front;
  std::optional<Side> back;
  std::optional<BarcodeArray> barcodes;
};

std::optional<Page> TakePage(OmrLibrary& library, std::int32_t columns, bool twoSided, bool barcodes) {
  Page page;
  auto front = TakeSide(library, kFront, columns);
  if (!front) return std::nullopt;
  page.front = std::move(*front);
  if (twoSided && !(page.back = TakeSide(library, kBack, columns))) return std::nullopt;
  if (barcodes && !(page.barcodes = TakeBarcodes(library))) return std::nullopt;
  return page;
}

Sheet SheetOf(Page page) {
  Sheet sheet;
  sheet.side1 = std::move(page.front.marks);
  sheet.side1TimingMarks = page.front.rows;
  // Compatibility: hosts get a second array of full size also where the back was not read.
  sheet.side2 = page.back ? std::move(page.back->marks) : SideArray(kRows, kColumns);
  if (page.back) sheet.side2TimingMarks = page.back->rows;
  if (page.barcodes) sheet.texts = std::move(*page.barcodes);
  return sheet;
}

// ---- Stackers

struct StackerCodes {
  std::int32_t cancelled;  // the sheet is the run's last
  std::int32_t goesOn;
};

constexpr StackerCodes kReject{4, 2};
constexpr StackerCodes kRejectWithoutRejecter{3, 1};
constexpr StackerCodes kEject{1, 3};

bool SendTo(const clsTeskReader& reader, const StackerCodes& codes) {
  const auto library = LibraryOf(reader);
  if (library->OMR_EjectSheet(reader.CancelScan() ? codes.cancelled : codes.goesOn) == 0) return true;
  ReturnErrorSR(library->OMR_GetLastError());
  return false;
}

// ---- Imprint

// At most `most` characters, control characters as blanks: a zero byte would end the text.
std::string Printable(const std::string& text, std::int32_t most) {
  std::string printable;
  std::int32_t characters = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool continues = (byte & 0xC0U) == 0x80;
    if (!continues && ++characters > most) break;
    printable += byte < 0x20 || byte == 0x7F ? ' ' : c;
  }
  return printable;
}

// The code as the scanner's manual has it: "01020005".
std::string CodeText(std::uint32_t code) {
  const std::string digits = HexText(code);
  return std::string(8 - digits.size(), '0') + digits;
}

// The number that a host shows: its digits are those of the code in hexadecimal. A code with
// letters in it is its own number.
std::int32_t NumberOf(std::int32_t code) {
  const std::string digits = HexText(static_cast<std::uint32_t>(code));
  std::int32_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return result.ec == std::errc() && result.ptr == digits.data() + digits.size() ? number : code;
}

}  // namespace

// ---- Starting and ending

bool InitReaderSR(clsTeskReader& reader) {
  return Guarded("basSekonicSR.InitReaderSR", [&] {
    // A start that failed leaves the scanner open until the reader is ended; a new start begins afresh.
    CloseReaderSR(reader);
    const auto library = Load(reader);
    reader.SetOmr(library);
    if (!library) return ShowLibraryMissing(reader), false;
    if (!OpenDevice(*library)) return false;
    NoteOpen(library, true);
    if (!SetUp(reader, *library)) return false;
    // Sheets can be read without their barcodes, so this does not end the start.
    if (WantsBarcodes(reader)) InitBarcodeSR(reader);
    return true;
  });
}

bool InitBarcodeSR(clsTeskReader& reader) {
  return Guarded("basSekonicSR.InitBarcodeSR", [&] {
    const auto library = LibraryOf(reader);
    // Anything but off is on, or -1: there is no unit.
    if (library->OMR_GetBarcodeReaderUnit() != kBarcodeUnitOff) return true;
    return library->OMR_SetBarcodeReaderUnit(1) == 0 || Fail(kBarcodeUnitFailed);
  });
}

bool CloseReaderSR(clsTeskReader& reader) {
  return Guarded("basSekonicSR.CloseReaderSR", [&] {
    const auto library = reader.Omr();
    reader.SetOmr(nullptr);
    NoteOpen(library, false);
    return !library || library->OMR_CloseDevice() == 0;
  });
}

// ---- Sheets

std::optional<Sheet> ReadPageSR(clsTeskReader& reader, std::int16_t /*threshold*/) {
  return Guarded("basSekonicSR.ReadPageSR", [&]() -> std::optional<Sheet> {
    const auto library = LibraryOf(reader);
    const bool barcodes = WantsBarcodes(reader);
    const bool twoSided = reader.TwoSided();
    if (barcodes) SetUpBarcodes(reader, *library);
    const std::int32_t columns = library->OMR_GetNumberOfColumnsToRead();
    // Before the feeding: with more columns the library would fill another extent than there is room for.
    if (columns < 1 || columns > kColumns) return ReportBadAnswer("Columns: ", columns), std::nullopt;
    if (!Feed(reader, *library)) return std::nullopt;
    auto page = TakePage(*library, columns, twoSided, barcodes);
    return page ? std::optional(SheetOf(std::move(*page))) : std::nullopt;
  });
}

bool RejectPageSR(clsTeskReader& reader) {
  return Guarded("basSekonicSR.RejectPageSR",
                 [&] { return SendTo(reader, reader.Rejecter() ? kReject : kRejectWithoutRejecter); });
}

bool EjectPageSR(clsTeskReader& reader) {
  return Guarded("basSekonicSR.EjectPageSR", [&] { return SendTo(reader, kEject); });
}

bool PrintSR(clsTeskReader& reader, const clsTeskReaderPrinter& printer) {
  return Guarded("basSekonicSR.PrintSR", [&] {
    const auto library = LibraryOf(reader);
    const std::array lines = {printer.Buffer1(), printer.Buffer2(), printer.Buffer3()};
    const std::int32_t most = printer.MaxCharacters();
    // For these calls 0 is failure, and what follows a failed one is left out.
    bool taken =
        library->OMR_SetPrintOrder(1, 2, 3) != 0 && library->OMR_SetPrintPosition(printer.Distance()) != 0;
    for (std::size_t i = 0; taken && i < lines.size(); ++i) {
      const auto number = static_cast<std::int32_t>(i) + 1;
      taken = library->OMR_SetPrintString(number, library->ToAnsi(Printable(lines[i], most))) != 0;
    }
    return taken || Fail(kImprintFailed);
  });
}

void ReturnErrorSR(std::int32_t code) {
  const auto known = static_cast<std::uint32_t>(code);
  ReportError(ErrorReport{.number = NumberOf(code),
                          .source = "basSekonicSR.ReturnErrorSR",
                          .message = LoadString(ErrorTextOf(known)),
                          .title = LoadString("Sekonic SR Error"),
                          .detail = CodeText(known)});
}

constinit const Driver kDriver = {
    .family = Family::SekonicUsb,
    .module = "basSekonicSR",
    .initReader = InitReaderSR,
    .closeReader = CloseReaderSR,
    .readPage = [](clsTeskReader& r) { return ReadPageSR(r, r.RecognitionThreshold()); },
    .rejectPage = RejectPageSR,
    .ejectPage = EjectPageSR,
    .print = [](clsTeskReader& r, bool) { return PrintSR(r, Deref(r.Printer())); },
};

}  // namespace tesk::basSekonicSR
