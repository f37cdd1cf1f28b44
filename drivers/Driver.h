// The contract that every driver fulfils towards the dispatch.
//
// A routine receives the engine, reads its settings from the engine's properties, and keeps no link to it
// between calls. It shows a scanner's condition itself and returns False; it never sets CancelScan, never
// raises an event, never opens or closes the port. A read gives back a whole sheet or none; the dispatch
// stores it in the engine.
#pragma once

#include <optional>
#include <string_view>

#include "engine/Sheet.h"
#include "profiles/families.h"

namespace tesk {

class clsTeskReader;

struct Driver {
  Family family;
  std::string_view module;                           // "basScantron"
  bool (*initReader)(clsTeskReader&);                // brings the scanner to the ready state
  bool (*closeReader)(clsTeskReader&);               // empty: nothing to release, which is success
  std::optional<Sheet> (*readPage)(clsTeskReader&);  // feeds and reads one sheet; empty: none was read
  bool (*rejectPage)(clsTeskReader&);                // sends the sheet to the reject exit where there is one
  bool (*ejectPage)(clsTeskReader&);                 // sends the sheet to the normal exit
  bool (*print)(clsTeskReader&, bool skip);          // empty: no imprinter
};

// The driver of a family; nullptr where it does not exist.
const Driver* FindDriver(Family family);

}  // namespace tesk
