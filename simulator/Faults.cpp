// The table of faults, and the reading of one from text.
#include "simulator/Faults.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>

namespace tesk::simulator {
namespace {

// In the order of the enumeration.
constexpr FaultDescription kFaults[] = {
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
    {FaultKind::Skew, "skew", "skew@SHEET", "the sheet is skewed and cannot be read"},
    {FaultKind::CoverOpen, "cover-open", "cover-open@SHEET", "the cover is open when the sheet is to be fed"},
    {FaultKind::StatusCode, "status", "status@CODE@SHEET", "the status of the sheet is the character CODE"},
    {FaultKind::StatusCodeBack, "status-back", "status-back@CODE@SHEET",
     "the status of the sheet's back is the character CODE"},
    {FaultKind::WrongMode, "wrong-mode", "wrong-mode@SHEET",
     "the columns are named as with the switches set wrongly"},
    {FaultKind::RefuseReset, "refuse-reset", "refuse-reset@N", "refuses the Nth reset"},
    {FaultKind::SilenceMode, "silence-mode", "silence-mode@N", "no answer to the Nth reading-mode query"},
    {FaultKind::SilenceFitted, "silence-fitted", "silence-fitted@N",
     "no answer to the Nth query of what is fitted"},
    {FaultKind::SilenceTimingMarks, "silence-timing-marks", "silence-timing-marks@SHEET",
     "no answer to the first timing-mark query"},
    {FaultKind::SilenceBarcodes, "silence-barcodes", "silence-barcodes@SHEET",
     "no answer to the barcode query"},
    {FaultKind::SilencePrint, "silence-print", "silence-print@SHEET", "no answer to the print command"},
    {FaultKind::ReadHead, "read-head", "read-head@SHEET", "the read head fails while the sheet is read"},
    {FaultKind::WrongCount, "wrong-count", "wrong-count@SHEET",
     "a line of the sheet is one mark position short"},
    {FaultKind::TooManyRows, "too-many-rows", "too-many-rows@SHEET",
     "one row more than any sheet of this scanner has"},
    {FaultKind::QuietEnd, "quiet-end", "quiet-end@SHEET",
     "the text section ends in silence instead of a carriage return"},
    {FaultKind::ShortMode, "short-mode", "short-mode@N", "the Nth scan-mode report breaks off"},
    {FaultKind::UnknownMode, "unknown-mode", "unknown-mode@N",
     "the Nth scan-mode report names a mode that does not exist"},
    {FaultKind::StuckMode, "stuck-mode", "stuck-mode@N",
     "from the Nth change of the scan mode on the scanner stays in its mode"},
    {FaultKind::FrontSensor, "front-sensor", "front-sensor@SHEET",
     "the front sensor is covered before the sheet is read"},
    {FaultKind::BackSensor, "back-sensor", "back-sensor@SHEET",
     "the back sensor is covered before the sheet is read"},
    {FaultKind::UnderWay, "under-way", "under-way@SHEET",
     "the sheet is being read before the host asks for it"},
    {FaultKind::SilenceThreshold, "silence-threshold", "silence-threshold@N",
     "no answer to the Nth threshold command"},
    {FaultKind::InvalidThreshold, "invalid-threshold", "invalid-threshold@N",
     "nonsense in answer to the Nth threshold command"},
    {FaultKind::NoLineFeed, "no-line-feed", "no-line-feed@SHEET",
     "the record lacks the line feed at its start"},
    {FaultKind::TwoByteEnd, "two-byte-end", "two-byte-end@SHEET",
     "a line feed follows the carriage return that ends the record"},
    {FaultKind::SilenceIdentify, "silence-identify", "silence-identify@N",
     "no answer to the Nth identification request"},
    {FaultKind::GarbageIdentify, "garbage-identify", "garbage-identify@N",
     "random bytes in answer to the Nth identification request"},
    {FaultKind::NoVersion, "no-version", "no-version@N", "the Nth identification names no version"},
    {FaultKind::CutIdentify, "cut-identify", "cut-identify@BYTE@N",
     "the Nth identification stops after BYTE bytes"},
    {FaultKind::TooDark, "too-dark", "too-dark@SHEET",
     "one mark of the sheet is darker than the scale has it"},
};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < std::size(kFaults); ++i) {
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

ParsedFault Refuse(std::string_view text, const std::string& why) {
  return {std::nullopt, "\"" + std::string(text) + "\" " + why};
}

ParsedFault RefuseKind(std::string_view text, std::span<const FaultKind> accepted) {
  std::string why = "is no fault of this scanner; accepted are ";
  for (std::size_t i = 0; i < accepted.size(); ++i) {
    if (i != 0) why += i + 1 == accepted.size() ? " and " : ", ";
    why += Describe(accepted[i]).form;
  }
  return Refuse(text, why + ", with numbers from 1.");
}

ParsedFault RefuseNumbers(std::string_view text, FaultKind kind, const std::string& why) {
  const FaultDescription& fault = Describe(kind);
  return Refuse(text, "cannot be understood: " + why + "; write " + std::string(fault.form) + " (" +
                          std::string(fault.description) + ")");
}

}  // namespace

const FaultDescription& Describe(FaultKind kind) {
  const auto index = static_cast<std::size_t>(kind);
  return kFaults[index < std::size(kFaults) ? index : 0];
}

ParsedFault ParseFault(std::string_view text, std::span<const FaultKind> accepted) {
  constexpr std::int32_t kMostNumber = 1'000'000;
  constexpr std::size_t kMostByte = 100'000'000;
  const std::size_t first = std::min(text.find('@'), text.size());
  const auto kind = std::find_if(accepted.begin(), accepted.end(), [&](FaultKind candidate) {
    return Describe(candidate).name == text.substr(0, first);
  });
  if (kind == accepted.end()) return RefuseKind(text, accepted);

  const auto count = static_cast<std::size_t>(std::ranges::count(text, '@'));
  const auto takes = static_cast<std::size_t>(std::ranges::count(Describe(*kind).form, '@'));
  if (count != takes) {
    return RefuseNumbers(text, *kind,
                         std::string("it takes ") + (takes == 2 ? "two numbers" : "one number") + ", not " +
                             std::to_string(count));
  }
  const std::size_t last = text.rfind('@');
  const auto number = ParseNumber<std::int32_t>(text.substr(last + 1), 1, kMostNumber);
  if (!number) return RefuseNumbers(text, *kind, "the last number is 1 to " + std::to_string(kMostNumber));
  if (takes == 1) return {Fault{*kind, *number}, {}};

  const auto byte = ParseNumber<std::size_t>(text.substr(first + 1, last - first - 1), 0, kMostByte);
  if (!byte) return RefuseNumbers(text, *kind, "the first number is 0 to " + std::to_string(kMostByte));
  return {Fault{*kind, *number, *byte}, {}};
}

}  // namespace tesk::simulator
