// The part that scanners share whose read command waits for a sheet by itself: the sheet is fed when its data
// are on their way, not when the host asks for it, so that a host that gives up loses none. It knows base and
// the simulator's own parts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulator/SheetScanner.h"

namespace tesk::simulator {

class AwaitingScanner : public SheetScanner {
 protected:
  AwaitingScanner(Options options, bool feeder) : SheetScanner(std::move(options), feeder), feeder_(feeder) {}

  // The sheet that is up next; the stock must not be empty.
  const Sheet& Upcoming() const { return Settings().sheets.at(static_cast<std::size_t>(LastSheet())); }

  // Starts reading the sheet that is up next; its record comes when it has been inserted and read.
  void Begin(std::string record, Time now);
  // Feeds the sheet that is being read if its record is due by now. To be called before anything else that
  // depends on time.
  void Settle(Time now);
  // A sheet is being read and its record is not due.
  bool UnderWay() const { return underWay_.has_value(); }
  // When its record comes; `now` where none is being read.
  Time DueOr(Time now) const { return underWay_ ? underWay_->due : now; }
  // Forgets the sheet that is being read; it stays in the stock. A record that a fault made late still comes.
  void Abandon();

  // Answers at once, before the record of a sheet that is being read.
  void Answer(std::string_view bytes, Time now);
  // Sends the held sheet on.
  void Release(Exit exit, std::string imprint, bool imprinterOn, Time now);

 private:
  struct Reading {
    std::string record;
    Time due;
  };

  Milliseconds UntilDue(Time now) const;

  bool feeder_;
  Time inPlace_ = Time::min();  // without a feeder: when the next sheet has been inserted
  std::optional<Reading> underWay_;
  bool lateOnWire_ = false;
};

}  // namespace tesk::simulator
