// The running of one batch.
#include "cli/scan/ScanRun.h"

#include <utility>
#include <vector>

#include <fmt/format.h>

#include "assembly/assembly.h"
#include "cli/CommandError.h"
#include "cli/Output.h"
#include "cli/scan/BatchHost.h"
#include "cli/scan/LineActivity.h"
#include "cli/scan/SheetRoad.h"
#include "cli/scan/scanSetup.h"
#include "cli/trace/Trace.h"
#include "cli/trace/traceSettings.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

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
      trace_ = std::make_shared<Trace>(clock_, [this](const std::string& why) { TellTraceFailure(why); });
      observers.push_back(trace_);
      parts.timer = std::make_shared<TracedTimer>(std::make_shared<DeadlineTimer>(clock_), trace_);
    }
    parts.serial = std::make_shared<ObservedSerialSystem>(std::move(serial), std::move(observers));
    engine_ = CreateReader(std::move(parts));
  }

  BatchReport Run(SheetTaker& taker) {
    const InstalledHost installed(host_);
    ConfigureEngine(plan_, *engine_);
    for (const auto& notice : ImprintNotices(plan_, *engine_)) console_->Message("Note", notice);
    BeginTrace();
    BatchHost batch(*engine_, plan_,
                    {.console = console_,
                     .host = host_,
                     .activity = activity_,
                     .clock = clock_,
                     .interrupted = platform::InterruptSignal,
                     .taker = taker});
    batch_ = &batch;
    engine_->AddEvents(batch);
    std::int32_t count = 0;
    const bool started = engine_->ReadBatch(!plan_.imprints.empty(), plan_.maxSheets, count);
    engine_->RemoveEvents(batch);
    batch_ = nullptr;
    console_->ClearProgress();
    if (!started && host_->Messages() == 0 && !platform::Interrupted()) {
      host_->MsgBoxEx("Start Refused", "the scanner refused to start");
    }
    BatchReport report = batch.Report(started);
    report.traceFailed = traceFailed_;
    return report;
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
    const std::shared_ptr<Output> file = OpenOutput(plan_.trace, platform::OpenMode::Replace);
    trace_->Begin([file](std::string_view line) { file->Write(line); }, engine_->ReaderType(),
                  engine_->ReaderName(), TraceSettingsText(*engine_, plan_));
  }

  void TellTraceFailure(const std::string& why) {
    traceFailed_ = true;
    console_->Message("Trace Not Written", fmt::format("--trace: {}|The scan goes on without it.", why));
  }

  const ScanPlan& plan_;
  std::shared_ptr<Console> console_;
  std::shared_ptr<ConsoleHost> host_;
  std::shared_ptr<const Clock> clock_ = platform::CreateClock();
  std::shared_ptr<LineActivity> activity_ = std::make_shared<LineActivity>(clock_);
  std::shared_ptr<Trace> trace_;
  std::shared_ptr<clsTeskReader> engine_;
  bool traceFailed_ = false;
  BatchHost* batch_ = nullptr;  // while a batch runs
};

}  // namespace

BatchReport RunScan(const ScanPlan& plan, std::shared_ptr<SerialSystem> serial,
                    std::shared_ptr<Console> console, SheetTaker& taker,
                    std::shared_ptr<OmrLibraryLoader> omrLoader) {
  platform::InstallInterruptHandler();
  return ScanRun(plan, std::move(serial), std::move(console), std::move(omrLoader)).Run(taker);
}

}  // namespace tesk::cli
