// The record of one OpScan sheet, taken apart byte by byte as it comes off the line. It knows no port and no
// message: how the bytes were cut up on their way makes no difference to the result.
//
//   record  line... [ "c" text ] CR|LF    without CR or LF a record with text ends when the line falls silent
//   line    "a" | "b", 48 mark positions  of side 1 or 2, one hexadecimal digit each
//   text    ( 2 characters, text, "d" )...
//   run     NAK, 64 + n, character        the character n times, in a line and in the text
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/Sheet.h"

namespace tesk::basNCS {

// A line that did not have 48 bytes, noticed at the marker of the next one.
struct WrongLength {
  std::int32_t side;   // that the marker names
  std::int32_t bytes;  // of the line that the marker ended
  std::int32_t line;   // lines of `side` before the marker

  bool operator==(const WrongLength&) const = default;
};

class OpScanRecord {
 public:
  explicit OpScanRecord(bool twoSided);

  // Takes the next byte of a record that has not ended. Throws error 9 for a mark beyond row 150, error 6 for
  // more lines than can be counted, error 8020 for a record without end.
  std::optional<WrongLength> Take(std::uint8_t byte);

  bool Ended() const { return state_ == State::Ended; }
  // In the text section and not within a run: the only place where silence is an end.
  bool MayEndInSilence() const { return state_ == State::Text && run_ == Run::None; }

  // In the text section, with no text begun.
  bool BetweenTexts() const { return MayEndInSilence() && sheet_.texts.back().empty(); }

  // Lines of both sides so far.
  std::size_t Lines() const;
  bool HasText() const { return hasText_; }
  // At least one mark position or a text section.
  bool HasValues() const { return hasText_ || markBytes_ > 0; }
  // Something in it cannot have been sent as a part of it.
  bool Broken() const { return broken_; }
  // A record that should not have ended where it did: `behind` bytes came after its end.
  WrongLength WrongEnd(std::size_t behind) const;

  // The sheet as it was taken: sides of 150 x 48 values from 0, the scanner sends 0 to 15; the lines of each
  // side as timing marks, those of side 2 only where that is read. Compatibility: a record without a text section has
  // the one text "?".
  Sheet Result() const;

 private:
  enum class State { Marks, Text, Ended };
  enum class Run { None, Count, Character };
  struct Cursor {
    std::int32_t row = 1;
    std::int32_t column = 1;
  };

  std::optional<WrongLength> TakeMarker(std::int32_t side);
  std::optional<WrongLength> TakeInMarks(std::uint8_t byte);
  void TakeInText(std::uint8_t byte);
  void TakeInRun(std::uint8_t byte);
  void Repeat(std::uint8_t character, std::int32_t times);
  void StoreMark(std::uint8_t character);

  bool twoSided_;
  State state_ = State::Marks;
  Run run_ = Run::None;
  std::int32_t runLength_ = 0;
  std::int32_t side_ = 1;
  std::int32_t lineBytes_;
  std::size_t taken_ = 0;
  std::int64_t markBytes_ = 0;
  bool hasText_ = false;
  bool broken_ = false;
  Cursor at_[2];
  std::int16_t lines_[2]{};  // "a" and "b" markers
  Sheet sheet_;
};

}  // namespace tesk::basNCS
