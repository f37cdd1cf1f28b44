// The receive primitives over the serial control and the time-out timer.
#include "transport/basUtils.h"

#include <algorithm>

#include "base/HostServices.h"
#include "base/RunTimeError.h"

namespace tesk::basUtils {
namespace {

constexpr std::size_t kEndless = 1024 * 1024;  // bytes discarded in a row that no scanner sends

RunTimeError NoResponse(const char* source) {
  return {kErrorTimeOut, "There was no response from the scanner.", source};
}

void PauseBetweenPolls(SerialControl& port, const Polling& polling) {
  // A pause of 0 still gives the processor away for a moment; and however long the host's SleepTime, a cancel
  // and the time-out are noticed within a second.
  polling.loop.Pause(port.Arrival(), Milliseconds(std::clamp(polling.sleepTime, 1, 1000)));
}

}  // namespace

std::string ReadFromComPort(SerialControl& port, OneShotTimer& timer, const Polling& polling) {
  std::string bytes = port.Input();
  if (!bytes.empty()) return bytes;
  timer.SetEnabled(true);
  while (bytes.empty()) {
    if (!timer.Enabled()) throw NoResponse("basUtils.ReadFromComPort");
    PauseBetweenPolls(port, polling);
    bytes = port.Input();
  }
  timer.SetEnabled(false);
  return bytes;
}

void WaitForComPortData(SerialControl& port, OneShotTimer& timer, const Polling& polling) {
  if (port.InBufferCount() >= port.InputLen()) return;
  timer.SetEnabled(true);
  while (port.InBufferCount() < port.InputLen()) {
    if (polling.cancelled && polling.cancelled()) break;
    if (!timer.Enabled()) throw NoResponse("basUtils.WaitForComPortData");
    PauseBetweenPolls(port, polling);
    polling.loop.DoEvents(port.Arrival());
  }
  timer.SetEnabled(false);
}

RunTimeError SendsWithoutEnd() {
  return {kErrorLineRead,
          "The scanner sends without end.",
          {},
          "Check the line settings, then power the scanner off and on."};
}

void DiscardInput(SerialControl& port) {
  std::size_t discarded = 0;
  while (port.InBufferCount() >= 1) {
    discarded += port.Input().size();
    if (discarded > kEndless) throw SendsWithoutEnd();
  }
}

void ClearComPortBuffer(SerialControl& port) {
  Guarded("basUtils.ClearComPortBuffer", [&] { DiscardInput(port); });
}

}  // namespace tesk::basUtils
