// Reads the sheets of a simulated scanner from a file of what `scan --format ndjson` writes. Knows the
// simulator.
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

#include "simulator/Sheet.h"

namespace tesk::cli {

// Every line is checked: its form, whole rows of equal length, values from 0 to `darkest`. Empty lines are
// skipped. Throws CommandFailure that names `file` and the line.
std::vector<simulator::Sheet> ReadSheets(std::istream& stream, const std::string& file, std::int16_t darkest);

std::vector<simulator::Sheet> ReadSheetFile(const std::string& file, std::int16_t darkest);

}  // namespace tesk::cli
