#include "platform/LineDamage.h"

#include <string_view>

namespace tesk::platform {
namespace {

constexpr std::string_view kCheckSettings =
    "Check that bit rate, data bits and parity of reader and scanner agree, and the cable.";
constexpr std::string_view kCheckCable = "Check the cable, and that the scanner is switched on.";
constexpr std::string_view kCheckPace =
    "Choose a lower bit rate or handshaking that the scanner knows too, and end programs that keep the "
    "computer busy.";

struct Wording {
  std::string_view happened;
  std::string_view advice;
};

Wording WordingOf(LineDamage damage) {
  switch (damage) {
    case LineDamage::Parity:
      return {"The line's parity check failed.", kCheckSettings};
    case LineDamage::Framing:
      return {"A byte had no stop bit.", kCheckSettings};
    case LineDamage::Break:
      return {"The line was interrupted.", kCheckCable};
    case LineDamage::PortOverrun:
      return {"Bytes came faster than the port could take them, and some are lost.", kCheckPace};
    case LineDamage::SystemOverrun:
      return {"More bytes waited than the system had room for, and some are lost.", kCheckPace};
    case LineDamage::Marked:
      break;
  }
  return {"The line's check of parity and stop bits failed.", kCheckSettings};
}

}  // namespace

RunTimeError Damaged(const std::string& device, LineDamage damage) {
  const Wording wording = WordingOf(damage);
  return {kErrorLineRead,
          "A byte from " + device + " came damaged.",
          {},
          std::string(wording.happened) + " " + std::string(wording.advice)};
}

}  // namespace tesk::platform
