// Where results go: standard output or a file, text by text, every failure told. Knows the platform.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tesk::cli {

class Output {
 public:
  virtual ~Output() = default;
  // Hands the whole text on at once. Throws CommandFailure when it is not taken.
  virtual void Write(std::string_view text) = 0;
  // To be called at the end; errors as above.
  virtual void Close() {}
};

std::unique_ptr<Output> OpenStandardOutput();
// Empties the file, or creates it. However the program ends, the file ends with a whole text. Throws
// CommandFailure.
std::unique_ptr<Output> OpenOutputFile(const std::string& path);

}  // namespace tesk::cli
