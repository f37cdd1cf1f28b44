// Sheets in, records out; the end of a batch at the operator's wish.
#include "cli/scan/BatchHost.h"

#include <chrono>

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/CommandError.h"
#include "cli/scan/SheetRoad.h"
#include "profiles/models.h"

namespace tesk::cli {
namespace {

using std::chrono::duration_cast;

// How long a scanner may be silent in the middle of a sheet before an interrupted batch is given up, and how
// long it may take in all.
constexpr Milliseconds kSilence{3000};
constexpr Milliseconds kLongestEnd{15000};
constexpr Milliseconds kProgressInterval{100};

bool Blank(const SideArray& side) { return side == SideArray(side.Rows(), side.Columns()); }

std::string TextOf(const OperatorMessage& message) {
  return fmt::format("{}: {}", message.title, Replace(message.text, "|", " "));
}

}  // namespace

BatchHost::BatchHost(clsTeskReader& engine, const ScanPlan& plan, Parts parts)
    : engine_(engine),
      plan_(plan),
      parts_(std::move(parts)),
      judge_(plan.side1, plan.side2),
      start_(parts_.clock->Now()),
      lastSheet_(start_),
      nextProgress_(start_) {}

BatchReport BatchHost::Report(bool started) const {
  BatchReport report = counts_;
  report.perMinute = PerMinute(lastSheet_);
  report.signal = parts_.interrupted();
  const auto& messages = parts_.host->Recent();
  const bool reading = phase_ == Phase::Reading;
  if (failure_) {
    report.end = BatchEnd::Message;
    report.message = *failure_;
  } else if (report.signal != 0) {
    report.end = BatchEnd::Interrupted;
  } else if ((!started || reading) && !messages.empty()) {
    report.end = BatchEnd::Message;
    report.message = messages.front();
  } else if (!started || reading) {
    report.end = engine_.HopperEmpty() ? BatchEnd::HopperEmpty : BatchEnd::SilentFault;
  } else {
    report.end = BatchEnd::MaxSheets;
  }
  return report;
}

// ---- The road of a sheet

void BatchHost::BeforeSheet(bool& /*bInitializePrinter*/) {
  if (!began_) Begin();
  if (failure_ || parts_.interrupted() != 0) return engine_.SetCancelScan(true);
  phase_ = Phase::Reading;
  ++tried_;
  parts_.host->Forget();
}

// The first moment at which the scanner is ready, and the last at which no paper has moved.
void BatchHost::Begin() {
  began_ = true;
  start_ = lastSheet_ = parts_.clock->Now();
  if (plan_.disposal == Disposal::Reject && !CanReject()) {
    return Fail("No Reject Exit",
                "The scanner says that it has no reject exit.|No sheet was fed; leave out "
                "--dispose reject.");
  }
  try {
    parts_.taker.Begin();
    number_ = parts_.taker.FirstNumber() - 1;
  } catch (const CommandFailure& failure) {
    Fail("Results Not Written", fmt::format("{}|No sheet was fed.", failure.what()));
  }
}

void BatchHost::PreprocessSheet(SideArray& /*iSide1Array*/, SideArray& /*iSide2Array*/,
                                BarcodeArray& /*sBarcodeArray*/, bool& bReject) {
  refusal_ = judge_.Refusal(engine_);
  unprinted_ = false;
  bReject = refusal_.has_value();
}

void BatchHost::ReadSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                          const std::string& sSide1FileName, const std::string& sSide2FileName,
                          const std::string& sSide1ItemCoordinates,
                          const std::string& sSide2ItemCoordinates) {
  record_ = {.sheet = number_ + 1,
             .reader = engine_.ReaderType(),
             .side1 = {engine_.Side1TimingMarks(), iSide1Array, sSide1FileName, sSide1ItemCoordinates},
             .side2 = std::nullopt,
             .barcodes = BarcodesRead(sBarcodeArray, FamilyOf(engine_.ReaderType()).blankBarcode),
             .disposed = {},
             .warnings = judge_.Warnings(engine_)};
  // A driver may hand out a blank back that nobody asked for.
  if (!iSide2Array.Empty() && (engine_.TwoSided() || !Blank(iSide2Array))) {
    record_.side2 = {engine_.Side2TimingMarks(), iSide2Array, sSide2FileName, sSide2ItemCoordinates};
  }
}

void BatchHost::BeforePrint(bool& /*bCancel*/) {
  unprinted_ = ModelOf(engine_.ReaderType()).printing != Printing::Never;
}

void BatchHost::AfterSheet(bool& bCancelScan) {
  phase_ = Phase::Disposing;
  parts_.console->ClearProgress();
  refusal_ ? RefuseSheet() : TakeSheet();
  lastSheet_ = parts_.clock->Now();
  // At the end of a batch the engine ejects a sheet that was left to the scanner. It is on record as left: an
  // interrupt that came since then ends the batch before the next one.
  const bool interrupted = parts_.interrupted() != 0 && plan_.disposal != Disposal::None;
  if (last_ || failure_ || interrupted) bCancelScan = true;
}

// A sheet that cannot be right must not lie among those that are: without a reject exit the batch ends, so that
// somebody takes it out.
void BatchHost::RefuseSheet() {
  ++counts_.rejected;
  last_ = IsLast();
  const std::string told =
      fmt::format("{} cannot be right and was not written: {}.", PlaceOfRefused(), *refusal_);
  const std::string disposed = Dispose(CanReject() ? "rejected" : "ejected");
  if (disposed == "rejected") {
    return parts_.console->Message("Sheet Refused", told + "|It left by the reject exit: scan it again.");
  }
  const char* where =
      disposed == "failed" ? "It may still be in the scanner" : "It is the last one that left the scanner";
  Fail("Sheet Refused", fmt::format("{}|{}: take it out, and scan it again.", told, where));
}

std::string BatchHost::PlaceOfRefused() const {
  if (number_ > 0) return fmt::format("The sheet behind sheet {}", number_);
  return counts_.rejected > 1 ? "A sheet before sheet 1" : "The first sheet";
}

void BatchHost::TakeSheet() {
  GatherWarnings();
  last_ = IsLast() || (plan_.strict && !record_.warnings.empty());
  record_.disposed = WishedDisposal();
  if (!KeepSheet()) return;
  number_ = record_.sheet;
  ++counts_.sheets;
  const std::string disposed = Dispose(record_.disposed);
  record_.disposed = disposed;
  try {
    parts_.taker.Settle(engine_, record_);
  } catch (const CommandFailure& failure) {
    --counts_.sheets;
    --number_;
    Fail("Sheet Not Written", fmt::format("{}|{}|Sheet {} has left the scanner: scan it again.",
                                          failure.what(), LastWritten(), record_.sheet));
  }
  if (plan_.strict && !record_.warnings.empty() && !failure_) {
    failure_ = {"Warning", fmt::format("sheet {}: {}", record_.sheet, record_.warnings.front())};
  }
}

void BatchHost::GatherWarnings() {
  const auto tell = [&](const std::string& warning) {
    parts_.console->Message("Warning", fmt::format("sheet {}: {}", record_.sheet, warning));
  };
  for (const std::string& warning : record_.warnings) tell(warning);
  if (unprinted_) {
    record_.warnings.emplace_back("the scanner did not confirm the imprint");
    tell(record_.warnings.back());
  }
  // What was shown while the sheet was read; the operator knows it.
  for (const auto& message : parts_.host->Recent()) record_.warnings.push_back(TextOf(message));
  counts_.warnings += static_cast<std::int32_t>(record_.warnings.size());
}

// A sheet that could not be kept is left in the scanner: the reader is ended, or the batch's end would eject it.
bool BatchHost::KeepSheet() {
  try {
    parts_.taker.Keep(engine_, record_);
    return true;
  } catch (const CommandFailure& failure) {
    const char* goOn = plan_.output.empty() ? "scan it again" : "make room, and go on with it (--append)";
    Fail("Sheet Not Written",
         fmt::format("{}|{}|Sheet {} was not disposed of: take it out of the scanner, {}.", failure.what(),
                     LastWritten(), record_.sheet, goOn));
  }
  engine_.EndReader();
  return false;
}

// What a pipe has taken may be lost with its reader.
std::string BatchHost::LastWritten() const {
  const char* how = plan_.output.empty() ? "was handed on" : "is safe";
  return number_ == 0 ? fmt::format("No sheet {}.", how)
                      : fmt::format("The last sheet that {} is sheet {}.", how, number_);
}

// ---- Sending sheets on

bool BatchHost::CanReject() const { return HasRejectExit(engine_) && engine_.Rejecter(); }

bool BatchHost::IsLast() const {
  return parts_.interrupted() != 0 || (plan_.maxSheets >= 0 && tried_ >= plan_.maxSheets);
}

std::string BatchHost::WishedDisposal() const {
  if (ModelOf(engine_.ReaderType()).sending == Sending::Nothing) return "none";
  if (plan_.disposal == Disposal::Reject) return "rejected";
  return plan_.disposal == Disposal::Eject || last_ ? "ejected" : "none";
}

// What became of the sheet. A scanner that does not confirm says so in a message, but where the wait was cancelled.
std::string BatchHost::Dispose(const std::string& wished) {
  parts_.host->Forget();
  const bool before = engine_.CancelScan();
  if (wished == "rejected") engine_.RejectPage();
  if (wished == "ejected") engine_.EjectPage();
  const auto& messages = parts_.host->Recent();
  if (!messages.empty()) failure_ = messages.front();
  return messages.empty() && engine_.CancelScan() == before ? wished : "failed";
}

void BatchHost::Fail(const std::string& title, const std::string& text) {
  parts_.console->Message(title, text);
  if (!failure_) failure_ = {title, text};
}

// ---- The operator

void BatchHost::RunMessages() {
  if (parts_.interrupted() != 0) CancelWhenIdle();
  if (parts_.console->Animated()) ShowProgress();
}

void BatchHost::CancelWhenIdle() {
  const TimePoint now = parts_.clock->Now();
  if (!interruptedAt_) interruptedAt_ = now;
  if (!parts_.activity->Working(kSilence) || now - *interruptedAt_ > kLongestEnd) engine_.SetCancelScan(true);
}

void BatchHost::ShowProgress() {
  const TimePoint now = parts_.clock->Now();
  if (now < nextProgress_) return;
  nextProgress_ = now + kProgressInterval;
  parts_.console->Progress(ProgressText());
}

double BatchHost::PerMinute(TimePoint until) const {
  const double minutes = std::chrono::duration<double, std::ratio<60>>(until - start_).count();
  return minutes > 0 ? counts_.sheets / minutes : 0;
}

std::string BatchHost::ProgressText() const {
  const double perMinute = PerMinute(parts_.clock->Now());
  std::string text = fmt::format("{} sheet{}", counts_.sheets, counts_.sheets == 1 ? "" : "s");
  if (perMinute > 0) text += fmt::format(", {:.0f} per minute", perMinute);
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
