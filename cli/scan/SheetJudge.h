// Judges a sheet that a driver has read: whether it can be right, and what looks wrong with it. Knows the engine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/values.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

class SheetJudge {
 public:
  // The sizes that were asked for; empty where none were.
  SheetJudge(std::optional<SheetSizes> side1, std::optional<SheetSizes> side2)
      : side1_(std::move(side1)), side2_(std::move(side2)) {}

  // Why the sheet that the engine holds cannot be right: a value outside the model's scale. Empty where it can.
  std::optional<std::string> Refusal(const clsTeskReader& engine) const;
  // What looks wrong: rows or positions that did not come, timing marks that differ from the sizes.
  std::vector<std::string> Warnings(const clsTeskReader& engine) const;

 private:
  std::optional<SheetSizes> side1_;
  std::optional<SheetSizes> side2_;
};

// The top of the scale of a model's marks; models that tell marks alone have two values, 0 and the threshold
// plus one.
std::int32_t DarkestValue(const clsTeskReader& engine);

}  // namespace tesk::cli
