// The engine's batches: start, sheet after sheet, end, and the count that goes with it.
#include <cstdint>
#include <optional>

#include "base/HostServices.h"
#include "base/conversions.h"
#include "engine/clsTeskReader.h"

namespace tesk {
namespace {

// The count in a variable of the caller's.
class PlainCounter : public SheetCounter {
 public:
  explicit PlainCounter(std::int32_t& count) : count_(count) {}
  std::int32_t Count() override { return count_; }
  void SetCount(std::int32_t count) override { count_ = count; }

 private:
  std::int32_t& count_;
};

// Adds 1 for the sheet whose turn it is, once.
class Turn {
 public:
  explicit Turn(SheetCounter& counter) : counter_(counter) {}
  void Take() {
    if (taken_) return;
    counter_.SetCount(Narrow<std::int32_t>(std::int64_t{counter_.Count()} + 1));
    taken_ = true;
  }

 private:
  SheetCounter& counter_;
  bool taken_ = false;
};

}  // namespace

bool clsTeskReader::ReadBatch(bool initializePrinter, std::int32_t maxSheets, std::int32_t& sheetCount) {
  PlainCounter counter(sheetCount);
  return ReadBatch(initializePrinter, maxSheets, counter);
}

bool clsTeskReader::ReadBatch(bool initializePrinter, std::int32_t maxSheets, SheetCounter& sheetCount) {
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
    if (session_ != Session::Ended) EndReader();
  }
  return result;
}

bool clsTeskReader::RunBatch(bool initializePrinter, std::int32_t maxSheets, SheetCounter& sheetCount) {
  if (!StartReader()) {
    EndReader();
    return false;
  }
  bool lastRead = false;
  while (!cancelScan_ && session_ != Session::Ended && (maxSheets < 0 || sheetCount.Count() < maxSheets)) {
    Turn turn(sheetCount);
    std::optional<RunTimeError> uncounted;
    lastRead = ReadOne(initializePrinter, [&] { uncounted = Attempt([&] { turn.Take(); }); });
    if (uncounted) throw *uncounted;
    turn.Take();
  }
  if (session_ == Session::Ended) {
    cancelScan_ = true;
    return true;
  }
  if (cancelScan_ || (sheetCount.Count() == maxSheets && maxSheets >= 1)) {
    cancelScan_ = true;
    if (lastRead) Eject(fed_);
  }
  EndReader();
  return true;
}

}  // namespace tesk
