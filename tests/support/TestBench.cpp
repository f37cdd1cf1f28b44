// The bench.
#include "tests/support/TestBench.h"

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

#include "base/conversions.h"

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
    if (serial_.onWrite) serial_.onWrite(bytes);
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

Bench::Bench(teskReaderType type, std::shared_ptr<simulator::Scanner> scanner,
             std::shared_ptr<OmrLibraryLoader> omrLoader)
    : time(std::make_shared<VirtualTime>()), serial(std::make_shared<BenchSerial>(time, scanner)) {
  if (scanner) time->nextDue = [scanner] { return scanner->NextDue(); };
  reader = CreateReader(
      ReaderParts{.serial = serial, .loop = time, .clock = time, .omrLoader = std::move(omrLoader)});
  serial->onWrite = [this](std::string_view bytes) { Note(Caret(bytes)); };
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

// ---- What happens on the bench

namespace {

std::string SheetText(const clsTeskReader& reader) {
  std::string text = MarksText(reader.Side1Array()) + " " + MarksText(reader.Side2Array()) + " " +
                     NumberText(reader.Side1TimingMarks()) + "/" + NumberText(reader.Side2TimingMarks());
  for (const std::string& barcode : reader.BarcodeTexts()) text += " '" + barcode + "'";
  return text;
}

}  // namespace

void Bench::Note(const std::string& what) {
  if (whatElse) happened_ += whatElse();
  for (; messages_ < host.messages.size(); ++messages_) happened_ += " | ! " + host.messages[messages_].title;
  for (; errors_ < host.errors.size(); ++errors_) {
    const std::string& source = host.errors[errors_].source;
    happened_ += " | error " + NumberText(host.errors[errors_].number) + source.substr(source.rfind('-') + 1);
  }
  happened_ += " | " + std::to_string((time->Elapsed() - began_).count()) + " " + what;
}

void Bench::Call(char call) {
  const auto ended = [&](bool result) { Note(call + std::string(result ? ": yes" : ": no")); };
  const auto read = [&](bool print) {
    const SideArray side1 = reader->Side1Array();
    const SideArray side2 = reader->Side2Array();
    const bool result = reader->ReadPage(print);
    if (result) return Note("r: " + SheetText(*reader));
    ended(false);
    if (reader->Side1Array() != side1 || reader->Side2Array() != side2) Note("and the arrays changed");
  };
  if (call == 's') ended(reader->StartReader());
  if (call == 'x') ended(reader->EndReader());
  if (call == 'r' || call == 'p') read(call == 'p');
  if (call == 'e') reader->EjectPage(), Note("e");
  if (call == 'j') reader->RejectPage(), Note("j");
  if (call == 'c') reader->SetCancelScan(false);
  if (call != 'S') return;
  const auto messages = std::exchange(time->onMessages, nullptr);
  EXPECT_TRUE(reader->StartReader());
  time->onMessages = messages;
  if (whatElse) whatElse();
  began_ = time->Elapsed();
  happened_.clear();
}

std::string Bench::Do(std::string_view calls) {
  happened_.clear();
  for (const char call : calls) Call(call);
  return happened_.empty() ? "" : happened_.substr(3);
}

void Bench::CancelAt(Milliseconds at) {
  time->onMessages = [this, at](int) {
    if (time->Elapsed() - began_ >= at) reader->SetCancelScan(true);
  };
}

void Bench::SetExtents(std::int16_t rows1, std::int16_t rows2, bool twoSided) {
  reader->SetSide1Rows(From1({rows1}));
  reader->SetSide2Rows(From1({rows2}));
  reader->SetDuplex(twoSided);
  reader->SetDuplexForm(twoSided);
}

void Bench::AddWindow(std::array<std::int16_t, 8> v) {
  auto window = std::make_shared<clsTeskReaderWindow>();
  window->SetPage(v[0]);
  window->SetStartRow(v[1]);
  window->SetNumRows(v[2]);
  window->SetRowGap(v[3]);
  window->SetStartCol(v[4]);
  window->SetNumCols(v[5]);
  window->SetColGap(v[6]);
  window->SetOrientation(v[7]);
  reader->Windows()->Add(window);
  reader->SetRecognitionMode(teskRecognitionTypeWindow);
}

void Bench::AddBarcodes(int count) {
  for (; count > 0; --count) reader->Barcodes()->Add(std::make_shared<clsTeskReaderBarcode>());
  reader->SetBarcode(true);
}

void Bench::TurnImprinterOn(std::int16_t distance, const std::string& line1, const std::string& line3) {
  clsTeskReaderPrinter& printer = *reader->Printer();
  printer.SetEnabled(true);
  printer.SetActive(true);
  printer.SetDistance(distance);
  printer.SetBuffer1(line1);
  printer.SetBuffer3(line3);
}

std::string MarksText(const SideArray& side) {
  if (side.Empty()) return "[]";
  std::string text = "[" + NumberText(side.Rows()) + "x" + NumberText(side.Columns());
  for (std::int32_t row = 1; row <= side.Rows(); ++row) {
    for (std::int32_t column = 1; column <= side.Columns(); ++column) {
      const std::int16_t value = side.At(row, column);
      if (value != 0) text += " " + NumberText(row) + "," + NumberText(column) + "=" + NumberText(value);
    }
  }
  return text + "]";
}

SideArray Grid(std::int32_t rows, std::int32_t columns,
               const std::vector<std::array<std::int16_t, 3>>& marks) {
  SideArray side(rows, columns);
  for (const auto& [row, column, value] : marks) side.At(row, column) = value;
  return side;
}

std::string Caret(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20) {
      text += {'^', static_cast<char>(byte + 0x40)};
    } else {
      text += byte < 0x7F ? std::string(1, c) : "<" + HexText(byte) + ">";
    }
  }
  return text;
}

Int16Array From1(std::vector<std::int16_t> elements) { return Int16Array(std::move(elements), 1); }

}  // namespace tesk::test
