// Files that a command reads. Knows nobody.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace tesk::cli {

// A path as the command line gives it, whatever the system's code page.
inline std::filesystem::path PathOf(const std::string& utf8) {
  return {std::u8string(utf8.begin(), utf8.end())};
}

// Throws CommandFailure for a folder and where the system does not open the file.
std::ifstream OpenInputFile(const std::string& file);

}  // namespace tesk::cli
