// The catalogue of scanner models: two tables with a row per model, in the order in which profiles are kept.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/enumerations.h"
#include "profiles/catalogueCells.h"
#include "profiles/clsTeskReaderProfile.h"

namespace tesk {

// Identity, serial line and thresholds of a model.
struct IdentityRow {
  std::int16_t number;  // the row's own position, from 1
  teskReaderType type;
  std::string_view readerName;  // so that a row can be read; profiles take theirs from the reader type
  teskProfileType group;        // the filter bit that admits the model; none: always admitted
  teskReaderInterfaceType interfaceType;
  std::int32_t baudRate;
  std::int32_t dataBits;    // 0 where there is no serial line
  std::string_view parity;  // likewise empty
  float stopBits;           // likewise 0
  teskReaderFlowControl flowControl;
  PairCell serialFields;  // of all five line settings alike
  std::int16_t markCutOff;
  DiscriminationCell markDiscrimination;
  ThresholdCell recognitionThreshold;
  std::int16_t erasureThreshold;
  std::int16_t maxCols;
  bool locate;
  bool firmware;
};

// What the same model can do.
struct CapabilityRow {
  teskReaderType type;
  SwitchCell readerGrade;
  SwitchCell barcode;
  SwitchCell duplex;
  SwitchCell feeder;
  SwitchCell rejecter;
  SwitchCell printer;
  SwitchCell windowing;
  SwitchCell imaging;
  SwitchCell continuous;
  ColorDepthCell colorDepth;
  ResolutionCell resolution;
  bool printerPositionEnabled;
  PairCell sleepTime;
  PairCell timeOut;
  PairCell port;
};

// Both tables list the same 46 models in the same order.
std::span<const IdentityRow> IdentityRows();
std::span<const CapabilityRow> CapabilityRows();

// A new profile as the two rows of one model describe it.
clsTeskReaderProfile ProfileOf(const IdentityRow& identity, const CapabilityRow& capabilities);

}  // namespace tesk
