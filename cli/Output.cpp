// Standard output and output files.
#include "cli/Output.h"

#include <utility>

#include "base/RunTimeError.h"
#include "cli/CommandError.h"

namespace tesk::cli {
namespace {

template <class Action>
auto AsCommandFailure(Action action) {
  try {
    return action();
  } catch (const RunTimeError& error) {
    throw CommandFailure(error.Description() + (error.Detail().empty() ? "" : "|" + error.Detail()));
  }
}

}  // namespace

void Output::Check() {
  AsCommandFailure([&] { file_->Check(); });
}
void Output::Write(std::string_view text) {
  AsCommandFailure([&] { file_->Append(text); });
}
void Output::Keep(std::string_view text) {
  AsCommandFailure([&] { file_->Keep(text); });
}
void Output::Settle(std::string_view text) {
  AsCommandFailure([&] { file_->Settle(text); });
}
void Output::Close() {
  AsCommandFailure([&] { file_->Close(); });
}

std::unique_ptr<Output> OpenStandardOutput() { return std::make_unique<Output>(platform::StandardOutput()); }

std::unique_ptr<Output> OpenOutput(const std::string& path, platform::OpenMode mode) {
  return AsCommandFailure([&] { return std::make_unique<Output>(platform::OpenOutputFile(path, mode)); });
}

}  // namespace tesk::cli
