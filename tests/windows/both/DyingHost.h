// A host that ends in the middle of a batch, as a program does that crashes.
#pragma once

namespace tesk::test {

// The word by which this program is one.
inline constexpr const char* kDyingHost = "dying-host";

// Reads a batch through the 32-bit server and is no more in the event of the second sheet; returns only where
// that does not happen.
int RunDyingHost();

}  // namespace tesk::test
