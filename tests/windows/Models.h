// Readers of the scanners behind the serial ports, family by family, and the sheets that they are to read.
// tests/fixtures.sh starts the scanners: COM3 a ScanMark 5500, COM6 an OpScan 8, COM7 another whose second sheet is
// skewed, COM8 an SR-607, COM9 a VMR138.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/Sheet.h"
#include "tests/windows/Host.h"

namespace tesk::test {

// A scanner behind a port, and what a reader makes of its sheets.
struct Model {
  ::teskReaderType type;
  SHORT port;
  simulator::Geometry geometry;
  std::int32_t stock;
  std::int16_t darkest;
  bool bothSides;
  SHORT side2TimingMarks;  // as reported: -1 not at all, 0 of a side that was not read
  simulator::Sheet (*reads)(const simulator::Sheet& paper);  // a sheet as the reader is to hold it
  bool endSaysTrue;  // Compatibility: the VMR138 says False however well it ended
};

inline constexpr std::int16_t kVmrThreshold = 200;  // some steps above where the scanner starts

extern const Model kScanMark;
extern const Model kOpScan;
extern const Model kSkewedOpScan;
extern const Model kSekonic;
extern const Model kVmr;

// A reader of a model with a sink, on the thread that makes it. The model's own line settings are used: a
// pseudo-terminal behind a port of Wine's takes 38400,O,7,2 and 9600,N,7,2 although it knows neither parity
// nor character sizes.
class ModelReader {
 public:
  // A null sink: one of its own.
  explicit ModelReader(const Model& model, ComPtr<_clsTeskReader> itsReader = NewReader(),
                       ComPtr<EventSink> itsSink = nullptr);
  ~ModelReader();
  ModelReader(const ModelReader&) = delete;
  ModelReader& operator=(const ModelReader&) = delete;

  bool Start();
  bool Read(bool imprint = false);
  bool End();
  // Reads a sheet, sends it on, and expects it to be the one behind the one before, with these events.
  void ExpectNextSheet(const std::vector<std::string>& events, bool imprint = false);
  // The place in the stock of the sheet that ReadSheet handed out; empty for one that was never there.
  std::optional<std::size_t> Place() const;
  bool PortOpen() const;

  ComPtr<_clsTeskReader> reader;
  ComPtr<EventSink> sink;
  simulator::Sheet handed;

 private:
  void ExpectTimingMarks(SHORT side1, SHORT side2) const;

  SHORT side2TimingMarks_;
  std::vector<simulator::Sheet> stock_;  // as the reader is to hold it
  std::optional<std::size_t> last_;
};

}  // namespace tesk::test
