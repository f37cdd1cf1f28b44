// What the error codes of the Sekonic USB readers mean, in the words that operators know.
#pragma once

#include <cstdint>
#include <string_view>

namespace tesk::basSekonicSR {

// Not an error of the read: nothing was read and nothing is to be said about it.
inline constexpr std::uint32_t kNothingRead = 0x40110000;
// The sheet was read although its timing line was not in order: front, back, both.
inline constexpr std::uint32_t kTimingLineErrors[] = {0x41120003, 0x42120003, 0x40120003};

// The text of a code; for a code that is not known, the one that introduces it.
std::string_view ErrorTextOf(std::uint32_t code);

}  // namespace tesk::basSekonicSR
