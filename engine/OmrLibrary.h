// The scanner maker's library for the Sekonic USB readers, as their driver sees it: one function here per
// function there. The engine only keeps it; how it is found and called is each system's own matter.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tesk {

// Where on a sheet the barcode unit looks: the smallest area that holds every barcode that the host defined.
// The library gets these fields in this order, 32 bits each. What follows them stays 0, so that a library
// whose record is longer finds nothing else there.
struct OmrBarcodeArea {
  std::int32_t side = 0;         // 0 front, 1 back, 2 both
  std::int32_t start = 0;        // the smallest distance, in the host's units
  std::int32_t length = 0;       // from there to the farthest end of a barcode
  std::int32_t orientation = 0;  // as teskBarcodeOrientation; 0 where the barcodes differ
  std::array<std::int32_t, 60> unused{};
};

// 0 is success where nothing else is said. Nothing that a function yields may be believed unseen; what it
// writes belongs to the caller, who gives room for it.
class OmrLibrary {
 public:
  OmrLibrary() = default;
  OmrLibrary(const OmrLibrary&) = delete;
  OmrLibrary& operator=(const OmrLibrary&) = delete;
  virtual ~OmrLibrary() = default;  // unloads the library

  virtual std::int32_t OMR_OpenDeviceUSB() = 0;
  virtual std::int32_t OMR_CloseDevice() = 0;
  virtual std::int32_t OMR_GetLastError() = 0;  // the scanner's last error code, 0: none

  virtual std::int32_t OMR_GetReadingMethod(std::int32_t& method, std::int32_t& parameter) = 0;
  virtual std::int32_t OMR_SetReadingMethod(std::int32_t method, std::int32_t parameter) = 0;
  virtual std::int32_t OMR_GetNumberOfColumnsToRead() = 0;  // the count itself
  virtual std::int32_t OMR_SetNumberOfColumnsToRead(std::int32_t columns) = 0;
  virtual std::int32_t OMR_SetBackSensorUnit(std::int32_t use) = 0;  // 1 or 0
  virtual std::int32_t OMR_GetSheetFeedMode(std::int32_t& mode, std::int32_t& parameter) = 0;
  virtual std::int32_t OMR_SetSheetFeedMode(std::int32_t mode, std::int32_t parameter) = 0;

  virtual std::int32_t OMR_GetBarcodeReaderUnit() = 0;  // 0 off, -1 there is none
  virtual std::int32_t OMR_SetBarcodeReaderUnit(std::int32_t use) = 0;
  virtual std::int32_t OMR_SetBarCodeArea(const OmrBarcodeArea& area) = 0;  // not 0: taken
  virtual std::int32_t OMR_SetBarCodeReadType(std::int32_t type) = 0;
  virtual std::int32_t OMR_SetBarCodeCheckDigit(std::uint8_t code, std::int32_t check) = 0;

  // Feeds and reads one sheet; returns when that has happened. OMR_GetLastError tells how it went.
  virtual std::int32_t OMR_FeedSheet() = 0;
  // side: 0 front, 1 back. rows: the most that there is room for in, the sheet's out. marks: one byte per
  // position, row by row. 0 is failure.
  virtual std::int32_t OMR_GetMarks(std::int32_t side, std::int32_t& rows, std::span<std::uint8_t> marks) = 0;
  // information: of no use to us; count: the barcodes that were read.
  virtual std::int32_t OMR_GetBarcodeInfo(std::span<std::int32_t> information, std::int32_t& count) = 0;
  // index: from 0. length: of the text in bytes; value: of no use to us; text: ends with a zero byte.
  virtual std::int32_t OMR_GetBarcodeData(std::int32_t index, std::int32_t& length, std::int32_t& value,
                                          std::span<char> text) = 0;
  virtual std::int32_t OMR_EjectSheet(std::int32_t stacker) = 0;

  // 0 is failure for the three of the imprinter.
  virtual std::int32_t OMR_SetPrintOrder(std::int32_t first, std::int32_t second, std::int32_t third) = 0;
  virtual std::int32_t OMR_SetPrintPosition(std::int32_t position) = 0;
  virtual std::int32_t OMR_SetPrintString(std::int32_t line, const std::string& ansi) = 0;  // line: 1 to 3

  // Between UTF-8 and the code page in which the library takes and gives texts. What has no equivalent
  // becomes a replacement character.
  virtual std::string ToAnsi(std::string_view utf8) const = 0;
  virtual std::string FromAnsi(std::string_view ansi) const = 0;
};

class OmrLibraryLoader {
 public:
  virtual ~OmrLibraryLoader() = default;
  // Empty where the library, or one of its functions, is not there.
  virtual std::shared_ptr<OmrLibrary> Load() = 0;
  // Why this program can never have it, and what to do instead, in English with "{0}" for the host's product;
  // empty where the library is merely missing.
  virtual std::string Obstacle() const { return {}; }
};

}  // namespace tesk
