// What kind of terminal this is, as the environment names it. Knows the descriptions of terminals.
#pragma once

#include <string>
#include <vector>

namespace tesk {

// Why TERM in the environment names no terminal that can be drawn on, lines joined with "|"; empty where it does.
std::string WhyNotDrawable();

struct DescribedKey {
  std::string sequence;
  int key;  // the terminal library's number
};

// What the description of the terminal in use says of its keys.
std::vector<DescribedKey> DescribedKeys();
// Whether its commands are those of the ANSI family, which ignores a mode that it does not have.
bool IgnoresUnknownModes();

}  // namespace tesk
