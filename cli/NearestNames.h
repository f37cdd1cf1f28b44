// Which names come closest to one that does not exist. Knows nobody.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesk::cli {

// The least number of letters to insert, delete or replace to turn one text into the other; case counts.
std::size_t EditDistance(std::string_view from, std::string_view to);

// At most `count` of `names`, the nearest first; names that contain `wanted` come before all others. The
// case of letters does not matter. Names with nothing in common are left out.
std::vector<std::string> NearestNames(std::string_view wanted, std::span<const std::string_view> names,
                                      std::size_t count = 4);

// "A, B or C".
std::string AlternativesText(std::span<const std::string> names);

}  // namespace tesk::cli
