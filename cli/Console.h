// Standard error as the operator sees it: messages, and on a terminal one progress line below them. Knows
// base alone.
#pragma once

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "base/HostServices.h"
#include "cli/scan/BatchReport.h"

namespace tesk::cli {

// A failure to write is ignored: there is nobody left to tell.
class Console {
 public:
  // animated: `stream` is a terminal.
  Console(std::ostream& stream, bool animated) : stream_(stream), animated_(animated) {}

  // "TITLE: TEXT"; the lines of `text` behind the first "|" follow, indented. Control characters are shown
  // as "?".
  void Message(std::string_view title, std::string_view text);
  bool Animated() const { return animated_; }
  // Replaces the progress line; without effect where nothing is animated.
  void Progress(const std::string& line);
  // Takes the progress line away before something else is printed, also on standard output.
  void ClearProgress();

 private:
  std::ostream& stream_;
  bool animated_;
  std::size_t shown_ = 0;  // characters of the progress line
};

// A report as the operator reads it: one without a title of its own says what may have caused it, and ends with
// its number and source.
OperatorMessage MessageOf(const ErrorReport& report);

// The host's side of the engine: its messages and error reports go to the console and are counted.
class ConsoleHost : public HostServices {
 public:
  explicit ConsoleHost(std::shared_ptr<Console> console) : console_(std::move(console)) {}

  bool MsgBoxEx(const std::string& title, const std::string& text) override;
  void RaiseError(const ErrorReport& report) override;
  bool Silent() const override { return silent_; }
  void SetSilent(bool silent) override { silent_ = silent; }
  std::string ApplicationName() const override { return "teskread"; }

  // How many messages the operator has got.
  int Messages() const { return messages_; }
  // The first of them since the last Forget, kMostRecent at most.
  const std::vector<OperatorMessage>& Recent() const { return recent_; }
  void Forget() { recent_.clear(); }

  static constexpr std::size_t kMostRecent = 20;

 private:
  void Show(const OperatorMessage& message);

  std::shared_ptr<Console> console_;
  bool silent_ = false;
  int messages_ = 0;
  std::vector<OperatorMessage> recent_;
};

}  // namespace tesk::cli
