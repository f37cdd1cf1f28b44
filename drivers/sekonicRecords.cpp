// The records of the Sekonic serial readers.
#include "drivers/sekonicRecords.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "transport/basUtils.h"

namespace tesk::basScanningSystems {
namespace {

constexpr char kCarriageReturn = '\r';
constexpr char kBlank = ' ';
constexpr char kComma = ',';

// ---- Status

constexpr const char* kCommandError =
    "The Sekonic scanner reports a command error. Please reset the Sekonic scanner and try again.";
constexpr const char* kCommunicationsError =
    "The Sekonic scanner reports a communications error. Please reset the Sekonic scanner and try again.";
constexpr const char* kTimingMarks =
    "The Sekonic scanner reports a timing mark error. Form could not be read as fed. Please retry.";
constexpr const char* kSkew =
    "The Sekonic scanner reports a skew error. The page could not be read. Please re-insert and retry.";
constexpr const char* kMultiplePages =
    "The Sekonic scanner reports a paper feed error. Multiple pages were fed. Please re-insert and retry.";
constexpr const char* kNoPageFed =
    "The Sekonic scanner could not feed a page. Please insert a page and retry.";
constexpr const char* kCoverNotLatched =
    "The cover on your Sekonic scanner is not latched into place. Please latch and retry.";
constexpr const char* kHardware =
    "The Sekonic scanner reports a hardware error.  Please reset the sekonic scanner and try again.  If the "
    "problem persists contact the scanner's vender.";

constexpr StatusText kCardReaders[] = {
    {49, "The Sekonic scanner reports an internal jam. Please open the scanner and clear the jam and retry."},
    {50,
     "The Sekonic scanner reports that a card is still inside the scanner.  Please clear the card and "
     "retry."},
    {51,
     "The Sekonic scanner reports a card feed error. Please make sure the cards are inserted correctly and "
     "retry."},
    {54, kMultiplePages},
    {58, kSkew},
    {64, kTimingMarks},
    {68, "The Sekonic scanner reports that the cover is open. Please close the cover and retry."},
    {80, kCommandError},
    {81, kCommunicationsError},
    {112, kHardware},
    {113, kHardware},
    // Compatibility: 114 has no message.
    {115, kHardware},
    {116, kHardware},
    {117, kHardware},
    {118, kHardware},
};

constexpr StatusText kModesBelow2[] = {
    {49, kCommandError},
    {50,
     "The Sekonic scanner reports a scanning problem. Either a paper jam or a multi-feed occurred.  Please "
     "clear the jam and retry."},
    {52, kTimingMarks},
    {54, kNoPageFed},
};

constexpr StatusText kMode2[] = {
    {49, kCommandError},  {50, "The Sekonic scanner reports a paper jam. Please clear the jam and retry."},
    {52, kTimingMarks},   {53, kNoPageFed},
    {54, kMultiplePages}, {57, kCoverNotLatched},
    {58, kSkew},          {60, "The Sekonic scanner reports a reader failure. Please check your scanner."},
};

constexpr StatusText kModesAbove2[] = {
    {49,
     "The Sekonic scanner reports a form is jammed inside the Sekonic scanner. Please clear the jam and "
     "retry."},
    {50,
     "The Sekonic scanner reports a paper jam. A piece of paper is stuck in the scanner. Please clear the "
     "jam and retry."},
    {51, kNoPageFed},
    {52, kSkew},
    {54, kMultiplePages},
    {64, kTimingMarks},
    {68, kCoverNotLatched},
    {80, kCommandError},
    {81, kCommunicationsError},
    {119, "The Sekonic scanner reports a reader failure.  Error number ", " Please check your scanner."},
};

// The models that read cards, and how they name the columns of side 1. All others read pages.
constexpr struct CardModel {
  teskReaderType type;
  ColumnNames side1;
} kCardModels[] = {
    {teskReaderTypeScanningSystemsSR410, ColumnNames::FromZero},
    {teskReaderTypeSekonicSR430, ColumnNames::Card},
};

const CardModel* FindCardModel(teskReaderType type) {
  const auto* model = std::ranges::find(kCardModels, type, &CardModel::type);
  return model != std::end(kCardModels) ? model : nullptr;
}

std::span<const StatusText> StatusTexts(teskReaderType type, std::int16_t readingMode) {
  if (FindCardModel(type) != nullptr) return kCardReaders;
  if (readingMode < 2) return kModesBelow2;
  if (readingMode == 2) return kMode2;
  return kModesAbove2;
}

// ---- Marks

// The columns of a card in the order of its punch positions. Compatibility: 1 to 9 run from column 9 down.
constexpr std::string_view kCardColumns = "9876543210XYABC";
constexpr std::string_view kWrongModeColumns = ":;<=>";

// A character from "0" on. A blank or a control character here means that bytes were lost on the line.
std::int16_t DarknessOf(std::uint8_t byte) {
  if (byte < '0' || byte > '~') throw TypeMismatch();
  return static_cast<std::int16_t>(byte - '0');
}

// ---- Barcodes

std::string CleanText(std::string_view raw) {
  const auto first = raw.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  const std::string_view text = raw.substr(first, raw.find_last_not_of(kBlank) - first + 1);
  const bool printable = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
  return printable ? std::string(text) : std::string();
}

}  // namespace

const StatusText* FindStatusText(teskReaderType type, std::int16_t readingMode, std::string_view code) {
  for (const StatusText& status : StatusTexts(type, readingMode)) {
    if (NumberText(status.code) == code) return &status;
  }
  return nullptr;
}

// ---- Page record

ColumnNames NamesOfSide1(teskReaderType type) {
  const CardModel* card = FindCardModel(type);
  return card != nullptr ? card->side1 : ColumnNames::FromZero;
}

void PageRecord::Take(std::uint8_t byte) {
  switch (expected_) {
    case Expected::Column:
      return TakeColumn(byte);
    case Expected::Darkness:
      return TakeDarkness(byte);
    case Expected::RowEnd:
      // A blank names no column.
      if (byte != kCarriageReturn) throw SubscriptOutOfRange();
      ++row_;
      marksInRow_ = 0;
      expected_ = Expected::Column;
  }
}

std::size_t PageRecord::Missing() const {
  if (wrongMode_ || Ended()) return 0;
  constexpr std::size_t kShortestRow = 2;
  const auto rows = static_cast<std::size_t>(side_.Rows() - row_ + 1);
  const std::size_t missing = rows * kShortestRow;
  if (expected_ == Expected::Column) return missing;
  return expected_ == Expected::Darkness ? missing + 1 : missing - 1;
}

void PageRecord::TakeColumn(std::uint8_t byte) {
  if (Ended()) throw SubscriptOutOfRange();
  if (byte == kBlank) {
    expected_ = Expected::RowEnd;
    return;
  }
  const char name = static_cast<char>(byte);
  if (names_ == ColumnNames::Card) {
    wrongMode_ = wrongMode_ || kWrongModeColumns.find(name) != std::string_view::npos;
    // A name that no card has becomes column 0.
    column_ = static_cast<std::int32_t>(kCardColumns.find(name) + 1);
  } else {
    column_ = byte - '0' + 1;
  }
  if (wrongMode_) return;
  if (column_ < 1 || column_ > kColumns) throw SubscriptOutOfRange();
  if (++marksInRow_ > kColumns) throw basUtils::SendsWithoutEnd();
  expected_ = Expected::Darkness;
}

void PageRecord::TakeDarkness(std::uint8_t byte) {
  side_.At(row_, column_) = DarknessOf(byte);
  expected_ = Expected::Column;
}

// ---- Window reply

namespace {

// What may stand behind the blank of an item without a mark: its end, a filler, or no darkness.
constexpr std::string_view kAfterBlank = "\r, 0";

}  // namespace

WindowReply::WindowReply(std::vector<clsTeskReaderWindow> windows, SideArray& side)
    : windows_(std::move(windows)), side_(side) {
  for (const clsTeskReaderWindow& window : windows_) {
    left_ += static_cast<std::size_t>(std::max<std::int16_t>(window.NumRows(), 0));
  }
  SkipWindowsWithoutItems();
}

void WindowReply::SkipWindowsWithoutItems() {
  while (window_ < windows_.size() && item_ >= windows_[window_].NumRows()) {
    ++window_;
    item_ = 0;
  }
}

std::size_t WindowReply::Missing() const {
  if (left_ == 0 && itemEnded_) return 0;
  constexpr std::size_t kShortestItem = 2;
  return left_ > 1 ? (left_ - 1) * kShortestItem : 1;
}

bool WindowReply::LastItemIsOver() const {
  return left_ == 0 || (left_ == 1 && expected_ == Expected::AfterBlank);
}

bool WindowReply::LastItemHasCome() const {
  return LastItemIsOver() || (left_ == 1 && expected_ == Expected::AfterPair);
}

void WindowReply::Take(std::uint8_t byte) {
  switch (expected_) {
    case Expected::Item:
      return StartItem(byte);
    case Expected::AfterBlank:
      // A choice that became a blank on the line still has its darkness.
      if (kAfterBlank.find(static_cast<char>(byte)) == std::string_view::npos) throw SubscriptOutOfRange();
      EndItem();
      itemEnded_ = byte == kCarriageReturn;
      return;
    case Expected::Darkness:
      return TakeDarkness(byte);
    case Expected::AfterPair:
      if (byte == kComma) {
        expected_ = Expected::AfterComma;
        return;
      }
      EndItem();
      return StartItem(byte);
    case Expected::AfterComma:
      if (byte != kCarriageReturn && byte != kComma && byte != kBlank) return TakeChoice(byte);
      EndItem();
      return StartItem(byte);
  }
}

void WindowReply::StartItem(std::uint8_t byte) {
  if (byte == kCarriageReturn) itemEnded_ = true;
  if (byte == kCarriageReturn || byte == kComma) return;
  if (window_ == windows_.size()) throw SubscriptOutOfRange();
  itemEnded_ = false;
  marksInItem_ = 0;
  if (byte == kBlank) {
    expected_ = Expected::AfterBlank;
  } else {
    TakeChoice(byte);
  }
}

void WindowReply::TakeChoice(std::uint8_t byte) {
  choice_ = byte - '0' - 1;
  const std::int32_t choices = windows_[window_].NumCols();
  // More marks than choices: an item without end.
  if (choice_ < 0 || choice_ >= choices || ++marksInItem_ > choices) throw SubscriptOutOfRange();
  expected_ = Expected::Darkness;
}

void WindowReply::TakeDarkness(std::uint8_t byte) {
  const clsTeskReaderWindow& window = windows_[window_];
  side_.At(window.StartRow() + std::int32_t{item_} * window.RowGap(),
           window.StartCol() + choice_ * window.ColGap()) = DarknessOf(byte);
  expected_ = Expected::AfterPair;
}

void WindowReply::EndItem() {
  ++item_;
  --left_;
  SkipWindowsWithoutItems();
  expected_ = Expected::Item;
}

// ---- Barcodes

std::vector<std::string> ParseBarcodes(std::string_view reply) {
  constexpr std::string_view kFraming = "\x02\x03\n";
  std::vector<std::string> raw(1);
  for (const char c : reply) {
    if (c == kCarriageReturn || c == kComma) {
      raw.emplace_back();
    } else if (kFraming.find(c) == std::string_view::npos) {
      raw.back() += c;
    }
  }
  std::vector<std::string> texts(kMostBarcodes);
  for (std::size_t i = 0; i < std::min(raw.size(), kMostBarcodes); ++i) texts[i] = CleanText(raw[i]);
  return texts;
}

}  // namespace tesk::basScanningSystems
