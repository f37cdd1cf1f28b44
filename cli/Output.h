// Where results go: standard output or a file, text by text, every failure told. Knows the platform.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/Platform.h"

namespace tesk::cli {

// All throw CommandFailure with the reason and what to do.
class Output {
 public:
  explicit Output(std::unique_ptr<platform::OutputFile> file) : file_(std::move(file)) {}

  // As of platform::OutputFile.
  void Check();
  void Write(std::string_view text);
  void Keep(std::string_view text);
  void Settle(std::string_view text);
  void Close();
  void Discard() { file_->Discard(); }

 private:
  std::unique_ptr<platform::OutputFile> file_;
};

std::unique_ptr<Output> OpenStandardOutput();
// However the program ends, the file ends with a whole text.
std::unique_ptr<Output> OpenOutput(const std::string& path, platform::OpenMode mode);

}  // namespace tesk::cli
