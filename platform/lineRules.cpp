// The rules of asynchronous lines.
#include "platform/lineRules.h"

#include <array>
#include <string_view>

#include "base/conversions.h"

namespace tesk::platform {
namespace {

struct ParityName {
  char letter;
  std::string_view name;
};
constexpr std::array kParities = {ParityName{'N', "no"}, ParityName{'E', "even"}, ParityName{'O', "odd"},
                                  ParityName{'M', "mark"}, ParityName{'S', "space"}};

constexpr std::array<std::string_view, 4> kHandshakings = {"no", "XON/XOFF", "RTS/CTS",
                                                           "RTS/CTS and XON/XOFF"};

bool KnownParity(char letter) {
  for (const auto& parity : kParities) {
    if (parity.letter == letter) return true;
  }
  return false;
}

// A character of 5 bits is followed by 1 or 1.5 stop bits, a longer one by 1 or 2.
bool StopBitsFit(const LineSettings& settings) {
  if (settings.stopBits == 1.0F) return true;
  return settings.stopBits == (settings.dataBits == 5 ? 1.5F : 2.0F);
}

}  // namespace

RunTimeError RefusedSetting(const std::string& device, const std::string& setting) {
  return {kErrorLineSettings,
          "The line " + device + " cannot do " + setting + ".",
          {},
          "Choose line settings that both the scanner and the port can do.|Where the scanner needs these, "
          "try another serial port or adaptor."};
}

void CheckLineSettings(const std::string& device, const LineSettings& settings) {
  if (settings.bitRate <= 0) throw RefusedSetting(device, BitRateText(settings));
  if (settings.dataBits < 5 || settings.dataBits > 8) throw RefusedSetting(device, DataBitsText(settings));
  if (!KnownParity(settings.parity)) throw RefusedSetting(device, ParityText(settings));
  if (!StopBitsFit(settings)) {
    throw RefusedSetting(device, StopBitsText(settings) + " with " + DataBitsText(settings));
  }
  if (settings.handshaking < teskReaderFlowControlNone || settings.handshaking > teskReaderFlowControlBoth) {
    throw RefusedSetting(device, HandshakingText(settings));
  }
}

std::string BitRateText(const LineSettings& settings) {
  return NumberText(settings.bitRate) + " bits per second";
}

std::string DataBitsText(const LineSettings& settings) {
  return NumberText(settings.dataBits) + " data bits";
}

std::string ParityText(const LineSettings& settings) {
  for (const auto& parity : kParities) {
    if (parity.letter == settings.parity) return std::string(parity.name) + " parity";
  }
  return std::string("parity \"") + settings.parity + "\"";
}

std::string StopBitsText(const LineSettings& settings) {
  return NumberText(settings.stopBits) + (settings.stopBits == 1.0F ? " stop bit" : " stop bits");
}

std::string HandshakingText(const LineSettings& settings) {
  const auto index = static_cast<std::size_t>(settings.handshaking);
  if (index >= kHandshakings.size()) return "handshaking " + NumberText(std::int32_t{settings.handshaking});
  return std::string(kHandshakings[index]) + " handshaking";
}

}  // namespace tesk::platform
