// The record of a sheet as the VMR138 sends it, behind its line feed: two bytes a row from the last row up, and
// an ending of one or two bytes. It tells nowhere how long it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/SideArray.h"
#include "drivers/Shape.h"

namespace tesk::basPeripheralDynamics {

// What the records of a scanner have shown since its start.
struct RecordHabits {
  std::size_t ending = 0;  // bytes that end a record; 0: none has been read
  std::size_t rows = 0;    // of the longest record; 0: none has been read
  bool flags = false;      // a byte with marks had bit 64 set as well ...
  bool bare = false;       // ... or a data byte came without it, and so a carriage return may be data
};

// Where a scanner adds bit 64 to its marks, a carriage return or a line feed can only be the end. Else one may
// be data, and the silence behind it tells; so it does for the first record, whose ending nobody knows.
class VmrRecord : public Shape {
 public:
  explicit VmrRecord(const RecordHabits& known) : known_(known) {}

  std::size_t Missing() const override { return now_ == Now::Begun ? 1 : 0; }
  void Take(std::uint8_t value) override;

  // Bytes were lost or came in addition, or one that looks like an end stands among marks with bit 64.
  bool Damaged() const;
  // Silence has to tell whether that was all.
  bool MayBeOver() const { return now_ == Now::MayBeOver; }
  // Nothing but long silence does: what looks like the end may be marks, and stands elsewhere than in the
  // longest record so far.
  bool EndMayBeData() const;
  // It was not.
  void GoOn() { now_ = Now::Begun; }

  // The data bytes of a record that is over; the view lives as long as the record.
  std::string_view Data() const;
  // Adds to `known` what this record shows. Only a record that was followed by nothing shows its ending.
  void Teach(RecordHabits& known) const;

 private:
  enum class Now { Begun, MayBeOver, Over, Damaged };

  bool Ended() const;
  Now AtEnd();

  RecordHabits known_;
  std::string bytes_;
  std::optional<std::size_t> end_;  // the first byte that looks like the ending's
  Now now_ = Now::Begun;
};

// The rows of a record's data in an array of 500 x 14, marked positions as `mark`. Throws error 9 for a mark
// outside it.
SideArray PlaceRows(std::string_view data, std::int16_t mark);

}  // namespace tesk::basPeripheralDynamics
