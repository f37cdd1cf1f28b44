#include "cli/inputFile.h"

#include <cerrno>
#include <cstring>

#include <fmt/format.h>

#include "cli/CommandError.h"

namespace tesk::cli {

std::ifstream OpenInputFile(const std::string& file) {
  const auto path = PathOf(file);
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) throw CommandFailure(file + ": is a directory");
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (stream) return stream;
  throw CommandFailure(fmt::format("{}: cannot be read: {}", file, std::strerror(errno ? errno : ENOENT)));
}

}  // namespace tesk::cli
