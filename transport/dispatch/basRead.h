// The dispatch: routes the engine's operations to the driver of its reader type, and opens and closes the
// serial port around them. It knows the drivers by their contract alone.
#pragma once

#include "engine/Seams.h"

namespace tesk {

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
