// Texts of others on a terminal. Knows nobody.
#pragma once

#include <string>
#include <string_view>

namespace tesk {

// The text with "?" for everything that a terminal would obey instead of showing: control characters of either
// range, and bytes that are no UTF-8.
std::string ShownText(std::string_view text);

}  // namespace tesk
