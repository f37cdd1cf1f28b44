// The host's side of a batch: collects each sheet from the engine's events, disposes of it, hands it on, and
// ends the batch when the operator asks. Knows the engine.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "cli/Console.h"
#include "cli/LineActivity.h"
#include "cli/ScanPlan.h"
#include "cli/SheetRecord.h"
#include "engine/clsTeskReader.h"

namespace tesk::cli {

class BatchHost : public ReaderEvents {
 public:
  struct Parts {
    std::shared_ptr<Console> console;
    std::shared_ptr<LineActivity> activity;
    std::shared_ptr<const Clock> clock;
    std::function<bool()> interrupted;                // the operator has asked to end
    std::function<void(const SheetRecord&)> deliver;  // takes a sheet; throws CommandFailure
    Disposal disposal = Disposal::Eject;
  };
  // `engine` outlives this object.
  BatchHost(clsTeskReader& engine, Parts parts);

  // What waits give way to: notices the operator's wish and keeps the progress line alive. A sheet that is
  // under way is read to its end unless the line falls silent.
  void RunMessages();

  std::int32_t SheetsRead() const { return sheetsRead_; }
  // Why a sheet could not be handed on; empty where all were.
  const std::string& DeliveryFailure() const { return deliveryFailure_; }

  void BeforeSheet(bool& bInitializePrinter) override;
  void ReadSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                 const std::string& sSide1FileName, const std::string& sSide2FileName,
                 const std::string& sSide1ItemCoordinates, const std::string& sSide2ItemCoordinates) override;
  void AfterSheet(bool& bCancelScan) override;

 private:
  enum class Phase { Starting, Reading, Disposing };

  std::string Dispose();
  void Deliver();
  void CancelWhenIdle();
  void ShowProgress();
  std::string ProgressText() const;
  std::string_view WaitingFor() const;

  clsTeskReader& engine_;
  Parts parts_;
  Phase phase_ = Phase::Starting;
  SheetRecord record_;
  std::int32_t sheetsRead_ = 0;
  std::string deliveryFailure_;
  TimePoint start_;
  TimePoint nextProgress_;
  std::optional<TimePoint> interruptedAt_;
};

}  // namespace tesk::cli
