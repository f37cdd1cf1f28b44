// The running of one batch.
#include "cli/ScanRun.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "assembly/assembly.h"
#include "cli/BatchHost.h"
#include "cli/CommandError.h"
#include "cli/LineActivity.h"
#include "cli/Trace.h"
#include "cli/traceSettings.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

std::unique_ptr<std::ostream> OpenTraceFile(const std::string& path) {
  errno = 0;
  auto file =
      std::make_unique<std::ofstream>(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
  if (*file) return file;
  throw CommandFailure(
      fmt::format("--trace {}: cannot be written: {}", path, std::strerror(errno ? errno : EIO)));
}

// Installs the host object for as long as a batch runs.
class InstalledHost {
 public:
  InstalledHost(clsTeskReader& engine, std::shared_ptr<ConsoleHost> host) {
    engine.SetError(std::move(host));
  }
  InstalledHost(const InstalledHost&) = delete;
  InstalledHost& operator=(const InstalledHost&) = delete;
  ~InstalledHost() { SetError(nullptr); }
};

class ScanRun {
 public:
  ScanRun(const ScanPlan& plan, std::shared_ptr<SerialSystem> serial, std::shared_ptr<Console> console,
          std::shared_ptr<OmrLibraryLoader> omrLoader)
      : plan_(plan), console_(std::move(console)), host_(std::make_shared<ConsoleHost>(console_)) {
    std::vector<std::shared_ptr<LineObserver>> observers{activity_};
    ReaderParts parts{.serial = nullptr,
                      .loop = platform::CreateHostLoop([this] { return RunMessages(); }),
                      .clock = clock_,
                      .omrLoader = std::move(omrLoader)};
    if (!plan_.trace.empty()) {
      trace_ = std::make_shared<Trace>(clock_, [this] { TellTraceFailure(); });
      observers.push_back(trace_);
      parts.timer = std::make_shared<TracedTimer>(std::make_shared<DeadlineTimer>(clock_), trace_);
    }
    parts.serial = std::make_shared<ObservedSerialSystem>(std::move(serial), std::move(observers));
    engine_ = CreateReader(std::move(parts));
  }

  ScanOutcome Run(const SheetTaker& taker) {
    const InstalledHost installed(*engine_, host_);
    ConfigureEngine(plan_, *engine_);
    BeginTrace();
    taker.begin();
    BatchHost batch(*engine_, {.console = console_,
                               .activity = activity_,
                               .clock = clock_,
                               .interrupted = [] { return platform::Interrupted(); },
                               .deliver = [&](const SheetRecord& record) { taker.take(*engine_, record); },
                               .disposal = plan_.disposal});
    batch_ = &batch;
    engine_->AddEvents(batch);
    std::int32_t count = 0;
    const bool started = engine_->ReadBatch(!plan_.imprints.empty(), plan_.maxSheets, count);
    engine_->RemoveEvents(batch);
    batch_ = nullptr;
    console_->ClearProgress();
    if (!batch.DeliveryFailure().empty()) throw CommandFailure(batch.DeliveryFailure());
    if (!started && host_->Messages() == 0 && !platform::Interrupted()) {
      host_->MsgBoxEx("teskread", "the scanner refused to start");
    }
    return {batch.SheetsRead(), host_->Messages(), platform::Interrupted()};
  }

 private:
  // Always False: nothing here is worth another round before the wait.
  bool RunMessages() {
    if (batch_) batch_->RunMessages();
    return false;
  }

  void BeginTrace() {
    if (!trace_) return;
    trace_->CancelledBy([this] { return engine_->CancelScan(); });
    trace_->Begin(OpenTraceFile(plan_.trace), engine_->ReaderType(), engine_->ReaderName(),
                  TraceSettingsText(*engine_, plan_));
  }

  // Counts as a message: a scan whose trace is not whole did not do what it was asked to.
  void TellTraceFailure() {
    host_->MsgBoxEx("teskread",
                    fmt::format("--trace {}: cannot be written; the scan goes on without a trace: {}",
                                plan_.trace, std::strerror(errno ? errno : EIO)));
  }

  const ScanPlan& plan_;
  std::shared_ptr<Console> console_;
  std::shared_ptr<ConsoleHost> host_;
  std::shared_ptr<const Clock> clock_ = platform::CreateClock();
  std::shared_ptr<LineActivity> activity_ = std::make_shared<LineActivity>(clock_);
  std::shared_ptr<Trace> trace_;
  std::shared_ptr<clsTeskReader> engine_;
  BatchHost* batch_ = nullptr;  // while a batch runs
};

}  // namespace

ScanOutcome RunScan(const ScanPlan& plan, std::shared_ptr<SerialSystem> serial,
                    std::shared_ptr<Console> console, const SheetTaker& taker,
                    std::shared_ptr<OmrLibraryLoader> omrLoader) {
  platform::InstallInterruptHandler();
  return ScanRun(plan, std::move(serial), std::move(console), std::move(omrLoader)).Run(taker);
}

int StatusOf(const ScanOutcome& outcome, Console& console) {
  if (outcome.interrupted) return kStatusInterrupted;
  if (outcome.messages > 0) return kStatusFailed;
  if (outcome.sheetsRead > 0) return kStatusDone;
  console.Message("teskread", "no sheet was read");
  return kStatusFailed;
}

}  // namespace tesk::cli
