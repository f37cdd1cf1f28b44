// The engine's reading cycle, batch, disposal and events.
#include "engine/clsTeskReader.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "base/readerNames.h"

namespace tesk {

// Marks that a driver routine runs: until it ends nobody else may use the wire.
class clsTeskReader::DriverRun {
 public:
  explicit DriverRun(clsTeskReader& reader) : reader_(reader) { reader_.driverRunning_ = true; }
  DriverRun(const DriverRun&) = delete;
  DriverRun& operator=(const DriverRun&) = delete;
  ~DriverRun() { reader_.driverRunning_ = false; }

 private:
  clsTeskReader& reader_;
};

clsTeskReader::clsTeskReader(EngineSeams seams)
    : seams_(std::move(seams)),
      comm_(seams_.comm),
      barcodes_(std::make_shared<clsTeskReaderBarcodes>()),
      windows_(std::make_shared<clsTeskReaderWindows>()),
      profiles_(std::make_shared<clsTeskReaderProfiles>()),
      printer_(std::make_shared<clsTeskReaderPrinter>()) {}

// ---- Starting, reading, ending

bool clsTeskReader::StartReader() {
  const auto self = shared_from_this();
  if (driverRunning_) return false;
  cancelScan_ = false;
  return Guarded("clsTeskReader.StartReader", [&] {
    const DriverRun run(*this);
    return seams_.dispatch->ReaderInit(*this);
  });
}

bool clsTeskReader::ReadPage(bool initializePrinter) {
  const auto self = shared_from_this();
  if (driverRunning_) return false;
  bool finished = false;
  const bool read = Guarded("clsTeskReader.ReadPage", [&] {
    const bool result = ReadSheetAndRaise(initializePrinter);
    finished = true;
    return result;
  });
  // An error is a failed read: without this a batch would try the same sheet for ever.
  if (!finished) cancelScan_ = true;
  return read;
}

bool clsTeskReader::ReadSheetAndRaise(bool initializePrinter) {
  Deref(printer_).SetInitialized(initializePrinter);
  bool wanted = Deref(printer_).Initialized();
  RaiseEvent([&](ReaderEvents& sink) { sink.BeforeSheet(wanted); });
  if (cancelScan_) return false;

  barcodeTexts_.assign(1, {});
  if (!RunRead()) return false;
  disposed_ = false;

  bool reject = false;
  RaiseEvent(
      [&](ReaderEvents& sink) { sink.PreprocessSheet(side1Array_, side2Array_, barcodeTexts_, reject); });
  if (!reject) {
    RaiseEvent([&](ReaderEvents& sink) {
      sink.ReadSheet(side1Array_, side2Array_, barcodeTexts_, side1Image_, side2Image_, side1Coordinates_,
                     side2Coordinates_);
    });
    RaisePrint();
  }
  bool cancel = cancelScan_;
  RaiseEvent([&](ReaderEvents& sink) { sink.AfterSheet(cancel); });
  cancelScan_ = cancel;
  return true;
}

bool clsTeskReader::RunRead() {
  // An event handler of another engine's wait may have come in between.
  if (driverRunning_) return false;
  const DriverRun run(*this);
  return seams_.dispatch->ReaderRead(*this);
}

void clsTeskReader::StoreSheet(Sheet sheet) {
  side1Array_ = std::move(sheet.side1);
  side2Array_ = std::move(sheet.side2);
  side1TimingMarks_ = sheet.side1TimingMarks.value_or(side1TimingMarks_);
  side2TimingMarks_ = sheet.side2TimingMarks.value_or(side2TimingMarks_);
  barcodeTexts_ = std::move(sheet.texts);
}

void clsTeskReader::RaisePrint() {
  if (!Deref(printer_).Active() || !Deref(printer_).Initialized()) return;
  bool cancel = false;
  RaiseEvent([&](ReaderEvents& sink) { sink.BeforePrint(cancel); });
  const bool skip = !Deref(printer_).Active() || cancel;
  bool printed = false;
  {
    const DriverRun run(*this);
    printed = seams_.dispatch->ReaderPrint(*this, skip, disposed_);
  }
  if (printed) RaiseEvent([](ReaderEvents& sink) { sink.AfterPrint(); });
}

bool clsTeskReader::ReadBatch(bool initializePrinter, std::int32_t maxSheets, std::int32_t& sheetCount) {
  const auto self = shared_from_this();
  if (driverRunning_) return false;
  bool finished = false;
  const bool result = Guarded("clsTeskReader.ReadBatch", [&] {
    const bool started = RunBatch(initializePrinter, maxSheets, sheetCount);
    finished = true;
    return started;
  });
  if (!finished) {
    cancelScan_ = true;
    EndReader();
  }
  return result;
}

bool clsTeskReader::RunBatch(bool initializePrinter, std::int32_t maxSheets, std::int32_t& sheetCount) {
  if (!StartReader()) {
    EndReader();
    return false;
  }
  bool lastRead = false;
  while (!cancelScan_ && (maxSheets < 0 || sheetCount < maxSheets)) {
    lastRead = ReadPage(initializePrinter);
    sheetCount = Narrow<std::int32_t>(std::int64_t{sheetCount} + 1);
  }
  if (cancelScan_ || (sheetCount == maxSheets && maxSheets >= 1)) {
    cancelScan_ = true;
    if (lastRead && !disposed_) EjectPage();
  }
  EndReader();
  return true;
}

bool clsTeskReader::EndReader() {
  const auto self = shared_from_this();
  if (driverRunning_) {
    cancelScan_ = true;
    return false;
  }
  const bool closed = Guarded("clsTeskReader.EndReader", [&] {
    const DriverRun run(*this);
    return seams_.dispatch->ReaderClose(*this);
  });
  const auto released = std::exchange(answerKey_, nullptr);
  return closed;
}

// ---- Disposing

void clsTeskReader::RejectPage() {
  const auto self = shared_from_this();
  if (driverRunning_ || disposed_) return;
  Guarded("clsTeskReader.RejectPage", [&] {
    const DriverRun run(*this);
    seams_.dispatch->ReaderReject(*this);
  });
  disposed_ = true;
}

void clsTeskReader::EjectPage() {
  const auto self = shared_from_this();
  if (driverRunning_ || disposed_) return;
  disposed_ = true;
  Guarded("clsTeskReader.EjectPage", [&] {
    const DriverRun run(*this);
    seams_.dispatch->ReaderEject(*this, disposed_);
  });
}

// ---- Events

void clsTeskReader::AddEvents(ReaderEvents& sink) { sinks_.push_back(&sink); }

void clsTeskReader::RemoveEvents(ReaderEvents& sink) { std::erase(sinks_, &sink); }

template <class Raise>
void clsTeskReader::RaiseEvent(Raise raise) {
  const auto before = sinks_;
  for (ReaderEvents* sink : before) {
    // A sink may have been removed by the one before it.
    if (std::find(sinks_.begin(), sinks_.end(), sink) != sinks_.end()) raise(*sink);
  }
}

void clsTeskReader::TranslateDataEvent(std::shared_ptr<HostObject>& oData, SideArray& side1, SideArray& side2,
                                       BarcodeArray& barcodes, bool& needsMoreData) {
  RaiseEvent([&](ReaderEvents& sink) { sink.TranslateData(oData, side1, side2, barcodes, needsMoreData); });
}

void clsTeskReader::GetQuestionsOnSideEvent(std::int16_t& page, std::int16_t& numberQuestions) {
  RaiseEvent([&](ReaderEvents& sink) { sink.GetQuestionsOnPage(page, numberQuestions); });
}

// ---- Host services, setup and search

bool clsTeskReader::SetError(std::shared_ptr<HostServices> host) { return tesk::SetError(std::move(host)); }

bool clsTeskReader::ShowOptions(const std::shared_ptr<HostObject>& parent) {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.ShowOptions", [&] {
    if (!seams_.setupDialog) {
      throw RunTimeError(kErrorNotSupported, "The setup dialog is not available on this system");
    }
    return seams_.setupDialog->Show(*this, HelpID(teskReaderHelpIDProperties), parent);
  });
}

bool clsTeskReader::Locate(std::int16_t startPort) {
  const auto self = shared_from_this();
  if (driverRunning_ || !seams_.portSearch) return false;
  return Guarded("clsTeskReader.Locate", [&] {
    const DriverRun run(*this);
    return seams_.portSearch->Locate(*this, startPort);
  });
}

bool clsTeskReader::Firmware(std::string& text) {
  const auto self = shared_from_this();
  if (driverRunning_ || !seams_.portSearch) return false;
  return Guarded("clsTeskReader.Firmware", [&] {
    const DriverRun run(*this);
    return seams_.portSearch->Firmware(*this, text);
  });
}

// ---- Properties with a behaviour of their own

std::int32_t clsTeskReader::HelpID(teskReaderHelpID index) const {
  return Guarded("clsTeskReader.HelpID", [&] {
    if (index != teskReaderHelpIDProperties) throw SubscriptOutOfRange();
    return helpIDs_[static_cast<std::size_t>(index)];
  });
}

void clsTeskReader::SetHelpID(teskReaderHelpID index, std::int32_t topic) {
  Guarded("clsTeskReader.HelpID", [&] {
    if (index != teskReaderHelpIDProperties) throw SubscriptOutOfRange();
    helpIDs_[static_cast<std::size_t>(index)] = topic;
  });
}

void clsTeskReader::SetColorDepth(teskReaderColorDepth v) {
  const bool member = v >= teskReaderColorDepthMonochrome && v <= teskReaderColorDepthColor;
  colorDepth_ = member ? v : teskReaderColorDepthMonochrome;
}

void clsTeskReader::SetReaderType(teskReaderType v) {
  Guarded("clsTeskReader.ReaderType", [&] {
    if (v != readerType_) omr_ = nullptr;
    readerType_ = v;
    Deref(printer_).SetType(v);
  });
}

std::string clsTeskReader::ReaderName() const { return tesk::ReaderName(readerType_); }

}  // namespace tesk
