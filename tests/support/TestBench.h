// A reader on a bench: virtual time, a serial port with a scanner behind it in memory, and a recorder of
// everything that the engine raises and shows. Nothing here really sleeps.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "assembly/assembly.h"
#include "simulator/Scanner.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {

using namespace std::chrono_literals;

// Time that passes only when somebody waits. Skips to the next thing that is due.
class VirtualTime : public Clock, public HostLoop {
 public:
  TimePoint Now() const override { return now_; }
  void DoEvents(ArrivalHandle arrival) override;
  void Pause(ArrivalHandle arrival, Milliseconds atMost) override;
  void Sleep(Milliseconds time) override { now_ += time; }

  Milliseconds Elapsed() const;

  // The host's message loop: called on every DoEvents with its number, from 1 on.
  std::function<void(int)> onMessages;
  // When the scanner has something to say; empty: nothing to come.
  std::function<std::optional<TimePoint>()> nextDue;

 private:
  void AdvanceAtMost(Milliseconds time);

  TimePoint now_ = TimePoint(1h);
  int turns_ = 0;
};

// What a port does to the bytes that pass through it.
struct PortBehaviour {
  // The line reports its device gone once it has delivered this many bytes.
  std::optional<std::size_t> goneAfter = {};
  // The scanner's bytes beyond this many never arrive.
  std::optional<std::size_t> silentAfter = {};
  // The bytes beyond this many arrive later, by `pause`.
  std::optional<std::size_t> pauseAfter = {};
  Milliseconds pause{5};
  // A byte that nobody sent, in front of the scanner's byte of that number or behind it; from 0.
  struct Alien {
    std::size_t at;
    bool behind;
    char byte;
  };
  std::optional<Alien> alien = {};
  // The scanner's byte of that number arrives as another one.
  std::optional<std::pair<std::size_t, char>> damage = {};
  // At most this many bytes arrive at a time.
  std::size_t chunk = 64 * 1024;
};

// Port `port` has the scanner behind it; the others do not exist.
class BenchSerial : public SerialSystem {
 public:
  BenchSerial(std::shared_ptr<VirtualTime> time, std::shared_ptr<simulator::Scanner> scanner);

  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override;

  PortBehaviour behaviour;
  std::int16_t port = 3;
  std::vector<std::int16_t> asked;  // every port that was tried
  LineSettings settings;            // of the last opening
  bool open = false;
  std::string sent;  // every byte from the host

 private:
  friend class BenchLine;
  std::shared_ptr<VirtualTime> time_;
  std::shared_ptr<simulator::Scanner> scanner_;
};

// Every event in order, by name; a handler may be set for each.
class RecordingEvents : public ReaderEvents {
 public:
  void BeforeSheet(bool& initialize) override;
  void PreprocessSheet(SideArray& side1, SideArray& side2, BarcodeArray& barcodes, bool& reject) override;
  void ReadSheet(SideArray& side1, SideArray& side2, BarcodeArray& barcodes, const std::string& file1,
                 const std::string& file2, const std::string& coordinates1,
                 const std::string& coordinates2) override;
  void AfterSheet(bool& cancel) override;
  void BeforePrint(bool& cancel) override;
  void AfterPrint() override;

  std::vector<std::string> names;
  std::vector<SideArray> side1;  // one per ReadSheet
  std::vector<SideArray> side2;
  std::vector<BarcodeArray> barcodes;
  std::function<void(bool&)> onBeforeSheet;
  std::function<void(SideArray&, SideArray&, BarcodeArray&, bool&)> onPreprocess;
  std::function<void()> onReadSheet;
  std::function<void(bool&)> onAfterSheet;
  std::function<void(bool&)> onBeforePrint;
};

// The whole bench. The reader is on port 3, at the defaults of its type, with a form of 50 x 48.
class Bench {
 public:
  Bench(teskReaderType type, std::shared_ptr<simulator::Scanner> scanner);
  ~Bench();

  RecordingHost host;
  std::shared_ptr<VirtualTime> time;
  std::shared_ptr<BenchSerial> serial;
  RecordingEvents events;
  std::shared_ptr<clsTeskReader> reader;
};

// A one-dimensional array indexed from 1.
Int16Array From1(std::vector<std::int16_t> elements);

}  // namespace tesk::test
