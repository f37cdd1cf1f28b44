// Stock, pace and service of a simulated scanner.
#include "cli/simulated/SimulatedScanner.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/RunTimeError.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/simulated/SheetFile.h"
#include "profiles/catalogue.h"
#include "profiles/models.h"

namespace tesk::cli {
namespace {

simulator::Geometry GeometryOf(teskReaderType type, const StockOptions& options) {
  simulator::Geometry geometry;
  const std::int16_t widest = ProfileOf(type).MaxCols();
  if (widest > 0) geometry.columns = widest;
  if (options.side1) {
    geometry.rows = options.side1->rows.front();
    geometry.columns = options.side1->columns.front();
  }
  geometry.twoSided = options.side2 || ReadsBothSides(type);
  return geometry;
}

// What a scan may have written: models that hand out marks alone write the threshold plus 1.
std::int16_t DarkestInFiles(teskReaderType type) {
  const auto mark = static_cast<std::int16_t>(ProfileOf(type).RecognitionThreshold() + 1);
  return FamilyOf(type).marksAlone ? std::max(DarkestMark(type), mark) : DarkestMark(type);
}

// The scanner's end of the wire while hosts come and go.
class Service {
 public:
  Service(platform::PseudoTerminal& terminal, simulator::Scanner& scanner, const Clock& clock)
      : terminal_(terminal), scanner_(scanner), clock_(clock) {}

  void Turn() {
    Receive();
    if (unsent_.empty()) unsent_ = scanner_.Send(clock_.Now());
    Send();
    terminal_.Wait(WaitingTime(), !unsent_.empty());
  }

  void Receive() {
    const std::string bytes = terminal_.Read();
    if (bytes.empty()) return;
    // Nobody listened for so long: what was said then is lost, as on a real line.
    constexpr Milliseconds kKept{500};
    if (!unsent_.empty() && clock_.Now() - lastTaken_ > kKept) unsent_.clear();
    scanner_.Receive(bytes, clock_.Now());
  }

 private:
  void Send() {
    if (unsent_.empty()) return;
    const std::size_t taken = terminal_.Write(unsent_);
    if (taken > 0) lastTaken_ = clock_.Now();
    unsent_.erase(0, taken);
  }

  Milliseconds WaitingTime() const {
    constexpr Milliseconds kLongest{1000};
    const auto due = scanner_.NextDue();
    if (!due || !unsent_.empty()) return kLongest;
    const auto left = std::chrono::ceil<Milliseconds>(*due - clock_.Now());
    return std::clamp(left, Milliseconds(0), kLongest);
  }

  platform::PseudoTerminal& terminal_;
  simulator::Scanner& scanner_;
  const Clock& clock_;
  std::string unsent_;
  TimePoint lastTaken_{};
};

class SimulatedLine : public SerialLine {
 public:
  SimulatedLine(std::shared_ptr<simulator::Scanner> scanner, std::shared_ptr<const Clock> clock,
                std::shared_ptr<const void> open)
      : scanner_(std::move(scanner)), clock_(std::move(clock)), open_(std::move(open)) {}

  std::string Read() override { return scanner_->Send(clock_->Now()); }
  void Write(std::string_view bytes) override { scanner_->Receive(bytes, clock_->Now()); }

 private:
  std::shared_ptr<simulator::Scanner> scanner_;
  std::shared_ptr<const Clock> clock_;
  std::shared_ptr<const void> open_;
};

}  // namespace

double LineRate(teskReaderType type) {
  const auto profile = ProfileOf(type);
  const bool parity = !profile.Parity().empty() && profile.Parity() != "N";
  const double bits = 1 + static_cast<double>(profile.DataBits()) + (parity ? 1 : 0) +
                      static_cast<double>(profile.StopBits());
  const bool serial = profile.InterfaceType() == teskReaderInterfaceTypeSerial;
  return serial ? static_cast<double>(profile.BaudRate()) / bits : 0;
}

bool ReadsBothSides(teskReaderType type) { return ProfileOf(type).Duplex(); }

std::vector<simulator::Sheet> StockOf(teskReaderType type, const StockOptions& options) {
  if (!options.sheetFile.empty()) return ReadSheetFile(options.sheetFile, DarkestInFiles(type));
  return simulator::GenerateSheets(options.count, options.seed, GeometryOf(type, options), DarkestMark(type));
}

std::unique_ptr<simulator::SheetScanner> CreateSimulatedScanner(teskReaderType type,
                                                                std::vector<simulator::Sheet> stock,
                                                                std::vector<simulator::Fault> faults,
                                                                std::uint64_t seed) {
  simulator::Options options;
  options.seed = seed;
  options.count = 0;  // an empty stock stays empty
  options.sheets = std::move(stock);
  options.faults = std::move(faults);
  auto scanner = simulator::CreateScanner(type, std::move(options));
  if (!scanner) {
    throw CommandFailure(fmt::format("The {} has no simulated scanner in this version", ReaderName(type)));
  }
  return scanner;
}

void Serve(platform::PseudoTerminal& terminal, simulator::Scanner& scanner, const Clock& clock,
           const std::function<bool()>& stop) {
  Service service(terminal, scanner, clock);
  while (!stop()) service.Turn();
  // The last command of a host that has just left counts as well.
  service.Receive();
}

SimulatedSerial::SimulatedSerial(std::shared_ptr<simulator::Scanner> scanner,
                                 std::shared_ptr<const Clock> clock)
    : scanner_(std::move(scanner)), clock_(std::move(clock)) {}

std::unique_ptr<SerialLine> SimulatedSerial::Open(std::int16_t /*port*/, const LineSettings& /*settings*/) {
  if (!open_.expired()) throw RunTimeError(kErrorPortInUse, "The simulated scanner is in use");
  const auto open = std::make_shared<int>();
  open_ = open;
  return std::make_unique<SimulatedLine>(scanner_, clock_, open);
}

}  // namespace tesk::cli
