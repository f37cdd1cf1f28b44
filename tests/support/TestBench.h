// A reader on a bench: virtual time, a serial port with a scanner behind it in memory, and a recorder of
// everything that the engine raises and shows. Nothing here really sleeps.
#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
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
  std::function<void(std::string_view)> onWrite;

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
  Bench(teskReaderType type, std::shared_ptr<simulator::Scanner> scanner,
        std::shared_ptr<OmrLibraryLoader> omrLoader = nullptr);
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;
  ~Bench();

  // Makes calls, one for each letter, and tells what happened, in its order: every command with the time at which
  // it was sent, in milliseconds since the bench began, the titles of messages, the reported errors, how each call
  // ended, and behind a good read its sheet.
  //   s StartReader   r ReadPage   p ReadPage(True)   e EjectPage   j RejectPage   x EndReader
  //   c takes a cancel back   S starts, which must succeed, and forgets what happened: the time begins here
  std::string Do(std::string_view calls);
  // The host cancels once so much time has passed, since the bench began or S.
  void CancelAt(Milliseconds time);
  void SetExtents(std::int16_t rows1, std::int16_t rows2, bool twoSided);
  // page, first row, rows, gap, first column, columns, gap, orientation
  void AddWindow(std::array<std::int16_t, 8> fields);
  void AddBarcodes(int count);
  void TurnImprinterOn(std::int16_t distance, const std::string& line1, const std::string& line3 = {});

  RecordingHost host;
  std::shared_ptr<VirtualTime> time;
  std::shared_ptr<BenchSerial> serial;
  RecordingEvents events;
  std::shared_ptr<clsTeskReader> reader;
  // What else happened since it was last asked, each with " | " in front; empty: nothing.
  std::function<std::string()> whatElse;

 private:
  void Note(const std::string& what);
  void Call(char call);

  std::string happened_;
  Milliseconds began_{0};
  std::size_t messages_ = 0;  // that have been told
  std::size_t errors_ = 0;
};

// Extents and values other than 0: "[2x48 1,1=5 2,48=3]"; "[]" for an empty array.
std::string MarksText(const SideArray& side);
// Marks as row, column and value, the rest 0.
SideArray Grid(std::int32_t rows, std::int32_t columns,
               const std::vector<std::array<std::int16_t, 3>>& marks);
// Control characters as ^A, what is not ASCII as <FF>.
std::string Caret(std::string_view bytes);

// A one-dimensional array indexed from 1.
Int16Array From1(std::vector<std::int16_t> elements);

}  // namespace tesk::test
