// What a host costs on a real line: batches through pseudo-terminals, in real time, with simulated scanners
// that threads of their own serve.
//
// Turnaround: the time from the scanner's last byte to the host's next command, summed over a sheet, with a
// scanner that answers at once; beside it a plain blocking reader of the same scanner. Pauses that a protocol
// prescribes are taken off. Fleet: the processor time of sixteen hosts whose lines run at their own rates.
#include <fcntl.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "assembly/assembly.h"
#include "cli/simulated/SimulatedScanner.h"
#include "platform/Platform.h"
#include "profiles/models.h"
#include "simulator/Simulators.h"

namespace {

using namespace tesk;
using Steady = std::chrono::steady_clock;

constexpr std::int16_t kRows = 50;

// A scanner behind a pseudo-terminal.
class Station {
 public:
  Station(teskReaderType type, std::int32_t sheets, double bytesPerSecond)
      : terminal_(platform::CreatePseudoTerminal()),
        scanner_(simulator::CreateScanner(
            type, {.count = sheets, .geometry = simulator::Geometry{kRows, Columns(type), true}})) {
    scanner_->PaceAt(bytesPerSecond);
    server_ = std::thread([this] { Serve(); });
  }
  Station(const Station&) = delete;
  Station& operator=(const Station&) = delete;
  ~Station() {
    stop_ = true;
    server_.join();
  }

  std::string Device() const { return terminal_->DevicePath(); }
  // Since it was asked last.
  Steady::duration TakeTurnaround() { return Steady::duration(turnaround_.exchange(0)); }

  static std::int32_t Columns(teskReaderType type) { return type == teskReaderTypePDIVMR138 ? 12 : 48; }

 private:
  void Serve() {
    std::string unsent;
    std::optional<Steady::time_point> said;
    while (!stop_) {
      const auto now = Steady::now();
      if (const std::string heard = terminal_->Read(); !heard.empty()) {
        if (said) turnaround_ += (now - *std::exchange(said, std::nullopt)).count();
        scanner_->Receive(heard, now);
      }
      unsent += scanner_->Send(Steady::now());
      if (!unsent.empty()) {
        unsent.erase(0, terminal_->Write(unsent));
        said = Steady::now();
      }
      const auto due = scanner_->NextDue();
      const auto left = due ? std::chrono::ceil<Milliseconds>(*due - Steady::now()) : Milliseconds(50);
      terminal_->Wait(std::clamp(left, Milliseconds(0), Milliseconds(50)), !unsent.empty());
    }
  }

  std::unique_ptr<platform::PseudoTerminal> terminal_;
  std::unique_ptr<simulator::SheetScanner> scanner_;
  std::atomic<bool> stop_ = false;
  std::atomic<Steady::rep> turnaround_ = 0;
  std::thread server_;
};

std::shared_ptr<clsTeskReader> Reader(teskReaderType type, const std::string& device) {
  auto reader = CreateReader(ReaderParts{.serial = platform::CreateSerialSystem(device),
                                         .loop = platform::CreateHostLoop(),
                                         .clock = platform::CreateClock()});
  const Int16Array rows({kRows}, 1);
  const Int16Array columns({static_cast<std::int16_t>(Station::Columns(type))}, 1);
  reader->LoadDefaults(type);
  reader->SetPort(1);
  reader->SetRecognitionMode(teskRecognitionTypePage);
  reader->SetSide1Rows(rows);
  reader->SetSide1Cols(columns);
  reader->SetSide2Rows(rows);
  reader->SetSide2Cols(columns);
  reader->SetDuplexForm(reader->Duplex());
  return reader;
}

// Milliseconds that the protocol prescribes between an answer and the next command: three pauses of five
// SleepTimes each of the VMR138.
double Prescribed(const clsTeskReader& reader) {
  return ModelOf(reader.ReaderType()).family == Family::PeripheralDynamics ? 15.0 * reader.SleepTime() : 0;
}

double InMilliseconds(Steady::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

void Turnaround(benchmark::State& state, teskReaderType type) {
  constexpr std::int32_t kSheets = 25;
  for (auto _ : state) {
    Station station(type, kSheets + 2, 0);
    const auto reader = Reader(type, station.Device());
    const auto next = [&] {
      reader->EjectPage();
      station.TakeTurnaround();
      return reader->ReadPage();
    };
    // The first answers of each kind are learnt from.
    if (!reader->StartReader() || !reader->ReadPage() || !next()) {
      state.SkipWithError("the first sheets were not read");
      return;
    }
    double total = 0;
    double most = 0;
    for (std::int32_t i = 0; i < kSheets; ++i) {
      if (!next()) state.SkipWithError("a sheet was lost");
      const double sheet = InMilliseconds(station.TakeTurnaround()) - Prescribed(*reader);
      total += sheet;
      most = std::max(most, sheet);
    }
    reader->EndReader();
    state.counters["most"] = most;
    state.SetIterationTime(total / 1000 / kSheets);
    state.counters["ms_per_sheet"] = total / kSheets;
  }
}

// The same ScanMark sheets by twenty lines over blocking reads.
class PlainReader {
 public:
  explicit PlainReader(const std::string& device) : port_(::open(device.c_str(), O_RDWR | O_NOCTTY)) {
    termios modes{};
    ::cfmakeraw(&modes);
    ::cfsetspeed(&modes, B9600);
    modes.c_cflag |= CREAD | CLOCAL;
    ::tcsetattr(port_, TCSANOW, &modes);
  }
  PlainReader(const PlainReader&) = delete;
  PlainReader& operator=(const PlainReader&) = delete;
  ~PlainReader() { ::close(port_); }

  std::string Ask(const std::string& text, std::size_t length) {
    const std::string command = "\x1b" + text + "\r";
    std::string answer(length, '\0');
    if (::write(port_, command.data(), command.size()) < 0) return {};
    for (std::size_t taken = 0; taken < length;) {
      const ssize_t count = ::read(port_, answer.data() + taken, length - taken);
      if (count <= 0) return {};
      taken += static_cast<std::size_t>(count);
    }
    return answer;
  }

 private:
  int port_;
};

void PlainTurnaround(benchmark::State& state) {
  constexpr std::int32_t kSheets = 25;
  constexpr std::size_t kStatus = 12;
  constexpr std::size_t kData = 2 * kRows * 48 + 1;
  for (auto _ : state) {
    Station station(teskReaderTypeScantronScanMark2500, kSheets + 1, 0);
    PlainReader reader(station.Device());
    for (const char* command : {"SRST", "FRM=FS 50 50 48 N N N", "FRM=DK 1 1 1 50 48 L 50 48",
                                "FRM=DK 2 1 1 50 48 L 50 48", "FRM=LS", "PRN$ 1 N"}) {
      reader.Ask(command, 1);
    }
    station.TakeTurnaround();
    for (std::int32_t i = 0; i < kSheets; ++i) {
      reader.Ask("QSTS", kStatus);
      reader.Ask("READ 5 Y", kData);
      reader.Ask("QSTS", kStatus);
    }
    const double total = InMilliseconds(station.TakeTurnaround());
    state.SetIterationTime(total / 1000 / kSheets);
    state.counters["ms_per_sheet"] = total / kSheets;
  }
}

double ProcessorSecondsOfThisThread() {
  rusage usage{};
  ::getrusage(RUSAGE_THREAD, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void FleetOfSixteen(benchmark::State& state) {
  constexpr auto kTime = std::chrono::seconds(20);
  constexpr teskReaderType kTypes[] = {teskReaderTypeScantronScanMark2500, teskReaderTypeNCSOpScan4,
                                       teskReaderTypeScanningSystemsSR607, teskReaderTypePDIVMR138};
  for (auto _ : state) {
    std::vector<std::unique_ptr<Station>> stations;
    std::vector<std::thread> hosts;
    std::vector<double> seconds(16);
    std::atomic<int> sheets = 0;
    const auto end = Steady::now() + kTime;
    for (std::size_t i = 0; i < seconds.size(); ++i) {
      const teskReaderType type = kTypes[i % std::size(kTypes)];
      stations.push_back(std::make_unique<Station>(type, 500, cli::LineRate(type)));
      hosts.emplace_back([&, i, type] {
        const auto reader = Reader(type, stations[i]->Device());
        bool running = reader->StartReader();
        while (running && Steady::now() < end) {
          running = reader->ReadPage();
          if (running) ++sheets;
          reader->EjectPage();
        }
        reader->EndReader();
        seconds[i] = running ? ProcessorSecondsOfThisThread() : -1;
      });
    }
    for (auto& host : hosts) host.join();
    const double percent = 100 / std::chrono::duration<double>(Steady::now() - end + kTime).count();
    double total = 0;
    for (std::size_t i = 0; i < seconds.size(); ++i) {
      if (seconds[i] < 0) state.SkipWithError("a host lost its scanner");
      total += seconds[i];
      state.counters[std::string(DriverModule(kTypes[i % std::size(kTypes)]))] += percent * seconds[i];
    }
    state.SetIterationTime(total);
    state.counters["sheets"] = sheets.load();
    state.counters["percent_of_a_core"] = percent * total;
  }
}

[[maybe_unused]] const bool kRegistered = [] {
  const std::pair<const char*, teskReaderType> kModels[] = {
      {"ScanMark2500", teskReaderTypeScantronScanMark2500},
      {"OpScan4", teskReaderTypeNCSOpScan4},
      {"SekonicSR607", teskReaderTypeScanningSystemsSR607},
      {"VMR138", teskReaderTypePDIVMR138}};
  for (const auto& [name, type] : kModels) {
    benchmark::RegisterBenchmark((std::string("Turnaround/") + name).c_str(),
                                 [type = type](benchmark::State& state) { Turnaround(state, type); })
        ->UseManualTime()
        ->Iterations(3)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark("Turnaround/PlainBlockingReader", PlainTurnaround)
      ->UseManualTime()
      ->Iterations(3)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("FleetOfSixteen", FleetOfSixteen)
      ->UseManualTime()
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace
