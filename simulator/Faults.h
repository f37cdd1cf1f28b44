// What can go wrong in a simulated scanner, as data: each scanner family names the kinds that it knows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tesk::simulator {

enum class FaultKind : std::uint8_t {
  Jam,
  JamReading,
  DoubleFeed,
  Timing,
  FormError,
  CommandError,
  UnknownStatus,
  ShortStatus,
  Empty,
  Silence,
  SilenceStatus,
  SilenceEject,
  SilenceReset,
  RefuseThreshold,
  RefuseFormStart,
  RefuseRegion,
  RefuseFormEnd,
  RefusePrinter,
  Garbage,
  Overrun,
  Short,
  Cut,
  Late,
  Skew,
  CoverOpen,
  StatusCode,
  StatusCodeBack,
  WrongMode,
  RefuseReset,
  SilenceMode,
  SilenceFitted,
  SilenceTimingMarks,
  SilenceBarcodes,
  SilencePrint,
  ReadHead,
  WrongCount,
  TooManyRows,
  QuietEnd,
  ShortMode,
  UnknownMode,
  StuckMode,
  FrontSensor,
  BackSensor,
  UnderWay,
  SilenceThreshold,
  InvalidThreshold,
  NoLineFeed,
  TwoByteEnd,
  SilenceIdentify,
  GarbageIdentify,
  NoVersion,
  CutIdentify,
  TooDark,
};

// A fault happens once.
struct Fault {
  FaultKind kind;
  std::int32_t number = 1;  // of the sheet, or of the command where the kind is about a command; from 1
  std::size_t byte = 0;     // Cut: how many bytes still arrive; StatusCode and StatusCodeBack: the code

  bool operator==(const Fault&) const = default;
};

struct FaultDescription {
  FaultKind kind;
  std::string_view name;         // "double-feed"
  std::string_view form;         // as a person types it: "double-feed@SHEET"
  std::string_view description;  // one line
};

const FaultDescription& Describe(FaultKind kind);

struct ParsedFault {
  std::optional<Fault> fault;
  std::string error;  // one sentence that lists what is accepted; empty where `fault` is set
};

// Reads "KIND@NUMBER", "cut@BYTE@SHEET" or "status@CODE@SHEET", where `accepted` holds the kind.
ParsedFault ParseFault(std::string_view text, std::span<const FaultKind> accepted);

}  // namespace tesk::simulator
