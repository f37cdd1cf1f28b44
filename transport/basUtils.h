// The primitives that serial drivers receive with.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/RunTimeError.h"
#include "transport/HostLoop.h"
#include "transport/OneShotTimer.h"
#include "transport/SerialControl.h"

namespace tesk::basUtils {

// The pace of a polling loop: the loop of the host, and the pause between empty polls in milliseconds.
struct Polling {
  HostLoop& loop;
  std::int32_t sleepTime;
  std::function<bool()> cancelled = {};  // whether the host has given up; empty: never
};

// At least one byte (at most InputLen) from the port. Does not let messages run. Throws the time-out error
// (number 0, "There was no response from the scanner.") when the timer runs out first.
std::string ReadFromComPort(SerialControl& port, OneShotTimer& timer, const Polling& polling);

// Returns once InputLen bytes wait, or with fewer once the host has given up; messages run on every poll.
// Throws the time-out error as above.
void WaitForComPortData(SerialControl& port, OneShotTimer& timer, const Polling& polling);

// The error of a device that sends more than any scanner does.
RunTimeError SendsWithoutEnd();

// Discards everything that waits. Throws error 8020 for a device that sends without end.
void DiscardInput(SerialControl& port);

// The same with its faults reported instead of thrown.
void ClearComPortBuffer(SerialControl& port);

}  // namespace tesk::basUtils
