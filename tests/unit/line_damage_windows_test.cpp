// What the communications errors of Windows say about the bytes.
#include <optional>
#include <utility>

#include <gtest/gtest.h>

#include "platform/windows/commErrors.h"

namespace tesk::platform {
namespace {

TEST(CommErrors, EveryDamagedOrLostByteIsToldByItsKind) {
  const std::pair<DWORD, std::optional<LineDamage>> cases[] = {{0, std::nullopt},
                                                               {CE_RXPARITY | CE_OVERRUN, LineDamage::Parity},
                                                               {CE_FRAME, LineDamage::Framing},
                                                               {CE_BREAK, LineDamage::Break},
                                                               {CE_OVERRUN, LineDamage::PortOverrun},
                                                               {CE_RXOVER, LineDamage::SystemOverrun},
                                                               {CE_TXFULL | CE_MODE, std::nullopt}};
  for (const auto& [errors, damage] : cases) EXPECT_EQ(DamageIn(errors), damage) << errors;
}

}  // namespace
}  // namespace tesk::platform
