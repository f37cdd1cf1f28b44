// The device control block.
#include "platform/windows/LineMode.h"

#include <cstdlib>
#include <utility>

#include "platform/lineRules.h"
#include "platform/openError.h"
#include "platform/windows/Text.h"

namespace tesk::platform {
namespace {

constexpr char kXon = 0x11;
constexpr char kXoff = 0x13;

BYTE ParityCode(char parity) {
  switch (parity) {
    case 'E':
      return EVENPARITY;
    case 'O':
      return ODDPARITY;
    case 'M':
      return MARKPARITY;
    case 'S':
      return SPACEPARITY;
    default:
      return NOPARITY;
  }
}

BYTE StopBitsCode(float stopBits) {
  if (stopBits == 1.5F) return ONE5STOPBITS;
  return stopBits == 2.0F ? TWOSTOPBITS : ONESTOPBIT;
}

void SetHandshaking(DCB& block, teskReaderFlowControl handshaking) {
  const bool hardware = (handshaking & teskReaderFlowControlHardware) != 0;
  const bool xon = (handshaking & teskReaderFlowControlXonXoff) != 0;
  block.fOutxCtsFlow = hardware;
  block.fRtsControl = (hardware ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE) & 3U;
  block.fOutX = xon;
  block.fInX = xon;
  block.XonChar = kXon;
  block.XoffChar = kXoff;
  block.XonLim = 2048;
  block.XoffLim = 512;
}

DCB Block(const LineSettings& settings) {
  DCB block{};
  block.DCBlength = sizeof(block);
  block.BaudRate = static_cast<DWORD>(settings.bitRate);
  block.fBinary = TRUE;
  block.fParity = settings.parity != 'N';
  block.fDtrControl = DTR_CONTROL_ENABLE;
  block.ByteSize = static_cast<BYTE>(settings.dataBits);
  block.Parity = ParityCode(settings.parity);
  block.StopBits = StopBitsCode(settings.stopBits);
  SetHandshaking(block, settings.handshaking);
  return block;
}

// Under Wine a port may be a pseudo-terminal, which knows neither character sizes nor parity.
bool UnderWine() { return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr; }

// Adaptors report the rate that their divider yields; both ends tolerate a deviation of 2 %.
bool RateFits(DWORD rate, std::int32_t wanted) {
  return std::llabs(static_cast<long long>(rate) - wanted) * 50 <= wanted;
}

bool SameHandshaking(const DCB& a, const DCB& b) {
  return a.fOutxCtsFlow == b.fOutxCtsFlow && a.fRtsControl == b.fRtsControl && a.fOutX == b.fOutX &&
         a.fInX == b.fInX;
}

void Compare(const std::string& device, const LineSettings& settings, const DCB& wanted, const DCB& got) {
  if (!RateFits(got.BaudRate, settings.bitRate)) throw RefusedSetting(device, BitRateText(settings));
  if (UnderWine()) return;
  if (got.ByteSize != wanted.ByteSize) throw RefusedSetting(device, DataBitsText(settings));
  if (got.Parity != wanted.Parity) throw RefusedSetting(device, ParityText(settings));
  if (got.StopBits != wanted.StopBits) throw RefusedSetting(device, StopBitsText(settings));
  if (!SameHandshaking(got, wanted)) throw RefusedSetting(device, HandshakingText(settings));
}

}  // namespace

LineMode::LineMode(HANDLE port, std::string device) : port_(port), device_(std::move(device)) {
  found_.DCBlength = sizeof(found_);
  if (!::GetCommState(port_, &found_) || !::GetCommTimeouts(port_, &foundTimeouts_)) {
    throw CannotOpen(device_, "It is not a serial port (" + SystemReason(::GetLastError()) + ")");
  }
}

LineMode::~LineMode() {
  ::SetCommState(port_, &found_);
  ::SetCommTimeouts(port_, &foundTimeouts_);
}

void LineMode::Set(const LineSettings& settings) {
  CheckLineSettings(device_, settings);
  DCB wanted = Block(settings);
  COMMTIMEOUTS atOnce{};
  atOnce.ReadIntervalTimeout = MAXDWORD;  // with zeros beside it: a read takes what is there
  DCB got{};
  got.DCBlength = sizeof(got);
  if (!::SetCommState(port_, &wanted) || !::SetCommTimeouts(port_, &atOnce) || !::GetCommState(port_, &got)) {
    const std::string reason = SystemReason(::GetLastError());
    throw RefusedSetting(device_, BitRateText(settings) + ", " + DataBitsText(settings) + ", " +
                                      ParityText(settings) + ", " + StopBitsText(settings) + " and " +
                                      HandshakingText(settings) + " together (" + reason + ")");
  }
  Compare(device_, settings, wanted, got);
}

}  // namespace tesk::platform
