// The common part of serial lines.
#include "platform/lineCommon.h"

#include <thread>

namespace tesk::platform {
namespace {

using Steady = std::chrono::steady_clock;

constexpr Milliseconds kPoll(5);
constexpr Milliseconds kDrainPatience(1000);  // without progress
constexpr Milliseconds kDrainLimit(10000);    // in all

}  // namespace

RunTimeError Gone(std::int32_t number, const std::string& noun, const std::string& device,
                  const std::string& reason) {
  return {number,
          "The " + noun + " " + device + " is gone.",
          {},
          "The system says: " + reason +
              ".|Check the scanner's power, its cable and the adaptor, then start the reader again."};
}

RunTimeError NotTaken(const std::string& device) {
  return {kErrorLineWrite,
          "The scanner on " + device + " does not take what is sent to it.",
          {},
          "Check that the handshaking of reader and scanner agree, and that the cable has the handshaking "
          "lines.|Check that the scanner is switched on and not paused."};
}

void CheckPortNumber(std::int16_t port) {
  if (port >= 1 && port <= 16) return;
  throw RunTimeError(kErrorPort, "Invalid port number", {}, "Ports are numbered 1 to 16.");
}

void Drain(const std::function<std::int64_t()>& unsent, const std::function<void()>& throwAway) {
  const auto start = Steady::now();
  auto progress = start;
  std::int64_t before = unsent();
  while (before > 0) {
    std::this_thread::sleep_for(kPoll);
    const std::int64_t now = unsent();
    if (now < before) progress = Steady::now();
    before = now;
    if (Steady::now() - progress < kDrainPatience && Steady::now() - start < kDrainLimit) continue;
    throwAway();
    return;
  }
}

}  // namespace tesk::platform
