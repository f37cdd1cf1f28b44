// The counters of serial drivers.
#include "platform/posix/LineCounters.h"

#include <linux/serial.h>
#include <sys/ioctl.h>

namespace tesk::platform {

std::optional<LineCounters> CountersOf(int descriptor) {
  serial_icounter_struct counts{};
  if (::ioctl(descriptor, TIOCGICOUNT, &counts) != 0) return std::nullopt;
  return LineCounters{counts.parity, counts.frame, counts.brk, counts.overrun, counts.buf_overrun};
}

}  // namespace tesk::platform
