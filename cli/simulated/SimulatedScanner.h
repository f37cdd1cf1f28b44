// The simulated scanner that the command line's options describe, and its life behind a pseudo-terminal.
// Knows the simulator, the profiles and the platform.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/values.h"
#include "platform/Platform.h"
#include "simulator/Simulators.h"
#include "transport/SerialLine.h"

namespace tesk::cli {

struct StockOptions {
  std::optional<SheetSizes> side1;  // of the sheets to generate; empty: 50 rows as wide as the model reads
  std::optional<SheetSizes> side2;  // empty: as side 1 where the model reads both
  std::string sheetFile;            // what `scan --format ndjson` wrote; empty: sheets are generated
  std::int32_t count = 20;
  std::uint64_t seed = 1;
};

// Bytes per second on the line that the model's profile proposes; 0 where it proposes none.
double LineRate(teskReaderType type);
// Whether the model reads both sides unless it is told otherwise.
bool ReadsBothSides(teskReaderType type);

// Throws CommandFailure for a sheet file that is not what it should be.
std::vector<simulator::Sheet> StockOf(teskReaderType type, const StockOptions& options);

// Throws CommandFailure in plain words for a model that cannot be simulated. seed: of faults that send garbage.
std::unique_ptr<simulator::SheetScanner> CreateSimulatedScanner(teskReaderType type,
                                                                std::vector<simulator::Sheet> stock,
                                                                std::vector<simulator::Fault> faults = {},
                                                                std::uint64_t seed = 1);

// A serial system in memory whose every port leads to one simulated scanner.
class SimulatedSerial : public SerialSystem {
 public:
  // The scanner's bytes come due on `clock`.
  SimulatedSerial(std::shared_ptr<simulator::Scanner> scanner, std::shared_ptr<const Clock> clock);
  // Throws error 8005 while a line is open, as a port that another program holds.
  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override;

 private:
  std::shared_ptr<simulator::Scanner> scanner_;
  std::shared_ptr<const Clock> clock_;
  std::weak_ptr<const void> open_;  // lives as long as the open line
};

// Serves hosts, one after the other, until `stop` says so, which is asked at least once a second.
void Serve(platform::PseudoTerminal& terminal, simulator::Scanner& scanner, const Clock& clock,
           const std::function<bool()>& stop);

}  // namespace tesk::cli
