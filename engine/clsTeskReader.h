// The reader engine: the one object that a host creates to drive an optical mark reader. It owns no scanner
// protocol; every scanner action goes through the dispatch that it was given.
//
// A sheet travels: BeforeSheet, the driver reads, PreprocessSheet, ReadSheet, BeforePrint, the driver prints,
// AfterPrint, AfterSheet. The host disposes of it with RejectPage or EjectPage.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/SideArray.h"
#include "base/enumerations.h"
#include "engine/Seams.h"
#include "engine/clsTeskReaderBarcodes.h"
#include "engine/clsTeskReaderPrinter.h"
#include "engine/clsTeskReaderWindows.h"
#include "profiles/clsTeskReaderProfiles.h"
#include "transport/HostLoop.h"
#include "transport/frmComm.h"

namespace tesk {

// Create it with std::make_shared: a call keeps its engine alive, so that a host may release the last
// reference inside an event or a wait. All calls come on one thread. While a call waits for the scanner the
// host may call in again: CancelScan and the properties always work, an operation that needs the wire
// returns False and touches nothing.
class clsTeskReader : public std::enable_shared_from_this<clsTeskReader> {
 public:
  explicit clsTeskReader(EngineSeams seams);
  clsTeskReader(const clsTeskReader&) = delete;
  clsTeskReader& operator=(const clsTeskReader&) = delete;

  // ---- Methods. True is success; a failure has been shown or reported by then.

  bool StartReader();
  bool ReadPage(bool initializePrinter = false);
  // sheetCount: the starting value in, plus one per sheet tried out; a sheet that was read counts from its
  // AfterSheet on. maxSheets below 0: no limit. EndReader in an event ends the batch.
  bool ReadBatch(bool initializePrinter, std::int32_t maxSheets, SheetCounter& sheetCount);
  bool ReadBatch(bool initializePrinter, std::int32_t maxSheets, std::int32_t& sheetCount);
  bool EndReader();
  // Of the sheet whose events are running, else of the last one read. A sheet that another one has followed
  // is out of reach and counts as disposed of.
  void RejectPage();
  void EjectPage();
  // Copies a model's proposals from its profile; Port, Windowing, Continuous, DuplexForm and RecognitionMode
  // stay as they are.
  bool LoadDefaults(teskReaderType type);
  // Settings as text values under a key of the settings store. A value that does not convert is reported and
  // ends the loading; what was assigned before it stays.
  bool LoadSettings(teskReaderRegistryKey root, const std::string& subKey);
  bool SaveSettings(teskReaderRegistryKey root, const std::string& subKey);
  // Installs the process-wide error and localisation object; True when it is not empty.
  bool SetError(std::shared_ptr<HostServices> host);
  bool ShowOptions(const std::shared_ptr<HostObject>& parent = nullptr);
  bool Locate(std::int16_t startPort = 0);
  bool Firmware(std::string& text);

  // ---- Events. A sink stays the host's; it may come and go at any time, also inside an event.

  void AddEvents(ReaderEvents& sink);
  void RemoveEvents(ReaderEvents& sink);

  // ---- Owned objects. A host may replace them, or set them to nothing.

  const std::shared_ptr<clsTeskReaderBarcodes>& Barcodes() const { return barcodes_; }
  void SetBarcodes(std::shared_ptr<clsTeskReaderBarcodes> v) { barcodes_.swap(v); }
  const std::shared_ptr<clsTeskReaderWindows>& Windows() const { return windows_; }
  void SetWindows(std::shared_ptr<clsTeskReaderWindows> v) { windows_.swap(v); }
  const std::shared_ptr<clsTeskReaderProfiles>& Profiles() const { return profiles_; }
  void SetProfiles(std::shared_ptr<clsTeskReaderProfiles> v) { profiles_.swap(v); }
  const std::shared_ptr<clsTeskReaderPrinter>& Printer() const { return printer_; }
  void SetPrinter(std::shared_ptr<clsTeskReaderPrinter> v) { printer_.swap(v); }
  const std::shared_ptr<frmComm>& fComm() const { return comm_; }
  // Closes the port of the form that goes, once no driver routine uses it any more.
  void SetfComm(std::shared_ptr<frmComm> v);
  const std::shared_ptr<HostObject>& AnswerKey() const { return answerKey_; }  // EndReader empties it
  void SetAnswerKey(std::shared_ptr<HostObject> v) { answerKey_.swap(v); }

  // ---- Settings, all zero, False or empty at first.

  // Help topic per teskReaderHelpID; another index is error 9, reported.
  std::int32_t HelpID(teskReaderHelpID index) const;
  void SetHelpID(teskReaderHelpID index, std::int32_t topic);
  const std::string& HelpFile() const { return helpFile_; }
  void SetHelpFile(const std::string& v) { helpFile_ = v; }

  bool ImagingEnabled() const { return imagingEnabled_; }
  void SetImagingEnabled(bool v) { imagingEnabled_ = v; }
  bool ReaderGrade() const { return readerGrade_; }
  void SetReaderGrade(bool v) { readerGrade_ = v; }
  bool Duplex() const { return duplex_; }
  void SetDuplex(bool v) { duplex_ = v; }
  bool DuplexForm() const { return duplexForm_; }
  void SetDuplexForm(bool v) { duplexForm_ = v; }
  bool Barcode() const { return barcode_; }
  void SetBarcode(bool v) { barcode_ = v; }
  bool Image() const { return image_; }
  void SetImage(bool v) { image_ = v; }
  bool Feeder() const { return feeder_; }
  void SetFeeder(bool v) { feeder_ = v; }
  bool Rejecter() const { return rejecter_; }
  void SetRejecter(bool v) { rejecter_ = v; }
  bool Windowing() const { return windowing_; }
  void SetWindowing(bool v) { windowing_ = v; }
  bool Continuous() const { return continuous_; }
  void SetContinuous(bool v) { continuous_ = v; }

  teskReaderBaudRate BaudRate() const { return baudRate_; }
  void SetBaudRate(teskReaderBaudRate v) { baudRate_ = v; }
  teskReaderDataBits DataBits() const { return dataBits_; }
  void SetDataBits(teskReaderDataBits v) { dataBits_ = v; }
  teskReaderFlowControl FlowControl() const { return flowControl_; }
  void SetFlowControl(teskReaderFlowControl v) { flowControl_ = v; }
  const std::string& Parity() const { return parity_; }  // one letter: N E O M S
  void SetParity(const std::string& v) { parity_ = v; }
  float StopBits() const { return stopBits_; }  // 1, 1.5 or 2
  void SetStopBits(float v) { stopBits_ = v; }
  std::int16_t Port() const { return port_; }  // 1..16, checked when the reader starts
  void SetPort(std::int16_t v) { port_ = v; }
  std::int32_t SleepTime() const { return sleepTime_; }  // milliseconds between polls
  void SetSleepTime(std::int32_t v) { sleepTime_ = v; }
  std::int32_t TimeOut() const { return timeOut_; }  // seconds; outside 1..600 becomes 10 at start
  void SetTimeOut(std::int32_t v) { timeOut_ = v; }

  teskReaderColorDepth ColorDepth() const { return colorDepth_; }
  void SetColorDepth(teskReaderColorDepth v);              // a value that is no member is stored as 0
  std::int16_t Resolution() const { return resolution_; }  // dots per inch
  void SetResolution(std::int16_t v) { resolution_ = v; }
  std::int16_t MarkCutOff() const { return markCutOff_; }
  void SetMarkCutOff(std::int16_t v) { markCutOff_ = v; }
  std::int16_t MarkDiscrimination() const { return markDiscrimination_; }
  void SetMarkDiscrimination(std::int16_t v) { markDiscrimination_ = v; }
  std::int16_t RecognitionThreshold() const { return recognitionThreshold_; }
  void SetRecognitionThreshold(std::int16_t v) { recognitionThreshold_ = v; }
  std::int16_t ErasureThreshold() const { return erasureThreshold_; }
  void SetErasureThreshold(std::int16_t v) { erasureThreshold_ = v; }
  std::int16_t RecognitionThresholdMax() const { return recognitionThresholdMax_; }
  void SetRecognitionThresholdMax(std::int16_t v) { recognitionThresholdMax_ = v; }
  teskRecognitionType RecognitionMode() const { return recognitionMode_; }
  void SetRecognitionMode(teskRecognitionType v) { recognitionMode_ = v; }

  teskReaderType ReaderType() const { return readerType_; }
  void SetReaderType(teskReaderType v);  // re-types the imprinter; another type lets go of a library
  std::string ReaderName() const;        // display name of ReaderType

  bool CancelScan() const { return cancelScan_; }  // True at first
  void SetCancelScan(bool v) { cancelScan_ = v; }

  // Rows and columns per sheet definition, indexed from 1.
  const Int16Array& Side1Rows() const { return side1Rows_.sizes; }
  void SetSide1Rows(Int16Array v) { side1Rows_.Assign(std::move(v)); }
  const Int16Array& Side1Cols() const { return side1Cols_.sizes; }
  void SetSide1Cols(Int16Array v) { side1Cols_.Assign(std::move(v)); }
  const Int16Array& Side2Rows() const { return side2Rows_.sizes; }
  void SetSide2Rows(Int16Array v) { side2Rows_.Assign(std::move(v)); }
  const Int16Array& Side2Cols() const { return side2Cols_.sizes; }
  void SetSide2Cols(Int16Array v) { side2Cols_.Assign(std::move(v)); }

  // ---- Results of the sheet whose events are running, else of the last one.

  std::int16_t Side1TimingMarks() const { return side1TimingMarks_; }  // -1: not reported
  std::int16_t Side2TimingMarks() const { return side2TimingMarks_; }
  const SideArray& Side1Array() const { return page_->side1; }
  const SideArray& Side2Array() const { return page_->side2; }  // empty or all 0 where side 2 was not read
  const std::string& Side1Image() const { return *page_->side1Image; }
  void SetSide1Image(const std::string& v) { page_->side1Image = v; }
  const std::string& Side2Image() const { return *page_->side2Image; }
  void SetSide2Image(const std::string& v) { page_->side2Image = v; }
  const std::string& Side1Coordinates() const { return *page_->side1Coordinates; }
  void SetSide1Coordinates(const std::string& v) { page_->side1Coordinates = v; }
  const std::string& Side2Coordinates() const { return *page_->side2Coordinates; }
  void SetSide2Coordinates(const std::string& v) { page_->side2Coordinates = v; }

  // ---- For the library: drivers, dispatch and setup. Not on the automation interface.

  // The profile of ReaderType among the Profiles; empty where there is none. Error 91 without Profiles.
  std::shared_ptr<clsTeskReaderProfile> Profile() const;

  // The largest element of each geometry array, at least 0: what drivers dimension side arrays by.
  std::int16_t Side1RowExtent() const { return side1Rows_.extent; }
  std::int16_t Side1ColExtent() const { return side1Cols_.extent; }
  std::int16_t Side2RowExtent() const { return side2Rows_.extent; }
  std::int16_t Side2ColExtent() const { return side2Cols_.extent; }
  bool TwoSided() const { return duplex_ && duplexForm_; }

  void SetSide1TimingMarks(std::int16_t v) { side1TimingMarks_ = v; }
  void SetSide2TimingMarks(std::int16_t v) { side2TimingMarks_ = v; }
  const BarcodeArray& BarcodeTexts() const { return page_->texts; }
  // Mark positions of the sheet that were asked for and did not come.
  std::int32_t MissingPositions() const { return page_->missing; }
  // Whether the last read found the hopper empty; the dispatch clears it, a driver that was told so sets it.
  bool HopperEmpty() const { return hopperEmpty_; }
  void SetHopperEmpty(bool v) { hopperEmpty_ = v; }
  // Makes `sheet` the last sheet. The one place where results reach the engine; beside it drivers only count
  // timing marks, which hosts may watch while a sheet is read.
  void StoreSheet(Sheet sheet);

  // Makes the sheet whose event is being raised the current one again. For sinks that stand for several: each of
  // them may have read further sheets.
  void ResumeSheet();

  // Values of the settings store. An empty text is stored, and handed back, as one blank.
  bool SaveValue(teskReaderRegistryKey root, const std::string& subKey, const std::string& name,
                 std::string& text);
  bool SaveValues(teskReaderRegistryKey root, const std::string& subKey, std::vector<StoredValue>& values);
  // `missing` where the store has no such text; nothing where the store failed, which has been reported.
  std::optional<std::string> LoadValue(teskReaderRegistryKey root, const std::string& subKey,
                                       const std::string& name, const std::string& missing);

  HostLoop& Loop() const { return *seams_.loop; }
  TimePoint Now() const { return seams_.clock->Now(); }
  // What the calling driver keeps in this engine; a fresh record where it has none yet. Hold the reference
  // that is returned: another driver's call, possible in every wait, drops the engine's own.
  template <class State>
  std::shared_ptr<State> Kept() {
    auto kept = std::dynamic_pointer_cast<State>(kept_);
    if (!kept) kept_ = kept = std::make_shared<State>();
    return kept;
  }
  // The library of the Sekonic USB readers, where it comes from and while it is loaded; both may be empty.
  const std::shared_ptr<OmrLibraryLoader>& OmrLoader() const { return seams_.omrLoader; }
  const std::shared_ptr<OmrLibrary>& Omr() const { return omr_; }
  void SetOmr(std::shared_ptr<OmrLibrary> v) { omr_.swap(v); }
  void TranslateDataEvent(std::shared_ptr<HostObject>& oData, SideArray& side1, SideArray& side2,
                          BarcodeArray& barcodes, bool& needsMoreData);
  void GetQuestionsOnSideEvent(std::int16_t& page, std::int16_t& numberQuestions);

 private:
  // One geometry array with the extent that goes with it.
  struct Sizes {
    Int16Array sizes;
    std::int16_t extent = 0;
    void Assign(Int16Array v) {
      sizes = std::move(v);
      extent = sizes.LargestFromOne();
    }
  };

  // A sheet as the engine keeps it. All its texts and counts are there.
  struct Page : Sheet {
    Page();
    bool disposed = false;
  };
  // Ended: also before the first start. Failed: the start failed, which leaves the port open.
  enum class Session { Ended, Failed, Started };

  class DriverRun;
  class PageRead;

  template <class Raise>
  void RaiseEvent(Raise raise);
  bool ReadOne(bool initializePrinter, const std::function<void()>& beforeAfterSheet);
  bool RunBatch(bool initializePrinter, std::int32_t maxSheets, SheetCounter& sheetCount);
  void Eject(const std::shared_ptr<Page>& page);
  void EndFailedStart();
  void CloseRetired();

  EngineSeams seams_;
  std::shared_ptr<frmComm> comm_;
  std::shared_ptr<clsTeskReaderBarcodes> barcodes_;
  std::shared_ptr<clsTeskReaderWindows> windows_;
  std::shared_ptr<clsTeskReaderProfiles> profiles_;
  std::shared_ptr<clsTeskReaderPrinter> printer_;
  std::shared_ptr<HostObject> answerKey_;
  std::shared_ptr<OmrLibrary> omr_;
  std::shared_ptr<DriverState> kept_;
  std::vector<ReaderEvents*> sinks_;
  std::vector<std::shared_ptr<frmComm>> retired_;  // forms that went, perhaps with their port open
  std::shared_ptr<Page> page_;                     // what the host sees; never empty
  std::shared_ptr<Page> fed_;                      // the last sheet that the scanner gave
  PageRead* reading_ = nullptr;                    // the innermost ReadPage that runs
  std::int16_t side1TimingMarks_ = -1;             // also while a driver counts
  std::int16_t side2TimingMarks_ = -1;
  Session session_ = Session::Ended;
  bool driverRunning_ = false;
  bool hopperEmpty_ = false;

  std::array<std::int32_t, 1> helpIDs_{};
  std::string helpFile_;
  bool imagingEnabled_ = false;
  bool readerGrade_ = false;
  bool duplex_ = false;
  bool duplexForm_ = false;
  bool barcode_ = false;
  bool image_ = false;
  bool feeder_ = false;
  bool rejecter_ = false;
  bool windowing_ = false;
  bool continuous_ = false;
  teskReaderBaudRate baudRate_{};
  teskReaderDataBits dataBits_{};
  teskReaderFlowControl flowControl_{};
  std::string parity_;
  float stopBits_ = 0;
  std::int16_t port_ = 0;
  std::int32_t sleepTime_ = 0;
  std::int32_t timeOut_ = 0;
  teskReaderColorDepth colorDepth_{};
  std::int16_t resolution_ = 0;
  std::int16_t markCutOff_ = 0;
  std::int16_t markDiscrimination_ = 0;
  std::int16_t recognitionThreshold_ = 0;
  std::int16_t erasureThreshold_ = 0;
  std::int16_t recognitionThresholdMax_ = 0;
  teskRecognitionType recognitionMode_{};
  teskReaderType readerType_ = teskReaderTypeNone;
  bool cancelScan_ = true;

  Sizes side1Rows_;
  Sizes side1Cols_;
  Sizes side2Rows_;
  Sizes side2Cols_;
};

}  // namespace tesk
