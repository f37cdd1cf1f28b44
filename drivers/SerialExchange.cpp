// The conversation of a driver routine with a serial scanner.
#include "drivers/SerialExchange.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <ranges>
#include <utility>

#include "base/RunTimeError.h"
#include "transport/basUtils.h"

namespace tesk {
namespace {

constexpr std::size_t kLongestRest = 65536;  // bytes in a row that nobody waits for; more than any sheet has
constexpr std::size_t kMostAnswers = 64;     // to one command, whose tails are remembered

// Bytes gather for so long before the next look at a line that trickles.
constexpr Milliseconds kGathering{5};
// The host's messages need not run oftener than this.
constexpr Milliseconds kMessagesWait{15};

}  // namespace

// What has become of a wait's limits.
class SerialExchange::Watch {
 public:
  Watch(SerialExchange& line, const Limits& limits) : line_(line), limits_(limits) {
    line_.timer_->SetEnabled(true);
  }

  void PieceCame() {
    if (limits_.time == Limits::Time::Piece) line_.timer_->SetEnabled(true);
  }
  // How the wait ends now; empty: it goes on.
  std::optional<Wait> Over() {
    if (line_.Cancelled()) {
      if (!cancelledAt_) cancelledAt_ = line_.reader_.Now();
      if (line_.reader_.Now() - *cancelledAt_ >= limits_.grace) return Wait::Cancelled;
    }
    if (limits_.time != Limits::Time::Endless && !line_.timer_->Enabled()) return Wait::TimedOut;
    return std::nullopt;
  }

 private:
  SerialExchange& line_;
  Limits limits_;
  std::optional<TimePoint> cancelledAt_;
};

SerialSession::Lengths SerialSession::TailLengths(const std::string& command) const {
  const auto known = tails.find(command);
  if (known == tails.end() || known->second.empty()) return {};
  const auto length = [](const auto& entry) { return entry.second.size(); };
  const auto [shortest, longest] = std::ranges::minmax(known->second | std::views::transform(length));
  return {shortest, longest};
}

SerialExchange::SerialExchange(clsTeskReader& reader, std::shared_ptr<SerialSession> session)
    : reader_(reader),
      comm_(reader.fComm()),
      port_(Deref(comm_).mscComm()),
      timer_(Deref(comm_).tmrScan()),
      session_(std::move(session)) {}

// ---- Sending

std::string SerialExchange::Ask(std::string_view bytes) {
  Surplus();
  std::string before;
  if (session_->outOfStep) session_->outOfStep = !FellQuiet(kUnusualPause, before);
  port_->Output(bytes);
  return before;
}

// ---- Waiting for a shape

Wait SerialExchange::Take(Shape& answer, const Limits& limits) {
  // Until the answer is whole: a shape may throw, and the line may break.
  const bool before = std::exchange(session_->outOfStep, true);
  Watch watch(*this, limits);
  lookedAt_ = reader_.Now();
  for (;;) {
    const std::int32_t taken = TakeWaiting(answer);
    const std::size_t missing = answer.Missing();
    if (missing == 0) {
      session_->outOfStep = before;
      return End(Wait::Arrived);
    }
    if (taken > 0) watch.PieceCame();
    if (const auto over = watch.Over()) return End(*over);
    Turn(missing, taken);
  }
}

Wait SerialExchange::Await(const Limits& limits) {
  Watch watch(*this, limits);
  while (port_->InBufferCount() == 0) {
    if (const auto over = watch.Over()) return End(*over);
    Turn(1, 0);
  }
  return End(Wait::Arrived);
}

std::int32_t SerialExchange::TakeWaiting(Shape& answer) {
  port_->SetInputLen(1);
  std::int32_t taken = 0;
  for (std::int32_t waiting = port_->InBufferCount(); taken < waiting && answer.Missing() > 0; ++taken) {
    const auto byte = basUtils::ReadFromComPort(*port_, *timer_, {reader_.Loop(), reader_.SleepTime()});
    answer.Take(static_cast<std::uint8_t>(byte[0]));
  }
  return taken;
}

// Where a long rest is missing and bytes come no faster than the line's rate, they gather for a moment first:
// a wake-up for each would cost more than the byte. The last ones must not have to wait for the gathering.
void SerialExchange::Turn(std::size_t missing, std::int32_t taken) {
  constexpr std::int64_t kSlack = 4;  // bytes
  const TimePoint now = reader_.Now();
  const auto since = std::chrono::duration_cast<Milliseconds>(now - std::exchange(lookedAt_, now));
  const bool trickles = taken > 0 && taken <= CharactersIn(since) + kSlack;
  const auto last = CharactersIn(kGathering + reader_.Loop().Tick()) + 1;
  if (trickles && static_cast<std::int64_t>(missing) > last) {
    reader_.Loop().Sleep(kGathering);
    if (now - messagesRanAt_ < kMessagesWait) return;
  }
  messagesRanAt_ = now;
  reader_.Loop().DoEvents(port_->Arrival());
}

Wait SerialExchange::End(Wait wait) {
  timer_->SetEnabled(false);
  if (wait != Wait::Arrived) session_->outOfStep = true;
  return wait;
}

// ---- Waiting for quiet

std::string SerialExchange::Tail(const std::string& command, const std::string& answer, Milliseconds first) {
  auto& known = session_->tails[command];
  std::string tail;
  if (const auto before = known.find(answer); before != known.end()) {
    Bytes expected(before->second.size());
    if (Take(expected, kDespiteCancel) == Wait::Arrived && expected.Text() == before->second) {
      return expected.Text();
    }
    tail = expected.Text();
  } else {
    tail = AsLongAs(session_->TailLengths(command).shortest);
  }
  tail += UntilQuiet(known.empty() ? first : Milliseconds(0));
  if (known.size() >= kMostAnswers) known.clear();
  // A silence that a cancel has cut short tells nothing.
  if (!Cancelled()) known[answer] = tail;
  return tail;
}

// What stands behind an answer that never came before, where as much is likely to come.
std::string SerialExchange::AsLongAs(std::size_t length) {
  Bytes likely(length);
  port_->SetInputLen(1);
  while (likely.Missing() > 0 && Follows(kUnusualPause))
    likely.Take(static_cast<std::uint8_t>(port_->Input()[0]));
  return likely.Text();
}

bool SerialExchange::Follows(Milliseconds quiet, Shortened shortened) {
  constexpr Milliseconds kSlice{5};
  const TimePoint start = reader_.Now();
  while (port_->InBufferCount() == 0) {
    const auto silence = std::chrono::duration_cast<Milliseconds>(reader_.Now() - start);
    const bool soon = shortened == Shortened::ByCancel && Cancelled();
    const auto left = (soon ? Moment() : std::max(quiet, Moment())) - silence;
    if (left.count() <= 0) return false;
    reader_.Loop().DoEvents(port_->Arrival());
    if (port_->InBufferCount() == 0) reader_.Loop().Pause(port_->Arrival(), std::min(left, kSlice));
  }
  return true;
}

std::string SerialExchange::UntilQuiet(Milliseconds quiet) {
  std::string bytes;
  FellQuiet(quiet, bytes);
  return bytes;
}

// A line that is left at a cancel may be in the middle of a sheet.
bool SerialExchange::FellQuiet(Milliseconds quiet, std::string& bytes) {
  Watch watch(*this, {Limits::Time::Piece, kUnusualPause});
  while (Follows(quiet)) {
    // The time-out may be shorter than the silence that came before the first byte.
    if (bytes.empty()) watch.PieceCame();
    port_->SetInputLen(0);
    bytes += port_->Input();
    const auto over = watch.Over();
    if (over == Wait::Cancelled) return End(*over) == Wait::Arrived;
    if (over || bytes.size() > kLongestRest) throw basUtils::SendsWithoutEnd();
  }
  timer_->SetEnabled(false);
  return true;
}

bool SerialExchange::Surplus() {
  if (port_->InBufferCount() == 0) return false;
  session_->Distrust();
  return true;
}

void SerialExchange::Clear() { basUtils::ClearComPortBuffer(*port_); }

Milliseconds SerialExchange::Moment() const {
  return Milliseconds(20 + 30 * 1000 / std::max<std::int32_t>(reader_.BaudRate(), 110));
}

std::int64_t SerialExchange::CharactersIn(Milliseconds time) const {
  const std::int64_t bits = 2 + std::clamp<std::int32_t>(reader_.DataBits(), 4, 8);  // start and stop
  return time.count() * std::max<std::int32_t>(reader_.BaudRate(), 110) / (bits * 1000);
}

bool IsLineEnd(std::string_view text) { return text.find_first_not_of("\r\n") == std::string_view::npos; }

// ---- Pauses

void SerialExchange::Poll() {
  reader_.Loop().DoEvents(port_->Arrival());
  if (port_->InBufferCount() > 0 || reader_.CancelScan()) return;
  // However long the host's SleepTime, a cancel and the time-out are noticed within a second.
  reader_.Loop().Pause(port_->Arrival(), Milliseconds(std::clamp(reader_.SleepTime(), 0, 1000)));
}

void SerialExchange::Pause(Milliseconds time) {
  constexpr Milliseconds kSlice{1000};
  for (; time > kSlice; time -= kSlice) {
    reader_.Loop().Sleep(kSlice);
    reader_.Loop().DoEvents(kNoArrivalHandle);
  }
  if (time.count() > 0) reader_.Loop().Sleep(time);
}

void SerialExchange::Rest(std::int32_t factor) {
  Pause(Milliseconds(std::int64_t{factor} * std::max(reader_.SleepTime(), 0)));
}

}  // namespace tesk
