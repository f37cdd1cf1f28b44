// The writer of traces.
#include "cli/trace/Trace.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kHandshakes[] = {"none", "xon-xoff", "hardware", "both"};

std::string_view HandshakeName(teskReaderFlowControl handshaking) {
  const auto index = static_cast<std::size_t>(handshaking);
  return index < std::size(kHandshakes) ? kHandshakes[index] : "unknown";
}

// "1B 51 53 54 53 0D                                |.QSTS.|"
std::string BytesText(std::string_view bytes) {
  std::string hex;
  for (const char byte : bytes) hex += fmt::format("{:02X} ", static_cast<unsigned char>(byte));
  return fmt::format("{:<{}} |{}|", hex, kBytesPerTraceLine * 3, PrintableBytes(bytes));
}

}  // namespace

std::string PrintableBytes(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    text += code >= 32 && code < 127 ? byte : '.';
  }
  return text;
}

std::string LineSettingsText(const LineSettings& settings) {
  return fmt::format("{},{},{},{}", settings.bitRate, settings.parity, settings.dataBits,
                     NumberText(settings.stopBits));
}

Trace::Trace(std::shared_ptr<const Clock> clock, std::function<void(const std::string&)> failed)
    : clock_(std::move(clock)), failed_(std::move(failed)), start_(clock_->Now()) {}

void Trace::Begin(Sink sink, int readerType, std::string_view readerName, std::string_view settings) {
  sink_ = std::move(sink);
  start_ = clock_->Now();
  WriteLine("teskread-trace 1");
  WriteLine(fmt::format("version {}", TESKREAD_VERSION));
  WriteLine(fmt::format("reader {} {}", readerType, readerName));
  WriteLine(fmt::format("settings {}", settings));
  WriteLine("");
}

void Trace::Opened(std::int16_t port, const LineSettings& settings) {
  WriteEvent(
      fmt::format("open {} {} {}", port, LineSettingsText(settings), HandshakeName(settings.handshaking)));
}

void Trace::Closed() {
  WaitEnds(false);
  WriteEvent("close");
}

void Trace::WaitBegins(std::int32_t milliseconds) {
  WaitEnds(false);
  waiting_ = true;
  WriteEvent(fmt::format("wait {}", milliseconds));
}

void Trace::WaitEnds(bool timedOut) {
  if (!std::exchange(waiting_, false)) return;
  WriteEvent(timedOut ? "end timed out" : cancelled_() ? "end cancelled" : "end arrived");
}

void Trace::WriteBytes(char direction, std::string_view bytes) {
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kBytesPerTraceLine))) {
    WriteEvent(fmt::format("{} {}", direction, BytesText(bytes.substr(0, kBytesPerTraceLine))));
  }
}

void Trace::WriteEvent(std::string_view text) {
  const auto since = std::chrono::duration_cast<std::chrono::microseconds>(clock_->Now() - start_).count();
  WriteLine(fmt::format("{:>4}.{:06} {}", since / 1'000'000, since % 1'000'000, text));
}

void Trace::WriteLine(const std::string& line) {
  if (!sink_) return;
  try {
    sink_(line + '\n');
  } catch (const CommandFailure& failure) {
    sink_ = nullptr;
    failed_(failure.what());
  }
}

bool TracedTimer::Enabled() const {
  const bool enabled = timer_->Enabled();
  if (!enabled) trace_->WaitEnds(true);
  return enabled;
}

void TracedTimer::SetEnabled(bool enabled) {
  // Asked first: a timer that has run out is disabled by whoever saw it.
  const bool ranOut = !timer_->Enabled();
  timer_->SetEnabled(enabled);
  if (enabled) {
    trace_->WaitBegins(timer_->Interval());
  } else {
    trace_->WaitEnds(ranOut);
  }
}

}  // namespace tesk::cli
