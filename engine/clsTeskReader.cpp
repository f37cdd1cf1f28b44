// The engine's reading cycle, disposal and events.
#include "engine/clsTeskReader.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "base/readerNames.h"

namespace tesk {

// Marks that a driver routine runs: until it ends nobody else may use the wire, and forms that the host
// replaces keep their port open.
class clsTeskReader::DriverRun {
 public:
  explicit DriverRun(clsTeskReader& reader) : reader_(reader) { reader_.driverRunning_ = true; }
  DriverRun(const DriverRun&) = delete;
  DriverRun& operator=(const DriverRun&) = delete;
  ~DriverRun() {
    reader_.driverRunning_ = false;
    reader_.CloseRetired();
  }

 private:
  clsTeskReader& reader_;
};

clsTeskReader::Page::Page() {
  side1TimingMarks = side2TimingMarks = -1;
  side1Image = side2Image = side1Coordinates = side2Coordinates = "";
}

clsTeskReader::clsTeskReader(EngineSeams seams)
    : seams_(std::move(seams)),
      comm_(std::move(seams_.comm)),
      barcodes_(std::make_shared<clsTeskReaderBarcodes>()),
      windows_(std::make_shared<clsTeskReaderWindows>()),
      profiles_(std::make_shared<clsTeskReaderProfiles>()),
      printer_(std::make_shared<clsTeskReaderPrinter>()),
      page_(std::make_shared<Page>()),
      fed_(page_) {}

// ---- Starting, reading, ending

bool clsTeskReader::StartReader() {
  const auto self = shared_from_this();
  if (driverRunning_) return false;
  cancelScan_ = false;
  session_ = Session::Failed;
  const bool started = Guarded("clsTeskReader.StartReader", [&] {
    const DriverRun run(*this);
    return seams_.dispatch->ReaderInit(*this);
  });
  if (started) session_ = Session::Started;
  return started;
}

// One call of ReadPage. An event may read further sheets, so whatever belongs to this one stands here and
// comes back before each of its events.
class clsTeskReader::PageRead {
 public:
  PageRead(clsTeskReader& reader, bool initializePrinter)
      : reader_(reader),
        printer_(reader.printer_),
        initializePrinter_(initializePrinter),
        startedAs_(reader.session_),
        outer_(std::exchange(reader.reading_, this)) {}
  PageRead(const PageRead&) = delete;
  PageRead& operator=(const PageRead&) = delete;
  ~PageRead() {
    reader_.reading_ = outer_;
    // Without a sheet of its own it leaves the outer one current, with its counts.
    if (!page_) reader_.ResumeSheet();
  }

  bool Run(const std::function<void()>& beforeAfterSheet);
  void Resume() const;

 private:
  template <class Raise>
  void RaiseOwn(Raise raise);
  // The host has ended the reader in one of the events.
  bool Ended() const { return startedAs_ != Session::Ended && reader_.session_ == Session::Ended; }
  // The sheet is where the scanner's next command would act on it.
  bool InReach() const { return !Ended() && page_ == reader_.fed_; }
  bool Feed();
  bool PreprocessSheet();
  void Print();
  bool WantsPrint() const;
  void AfterSheet();

  clsTeskReader& reader_;
  std::shared_ptr<clsTeskReaderPrinter> printer_;
  bool initializePrinter_;
  Session startedAs_;
  PageRead* outer_;
  std::shared_ptr<Page> page_;  // empty until the sheet has been read
};

bool clsTeskReader::ReadPage(bool initializePrinter) {
  const auto self = shared_from_this();
  return ReadOne(initializePrinter, [] {});
}

bool clsTeskReader::ReadOne(bool initializePrinter, const std::function<void()>& beforeAfterSheet) {
  if (driverRunning_) return false;
  bool finished = false;
  const bool read = Guarded("clsTeskReader.ReadPage", [&] {
    const bool result = PageRead(*this, initializePrinter).Run(beforeAfterSheet);
    finished = true;
    return result;
  });
  // An error is a failed read: without this a batch would try the same sheet for ever.
  if (!finished) cancelScan_ = true;
  return read;
}

bool clsTeskReader::PageRead::Run(const std::function<void()>& beforeAfterSheet) {
  Deref(printer_).SetInitialized(initializePrinter_);
  RaiseOwn([wanted = printer_->Initialized()](ReaderEvents& sink) mutable { sink.BeforeSheet(wanted); });
  if (Ended()) reader_.cancelScan_ = true;
  if (reader_.cancelScan_ || !Feed()) return false;
  if (!PreprocessSheet()) {
    RaiseOwn([this](ReaderEvents& sink) {
      sink.ReadSheet(page_->side1, page_->side2, page_->texts, *page_->side1Image, *page_->side2Image,
                     *page_->side1Coordinates, *page_->side2Coordinates);
    });
    Print();
  }
  beforeAfterSheet();
  AfterSheet();
  return true;
}

void clsTeskReader::PageRead::Resume() const {
  if (printer_) printer_->SetInitialized(initializePrinter_);
  if (!page_) return;
  reader_.page_ = page_;
  reader_.side1TimingMarks_ = *page_->side1TimingMarks;
  reader_.side2TimingMarks_ = *page_->side2TimingMarks;
}

template <class Raise>
void clsTeskReader::PageRead::RaiseOwn(Raise raise) {
  reader_.RaiseEvent([&](ReaderEvents& sink) {
    Resume();
    raise(sink);
  });
  Resume();
}

bool clsTeskReader::PageRead::Feed() {
  // An event handler of another engine's wait may have come in between.
  if (reader_.driverRunning_) return false;
  const DriverRun run(reader_);
  if (!reader_.seams_.dispatch->ReaderRead(reader_)) return false;
  page_ = reader_.page_;
  page_->disposed = false;
  return true;
}

// Whether the host rejects the sheet.
bool clsTeskReader::PageRead::PreprocessSheet() {
  bool reject = false;
  RaiseOwn(
      [&](ReaderEvents& sink) { sink.PreprocessSheet(page_->side1, page_->side2, page_->texts, reject); });
  return reject;
}

bool clsTeskReader::PageRead::WantsPrint() const {
  const auto& printer = Deref(reader_.printer_);
  return printer.Active() && printer.Initialized() && InReach();
}

void clsTeskReader::PageRead::Print() {
  if (!WantsPrint()) return;
  bool cancel = false;
  RaiseOwn([&](ReaderEvents& sink) { sink.BeforePrint(cancel); });
  if (!InReach()) return;
  const bool skip = !Deref(reader_.printer_).Active() || cancel;
  bool printed = false;
  {
    const DriverRun run(reader_);
    printed = reader_.seams_.dispatch->ReaderPrint(reader_, skip, page_->disposed);
  }
  if (printed) RaiseOwn([](ReaderEvents& sink) { sink.AfterPrint(); });
}

void clsTeskReader::PageRead::AfterSheet() {
  const bool before = reader_.cancelScan_;
  bool cancel = before;
  RaiseOwn([&](ReaderEvents& sink) { sink.AfterSheet(cancel); });
  // Left as it was it is no answer, and what was set meanwhile stands: somebody else may have cancelled.
  if (cancel != before) reader_.cancelScan_ = cancel;
}

void clsTeskReader::ResumeSheet() {
  if (reading_ != nullptr) reading_->Resume();
}

void clsTeskReader::StoreSheet(Sheet sheet) {
  auto page = std::make_shared<Page>();
  const auto keep = [](auto& kept, auto& given, const auto& otherwise) {
    kept = given ? std::move(given) : otherwise;
  };
  keep(page->side1TimingMarks, sheet.side1TimingMarks, std::optional(side1TimingMarks_));
  keep(page->side2TimingMarks, sheet.side2TimingMarks, std::optional(side2TimingMarks_));
  keep(page->side1Image, sheet.side1Image, page_->side1Image);
  keep(page->side2Image, sheet.side2Image, page_->side2Image);
  keep(page->side1Coordinates, sheet.side1Coordinates, page_->side1Coordinates);
  keep(page->side2Coordinates, sheet.side2Coordinates, page_->side2Coordinates);
  page->side1 = std::move(sheet.side1);
  page->side2 = std::move(sheet.side2);
  page->missing = sheet.missing;
  page->texts = std::move(sheet.texts);
  side1TimingMarks_ = *page->side1TimingMarks;
  side2TimingMarks_ = *page->side2TimingMarks;
  // The scanner sends a sheet on when it feeds the next.
  fed_->disposed = true;
  page_ = fed_ = std::move(page);
}

bool clsTeskReader::EndReader() {
  const auto self = shared_from_this();
  if (driverRunning_) {
    cancelScan_ = true;
    return false;
  }
  session_ = Session::Ended;
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
  const auto page = page_;
  if (driverRunning_ || page->disposed) return;
  Guarded("clsTeskReader.RejectPage", [&] {
    const DriverRun run(*this);
    seams_.dispatch->ReaderReject(*this);
  });
  page->disposed = true;
}

void clsTeskReader::EjectPage() { Eject(page_); }

void clsTeskReader::Eject(const std::shared_ptr<Page>& page) {
  const auto self = shared_from_this();
  const auto kept = page;
  if (driverRunning_ || kept->disposed) return;
  kept->disposed = true;
  Guarded("clsTeskReader.EjectPage", [&] {
    const DriverRun run(*this);
    seams_.dispatch->ReaderEject(*this, kept->disposed);
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
  const auto self = shared_from_this();
  RaiseEvent([&](ReaderEvents& sink) { sink.TranslateData(oData, side1, side2, barcodes, needsMoreData); });
}

void clsTeskReader::GetQuestionsOnSideEvent(std::int16_t& page, std::int16_t& numberQuestions) {
  const auto self = shared_from_this();
  RaiseEvent([&](ReaderEvents& sink) { sink.GetQuestionsOnPage(page, numberQuestions); });
}

// ---- Host services, setup and search

bool clsTeskReader::SetError(std::shared_ptr<HostServices> host) {
  const auto self = shared_from_this();
  return tesk::SetError(std::move(host));
}

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
    EndFailedStart();
    return seams_.portSearch->Locate(*this, startPort);
  });
}

bool clsTeskReader::Firmware(std::string& text) {
  const auto self = shared_from_this();
  if (driverRunning_ || !seams_.portSearch) return false;
  return Guarded("clsTeskReader.Firmware", [&] {
    const DriverRun run(*this);
    EndFailedStart();
    return seams_.portSearch->Firmware(*this, text);
  });
}

void clsTeskReader::EndFailedStart() {
  if (session_ != Session::Failed) return;
  const auto port = Deref(comm_).mscComm();
  if (port->PortOpen()) port->SetPortOpen(false);
}

// ---- Properties with a behaviour of their own

void clsTeskReader::SetfComm(std::shared_ptr<frmComm> v) {
  const auto self = shared_from_this();
  if (v == comm_) return;
  if (const auto before = std::exchange(comm_, std::move(v))) retired_.push_back(before);
  if (!driverRunning_) CloseRetired();
}

void clsTeskReader::CloseRetired() {
  for (const auto& form : std::exchange(retired_, {})) {
    const auto port = form->mscComm();
    // A form that came back, or one that shares its control with the present one, goes on.
    if (comm_ && comm_->mscComm() == port) continue;
    Guarded("clsTeskReader.fComm", [&] {
      if (port->PortOpen()) port->SetPortOpen(false);
    });
  }
}

std::int32_t clsTeskReader::HelpID(teskReaderHelpID index) const {
  const auto self = shared_from_this();
  return Guarded("clsTeskReader.HelpID", [&] {
    if (index != teskReaderHelpIDProperties) throw SubscriptOutOfRange();
    return helpIDs_[static_cast<std::size_t>(index)];
  });
}

void clsTeskReader::SetHelpID(teskReaderHelpID index, std::int32_t topic) {
  const auto self = shared_from_this();
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
  const auto self = shared_from_this();
  Guarded("clsTeskReader.ReaderType", [&] {
    if (v != readerType_) omr_ = nullptr;
    readerType_ = v;
    Deref(printer_).SetType(v);
  });
}

std::string clsTeskReader::ReaderName() const { return tesk::ReaderName(readerType_); }

std::shared_ptr<clsTeskReaderProfile> clsTeskReader::Profile() const {
  return Deref(profiles_).Item(NumberText(readerType_));
}

}  // namespace tesk
