// The bench.
#include "tests/support/TestBench.h"

#include <algorithm>
#include <stdexcept>

namespace tesk::test {

void VirtualTime::DoEvents(ArrivalHandle) {
  ++turns_;
  if (onMessages) onMessages(turns_);
  // A wait that only a person can end would never end here.
  if (Elapsed() > 100h) throw std::runtime_error("nobody ended this wait");
  AdvanceAtMost(10ms);
}

void VirtualTime::Pause(ArrivalHandle, Milliseconds atMost) { AdvanceAtMost(atMost); }

Milliseconds VirtualTime::Elapsed() const {
  return std::chrono::duration_cast<Milliseconds>(now_ - TimePoint(1h));
}

void VirtualTime::AdvanceAtMost(Milliseconds time) {
  const TimePoint latest = now_ + time;
  const auto due = nextDue ? nextDue() : std::nullopt;
  now_ = due ? std::clamp(*due, now_, latest) : latest;
}

class BenchLine : public SerialLine {
 public:
  explicit BenchLine(BenchSerial& serial) : serial_(serial) { serial_.open = true; }
  ~BenchLine() override { serial_.open = false; }

  std::string Read() override {
    if (serial_.behaviour.goneAfter && delivered_ >= *serial_.behaviour.goneAfter) {
      throw RunTimeError(kErrorLineRead, "The device is gone");
    }
    for (const char byte : serial_.scanner_->Send(serial_.time_->Now())) Receive(byte);
    std::size_t length = std::min(waiting_.size(), serial_.behaviour.chunk);
    if (const auto limit = serial_.behaviour.goneAfter) length = std::min(length, *limit - delivered_);
    if (const auto limit = serial_.behaviour.silentAfter) {
      length = std::min(length, *limit > delivered_ ? *limit - delivered_ : 0);
    }
    if (const auto limit = serial_.behaviour.pauseAfter) length = BeforeThePause(length, *limit);
    std::string bytes = waiting_.substr(0, length);
    waiting_.erase(0, length);
    delivered_ += length;
    return bytes;
  }

  void Write(std::string_view bytes) override {
    serial_.sent += bytes;
    serial_.scanner_->Receive(bytes, serial_.time_->Now());
  }

 private:
  void Receive(char byte) {
    const PortBehaviour& behaviour = serial_.behaviour;
    const std::size_t at = received_++;
    const bool alien = behaviour.alien && behaviour.alien->at == at;
    if (alien && !behaviour.alien->behind) waiting_ += behaviour.alien->byte;
    waiting_ += behaviour.damage && behaviour.damage->first == at ? behaviour.damage->second : byte;
    if (alien && behaviour.alien->behind) waiting_ += behaviour.alien->byte;
  }

  // As much of `length` as may pass before the pause after byte `limit` is over.
  std::size_t BeforeThePause(std::size_t length, std::size_t limit) {
    if (delivered_ + length <= limit || pausedUntil_ == TimePoint::max()) return length;
    const TimePoint now = serial_.time_->Now();
    if (delivered_ == limit && !pausedUntil_) pausedUntil_ = now + serial_.behaviour.pause;
    if (pausedUntil_ && now >= *pausedUntil_) {
      pausedUntil_ = TimePoint::max();
      return length;
    }
    return limit - delivered_;
  }

  BenchSerial& serial_;
  std::string waiting_;
  std::size_t received_ = 0;
  std::size_t delivered_ = 0;
  std::optional<TimePoint> pausedUntil_;
};

BenchSerial::BenchSerial(std::shared_ptr<VirtualTime> time, std::shared_ptr<simulator::Scanner> scanner)
    : time_(std::move(time)), scanner_(std::move(scanner)) {}

std::unique_ptr<SerialLine> BenchSerial::Open(std::int16_t number, const LineSettings& wanted) {
  asked.push_back(number);
  if (number != port) throw RunTimeError(kErrorPort, "No such port");
  settings = wanted;
  return std::make_unique<BenchLine>(*this);
}

void RecordingEvents::BeforeSheet(bool& initialize) {
  names.emplace_back("BeforeSheet");
  if (onBeforeSheet) onBeforeSheet(initialize);
}

void RecordingEvents::PreprocessSheet(SideArray& a, SideArray& b, BarcodeArray& texts, bool& reject) {
  names.emplace_back("PreprocessSheet");
  if (onPreprocess) onPreprocess(a, b, texts, reject);
}

void RecordingEvents::ReadSheet(SideArray& a, SideArray& b, BarcodeArray& texts, const std::string&,
                                const std::string&, const std::string&, const std::string&) {
  names.emplace_back("ReadSheet");
  side1.push_back(a);
  side2.push_back(b);
  barcodes.push_back(texts);
  if (onReadSheet) onReadSheet();
}

void RecordingEvents::AfterSheet(bool& cancel) {
  names.emplace_back("AfterSheet");
  if (onAfterSheet) onAfterSheet(cancel);
}

void RecordingEvents::BeforePrint(bool& cancel) {
  names.emplace_back("BeforePrint");
  if (onBeforePrint) onBeforePrint(cancel);
}

void RecordingEvents::AfterPrint() { names.emplace_back("AfterPrint"); }

Bench::Bench(teskReaderType type, std::shared_ptr<simulator::Scanner> scanner)
    : time(std::make_shared<VirtualTime>()), serial(std::make_shared<BenchSerial>(time, scanner)) {
  if (scanner) time->nextDue = [scanner] { return scanner->NextDue(); };
  reader = CreateReader(ReaderParts{.serial = serial, .loop = time, .clock = time});
  reader->AddEvents(events);
  reader->LoadDefaults(type);
  reader->SetPort(serial->port);
  reader->SetRecognitionMode(teskRecognitionTypePage);
  reader->SetSide1Rows(From1({50}));
  reader->SetSide1Cols(From1({48}));
  reader->SetSide2Rows(From1({50}));
  reader->SetSide2Cols(From1({48}));
}

Bench::~Bench() {
  if (reader) reader->RemoveEvents(events);
}

Int16Array From1(std::vector<std::int16_t> elements) { return Int16Array(std::move(elements), 1); }

}  // namespace tesk::test
