// The dispatch: routes the engine's operations to the driver of its reader type, and opens and closes the
// serial port around them. It knows the drivers by their contract alone.
#pragma once

#include <optional>

#include "base/enumerations.h"
#include "drivers/Driver.h"
#include "engine/Seams.h"

namespace tesk {

// The family that a reader type is routed to; empty for types 0, 45, 46 and values that are no member.
std::optional<Family> FamilyOf(teskReaderType type);

class basRead : public ReaderDispatch {
 public:
  bool ReaderInit(clsTeskReader& reader) override;
  bool ReaderClose(clsTeskReader& reader) override;
  bool ReaderRead(clsTeskReader& reader) override;
  bool ReaderPrint(clsTeskReader& reader, bool skip, bool& disposed) override;
  void ReaderReject(clsTeskReader& reader) override;
  void ReaderEject(clsTeskReader& reader, bool& disposed) override;
};

}  // namespace tesk
