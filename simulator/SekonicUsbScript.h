// A simulated Sekonic USB scanner as a person writes it down, for programs that cannot be handed an object.
//
//   # ten sheets of 60 rows from seed 7, with a second side
//   sheets 10 60 7 two-sided
//   barcode 3 4711              the third sheet's barcodes; a further line adds one
//   no-barcodes 4
//   reading-method 2 5          method and parameter before the host comes
//   columns 40
//   feed-mode 1 0
//   barcode-unit 0
//   feed 3 41120003             the third sheet is fed with this error, in hexadecimal
//   empty 30080000              the error once the stock is used up
//   answer OMR_GetMarks 2 0     the second call yields 0 and does nothing
//   report OMR_GetMarks 1 201   the first call tells so many rows (barcodes, bytes of text)
//   overrun OMR_GetMarks 1      the first call writes beyond its buffer
//   unterminated OMR_GetBarcodeData 1
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulator/SekonicUsb.h"

namespace tesk::simulator {

// The top of the darkness scale of these scanners.
inline constexpr std::int16_t kSekonicUsbDarkest = 15;

struct ParsedUsbDevice {
  std::optional<UsbDevice> device;
  std::string error;  // names the line; empty where `device` is set
};

ParsedUsbDevice ParseUsbDevice(std::string_view script);

}  // namespace tesk::simulator
