// The terminal modes, by the interface that takes any bit rate. Its header and <termios.h> exclude each
// other.
#include "platform/posix/LineMode.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "platform/lineRules.h"
#include "platform/openError.h"
#include "platform/posix/Descriptor.h"

namespace tesk::platform {
namespace {

constexpr tcflag_t kParityMask = PARENB | PARODD | CMSPAR;
constexpr cc_t kXon = 0x11;
constexpr cc_t kXoff = 0x13;

tcflag_t SizeFlag(std::int32_t dataBits) {
  switch (dataBits) {
    case 5:
      return CS5;
    case 6:
      return CS6;
    case 7:
      return CS7;
    default:
      return CS8;
  }
}

tcflag_t ParityFlags(char parity) {
  switch (parity) {
    case 'E':
      return PARENB;
    case 'O':
      return PARENB | PARODD;
    case 'M':
      return PARENB | PARODD | CMSPAR;
    case 'S':
      return PARENB | CMSPAR;
    default:
      return 0;
  }
}

bool UsesXon(const LineSettings& settings) {
  return (settings.handshaking & teskReaderFlowControlXonXoff) != 0;
}
bool UsesRts(const LineSettings& settings) {
  return (settings.handshaking & teskReaderFlowControlHardware) != 0;
}

// A damaged byte must not pass for a mark: it comes marked, whether or not the line checks parity. IGNBRK: an
// unplugged cable reads as a break without end, which must not become a stream of zeros.
termios2 Modes(const LineSettings& settings) {
  termios2 modes{};
  modes.c_iflag = IGNBRK | INPCK | PARMRK | (UsesXon(settings) ? tcflag_t{IXON | IXOFF} : 0);
  modes.c_cflag = BOTHER | CREAD | CLOCAL | SizeFlag(settings.dataBits) | ParityFlags(settings.parity) |
                  (settings.stopBits != 1.0F ? tcflag_t{CSTOPB} : 0) |
                  (UsesRts(settings) ? tcflag_t{CRTSCTS} : 0);
  modes.c_ispeed = modes.c_ospeed = static_cast<speed_t>(settings.bitRate);
  modes.c_cc[VMIN] = 1;  // with 0 an empty line would look like one that is gone
  modes.c_cc[VSTART] = kXon;
  modes.c_cc[VSTOP] = kXoff;
  return modes;
}

// Adaptors report the rate that their divider yields; both ends tolerate a deviation of 2 %.
bool RateFits(speed_t rate, std::int32_t wanted) {
  return std::abs(static_cast<std::int64_t>(rate) - wanted) * 50 <= wanted;
}

struct Comparison {
  tcflag_t mask;
  std::string (*text)(const LineSettings&);
};
constexpr Comparison kComparisons[] = {
    {CSIZE, DataBitsText}, {kParityMask, ParityText}, {CSTOPB, StopBitsText}, {CRTSCTS, HandshakingText}};

void Compare(const std::string& device, const LineSettings& settings, const termios2& wanted,
             const termios2& got, bool rateOnly) {
  if (!RateFits(got.c_ospeed, settings.bitRate)) throw RefusedSetting(device, BitRateText(settings));
  if (rateOnly) return;
  for (const auto& [mask, text] : kComparisons) {
    if ((wanted.c_cflag & mask) != (got.c_cflag & mask)) throw RefusedSetting(device, text(settings));
  }
}

}  // namespace

LineMode::LineMode(int descriptor, std::string device)
    : descriptor_(descriptor), device_(std::move(device)), found_(std::make_unique<termios2>()) {
  if (::ioctl(descriptor_, TCGETS2, found_.get()) != 0) {
    throw CannotOpen(device_, "It is not a serial port (" + SystemReason(errno) + ")");
  }
}

LineMode::~LineMode() { ::ioctl(descriptor_, TCSETS2, found_.get()); }

void LineMode::Set(const LineSettings& settings) {
  CheckLineSettings(device_, settings);
  const termios2 wanted = Modes(settings);
  termios2 got{};
  if (::ioctl(descriptor_, TCSETS2, &wanted) != 0 || ::ioctl(descriptor_, TCGETS2, &got) != 0) {
    throw RefusedSetting(device_, "these settings (" + std::system_category().message(errno) + ")");
  }
  Compare(device_, settings, wanted, got, IsPseudoTerminal(descriptor_));
}

bool IsPseudoTerminal(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISCHR(status.st_mode)) return false;
  return major(status.st_rdev) >= 136 && major(status.st_rdev) <= 143;
}

}  // namespace tesk::platform
