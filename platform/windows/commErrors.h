// What the communications errors of a port say about the bytes.
#pragma once

#include <optional>

#include "platform/LineDamage.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {

// errors: the CE_ flags that ClearCommError reports. Empty: every byte came as it was sent.
inline std::optional<LineDamage> DamageIn(DWORD errors) {
  if ((errors & CE_RXPARITY) != 0) return LineDamage::Parity;
  if ((errors & CE_FRAME) != 0) return LineDamage::Framing;
  if ((errors & CE_BREAK) != 0) return LineDamage::Break;
  if ((errors & CE_OVERRUN) != 0) return LineDamage::PortOverrun;
  if ((errors & CE_RXOVER) != 0) return LineDamage::SystemOverrun;
  return std::nullopt;
}

}  // namespace tesk::platform
