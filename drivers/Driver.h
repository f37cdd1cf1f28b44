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
#include "profiles/models.h"

namespace tesk {

class clsTeskReader;

// What a driver does. Its file exports one such record, which driverTable.cpp lists.
struct Driver {
  Family family;
  std::string_view module;                           // "basScantron"
  bool (*initReader)(clsTeskReader&);                // brings the scanner to the ready state
  bool (*closeReader)(clsTeskReader&);               // releases the scanner; its result is what ending yields
  std::optional<Sheet> (*readPage)(clsTeskReader&);  // feeds and reads one sheet; empty: none was read
  bool (*rejectPage)(clsTeskReader&);                // sends the sheet to the reject exit where there is one
  bool (*ejectPage)(clsTeskReader&);                 // sends the sheet to the normal exit
  // Imprints the sheet; asked for models whose row says that they print.
  bool (*print)(clsTeskReader&, bool skip) = [](clsTeskReader&, bool) { return false; };
};

// The driver of a reader type; nullptr where it has none.
const Driver* DriverOf(teskReaderType type);

}  // namespace tesk
