// The reader of traces, a line at a time. Nothing in the file is trusted.
#include "cli/trace/TraceFile.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/inputFile.h"
#include "cli/trace/Trace.h"
#include "cli/values.h"

namespace tesk::cli {
namespace {

using simulator::Direction;
using simulator::Milliseconds;

constexpr std::size_t kLongestLine = 64U << 10U;    // bytes; the settings of any form fit
constexpr std::size_t kMostBytes = 64U << 20U;      // of all records together
constexpr std::int64_t kLatest = 366L * 24 * 3600;  // seconds; no batch takes a year

// What is wrong with a line; the reader adds where it stands.
[[noreturn]] void Refuse(const std::string& what) { throw CommandFailure(what); }

// The rest of `text` behind `prefix`; empty where it begins otherwise.
std::optional<std::string_view> Behind(std::string_view text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return std::nullopt;
  return text.substr(prefix.size());
}

// Takes the text before `end` and `end` itself off the front.
std::string_view TakeUntil(std::string_view& text, char end, std::string_view what) {
  const std::size_t at = text.find(end);
  if (at == std::string_view::npos) Refuse(fmt::format("{} is missing", what));
  const std::string_view taken = text.substr(0, at);
  text.remove_prefix(at + 1);
  return taken;
}

// Digits alone.
std::int64_t Number(std::string_view digits, std::int64_t most, std::string_view what) {
  std::int64_t value = -1;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value);
  const bool signless = !digits.empty() && digits.front() != '-';
  if (result.ec != std::errc() || result.ptr != end || !signless || value > most) {
    Refuse(fmt::format("{} \"{}\" is no whole number from 0 to {}", what, digits, most));
  }
  return value;
}

template <std::size_t kSize>
void CheckOneOf(std::string_view text, const std::string_view (&accepted)[kSize], std::string_view what) {
  if (std::find(std::begin(accepted), std::end(accepted), text) == std::end(accepted)) {
    Refuse(fmt::format("\"{}\" is no {}", text, what));
  }
}

int HexDigit(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const std::size_t at = kDigits.find(c);
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

// "1B 51 0D      |.Q.|": the bytes twice, which must agree.
std::string Bytes(std::string_view text) {
  std::string bytes;
  std::string_view rest = text;
  while (rest.size() > 2 && HexDigit(rest[0]) >= 0 && HexDigit(rest[1]) >= 0 && rest[2] == ' ') {
    bytes += static_cast<char>(HexDigit(rest[0]) * 16 + HexDigit(rest[1]));
    rest.remove_prefix(3);
  }
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  if (bytes.empty() || bytes.size() > kBytesPerTraceLine) {
    Refuse(fmt::format("1 to {} bytes in hexadecimal are expected, not \"{}\"", kBytesPerTraceLine, text));
  }
  if (rest != "|" + PrintableBytes(bytes) + "|") {
    Refuse(fmt::format("\"{}\" are not the {} bytes before it", rest, bytes.size()));
  }
  return bytes;
}

class TraceReader {
 public:
  void Take(std::string_view line, std::size_t number) {
    number_ = number;
    if (line.starts_with('#')) {
      line.remove_prefix(line.starts_with("# ") ? 2 : 1);
      trace_.comments.emplace_back(line);
    } else if (headerLines_ < std::size(kHeader)) {
      (this->*kHeader[headerLines_++])(line);
    } else {
      TakeEvent(line);
    }
  }

  RecordedTrace End() {
    if (headerLines_ < std::size(kHeader)) Refuse("the trace ends before its first event");
    if (trace_.session.empty()) Refuse("the trace ends without a byte on the wire");
    return std::move(trace_);
  }

 private:
  using Taker = void (TraceReader::*)(std::string_view);

  void TakeFormat(std::string_view line) {
    if (line != "teskread-trace 1") Refuse("this is no trace: its first line is \"teskread-trace 1\"");
  }

  void TakeVersion(std::string_view line) {
    const auto version = Behind(line, "version ");
    if (!version || version->empty()) Refuse("\"version V\" is expected");
  }

  void TakeReader(std::string_view line) {
    auto rest = Behind(line, "reader ");
    if (!rest) Refuse("\"reader NUMBER NAME\" is expected");
    const auto most = static_cast<std::int64_t>(ReaderTypeNames().size()) - 1;
    const std::int64_t number = Number(TakeUntil(*rest, ' ', "the reader's name"), most, "the reader");
    if (number == 0 || rest->empty()) Refuse("\"reader NUMBER NAME\" is expected");
    trace_.reader = static_cast<teskReaderType>(number);
  }

  void TakeSettings(std::string_view line) {
    const auto rest = Behind(line, "settings ");
    if (!rest) Refuse("\"settings NAME=VALUE ...\" is expected");
    for (const std::string& setting : SplitText(*rest, ' ')) {
      const std::size_t equals = setting.find('=');
      if (equals == std::string::npos || equals == 0) Refuse("\"" + setting + "\" is no NAME=VALUE");
      trace_.settings.emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
    }
  }

  void TakeBlank(std::string_view line) {
    if (!line.empty()) Refuse("an empty line is expected before the first event");
  }

  // "   0.012345 EVENT"
  void TakeEvent(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    timeText_ = TakeUntil(line, ' ', "the event");
    TakeTime(timeText_);
    if (const auto sent = Behind(line, "> ")) return Record(Direction::FromHost, *sent);
    if (const auto received = Behind(line, "< ")) return Record(Direction::ToHost, *received);
    if (const auto opened = Behind(line, "open ")) return Open(*opened);
    if (line == "close") return Close();
    if (const auto wait = Behind(line, "wait ")) return BeginWait(*wait);
    if (const auto end = Behind(line, "end ")) return EndWait(*end);
    Refuse(fmt::format("\"{}\" is no event", line));
  }

  void TakeTime(std::string_view text) {
    std::string_view fraction = text;
    const std::int64_t seconds = Number(TakeUntil(fraction, '.', "the time"), kLatest, "the time");
    if (fraction.size() != 6) Refuse(fmt::format("the time \"{}\" has no six decimals", text));
    const std::int64_t micros = Number(fraction, 999'999, "the time");
    const std::chrono::microseconds time(seconds * 1'000'000 + micros);
    if (time < time_) Refuse("the time is before that of the line above");
    time_ = time;
  }

  void Record(Direction direction, std::string_view text) {
    if (!open_) Refuse("there are bytes, but the port is not open");
    std::string bytes = Bytes(text);
    if ((total_ += bytes.size()) > kMostBytes) Refuse("the bytes so far are too many to hold");
    trace_.session.push_back({direction, std::move(bytes), DelayOf(direction), number_, timeText_});
  }

  // Since the record before, or since the port was opened.
  Milliseconds DelayOf(Direction direction) {
    const auto now = std::chrono::floor<Milliseconds>(time_);
    const Milliseconds delay = now - std::exchange(lastRecord_, now);
    const bool inVain = std::exchange(inVain_, false);
    if (direction == Direction::FromHost) return Milliseconds(0);
    return inVain ? delay : std::min(delay, kLongestReplayedDelay);
  }

  void Open(std::string_view text) {
    if (std::exchange(open_, true)) Refuse("the port is open already");
    Number(TakeUntil(text, ' ', "the line's settings"), INT16_MAX, "the port");
    Number(TakeUntil(text, ',', "the parity"), INT32_MAX, "the bit rate");
    constexpr std::string_view kParities[] = {"N", "E", "O", "M", "S"};
    CheckOneOf(TakeUntil(text, ',', "the number of data bits"), kParities, "parity");
    Number(TakeUntil(text, ',', "the number of stop bits"), 8, "the number of data bits");
    constexpr std::string_view kStopBits[] = {"1", "1.5", "2"};
    CheckOneOf(TakeUntil(text, ' ', "the handshake"), kStopBits, "number of stop bits");
    constexpr std::string_view kHandshakes[] = {"none", "xon-xoff", "hardware", "both"};
    CheckOneOf(text, kHandshakes, "handshake");
    lastRecord_ = std::chrono::floor<Milliseconds>(time_);
    inVain_ = false;
  }

  void Close() {
    if (!std::exchange(open_, false)) Refuse("the port is not open");
  }

  void BeginWait(std::string_view text) {
    if (std::exchange(waiting_, true)) Refuse("a wait begins before the last one has ended");
    Number(text, INT32_MAX, "the milliseconds");
  }

  void EndWait(std::string_view text) {
    if (!std::exchange(waiting_, false)) Refuse("a wait ends that has not begun");
    constexpr std::string_view kEnds[] = {"arrived", "timed out", "cancelled"};
    CheckOneOf(text, kEnds, "end of a wait");
    if (text == "timed out") inVain_ = true;
  }

  static constexpr Taker kHeader[] = {&TraceReader::TakeFormat, &TraceReader::TakeVersion,
                                      &TraceReader::TakeReader, &TraceReader::TakeSettings,
                                      &TraceReader::TakeBlank};

  RecordedTrace trace_;
  std::size_t headerLines_ = 0;
  std::size_t number_ = 0;
  std::string timeText_;
  std::chrono::microseconds time_{0};
  Milliseconds lastRecord_{0};
  std::size_t total_ = 0;
  bool open_ = false;
  bool waiting_ = false;
  bool inVain_ = false;  // a time-out ended a wait since the last record
};

// The next line without its line feed and carriage return; False at the end. What has no line feed was cut.
bool NextLine(std::istream& stream, std::string& line) {
  line.clear();
  std::streambuf& buffer = *stream.rdbuf();
  constexpr int kEnd = std::streambuf::traits_type::eof();
  int c = buffer.sbumpc();
  if (c == kEnd) return false;
  for (; c != '\n'; c = buffer.sbumpc()) {
    if (c == kEnd) Refuse("the line is cut: it has no end");
    if (line.size() == kLongestLine) Refuse("the line is longer than any of a trace");
    line += static_cast<char>(c);
  }
  if (line.ends_with('\r')) line.pop_back();
  return true;
}

}  // namespace

RecordedTrace ReadTrace(std::istream& stream, const std::string& file) {
  TraceReader reader;
  std::string line;
  for (std::size_t number = 1;; ++number) {
    try {
      if (!NextLine(stream, line)) return reader.End();
      reader.Take(line, number);
    } catch (const CommandFailure& error) {
      throw CommandFailure(fmt::format("{}, line {}: {}", file, number, error.what()));
    }
  }
}

RecordedTrace ReadTraceFile(const std::string& file) {
  auto stream = OpenInputFile(file);
  return ReadTrace(stream, file);
}

std::string EscapedSetting(std::string_view value) {
  std::string text;
  for (const char byte : value) {
    const auto code = static_cast<unsigned char>(byte);
    const bool plain = code > 32 && code < 127 && byte != '%' && byte != ';';
    text += plain ? std::string(1, byte) : fmt::format("%{:02X}", code);
  }
  return text;
}

std::string UnescapedSetting(std::string_view text) {
  std::string value;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool pair =
        text[at] == '%' && at + 2 < text.size() && HexDigit(text[at + 1]) >= 0 && HexDigit(text[at + 2]) >= 0;
    value += pair ? static_cast<char>(HexDigit(text[at + 1]) * 16 + HexDigit(text[at + 2])) : text[at];
    if (pair) at += 2;
  }
  return value;
}

}  // namespace tesk::cli
