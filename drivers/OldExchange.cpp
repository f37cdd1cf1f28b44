// The conversation of a driver routine with a serial scanner.
#include "drivers/OldExchange.h"

#include <algorithm>
#include <cstddef>

#include "base/RunTimeError.h"
#include "transport/basUtils.h"

namespace tesk {
namespace {

constexpr std::size_t kLongestReply = 4096;  // bytes; no scanner's reply to a command is longer

// Turns of a wait with nothing to do, each of ten to twenty milliseconds.
constexpr int kGraceTurns = 100;

// A reply has ended when the line was silent this long: some characters at the line's rate, and the time for
// which serial adaptors hold received bytes back.
Milliseconds Gap(std::int32_t bitRate) { return Milliseconds(20 + 30 * 1000 / std::max(bitRate, 110)); }

}  // namespace

OldExchange::OldExchange(clsTeskReader& reader)
    : reader_(reader), comm_(reader.fComm()), port_(Deref(comm_).mscComm()), timer_(Deref(comm_).tmrScan()) {}

void OldExchange::Ask(std::string_view bytes) {
  Clear();
  port_->Output(bytes);
}

void OldExchange::Clear() { basUtils::DiscardInput(*port_); }

Wait OldExchange::ForBytes(std::int32_t count) {
  timer_->SetEnabled(true);
  while (port_->InBufferCount() < count) {
    reader_.Loop().DoEvents(port_->Arrival());
    if (reader_.CancelScan()) {
      timer_->SetEnabled(false);
      return Wait::Cancelled;
    }
    if (!timer_->Enabled() && port_->InBufferCount() < count) return Wait::TimedOut;
  }
  timer_->SetEnabled(false);
  return Wait::Arrived;
}

Wait OldExchange::ForBytesDespiteCancel() {
  timer_->SetEnabled(true);
  int grace = kGraceTurns;
  while (port_->InBufferCount() == 0) {
    reader_.Loop().DoEvents(port_->Arrival());
    const bool waiting = port_->InBufferCount() > 0;
    const bool givenUp = Cancelled() && --grace == 0;
    if (waiting || (timer_->Enabled() && !givenUp)) continue;
    timer_->SetEnabled(false);
    return givenUp ? Wait::Cancelled : Wait::TimedOut;
  }
  timer_->SetEnabled(false);
  return Wait::Arrived;
}

bool OldExchange::ComesSoon() {
  for (int turn = 0; turn < kGraceTurns && port_->InBufferCount() == 0 && !Cancelled(); ++turn) {
    reader_.Loop().DoEvents(port_->Arrival());
  }
  return port_->InBufferCount() > 0;
}

Wait OldExchange::ForBytesWithoutLimit() {
  while (port_->InBufferCount() == 0) {
    reader_.Loop().DoEvents(port_->Arrival());
    if (reader_.CancelScan()) return Wait::Cancelled;
  }
  return Wait::Arrived;
}

std::optional<std::uint8_t> OldExchange::TakeByte() {
  port_->SetInputLen(1);
  const std::string byte = port_->Input();
  if (byte.empty()) return std::nullopt;
  return static_cast<std::uint8_t>(byte[0]);
}

std::string OldExchange::TakeReply() {
  port_->SetInputLen(0);
  std::string reply = port_->Input();
  timer_->SetEnabled(true);
  while (timer_->Enabled() && !Cancelled() && FollowsWithoutGap()) {
    reply += port_->Input();
    if (reply.size() > kLongestReply) throw basUtils::SendsWithoutEnd();
  }
  timer_->SetEnabled(false);
  return reply;
}

// The silence lasts its full time: a pause between polls may be shorter than it was asked for.
bool OldExchange::ByteWithin(Milliseconds time) {
  constexpr Milliseconds kSlice{5};
  constexpr int kSlicesPerTurn = 20;
  int slices = 0;
  for (auto left = time; left.count() > 0 && port_->InBufferCount() == 0 && !Cancelled(); left -= kSlice) {
    if (slices++ % kSlicesPerTurn == 0) reader_.Loop().DoEvents(port_->Arrival());
    if (port_->InBufferCount() == 0) reader_.Loop().Sleep(std::min(left, kSlice));
  }
  return port_->InBufferCount() > 0;
}

bool OldExchange::FollowsWithoutGap() { return ByteWithin(Gap(reader_.BaudRate())); }

bool OldExchange::FollowsWithinSleepTime() {
  return ByteWithin(std::max(Gap(reader_.BaudRate()), Milliseconds(reader_.SleepTime())));
}

void OldExchange::ClearUntilQuiet() {
  timer_->SetEnabled(true);
  while (timer_->Enabled() && !Cancelled() && FollowsWithoutGap()) Clear();
  timer_->SetEnabled(false);
}

std::int32_t OldExchange::WaitingOnceQuiet() {
  timer_->SetEnabled(true);
  std::int32_t before = -1;
  std::int32_t waiting = port_->InBufferCount();
  while (waiting != before && timer_->Enabled() && !reader_.CancelScan()) {
    before = waiting;
    reader_.Loop().DoEvents(port_->Arrival());
    reader_.Loop().Sleep(Gap(reader_.BaudRate()));
    waiting = port_->InBufferCount();
  }
  timer_->SetEnabled(false);
  return waiting;
}

void OldExchange::Poll() {
  reader_.Loop().DoEvents(port_->Arrival());
  if (port_->InBufferCount() > 0 || reader_.CancelScan()) return;
  // However long the host's SleepTime, a cancel and the time-out are noticed within a second.
  reader_.Loop().Pause(port_->Arrival(), Milliseconds(std::clamp(reader_.SleepTime(), 0, 1000)));
}

void OldExchange::Rest(std::int32_t factor) {
  constexpr std::int64_t kSlice = 1000;  // milliseconds
  std::int64_t left = std::int64_t{factor} * std::max(reader_.SleepTime(), 0);
  for (; left > kSlice; left -= kSlice) {
    reader_.Loop().Sleep(Milliseconds(kSlice));
    reader_.Loop().DoEvents(kNoArrivalHandle);
    if (Cancelled()) return;
  }
  if (left > 0) reader_.Loop().Sleep(Milliseconds(left));
}

}  // namespace tesk
