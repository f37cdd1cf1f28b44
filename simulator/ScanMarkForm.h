// The form definition that a host downloads to a ScanMark scanner, and the order in which the scanner then
// sends a sheet's values. It knows base and the simulator's own parts.
//
//   FRM=FS R1 R2 C N N N                     a sheet: rows of its sides, columns
//   FRM=MC Y N 1 SIDE 1 1 R C L R C MASK     a whole side, 8000 and 8400
//   FRM=DK SIDE R1 C1 R2 C2 L ROWS COLUMNS   a region, sent line by line
//   FRM=DK SIDE R1 C1 R2 C2 C COLUMNS ROWS   a region, sent column by column
//   FRM=LS                                   the end of all sheets
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/Sheet.h"

namespace tesk::simulator {

class ScanMarkForm {
 public:
  // duplex: the scanner reads side 2; wholeSides: it takes a whole side as mark columns, so that a region is
  // never a page.
  ScanMarkForm(bool duplex, bool wholeSides) : duplex_(duplex), wholeSides_(wholeSides) {}

  // Each takes the command's text after its name and yields what is wrong with it; empty: it was taken.
  std::string Start(std::string_view fields);
  std::string MarkColumns(std::string_view fields);
  std::string Region(std::string_view fields);
  std::string End();

  void Clear();
  // Between the first sheet's start and the end command.
  bool Open() const { return open_; }
  bool Complete() const { return !open_ && !definitions_.empty(); }

  // The values of `sheet` in the order of the wire. What the form has and the sheet has not is 0. A sheet is
  // taken for the first definition with as many rows as its front has, or else for the first.
  // A whole side is sent as a page, 48 values a row whatever the form's columns: mark columns, or a side's
  // only region where it covers the side line by line.
  std::vector<std::int16_t> Values(const Sheet& sheet) const;

 private:
  struct Area {
    std::int32_t side, firstRow, firstColumn, lastRow, lastColumn, rows, columns;
    bool byColumn, wholeSide;
  };
  struct Definition {
    std::int32_t rows[2];  // 0 and less: the side is not read
    std::int32_t columns;
    std::vector<Area> areas;
  };

  std::string Take(Area area);
  bool IsPage(const Definition& definition, const Area& area) const;
  const Definition& DefinitionFor(const Sheet& sheet) const;

  bool duplex_;
  bool wholeSides_;
  bool open_ = false;
  std::vector<Definition> definitions_;
};

}  // namespace tesk::simulator
