// The serial control over a line that counts how often it is asked.
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "base/RunTimeError.h"
#include "transport/SerialPort.h"

namespace tesk::test {
namespace {

struct CountedLine : SerialSystem {
  struct Line : SerialLine {
    explicit Line(CountedLine& counted) : line(counted) {}
    std::string Read() override { return ++line.asked, std::exchange(line.arrived, {}); }
    void Write(std::string_view) override {}
    CountedLine& line;
  };
  std::unique_ptr<SerialLine> Open(std::int16_t, const LineSettings&) override {
    return std::make_unique<Line>(*this);
  }

  std::string arrived;
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

}  // namespace
}  // namespace tesk::test
