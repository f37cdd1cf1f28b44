// The serial control over a line that counts how often it is asked.
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "base/RunTimeError.h"
#include "tests/support/TestBench.h"
#include "transport/OneShotTimer.h"
#include "transport/SerialPort.h"
#include "transport/basUtils.h"

namespace tesk::test {
namespace {

struct CountedLine : SerialSystem {
  struct Line : SerialLine {
    explicit Line(CountedLine& counted) : line(counted) {}
    std::string Read() override {
      ++line.asked;
      return line.comes && !line.comes() ? std::string() : std::exchange(line.arrived, {});
    }
    void Write(std::string_view) override {}
    CountedLine& line;
  };
  std::unique_ptr<SerialLine> Open(std::int16_t, const LineSettings&) override {
    return std::make_unique<Line>(*this);
  }

  std::string arrived;
  std::function<bool()> comes = {};  // whether it has; empty: it has
  int asked = 0;
};

TEST(SerialPort, TakesWhatWaitsInOrderAndAsksTheLineOnlyForMore) {
  const auto line = std::make_shared<CountedLine>();
  SerialPort port(line);
  port.SetPortOpen(true);
  line->arrived = "abcdefg";
  EXPECT_EQ(port.InBufferCount(), 7);
  const struct {
    std::int16_t inputLen;
    const char* arrives;
    const char* taken;
    int asked;
  } kSteps[] = {{1, "", "a", 0}, {3, "hi", "bcd", 0}, {3, "", "efg", 0}, {3, "", "hi", 1},
                {1, "", "", 1},  {2, "jkl", "jk", 1}, {0, "m", "lm", 1}, {0, "", "", 1}};
  for (const auto& step : kSteps) {
    line->asked = 0;
    line->arrived += step.arrives;
    port.SetInputLen(step.inputLen);
    EXPECT_EQ(port.Input(), step.taken);
    EXPECT_EQ(line->asked, step.asked) << step.taken;
  }
}

TEST(SerialPort, AnOpeningForgetsWhatWaited) {
  const auto line = std::make_shared<CountedLine>();
  SerialPort port(line);
  port.SetPortOpen(true);
  line->arrived = "old";
  port.SetInputLen(1);
  EXPECT_EQ(port.Input(), "o");
  port.SetPortOpen(false);
  for (const std::int16_t wanted : std::initializer_list<std::int16_t>{1, 0}) {
    port.SetInputLen(wanted);
    EXPECT_THROW(port.Input(), RunTimeError) << "closed, whatever is left";
  }
  port.SetPortOpen(true);
  line->arrived = "new";
  EXPECT_EQ(port.InBufferCount(), 3);
  EXPECT_EQ(port.Input(), "new");
}

// What two primitives do for data that come so late: how long they took, whether messages ran, and what came or went wrong.
std::string Receive(bool wait, std::int32_t sleepTime, Milliseconds late) {
  const auto line = std::make_shared<CountedLine>();
  const auto time = std::make_shared<VirtualTime>();
  line->arrived = "ab";
  line->comes = [&] { return time->Elapsed() >= late; };
  SerialPort port(line);
  port.SetPortOpen(true);
  port.SetInputLen(2);
  DeadlineTimer timer(time);
  timer.SetInterval(3000);
  int turns = 0;
  time->onMessages = [&](int) { ++turns; };
  const basUtils::Polling polling{*time, sleepTime, [&] { return turns == 50; }};
  std::string got = "waits";
  const auto error = Attempt([&] {
    if (!wait) got = basUtils::ReadFromComPort(port, timer, polling);
    if (wait) basUtils::WaitForComPortData(port, timer, polling);
  });
  if (error) got = std::to_string(error->Number()) + " " + error->Source() + ": " + error->Description();
  return std::to_string(time->Elapsed().count()) + " " + std::to_string(turns) + " " + got +
         (timer.Enabled() ? " running" : "");
}

TEST(ReceivePrimitives, PollAtTheHostsPaceUntilTheTimeOut) {
  EXPECT_EQ(Receive(false, 40, 0ms), "0 0 ab");
  EXPECT_EQ(Receive(false, 40, 100ms), "120 0 ab");
  EXPECT_EQ(Receive(false, 0, 100ms), "100 0 ab");
  EXPECT_EQ(Receive(false, 60'000, 100ms), "1000 0 ab");
  EXPECT_EQ(Receive(false, 700, 9s),
            "3500 0 0 basUtils.ReadFromComPort: There was no response from the scanner.");
  EXPECT_EQ(Receive(true, 40, 0ms), "0 0 waits");
  EXPECT_EQ(Receive(true, 40, 100ms), "100 2 waits");
  EXPECT_EQ(Receive(true, 700, 9s),
            "3550 5 0 basUtils.WaitForComPortData: There was no response from the scanner.");
  EXPECT_EQ(Receive(true, 40, 9s), "2500 50 waits");
}

}  // namespace
}  // namespace tesk::test
