// The host's side of a batch: collects each sheet from the engine's events, judges it, hands it on and disposes
// of it, and ends the batch when something is wrong or the operator asks. Knows the engine.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "cli/Console.h"
#include "cli/scan/BatchReport.h"
#include "cli/scan/LineActivity.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/SheetJudge.h"
#include "cli/scan/SheetTaker.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

class BatchHost : public ReaderEvents {
 public:
  struct Parts {
    std::shared_ptr<Console> console;
    std::shared_ptr<ConsoleHost> host;  // where the engine's messages go
    std::shared_ptr<LineActivity> activity;
    std::shared_ptr<const Clock> clock;
    std::function<int()> interrupted;  // the signal by which the operator has asked to end; 0: none
    SheetTaker& taker;                 // outlives this object
  };
  // `engine` and `plan` outlive this object.
  BatchHost(clsTeskReader& engine, const ScanPlan& plan, Parts parts);

  // What waits give way to: notices the operator's wish and keeps the progress line alive. A sheet that is
  // under way is read to its end unless the line falls silent.
  void RunMessages();
  // After the batch. started: what ReadBatch yielded.
  BatchReport Report(bool started) const;

  void BeforeSheet(bool& bInitializePrinter) override;
  void PreprocessSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                       bool& bReject) override;
  void ReadSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                 const std::string& sSide1FileName, const std::string& sSide2FileName,
                 const std::string& sSide1ItemCoordinates, const std::string& sSide2ItemCoordinates) override;
  void AfterSheet(bool& bCancelScan) override;
  void BeforePrint(bool& bCancel) override;
  void AfterPrint() override { unprinted_ = false; }

 private:
  enum class Phase { Starting, Reading, Disposing };

  void Begin();
  void RefuseSheet();
  void TakeSheet();
  void GatherWarnings();
  bool KeepSheet();
  std::string Dispose(const std::string& wished);
  std::string WishedDisposal() const;
  bool CanReject() const;
  bool IsLast() const;
  std::string PlaceOfRefused() const;
  void Fail(const std::string& title, const std::string& text);
  std::string LastWritten() const;
  void CancelWhenIdle();
  void ShowProgress();
  double PerMinute(TimePoint until) const;
  std::string ProgressText() const;
  std::string_view WaitingFor() const;

  clsTeskReader& engine_;
  const ScanPlan& plan_;
  Parts parts_;
  SheetJudge judge_;
  Phase phase_ = Phase::Starting;
  bool began_ = false;
  bool last_ = false;       // no sheet is to follow the present one
  bool unprinted_ = false;  // the imprinter's own command has not been confirmed
  std::optional<std::string> refusal_;
  SheetRecord record_;
  std::int32_t number_ = 0;  // of the last sheet that was written
  std::int32_t tried_ = 0;   // reads, also those that failed
  BatchReport counts_;
  std::optional<OperatorMessage> failure_;  // that ends the batch
  TimePoint start_;
  TimePoint lastSheet_;
  TimePoint nextProgress_;
  std::optional<TimePoint> interruptedAt_;
};

}  // namespace tesk::cli
