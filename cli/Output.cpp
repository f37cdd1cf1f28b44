// Standard output and output files.
#include "cli/Output.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <utility>

#include <fmt/format.h>

#include "base/RunTimeError.h"
#include "cli/CommandError.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

class StandardOutput : public Output {
 public:
  void Write(std::string_view text) override {
    errno = 0;
    std::cout << text << std::flush;
    if (std::cout) return;
    const int reason = errno;
    throw CommandFailure(fmt::format("standard output takes nothing more: {}",
                                     reason == 0 ? "it was closed" : std::strerror(reason)));
  }
};

class FileOutput : public Output {
 public:
  explicit FileOutput(std::string path) : path_(std::move(path)) {
    Told([&] { file_ = platform::CreateOutputFile(path_); });
  }
  void Write(std::string_view text) override {
    Told([&] { file_->Append(text); });
  }
  void Close() override {
    Told([&] { file_->Close(); });
  }

 private:
  template <class Action>
  void Told(Action action) {
    try {
      action();
    } catch (const RunTimeError& error) {
      throw CommandFailure(fmt::format("{}: {}{}{}", path_, error.Description(),
                                       error.Detail().empty() ? "" : "|", error.Detail()));
    }
  }

  std::string path_;
  std::unique_ptr<platform::OutputFile> file_;
};

}  // namespace

std::unique_ptr<Output> OpenStandardOutput() { return std::make_unique<StandardOutput>(); }

std::unique_ptr<Output> OpenOutputFile(const std::string& path) { return std::make_unique<FileOutput>(path); }

}  // namespace tesk::cli
