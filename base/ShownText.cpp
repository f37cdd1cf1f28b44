// UTF-8 without its control characters.
#include "base/ShownText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tesk {
namespace {

struct LeadByte {
  unsigned mask;
  unsigned mark;
  std::size_t length;   // of the character in bytes
  std::uint32_t least;  // a smaller one has a shorter form
};

constexpr LeadByte kLeadBytes[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

bool IsShown(std::uint32_t character) {
  const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
  // They end a line on some terminals, or turn its direction around.
  const bool separator = (character >= 0x200E && character <= 0x200F) ||
                         (character >= 0x2028 && character <= 0x202E) ||
                         (character >= 0x2066 && character <= 0x2069);
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  return !control && !separator && !surrogate && character <= 0x10FFFF;
}

// The length of the character that `text` begins with; 0 where it is not to be shown.
std::size_t ShownLength(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  for (const auto& [mask, mark, length, least] : kLeadBytes) {
    if ((byte(0) & mask) != mark || length > text.size()) continue;
    std::uint32_t character = byte(0) & ~mask & 0xFFU;
    for (std::size_t at = 1; at < length; ++at) {
      if ((byte(at) & 0xC0U) != 0x80) return 0;
      character = character << 6 | (byte(at) & 0x3FU);
    }
    return character >= least && IsShown(character) ? length : 0;
  }
  return 0;
}

// How many bytes one "?" stands for: the whole of a character where it is one.
std::size_t HiddenLength(std::string_view text) {
  const auto follows = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; };
  const auto tail = std::find_if_not(text.begin() + 1, text.end(), follows);
  return static_cast<std::size_t>(tail - text.begin());
}

}  // namespace

std::string ShownText(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    std::size_t length = ShownLength(text);
    if (length > 0) {
      shown += text.substr(0, length);
    } else {
      shown += '?';
      length = HiddenLength(text);
    }
    text.remove_prefix(length);
  }
  return shown;
}

}  // namespace tesk
