// How a batch ended and what came of it: for the operator, for scripts, as exit status. Knows base.
#pragma once

#include <cstdint>
#include <string>

#include "base/HostServices.h"

namespace tesk::cli {

enum class BatchEnd {
  HopperEmpty,
  MaxSheets,
  Interrupted,
  Message,      // the scanner's, the engine's or the program's own
  SilentFault,  // the scanner reported a condition for which there is no text
};

struct BatchReport {
  std::int32_t sheets = 0;    // written
  std::int32_t rejected = 0;  // read and not written
  std::int32_t warnings = 0;
  double perMinute = 0;  // written sheets
  BatchEnd end = BatchEnd::HopperEmpty;
  OperatorMessage message;  // of an end by message
  int signal = 0;           // of an interrupt
  bool traceFailed = false;
};

// What the operator is told at the end, lines joined with "|".
std::string ClosingText(const BatchReport& report);
// One JSON object and a line feed.
std::string SummaryJson(const BatchReport& report);
// 0 for an end that was asked for or an empty hopper with at least one sheet; an interrupt's own; else 1.
int StatusOf(const BatchReport& report);

}  // namespace tesk::cli
