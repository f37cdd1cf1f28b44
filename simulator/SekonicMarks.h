// The simulated Sekonic serial models, and the marks of a sheet as their wire carries them. It knows base
// alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/SideArray.h"
#include "base/enumerations.h"

namespace tesk::simulator {

// What a model has.
struct SekonicModel {
  teskReaderType reader;
  bool cards;                // SR-410 and SR-430: a fixed set-up, no questions, no imprinter
  std::int32_t readingMode;  // what it answers to the question; the card readers are not asked
  bool duplex;
  bool rejecter;
  std::int32_t columns;
  std::int16_t darkest;
};

// Null where `reader` is none of them.
const SekonicModel* FindSekonicModel(teskReaderType reader);

// A read window as a host defines it, all values from 1; a gap matters between several positions alone.
struct SekonicWindow {
  std::int32_t firstRow, rows, rowGap, firstColumn, columns, columnGap;

  // From STX and 15 digits; empty where it is anything else or lies outside 1..lastColumn.
  static std::optional<SekonicWindow> Parse(std::string_view line, std::int32_t lastColumn);
};

// `rows` rows of pairs of column and darkness, each row ended by a blank and CR. card: the columns are named
// by the punch positions of a card.
std::string SekonicPageRows(const SekonicModel& model, const SideArray& side, std::int32_t rows, bool card);

// The items of the windows, each a blank or pairs of choice and darkness with "," between, ended by CR.
std::string SekonicWindowItems(const SekonicModel& model, const SideArray& side,
                               const std::vector<SekonicWindow>& windows);

// `digits` decimal digits at `from`; -1 where they are not there.
std::int32_t SekonicDigits(std::string_view text, std::size_t from, std::size_t digits);

}  // namespace tesk::simulator
