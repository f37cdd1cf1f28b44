// What is the same on every system.
#include "platform/Platform.h"

#include "base/conversions.h"

namespace tesk::platform {
namespace {

class SystemClock : public Clock {
 public:
  TimePoint Now() const override { return std::chrono::steady_clock::now(); }
};

}  // namespace

std::shared_ptr<const Clock> CreateClock() { return std::make_shared<SystemClock>(); }

std::string ConsoleText(const std::string& title, const std::string& text) {
  return title + ": " + Replace(text, "|", "\n  ") + "\n";
}

}  // namespace tesk::platform
