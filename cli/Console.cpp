// Messages and progress on standard error.
#include "cli/Console.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/conversions.h"

namespace tesk::cli {
namespace {

constexpr std::size_t kProgressWidth = 79;  // characters; a longer line would wrap and not go away

std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; }, '?');
  return text;
}

}  // namespace

void Console::Message(std::string_view title, std::string_view text) {
  ClearProgress();
  const std::string whole = fmt::format("{}: {}", title, text);
  // Some reports join their lines with line feeds.
  const std::string lines = Printable(Replace(Replace(Replace(whole, "\r\n", "|"), "\n", "|"), "\t", " "));
  stream_ << Replace(lines, "|", "\n  ") << std::endl;
}

void Console::Progress(const std::string& line) {
  if (!animated_) return;
  const std::string shown = Printable(line).substr(0, kProgressWidth);
  stream_ << fmt::format("\r{:<{}}", shown, shown_) << std::flush;
  shown_ = std::max(shown.size(), shown_);
}

void Console::ClearProgress() {
  if (shown_ == 0) return;
  stream_ << fmt::format("\r{:<{}}\r", "", shown_) << std::flush;
  shown_ = 0;
}

bool ConsoleHost::MsgBoxEx(const std::string& title, const std::string& text) {
  ++messages_;
  console_->Message(title, text);
  return true;
}

void ConsoleHost::RaiseError(const ErrorReport& report) {
  if (silent_) return;
  ++messages_;
  std::string text = report.message;
  if (!report.detail.empty()) text += '|' + report.detail;
  if (report.title == LoadString("Application Error")) {
    text += fmt::format("|(error {} in {})", report.number, report.source);
  }
  console_->Message(report.title, text);
}

}  // namespace tesk::cli
