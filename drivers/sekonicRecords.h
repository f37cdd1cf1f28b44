// What the Sekonic serial readers say, taken apart: status codes, page records, window replies, barcode
// texts. Nothing here touches a line or shows a message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/SideArray.h"
#include "base/enumerations.h"
#include "drivers/Shape.h"
#include "engine/clsTeskReaderWindow.h"

namespace tesk::basScanningSystems {

// ---- Status

// The message of a status code. Where `afterCode` is not empty, the code stands between the two texts.
struct StatusText {
  std::int16_t code;
  const char* text;
  const char* afterCode = "";
};

// code: the decimal text of a status byte, "49". Null where the code is not listed or has no message.
const StatusText* FindStatusText(teskReaderType type, std::int16_t readingMode, std::string_view code);

// ---- Page record

// How the marked columns of a row are named: from "0" on, or by the punch positions of a card.
enum class ColumnNames { FromZero, Card };

// How a model names them on side 1; side 2 is always named from "0" on.
ColumnNames NamesOfSide1(teskReaderType type);

// One side as the scanner sends it: per row pairs of column and darkness, then a blank and CR.
class PageRecord : public Shape {
 public:
  static constexpr std::int32_t kColumns = 48;

  PageRecord(std::int32_t rows, ColumnNames names) : side_(rows, kColumns), names_(names) {}

  // Throws error 9 for a column outside 1..48 and for a row beyond the last, 13 for a darkness that is none,
  // 8020 for a row without end.
  void Take(std::uint8_t byte) override;
  // Blank and CR at least for each row that is still to come; 0 too where nothing that comes is of use.
  std::size_t Missing() const override;
  bool Ended() const { return row_ > side_.Rows(); }
  // The scanner named a column as it does with its switches set wrongly; nothing that follows is of use.
  bool WrongMode() const { return wrongMode_; }
  SideArray TakeSide() { return std::move(side_); }

 private:
  enum class Expected { Column, RowEnd, Darkness };

  void TakeColumn(std::uint8_t byte);
  void TakeDarkness(std::uint8_t byte);

  SideArray side_;
  ColumnNames names_;
  Expected expected_ = Expected::Column;
  std::int32_t row_ = 1;
  std::int32_t column_ = 0;
  std::int32_t marksInRow_ = 0;
  bool wrongMode_ = false;
};

// ---- Window reply

// The marks of one side's windows, item by item: a blank and one more character for an item without a mark;
// else pairs of choice and darkness with "," between them; CR after each item.
class WindowReply : public Shape {
 public:
  // windows: those of the side, in the order of their definition. `side` must outlive this object.
  WindowReply(std::vector<clsTeskReaderWindow> windows, SideArray& side);

  // Throws error 9 for a choice that its window has not, a mark outside the side array, an item beyond the
  // last window and a darkness behind a blank, 13 for a darkness that is none.
  void Take(std::uint8_t byte) override;
  // 0: every item of every window has come, the last one's CR too. Two bytes at least for each other item.
  std::size_t Missing() const override;
  // Nothing but the CR of the last item is due; where that has marks, further ones may be.
  bool LastItemHasCome() const;
  // The same of a last item that can have no further marks.
  bool LastItemIsOver() const;

 private:
  enum class Expected { Item, AfterBlank, Darkness, AfterPair, AfterComma };

  void StartItem(std::uint8_t byte);
  void TakeChoice(std::uint8_t byte);
  void TakeDarkness(std::uint8_t byte);
  void EndItem();
  void SkipWindowsWithoutItems();

  std::vector<clsTeskReaderWindow> windows_;
  SideArray& side_;
  std::size_t window_ = 0;
  std::size_t left_ = 0;   // items that have not ended
  std::int16_t item_ = 0;  // within the window, from 0
  std::int32_t choice_ = 0;
  std::int32_t marksInItem_ = 0;
  Expected expected_ = Expected::Item;
  bool itemEnded_ = true;  // by CR
};

// ---- Barcodes

inline constexpr std::size_t kMostBarcodes = 8;

// Always eight texts, those that were not sent empty. Texts are separated by CR or ","; between two
// separators stands the empty text of a barcode that was not found. STX, ETX and LF are framing; blanks
// around a text do not count. A text that is not printable throughout was garbled and is left empty.
std::vector<std::string> ParseBarcodes(std::string_view reply);

}  // namespace tesk::basScanningSystems
