// Writes a batch's sheets in the chosen format to the chosen place, and its summary. Knows the platform.
#pragma once

#include <memory>
#include <string>

#include "cli/Output.h"
#include "cli/scan/BatchReport.h"
#include "cli/scan/ResultFiles.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/SheetTaker.h"

namespace tesk::cli {

class SheetWriter : public SheetTaker {
 public:
  // Throws UsageError where the plan's file may not be written. Both references outlive this object.
  SheetWriter(const ScanPlan& plan, Output& standardOutput);

  void Begin() override;
  std::int32_t FirstNumber() const override { return soFar_.last + 1; }
  void Keep(const clsTeskReader& engine, const SheetRecord& record) override;
  void Settle(const clsTeskReader& engine, const SheetRecord& record) override;
  // After the batch: everything is brought to the disk; a file without a sheet goes. Throws CommandFailure.
  void End();
  // Without effect where the plan has none. Throws CommandFailure.
  void WriteSummary(const BatchReport& report);

 private:
  Output& Target() { return file_ ? *file_ : standardOutput_; }
  std::string TextOf(const clsTeskReader& engine, const SheetRecord& record) const;
  void OpenSummary();

  const ScanPlan& plan_;
  Output& standardOutput_;
  SheetFormat format_;
  bool color_;
  SheetsSoFar soFar_;
  std::unique_ptr<Output> file_;
  std::unique_ptr<Output> summary_;
  std::string header_;  // what stands before the first sheet, until it has been written
};

}  // namespace tesk::cli
