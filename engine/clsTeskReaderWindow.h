// One read window: a rectangular block of mark positions on a sheet.
#pragma once

#include <cstdint>

namespace tesk {

// Plain values, none checked; rows and columns are those of the scanner's mark grid.
class clsTeskReaderWindow {
 public:
  std::int16_t StartRow() const { return startRow_; }  // first row
  void SetStartRow(std::int16_t v) { startRow_ = v; }
  std::int16_t NumRows() const { return numRows_; }
  void SetNumRows(std::int16_t v) { numRows_ = v; }
  std::int16_t RowGap() const { return rowGap_; }  // step between rows
  void SetRowGap(std::int16_t v) { rowGap_ = v; }
  std::int16_t StartCol() const { return startCol_; }  // first column
  void SetStartCol(std::int16_t v) { startCol_ = v; }
  std::int16_t NumCols() const { return numCols_; }
  void SetNumCols(std::int16_t v) { numCols_ = v; }
  std::int16_t ColGap() const { return colGap_; }  // step between columns
  void SetColGap(std::int16_t v) { colGap_ = v; }
  std::int16_t Page() const { return page_; }  // side of the sheet
  void SetPage(std::int16_t v) { page_ = v; }
  std::int16_t Orientation() const { return orientation_; }  // of the items
  void SetOrientation(std::int16_t v) { orientation_ = v; }
  std::int16_t NumItems() const { return numItems_; }
  void SetNumItems(std::int16_t v) { numItems_ = v; }
  std::int16_t NumChoices() const { return numChoices_; }  // per item
  void SetNumChoices(std::int16_t v) { numChoices_ = v; }

 private:
  std::int16_t startRow_ = 0;
  std::int16_t numRows_ = 0;
  std::int16_t rowGap_ = 0;
  std::int16_t startCol_ = 0;
  std::int16_t numCols_ = 0;
  std::int16_t colGap_ = 0;
  std::int16_t page_ = 0;
  std::int16_t orientation_ = 0;
  std::int16_t numItems_ = 0;
  std::int16_t numChoices_ = 0;
};

}  // namespace tesk
