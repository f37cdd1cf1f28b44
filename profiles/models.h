// What is known of a scanner model beyond its profile: which family it belongs to, and how its sheets are printed
// and sent on. One row per reader type, one per family.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/enumerations.h"

namespace tesk {

// The models that speak one protocol: one driver, one simulator.
enum class Family {
  Unrouted,  // of no family: no driver will do
  Apperson,
  OpScan,
  SekonicSerial,
  ScanMark,
  Chatsworth,
  EZData,
  PeripheralDynamics,
  SekonicUsb,
  SekonicHybrid,
  Datawin,
};

// What all models of a family have in common.
struct FamilyTraits {
  Family family;
  std::int16_t mostRows = 0;           // of a side; 0: reads no sheets. The columns are the model's MaxCols
  std::int32_t mostBarcodes = 0;       // definitions
  std::int16_t mostInWindow = 0;       // the largest start, count or gap of a window
  std::int32_t heldImprint = 0;        // characters that go with a held sheet, blanks before them included
  std::string_view blankBarcode = {};  // handed out for a sheet on which no barcode text was read
  bool toldSizes = false;              // the host tells it the rows and columns of each side
  bool wholeRows = false;              // a page comes in rows of MaxCols values, whatever it was told
  bool frontFirst = false;             // the windows of the front come before those of the back
  bool holdsSheets = false;            // a sheet that a rejecter or an imprinter may want waits to be sent on
  bool marksAlone = false;             // two values: 0, and the recognition threshold plus 1
  bool identifies = false;             // answers the identification request of the port search
  bool byLibrary = false;              // reached through its maker's library alone
  bool nothingToClose = false;         // ending succeeds without a driver
};

// The imprinter of a model. -1: none is stated.
struct Imprinter {
  enum class Setting { Ignored, StaysOff, Taken };  // what becomes of a host's setting of Enabled

  Setting setting;
  std::int16_t lines;  // texts to print, 0 to 3
  std::int32_t minPosition;
  std::int32_t maxPosition;
  std::int32_t maxCharacters;
  std::int16_t firstDistance;  // the print position of a printer that becomes this one
};

// When a model prints by a command of its own. Always: also where printing is skipped, and afterwards the disposed
// flag is the skip flag.
enum class Printing { Never, UnlessSkipped, Always };

// What rejecting and ejecting do beside marking the sheet as disposed of.
enum class Sending {
  Nothing,                // no command reaches the scanner
  Plain,                  // the driver's routines
  RejectsToRejecter,      // rejects only where Rejecter is set
  AsEjected,              // an ejected sheet is disposed of if the routine succeeds
  AsEjectedAndCancelled,  // and only while a cancel is pending
};

// What the support of a model rests on, and a simulated scanner written separately.
enum class Support {
  NoDriver,
  Simulated,    // the protocol's description
  PublicNotes,  // what others have published of their own hardware
};

struct Model {
  teskReaderType type;
  Family family;
  Imprinter imprinter;
  Printing printing;
  Sending sending;
  bool scoresItself;  // ticking the reader-grade box hands the scoring over to it
  Support support;
};

// The row of a type; that of teskReaderTypeNone for a value that is no member.
const Model& ModelOf(teskReaderType type);
// The traits of its family.
const FamilyTraits& FamilyOf(teskReaderType type);

}  // namespace tesk
