// A simulated Sekonic USB scanner behind the maker's library: a state machine of the library's functions. The
// same object serves in memory and inside a library for tests. It knows base and the simulator's own parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/Sheet.h"

namespace tesk::simulator {

// Something that a function does wrongly, once.
struct UsbFault {
  enum class Kind : std::uint8_t {
    Answer,        // yields `value` and does nothing
    Report,        // writes `value` where it tells a count: rows, barcodes, the length of a text
    Overrun,       // writes a few bytes beyond its buffer, which must be there
    Unterminated,  // fills its buffer with a text that has no end
  };
  Kind kind;
  std::string function;     // "OMR_GetMarks"
  std::int32_t number = 1;  // its Nth call, from 1
  std::int32_t value = 0;

  bool operator==(const UsbFault&) const = default;
};

// How the scanner stands before a host opens it.
struct UsbDevice {
  std::vector<Sheet> sheets = {};
  std::int32_t readingMethod = 3;
  std::int32_t readingParameter = 0;
  std::int32_t columns = 48;
  std::int32_t feedMode = 0;
  std::int32_t feedParameter = 0;
  std::int32_t barcodeUnit = 1;  // 0 off, -1 there is none
  // The scanner's error code when a sheet is fed, by the sheet's number from 1. A timing-line error leaves
  // the sheet readable.
  std::map<std::int32_t, std::uint32_t> feedErrors = {};
  std::uint32_t emptyError = 0x40110000;  // when there is no sheet left
  std::vector<UsbFault> faults = {};
};

// What became of one sheet.
struct UsbDisposal {
  std::int32_t sheet = 0;    // from 1
  std::int32_t stacker = 0;  // the code; 0: another sheet was fed behind it
  std::vector<std::string> imprint = {};

  bool operator==(const UsbDisposal&) const = default;
};

class SekonicUsb {
 public:
  using Number = std::int32_t;

  explicit SekonicUsb(UsbDevice device) : device_(std::move(device)) {}

  // The library's functions, without its prefix.
  Number OpenDeviceUSB();
  Number CloseDevice();
  Number GetLastError();
  Number GetReadingMethod(Number& method, Number& parameter);
  Number SetReadingMethod(Number method, Number parameter);
  Number GetNumberOfColumnsToRead();
  Number SetNumberOfColumnsToRead(Number columns);
  Number SetBackSensorUnit(Number use);
  Number GetSheetFeedMode(Number& mode, Number& parameter);
  Number SetSheetFeedMode(Number mode, Number parameter);
  Number GetBarcodeReaderUnit();
  Number SetBarcodeReaderUnit(Number use);
  Number SetBarCodeArea(std::span<const Number, 4> area);  // side, start, length, orientation
  Number SetBarCodeReadType(Number type);
  Number SetBarCodeCheckDigit(std::uint8_t code, Number check);
  Number FeedSheet();
  Number GetMarks(Number side, Number& rows, std::span<std::uint8_t> marks);
  Number GetBarcodeInfo(Number& count);
  Number GetBarcodeData(Number index, Number& length, Number& value, std::span<char> text);
  Number EjectSheet(Number stacker);
  Number SetPrintOrder(Number first, Number second, Number third);
  Number SetPrintPosition(Number position);
  Number SetPrintString(Number line, std::string_view text);

  // Every call in order: "OMR_GetMarks(0, 200) = 1 [60]", what it wrote in brackets.
  const std::vector<std::string>& Calls() const { return calls_; }
  // What the host did wrong: a call on a closed scanner, a value that the scanner does not have. Empty when
  // all was well.
  const std::vector<std::string>& Complaints() const { return complaints_; }
  const std::vector<UsbDisposal>& Disposals() const { return disposals_; }
  bool IsOpen() const { return open_; }

 private:
  using Written = std::vector<std::string>;
  using Job = std::function<Number(Written& written)>;

  // Counts and records a call; a fault of the kind Answer takes the place of the job.
  Number Run(std::string_view function, std::vector<std::string> arguments, const Job& job,
             Number whenClosed = 1);
  Number Set(std::string_view function, std::initializer_list<Number> arguments, const Job& job);
  const UsbFault* FaultNow(std::string_view function, UsbFault::Kind kind) const;
  void Complain(const std::string& complaint) { complaints_.push_back(complaint); }
  void NeedOneOf(std::string_view what, Number value, std::initializer_list<Number> allowed);
  void LetGo(Number stacker);
  void WriteMarks(const SideArray& side, Number rows, std::span<std::uint8_t> marks) const;

  UsbDevice device_;
  bool open_ = false;
  bool backSensor_ = false;
  bool barcodeArea_ = false;
  std::uint32_t lastError_ = 0;
  std::size_t fed_ = 0;
  bool held_ = false;      // a sheet lies in the transport
  bool readable_ = false;  // and was read
  std::vector<std::string> imprint_;
  std::map<std::string, std::int32_t, std::less<>> count_;  // of calls, by function
  std::vector<std::string> calls_;
  std::vector<std::string> complaints_;
  std::vector<UsbDisposal> disposals_;
};

}  // namespace tesk::simulator
