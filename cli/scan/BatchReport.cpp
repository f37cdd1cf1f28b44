// The words and numbers of a batch's end.
#include "cli/scan/BatchReport.h"

#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/conversions.h"
#include "cli/CommandError.h"

namespace tesk::cli {
namespace {

std::string_view CodeOf(BatchEnd end) {
  switch (end) {
    case BatchEnd::HopperEmpty:
      return "hopper empty";
    case BatchEnd::MaxSheets:
      return "max sheets";
    case BatchEnd::Interrupted:
      return "interrupted";
    case BatchEnd::Message:
      return "message";
    case BatchEnd::SilentFault:
      break;
  }
  return "silent fault";
}

std::string InterruptText(int signal) {
  constexpr int kHangUp = 1;
  constexpr int kEnd = 15;
  return signal == kHangUp ? "the terminal hung up" : signal == kEnd ? "SIGTERM" : "Ctrl-C";
}

std::string ReasonOf(const BatchReport& report) {
  switch (report.end) {
    case BatchEnd::HopperEmpty:
      return "the hopper is empty";
    case BatchEnd::MaxSheets:
      return "--max-sheets";
    case BatchEnd::Interrupted:
      return InterruptText(report.signal);
    case BatchEnd::Message:
      return report.message.title;
    case BatchEnd::SilentFault:
      break;
  }
  return "the scanner reported a condition without a text|Look at the scanner's own display, clear its paper "
         "path and scan on; --trace FILE records what it said.";
}

std::string Plural(std::int32_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace

std::string ClosingText(const BatchReport& report) {
  const std::string sheets =
      report.sheets == 0
          ? "no sheet was read"
          : fmt::format("{}, {:.0f} per minute", Plural(report.sheets, "sheet"), report.perMinute);
  return fmt::format("{}, {} rejected, {}|ended because: {}", sheets, report.rejected,
                     Plural(report.warnings, "warning"), ReasonOf(report));
}

std::string SummaryJson(const BatchReport& report) {
  using Json = nlohmann::ordered_json;
  Json message = nullptr;
  if (report.end == BatchEnd::Message) {
    message = Replace(fmt::format("{}: {}", report.message.title, report.message.text), "|", "\n");
  }
  const Json json = {{"sheets", report.sheets},     {"rejected", report.rejected},
                     {"warnings", report.warnings}, {"per_minute", std::round(report.perMinute * 10) / 10},
                     {"ended", CodeOf(report.end)}, {"message", message}};
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

int StatusOf(const BatchReport& report) {
  if (report.end == BatchEnd::Interrupted) return kStatusBySignal + report.signal;
  const bool asWished = report.end == BatchEnd::HopperEmpty || report.end == BatchEnd::MaxSheets;
  return asWished && report.sheets > 0 && !report.traceFailed ? kStatusDone : kStatusFailed;
}

}  // namespace tesk::cli
