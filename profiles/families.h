// Which family drives a model, and how a model's sheets are printed and sent on: one row per group of reader
// types, from the makers' protocols.
#pragma once

#include <optional>

#include "base/enumerations.h"

namespace tesk {

// The families of models; one driver module each.
enum class Family {
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

// The family that a reader type is routed to; empty for types 0, 45, 46 and values that are no member.
std::optional<Family> FamilyOf(teskReaderType type);

// When a model prints by a command of its own; Always: also where printing is skipped, and afterwards the disposed
// flag is the skip flag. Empty for models that do not.
enum class PrintWhen { NotSkipped, Always };
std::optional<PrintWhen> PrintingOf(teskReaderType type);

// When rejecting a sheet reaches the scanner, and when an ejected sheet counts as disposed of.
enum class RejectWhen { Always, RejecterSet };
enum class Disposed { Always, WhenEjected, WhenEjectedAndCancelled };
struct DisposalRoute {
  RejectWhen rejectWhen;
  Disposed disposed;
};
// Empty for models without a routine: rejecting and ejecting do nothing at the scanner.
std::optional<DisposalRoute> DisposalOf(teskReaderType type);

// Whether a sheet stays in the transport until it is sent on, wherever a rejecter or an imprinter may want it.
bool HoldsSheets(teskReaderType type);

}  // namespace tesk
