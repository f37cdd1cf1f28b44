// What the simulated scanners of every family share: a stock of sheets, their way through the transport,
// and the faults that are to happen. It knows base and the simulator's own parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/Faults.h"
#include "simulator/Scanner.h"
#include "simulator/Sheet.h"

namespace tesk::simulator {

struct Timings {
  Milliseconds answer{0};       // from a command's last byte to the first of its answer
  Milliseconds reading{0};      // from a read command to the first mark value
  Milliseconds insertion{150};  // hand-fed models: from a sheet's leaving to the next one's being inserted
  Milliseconds late{15000};     // how late the data of a sheet with the fault Late are
};

struct Options {
  std::vector<Sheet> sheets = {};         // the stock; where it is empty, sheets are generated:
  std::int32_t count = 20;                // so many,
  std::uint64_t seed = 1;                 // from this seed (that of the fault Garbage too),
  std::optional<Geometry> geometry = {};  // of this size, or as the model reads them.
  std::vector<Fault> faults = {};
  Timings timings = {};
};

enum class Exit { Passed, Accepted, Rejected };

// How a sheet left the scanner.
struct Disposal {
  std::int32_t sheet = 0;  // from 1
  Exit exit = Exit::Passed;
  bool held = false;    // it waited in the transport for the host's word
  std::string imprint;  // the text that came with the word
  bool printed = false;

  bool operator==(const Disposal&) const = default;
};

class SheetScanner : public Scanner {
 public:
  // One per sheet that left, in order. A sheet that went on by itself is Passed until the host says what it
  // thinks became of it.
  const std::vector<Disposal>& Disposals() const { return disposals_; }
  std::size_t SheetsLeft() const { return options_.sheets.size() - fed_; }

 protected:
  // feeder: sheets lie in a hopper; else a person inserts one after the other.
  SheetScanner(Options options, bool feeder) : options_(std::move(options)), feeder_(feeder) {}

  const Options& Settings() const { return options_; }

  // The numbers of the sheet that is up next and of the one fed last (0: none yet).
  std::int32_t NextSheet() const { return static_cast<std::int32_t>(fed_) + 1; }
  std::int32_t LastSheet() const { return static_cast<std::int32_t>(fed_); }
  bool SheetReady(Time now) const;
  bool Held() const { return held_; }

  // Takes the next sheet from the stock, which must not be empty. Unless it is held, it is gone at `leaves`.
  const Sheet& Feed(bool hold, Time leaves);
  // The host's word on the sheet fed last; without effect where it has had one or none was fed.
  void Dispose(Exit exit, std::string imprint, bool imprinterOn, Time now);

  // The fault of this kind for this number, which does not happen again.
  std::optional<Fault> TakeFault(FaultKind kind, std::int32_t number);

 private:
  Options options_;
  bool feeder_;
  std::size_t fed_ = 0;
  bool held_ = false;
  Time inserted_ = Time::min();  // hand-fed models: when the next sheet is in place
  std::vector<Disposal> disposals_;
};

}  // namespace tesk::simulator
