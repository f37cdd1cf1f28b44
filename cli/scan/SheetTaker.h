// What becomes of the sheets of a batch. Knows the engine.
#pragma once

#include <cstdint>

#include "cli/scan/SheetRecord.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

// Begin and Keep throw CommandFailure when they cannot do their part.
class SheetTaker {
 public:
  virtual ~SheetTaker() = default;
  // The scanner is ready, no paper has moved yet.
  virtual void Begin() {}
  // The number of the batch's first sheet.
  virtual std::int32_t FirstNumber() const { return 1; }
  // The sheet is still where it was read, `record` says what is meant to become of it. Once this returns the sheet
  // is safe and may leave.
  virtual void Keep(const clsTeskReader& engine, const SheetRecord& record) = 0;
  // The sheet has left, or has not, as `record` says now.
  virtual void Settle(const clsTeskReader& /*engine*/, const SheetRecord& /*record*/) {}
};

}  // namespace tesk::cli
