// Sheets in, records out; the end of a batch at the operator's wish.
#include "cli/BatchHost.h"

#include <chrono>

#include <fmt/format.h>

#include "cli/CommandError.h"

namespace tesk::cli {
namespace {

using std::chrono::duration_cast;

// How long a scanner may be silent in the middle of a sheet before an interrupted batch is given up, and how
// long it may take in all.
constexpr Milliseconds kSilence{3000};
constexpr Milliseconds kLongestEnd{15000};
constexpr Milliseconds kProgressInterval{100};

bool Blank(const SideArray& side) { return side == SideArray(side.Rows(), side.Columns()); }

}  // namespace

BatchHost::BatchHost(clsTeskReader& engine, Parts parts)
    : engine_(engine), parts_(std::move(parts)), start_(parts_.clock->Now()), nextProgress_(start_) {}

void BatchHost::RunMessages() {
  if (parts_.interrupted()) CancelWhenIdle();
  if (parts_.console->Animated()) ShowProgress();
}

void BatchHost::CancelWhenIdle() {
  const TimePoint now = parts_.clock->Now();
  if (!interruptedAt_) interruptedAt_ = now;
  if (!parts_.activity->Working(kSilence) || now - *interruptedAt_ > kLongestEnd) engine_.SetCancelScan(true);
}

void BatchHost::BeforeSheet(bool& /*bInitializePrinter*/) {
  phase_ = Phase::Reading;
  if (parts_.interrupted()) engine_.SetCancelScan(true);
}

void BatchHost::ReadSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                          const std::string& sSide1FileName, const std::string& sSide2FileName,
                          const std::string& sSide1ItemCoordinates,
                          const std::string& sSide2ItemCoordinates) {
  record_ = {.sheet = ++sheetsRead_,
             .reader = engine_.ReaderType(),
             .side1 = {engine_.Side1TimingMarks(), iSide1Array, sSide1FileName, sSide1ItemCoordinates},
             .side2 = std::nullopt,
             .barcodes = BarcodesRead(sBarcodeArray),
             .disposed = {}};
  // A driver may hand out a blank back that nobody asked for.
  if (!iSide2Array.Empty() && (engine_.TwoSided() || !Blank(iSide2Array))) {
    record_.side2 = {engine_.Side2TimingMarks(), iSide2Array, sSide2FileName, sSide2ItemCoordinates};
  }
}

void BatchHost::AfterSheet(bool& bCancelScan) {
  phase_ = Phase::Disposing;
  record_.disposed = Dispose();
  Deliver();
  if (parts_.interrupted() || !deliveryFailure_.empty()) bCancelScan = true;
}

std::string BatchHost::Dispose() {
  switch (parts_.disposal) {
    case Disposal::Eject:
      engine_.EjectPage();
      return "eject";
    case Disposal::Reject:
      engine_.RejectPage();
      return "reject";
    case Disposal::None:
      break;
  }
  return "none";
}

// A failure is kept: thrown, it would end up in the engine's error report.
void BatchHost::Deliver() {
  parts_.console->ClearProgress();
  try {
    parts_.deliver(record_);
  } catch (const CommandFailure& failure) {
    deliveryFailure_ = failure.what();
  }
}

void BatchHost::ShowProgress() {
  const TimePoint now = parts_.clock->Now();
  if (now < nextProgress_) return;
  nextProgress_ = now + kProgressInterval;
  parts_.console->Progress(ProgressText());
}

std::string BatchHost::ProgressText() const {
  const double minutes = std::chrono::duration<double, std::ratio<60>>(parts_.clock->Now() - start_).count();
  std::string text = fmt::format("{} sheet{}", sheetsRead_, sheetsRead_ == 1 ? "" : "s");
  if (sheetsRead_ > 0 && minutes > 0) text += fmt::format(", {:.0f} per minute", sheetsRead_ / minutes);
  for (std::size_t i = 0; i < record_.barcodes.size(); ++i) {
    text += (i == 0 ? ", last " : " ") + record_.barcodes[i];
  }
  return fmt::format("{} - {}", text, WaitingFor());
}

std::string_view BatchHost::WaitingFor() const {
  if (interruptedAt_) return "ending";
  switch (phase_) {
    case Phase::Starting:
      return "starting the scanner";
    case Phase::Reading:
      return parts_.activity->Polling() ? "waiting for a sheet" : "reading";
    case Phase::Disposing:
      return "waiting for the sheet to leave";
  }
  return {};
}

}  // namespace tesk::cli
