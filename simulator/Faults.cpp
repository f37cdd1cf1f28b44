// The table of faults, and the reading of one from text.
#include "simulator/Faults.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tesk::simulator {
namespace {

// In the order of the enumeration.
constexpr std::array<FaultDescription, 23> kFaults{{
    {FaultKind::Jam, "jam", "jam@SHEET", "the sheet jams before it is read"},
    {FaultKind::JamReading, "jam-reading", "jam-reading@SHEET", "the sheet jams while it is read"},
    {FaultKind::DoubleFeed, "double-feed", "double-feed@SHEET", "two sheets are fed at once"},
    {FaultKind::Timing, "timing", "timing@SHEET",
     "the sheet is skewed: a timing line error after it is read"},
    {FaultKind::FormError, "form-error", "form-error@SHEET", "a form error of another kind after it is read"},
    {FaultKind::CommandError, "command-error", "command-error@SHEET", "the status reports a command error"},
    {FaultKind::UnknownStatus, "unknown-status", "unknown-status@SHEET", "the status is of an unknown class"},
    {FaultKind::ShortStatus, "short-status", "short-status@SHEET", "the status after the sheet breaks off"},
    {FaultKind::Empty, "empty", "empty@SHEET", "the hopper reports empty once although the sheet lies in it"},
    {FaultKind::Silence, "silence", "silence@SHEET", "no answer to the read command"},
    {FaultKind::SilenceStatus, "silence-status", "silence-status@SHEET", "no answer to the status query"},
    {FaultKind::SilenceEject, "silence-eject", "silence-eject@SHEET", "no answer to the eject command"},
    {FaultKind::SilenceReset, "silence-reset", "silence-reset@N", "no answer to the Nth reset"},
    {FaultKind::RefuseThreshold, "refuse-threshold", "refuse-threshold@N", "refuses the Nth read threshold"},
    {FaultKind::RefuseFormStart, "refuse-form-start", "refuse-form-start@N", "refuses the form's Nth sheet"},
    {FaultKind::RefuseRegion, "refuse-region", "refuse-region@N", "refuses the form's Nth read region"},
    {FaultKind::RefuseFormEnd, "refuse-form-end", "refuse-form-end@N", "refuses the Nth end of a form"},
    {FaultKind::RefusePrinter, "refuse-printer", "refuse-printer@N", "refuses the Nth imprinter command"},
    {FaultKind::Garbage, "garbage", "garbage@SHEET", "random bytes instead of the marks"},
    {FaultKind::Overrun, "overrun", "overrun@SHEET", "one row of values more than the form has"},
    {FaultKind::Short, "short", "short@SHEET", "the data end half way"},
    {FaultKind::Cut, "cut", "cut@BYTE@SHEET", "the data stop after BYTE bytes and are never ended"},
    {FaultKind::Late, "late", "late@SHEET", "the data come after the host's time-out"},
}};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < kFaults.size(); ++i) {
    if (static_cast<std::size_t>(kFaults[i].kind) != i) return false;
  }
  return true;
}
static_assert(InOrder());

// A plain decimal number in low..high.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text, Number low, Number high) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < low || value > high) return std::nullopt;
  return value;
}

ParsedFault Refuse(std::string_view text, std::span<const FaultKind> accepted) {
  std::string error = "\"" + std::string(text) + "\" is no fault of this scanner; accepted are ";
  for (std::size_t i = 0; i < accepted.size(); ++i) {
    if (i != 0) error += i + 1 == accepted.size() ? " and " : ", ";
    error += Describe(accepted[i]).form;
  }
  return {std::nullopt, error + ", with numbers from 1."};
}

}  // namespace

const FaultDescription& Describe(FaultKind kind) { return kFaults.at(static_cast<std::size_t>(kind)); }

ParsedFault ParseFault(std::string_view text, std::span<const FaultKind> accepted) {
  constexpr std::int32_t kMostNumber = 1'000'000;
  constexpr std::size_t kMostByte = 100'000'000;
  const std::size_t first = text.find('@');
  const std::size_t last = text.rfind('@');
  if (first == std::string_view::npos) return Refuse(text, accepted);

  const auto kind = std::find_if(accepted.begin(), accepted.end(), [&](FaultKind candidate) {
    return Describe(candidate).name == text.substr(0, first);
  });
  const auto number = ParseNumber<std::int32_t>(text.substr(last + 1), 1, kMostNumber);
  const bool takesByte = kind != accepted.end() && *kind == FaultKind::Cut;
  if (kind == accepted.end() || !number || takesByte != (first != last)) return Refuse(text, accepted);
  if (!takesByte) return {Fault{*kind, *number}, {}};

  const auto byte = ParseNumber<std::size_t>(text.substr(first + 1, last - first - 1), 0, kMostByte);
  if (!byte) return Refuse(text, accepted);
  return {Fault{*kind, *number, *byte}, {}};
}

}  // namespace tesk::simulator
