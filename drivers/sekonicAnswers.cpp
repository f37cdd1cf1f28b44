// The shapes of the answers of Sekonic serial readers.
#include "drivers/sekonicAnswers.h"

#include <utility>

#include "base/HostServices.h"
#include "transport/basUtils.h"

namespace tesk::basScanningSystems {
namespace {

constexpr char kCarriageReturn = '\r';

// At least a byte more, and on to where the answer may end.
class Step : public Shape {
 public:
  explicit Step(Answer& answer) : answer_(answer) {}
  std::size_t Missing() const override { return taken_ && answer_.MayEnd() ? 0 : answer_.Missing(); }
  void Take(std::uint8_t byte) override {
    taken_ = true;
    answer_.Take(byte);
  }

 private:
  Answer& answer_;
  bool taken_ = false;
};

// No items of these windows are longer.
std::size_t LongestItems(const std::vector<clsTeskReaderWindow>& windows) {
  std::size_t bytes = 4096;
  for (const clsTeskReaderWindow& window : windows) {
    if (window.NumRows() <= 0 || window.NumCols() <= 0) continue;
    bytes +=
        static_cast<std::size_t>(window.NumRows()) * (3U * static_cast<std::size_t>(window.NumCols()) + 2);
  }
  return bytes;
}

}  // namespace

void Answer::Take(std::uint8_t byte) {
  text_ += static_cast<char>(byte);
  if (text_.size() > longest_) throw basUtils::SendsWithoutEnd();
}

void Line::Take(std::uint8_t byte) {
  if (Text().empty() && (byte == '\r' || byte == '\n')) return;
  Answer::Take(byte);
}

bool Count::IsNumber() const {
  std::string_view digits = Text();
  if (digits.ends_with(kCarriageReturn)) digits.remove_suffix(1);
  return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

void Fields::Take(std::uint8_t byte) {
  Answer::Take(byte);
  if (left_ > 0 && (byte == kCarriageReturn || byte == ',')) --left_;
}

WindowItems::WindowItems(const std::vector<clsTeskReaderWindow>& windows, SideArray side, bool endsInCr)
    : Answer(LongestItems(windows)), side_(std::move(side)), record_(windows, side_), endsInCr_(endsInCr) {}

void WindowItems::Take(std::uint8_t byte) {
  Answer::Take(byte);
  if (Attempt([&] { record_.Take(byte); })) broken_ = true;
}

bool WindowItems::MayEnd() const { return endsInCr_ ? record_.LastItemIsOver() : record_.LastItemHasCome(); }

Wait TakeAnswer(SerialExchange& line, Answer& answer, const Limits& limits) {
  const TimePoint start = line.Now();
  const Milliseconds timeOut(line.Timer().Interval());
  while (answer.Missing() > 0) {
    if (answer.MayEnd()) {
      if (!line.Follows(kLongSilence)) return line.Cancelled() ? Wait::Cancelled : Wait::Arrived;
      // A line that drips is never silent, and each step has a time-out of its own.
      if (limits.time == Limits::Time::Answer && line.Now() - start >= timeOut) {
        line.Session().outOfStep = true;
        return Wait::TimedOut;
      }
    }
    Step step(answer);
    if (const Wait wait = line.Take(step, limits); wait != Wait::Arrived) return wait;
  }
  return Wait::Arrived;
}

std::string TailOf(SerialExchange& line, std::string_view kind, std::string_view answer) {
  // What ends a line has come already; anything more is seen in a moment.
  const bool isLine = answer.ends_with(kCarriageReturn);
  return line.Tail(std::string(kind) + (isLine ? " line" : ""), {}, isLine ? Milliseconds(0) : kLongSilence);
}

}  // namespace tesk::basScanningSystems
