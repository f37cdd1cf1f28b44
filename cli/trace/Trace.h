// Records the wire of a scan in a text file: every byte in both directions with its time, every wait and
// its end. docs/cli.md gives the grammar. Knows the transport.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cli/trace/LineObserver.h"
#include "transport/HostLoop.h"
#include "transport/OneShotTimer.h"

namespace tesk::cli {

class Trace : public LineObserver {
 public:
  // Takes a whole line; throws CommandFailure.
  using Sink = std::function<void(std::string_view)>;

  // `failed` is told once why a line cannot be written; nothing is recorded from then on.
  Trace(std::shared_ptr<const Clock> clock, std::function<void(const std::string&)> failed);

  // Writes the lines before the first event. settings: as the engine has them, in one line. Nothing is recorded
  // before.
  void Begin(Sink sink, int readerType, std::string_view readerName, std::string_view settings);
  // How a wait that ends without bytes or time-out is told from one that got its answer.
  void CancelledBy(std::function<bool()> cancelled) { cancelled_ = std::move(cancelled); }

  void Opened(std::int16_t port, const LineSettings& settings) override;
  void Closed() override;
  void Sent(std::string_view bytes) override { WriteBytes('>', bytes); }
  void Received(std::string_view bytes) override { WriteBytes('<', bytes); }

  void WaitBegins(std::int32_t milliseconds);
  void WaitEnds(bool timedOut);  // without effect where no wait is open

 private:
  void WriteBytes(char direction, std::string_view bytes);
  void WriteEvent(std::string_view text);
  void WriteLine(const std::string& line);

  Sink sink_;
  std::shared_ptr<const Clock> clock_;
  std::function<void(const std::string&)> failed_;
  std::function<bool()> cancelled_ = [] { return false; };
  TimePoint start_;
  bool waiting_ = false;
};

// A time-out timer whose waits are recorded.
class TracedTimer : public OneShotTimer {
 public:
  TracedTimer(std::shared_ptr<OneShotTimer> timer, std::shared_ptr<Trace> trace)
      : timer_(std::move(timer)), trace_(std::move(trace)) {}

  bool Enabled() const override;
  void SetEnabled(bool enabled) override;
  std::int32_t Interval() const override { return timer_->Interval(); }
  void SetInterval(std::int32_t milliseconds) override { timer_->SetInterval(milliseconds); }

 private:
  std::shared_ptr<OneShotTimer> timer_;
  std::shared_ptr<Trace> trace_;
};

inline constexpr std::size_t kBytesPerTraceLine = 16;

// Bytes as people read them: "." for what is not printable.
std::string PrintableBytes(std::string_view bytes);

// "9600,N,8,1", as everybody writes line settings.
std::string LineSettingsText(const LineSettings& settings);

}  // namespace tesk::cli
