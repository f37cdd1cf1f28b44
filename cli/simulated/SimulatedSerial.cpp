// The line to a simulated scanner.
#include "cli/simulated/SimulatedSerial.h"

#include <utility>

#include "base/RunTimeError.h"

namespace tesk::cli {
namespace {

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
