// Messages and progress on standard error.
#include "cli/Console.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "base/RunTimeError.h"
#include "base/ShownText.h"
#include "base/conversions.h"

namespace tesk::cli {
namespace {

constexpr std::size_t kProgressWidth = 79;  // characters; a longer line would wrap and not go away

struct Cause {
  RunTimeError error;
  const char* title;
  const char* text;
};

// What stands behind the errors of the automation run-time that reach an operator.
const std::array<Cause, 5>& Causes() {
  static const std::array<Cause, 5> causes{{
      {SubscriptOutOfRange(), "Data Error",
       "The scanner sent what the sheet cannot hold: a mark outside it, or a value that is none.|Check that "
       "the model is the right one, the cable and the line's settings, and where they are given the form's "
       "sizes and windows (--side1, --side2, --window)."},
      {Overflow(), "Data Error",
       "A setting or an answer of the scanner is larger than the scanner's protocol can say.|Check that the "
       "model is the right one, and what --set, --window and --imprint-position give."},
      {TypeMismatch(), "Data Error",
       "The scanner sent a text where a number belongs.|Check that the model is the right one, and the "
       "line's settings."},
      {InvalidCall(), "Settings Error",
       "The settings do not fit this model.|Check what --set, --side1, --side2 and --window give."},
      {ObjectNotSet(), "Program Error", "The program lacks a part of the reader. Please report this."},
  }};
  return causes;
}

// An error that has no title of its own: what the operator can do about it, and what to quote when asking for help.
OperatorMessage InWordsOfTheTrade(const ErrorReport& report) {
  const std::string quote = fmt::format("|(error {} in {})", report.number, report.source);
  for (const Cause& cause : Causes()) {
    if (cause.error.Description() == report.message) return {cause.title, cause.text + quote};
  }
  constexpr std::int32_t kFirstOfPorts = 8000;
  return {report.number >= kFirstOfPorts ? "Port Error" : "Reader Error",
          report.message + (report.detail.empty() ? "" : '|' + report.detail) + quote};
}

}  // namespace

void Console::Message(std::string_view title, std::string_view text) {
  ClearProgress();
  const std::string whole = fmt::format("{}: {}", title, text);
  // Some reports join their lines with line feeds.
  const std::string lines = ShownText(Replace(Replace(Replace(whole, "\r\n", "|"), "\n", "|"), "\t", " "));
  stream_ << Replace(lines, "|", "\n  ") << std::endl;
}

void Console::Progress(const std::string& line) {
  if (!animated_) return;
  std::string shown = ShownText(line);
  std::size_t end = std::min(shown.size(), kProgressWidth);
  // Not within a character.
  while (end < shown.size() && (static_cast<unsigned char>(shown[end]) & 0xC0U) == 0x80) --end;
  shown.resize(end);
  stream_ << fmt::format("\r{:<{}}", shown, shown_) << std::flush;
  shown_ = std::max(shown.size(), shown_);
}

void Console::ClearProgress() {
  if (shown_ == 0) return;
  stream_ << fmt::format("\r{:<{}}\r", "", shown_) << std::flush;
  shown_ = 0;
}

OperatorMessage MessageOf(const ErrorReport& report) {
  if (report.title == LoadString("Application Error")) return InWordsOfTheTrade(report);
  return {report.title, report.detail.empty() ? report.message : report.message + '|' + report.detail};
}

void ConsoleHost::Show(const OperatorMessage& message) {
  ++messages_;
  if (recent_.size() < kMostRecent) recent_.push_back(message);
  console_->Message(message.title, message.text);
}

bool ConsoleHost::MsgBoxEx(const std::string& title, const std::string& text) {
  Show({title, text});
  return true;
}

void ConsoleHost::RaiseError(const ErrorReport& report) {
  if (!silent_) Show(MessageOf(report));
}

}  // namespace tesk::cli
