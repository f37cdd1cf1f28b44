// One driver routine's conversation with a serial scanner: sending, waiting for the answer, taking bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "drivers/SerialExchange.h"
#include "engine/clsTeskReader.h"

namespace tesk {

// Holds the engine's port and timer for the time of one routine, so that a host that replaces them while the
// routine waits harms nobody.
class OldExchange {
 public:
  explicit OldExchange(clsTeskReader& reader);  // error 91 where the engine has no communications form

  // Discards what waits and writes `bytes`: nothing that came before a command can be its answer.
  void Ask(std::string_view bytes);
  // Writes without touching what waits.
  void Tell(std::string_view bytes) { port_->Output(bytes); }
  // Discards what waits.
  void Clear();

  // Starts the time-out and waits for `count` bytes; messages run, a set CancelScan ends it.
  Wait ForBytes(std::int32_t count = 1);
  // Waits like ForBytes for the first byte about a sheet that is on its way out: a cancel leaves the scanner
  // another second or two, since an answer that nobody took would be taken for the next one.
  Wait ForBytesDespiteCancel();
  // Waits like ForBytes, but without limit of time: for a person who is to insert a sheet.
  Wait ForBytesWithoutLimit();

  std::int32_t Waiting() const { return port_->InBufferCount(); }
  // The next byte that waits; empty where none does.
  std::optional<std::uint8_t> TakeByte();
  // Whether a byte waits or comes within a second or so.
  bool ComesSoon();
  // Whether another byte waits or comes before the line has been silent for a moment.
  bool FollowsWithoutGap();
  // The same with SleepTime as the silence, where that is longer.
  bool FollowsWithinSleepTime();
  // Discards what waits and what follows it without a gap, so that the end of one answer is not taken for the
  // beginning of the next.
  void ClearUntilQuiet();
  // How many bytes wait once the line has been silent for a moment; messages run. The time-out and a set
  // CancelScan end the wait.
  std::int32_t WaitingOnceQuiet();
  // All that waits, together with what follows it without a gap: a reply on a slow line comes in pieces.
  std::string TakeReply();

  // One turn of a polling loop with nothing waiting: messages run, then the polling pause.
  void Poll();
  // A prescribed pause of `factor` times SleepTime. One of over a second ends early when the host cancels.
  void Rest(std::int32_t factor);
  bool Cancelled() const { return reader_.CancelScan(); }

  SerialControl& Port() const { return *port_; }
  OneShotTimer& Timer() const { return *timer_; }

 private:
  bool ByteWithin(Milliseconds time);

  clsTeskReader& reader_;
  std::shared_ptr<frmComm> comm_;
  std::shared_ptr<SerialControl> port_;
  std::shared_ptr<OneShotTimer> timer_;
};

}  // namespace tesk
