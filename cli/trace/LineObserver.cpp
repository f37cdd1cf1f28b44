// The decorators of the serial system and its lines.
#include "cli/trace/LineObserver.h"

#include <utility>

namespace tesk::cli {
namespace {

using Observers = std::vector<std::shared_ptr<LineObserver>>;

class ObservedLine : public SerialLine {
 public:
  ObservedLine(std::unique_ptr<SerialLine> line, Observers observers)
      : line_(std::move(line)), observers_(std::move(observers)) {}
  ObservedLine(const ObservedLine&) = delete;
  ObservedLine& operator=(const ObservedLine&) = delete;
  ~ObservedLine() override {
    line_.reset();
    for (const auto& observer : observers_) observer->Closed();
  }

  std::string Read() override {
    std::string bytes = line_->Read();
    if (!bytes.empty()) {
      for (const auto& observer : observers_) observer->Received(bytes);
    }
    return bytes;
  }

  // Told before the bytes go out, so that no answer is seen before its question.
  void Write(std::string_view bytes) override {
    for (const auto& observer : observers_) observer->Sent(bytes);
    line_->Write(bytes);
  }

  ArrivalHandle Arrival() const override { return line_->Arrival(); }

 private:
  std::unique_ptr<SerialLine> line_;
  Observers observers_;
};

}  // namespace

ObservedSerialSystem::ObservedSerialSystem(std::shared_ptr<SerialSystem> system, Observers observers)
    : system_(std::move(system)), observers_(std::move(observers)) {}

std::unique_ptr<SerialLine> ObservedSerialSystem::Open(std::int16_t port, const LineSettings& settings) {
  auto line = system_->Open(port, settings);
  for (const auto& observer : observers_) observer->Opened(port, settings);
  return std::make_unique<ObservedLine>(std::move(line), observers_);
}

}  // namespace tesk::cli
