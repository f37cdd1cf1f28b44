// What a sheet costs the host beside what the line itself takes: whole sheets through the engine, its events
// and the driver, with time that passes only on paper. "line" is how long the same bytes occupy the wire.
#include <string>

#include <benchmark/benchmark.h>

#include "base/conversions.h"
#include "simulator/Simulators.h"
#include "tests/support/TestBench.h"

namespace {

using namespace tesk;

// Seconds per byte on the wire: start bit, data, parity and stop bits.
double ByteTime(const clsTeskReader& reader) {
  const std::int32_t wholeBits = 1 + reader.DataBits() + (reader.Parity() == "N" ? 0 : 1);
  return (wholeBits + static_cast<double>(reader.StopBits())) /
         static_cast<double>(std::int32_t{reader.BaudRate()});
}

std::size_t WireBytes(const simulator::Scanner& scanner) {
  std::size_t bytes = 0;
  for (const auto& traffic : scanner.Transcript()) bytes += traffic.bytes.size();
  return bytes;
}

void ReadSheets(benchmark::State& state, teskReaderType type) {
  constexpr std::int32_t kSheets = 50;
  double lineSeconds = 0;
  std::int64_t sheets = 0;
  std::int64_t bytes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto scanner =
        simulator::CreateScanner(type, {.count = kSheets, .geometry = simulator::Geometry{50, 48, true}});
    const std::shared_ptr<simulator::Scanner> shared = std::move(scanner);
    test::Bench bench(type, shared);
    bench.reader->SetDuplexForm(bench.reader->Duplex());
    std::int32_t count = 0;
    state.ResumeTiming();
    if (!bench.reader->ReadBatch(false, kSheets, count) || bench.events.side1.size() != kSheets) {
      state.SkipWithError("a sheet was lost");
      break;
    }
    state.PauseTiming();
    sheets += kSheets;
    bytes += static_cast<std::int64_t>(WireBytes(*shared));
    lineSeconds += static_cast<double>(WireBytes(*shared)) * ByteTime(*bench.reader);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(sheets);
  state.SetBytesProcessed(bytes);
  if (sheets > 0) state.counters["line_ms_per_sheet"] = lineSeconds * 1000 / static_cast<double>(sheets);
}

// One entry per serial family whose driver exists.
[[maybe_unused]] const bool kRegistered = [] {
  for (const teskReaderType type :
       {teskReaderTypeScantronScanMark2500, teskReaderTypeScantron8000, teskReaderTypeNCSOpScan4,
        teskReaderTypeScanningSystemsSR607, teskReaderTypePDIVMR138}) {
    if (DriverModule(type).empty()) continue;
    const std::string name = "ReadSheets/" + std::string(DriverModule(type)) + "/" + std::to_string(type);
    benchmark::RegisterBenchmark(name.c_str(), [type](benchmark::State& state) {
      ReadSheets(state, type);
    })->Unit(benchmark::kMillisecond);
  }
  return true;
}();

}  // namespace
