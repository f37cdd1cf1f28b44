// One driver routine's conversation with a serial scanner: sending, waiting for an answer by its shape,
// waiting for quiet, and the pauses that protocols prescribe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "drivers/Shape.h"
#include "engine/clsTeskReader.h"

namespace tesk {

enum class Wait { Arrived, Cancelled, TimedOut };

// How long a wait may last.
struct Limits {
  enum class Time {
    Answer,  // the engine's time-out, for the whole answer
    Piece,   // the same, from each piece to the next: for long records on slow lines
    Endless  // until somebody cancels: for a person who is to insert a sheet
  };
  Time time = Time::Answer;
  // How much longer than CancelScan the wait lasts: for answers about a sheet that has been read or is on its
  // way out, since an answer that nobody took would be taken for the next one.
  Milliseconds grace{0};
};

inline constexpr Limits kEachPiece{Limits::Time::Piece};
inline constexpr Limits kForPerson{Limits::Time::Endless};
inline constexpr Limits kDespiteCancel{Limits::Time::Answer, Milliseconds(1500)};

// Longer than any scanner or adaptor pauses within an answer.
inline constexpr Milliseconds kUnusualPause{600};

// What the exchanges of one engine with its scanner have learnt. Drivers keep it with what is their own.
struct SerialSession : DriverState {
  // The last answer did not come, or more came than was asked for: what comes next may be anybody's.
  bool outOfStep = false;
  // What stood behind the complete answers to each command; a line end as a rule.
  std::map<std::string, std::map<std::string, std::string>> tails;

  // At a start: another scanner may be on the line.
  void Forget() { tails.clear(); }
  // Something came that nobody asked for; it may be a part of what was learnt, too.
  void Distrust() {
    outOfStep = true;
    tails.clear();
  }
  // How many bytes stood behind the answers to a command; any number where none came yet.
  struct Lengths {
    std::size_t shortest = 0;
    std::size_t longest = std::string::npos;
  };
  Lengths TailLengths(const std::string& command) const;
};

// Holds the engine's port and timer for the time of one routine, so that a host that replaces them while the
// routine waits harms nobody.
class SerialExchange {
 public:
  // error 91 where the engine has no communications form
  SerialExchange(clsTeskReader& reader, std::shared_ptr<SerialSession> session);

  // Sends a command that is answered. Where something waits, or the exchange is out of step, the line must
  // first have been quiet: nothing that came before a command can be its answer. What came is handed over. A
  // line that does not fall silent after a cancel is not waited for; the exchange then stays out of step.
  std::string Ask(std::string_view bytes);
  // Sends a command that is not answered.
  void Tell(std::string_view bytes) { port_->Output(bytes); }

  // Waits for an answer until its shape is complete, and takes not a byte more. What has arrived is taken
  // whether or not the host has cancelled.
  Wait Take(Shape& answer, const Limits& limits = {});
  // Waits until a first byte is there, and takes none.
  Wait Await(const Limits& limits = {});

  // What follows a complete answer to a command. The first time after a start the silence behind it tells,
  // `first` long; an answer that never came before is expected to have as much behind it as the others, and a
  // moment of silence. From then on it is awaited as it was, and nothing more.
  std::string Tail(const std::string& command, const std::string& answer = {},
                   Milliseconds first = kUnusualPause);
  // Whether a byte waits or comes before the line has been silent for `quiet`, a moment at least; after a
  // cancel only that moment, except where a protocol prescribes the silence.
  enum class Shortened { ByCancel, Never };
  bool Follows(Milliseconds quiet = Milliseconds(0), Shortened shortened = Shortened::ByCancel);
  // Takes what comes until the line has been as silent. Error 8020 for a line that does not fall silent
  // within the time-out; after a cancel it is left soon.
  std::string UntilQuiet(Milliseconds quiet = Milliseconds(0));
  // Whether bytes wait that nobody asked for; the exchange is then out of step.
  bool Surplus();
  // Discards what waits.
  void Clear();

  // One turn of a loop that asks again and again: messages run, then the polling pause.
  void Poll();
  // A prescribed pause: lasts its full time, whatever the host does meanwhile.
  void Pause(Milliseconds time);
  // The same, so many times SleepTime.
  void Rest(std::int32_t factor);

  // The silence that ends an answer without a shape: some characters at the line's rate, and the time for
  // which serial adaptors hold received bytes back.
  Milliseconds Moment() const;

  bool Cancelled() const { return reader_.CancelScan(); }
  TimePoint Now() const { return reader_.Now(); }
  SerialControl& Port() const { return *port_; }
  OneShotTimer& Timer() const { return *timer_; }
  SerialSession& Session() const { return *session_; }

 private:
  class Watch;

  std::string AsLongAs(std::size_t length);
  std::int32_t TakeWaiting(Shape& answer);
  void Turn(std::size_t missing, std::int32_t taken);
  Wait End(Wait wait);
  bool FellQuiet(Milliseconds quiet, std::string& bytes);
  std::int64_t CharactersIn(Milliseconds time) const;

  clsTeskReader& reader_;
  std::shared_ptr<frmComm> comm_;
  std::shared_ptr<SerialControl> port_;
  std::shared_ptr<OneShotTimer> timer_;
  std::shared_ptr<SerialSession> session_;
  TimePoint lookedAt_{};
  TimePoint messagesRanAt_{};
};

// True for a text that is empty or consists of line ends: what may stand behind an answer.
bool IsLineEnd(std::string_view text);

}  // namespace tesk
