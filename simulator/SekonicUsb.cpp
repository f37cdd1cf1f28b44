// The library's functions as one scanner carries them out.
#include "simulator/SekonicUsb.h"

#include <algorithm>
#include <utility>

#include "simulator/Scanner.h"

namespace tesk::simulator {
namespace {

using Number = SekonicUsb::Number;

constexpr Number kDone = 0;
constexpr Number kFailed = 1;
constexpr Number kTaken = 1;  // of the functions that count the other way
constexpr Number kRefused = 0;

constexpr Number kMostRows = 200;
constexpr std::size_t kOverrunBytes = 16;
constexpr std::size_t kLongestImprint = 41;

// The sheet was read, although its timing line was not in order.
bool StillReadable(std::uint32_t error) {
  return (error & 0xFFFFU) == 0x0003 && (error >> 16U & 0xFFU) == 0x12;
}

// Paper or a cover is missing: the sheet is still in the hopper.
bool NothingFed(std::uint32_t error) {
  return error == 0x30080000 || error == 0x20070000 || error == 0x25070001 || error == 0x40110000;
}

std::vector<std::string> Texts(std::initializer_list<Number> numbers) {
  std::vector<std::string> texts;
  for (const Number number : numbers) texts.push_back(std::to_string(number));
  return texts;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

std::string HexCode(std::uint32_t code) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (unsigned shift = 32; shift > 0; shift -= 4) text += kDigits[code >> (shift - 4) & 15U];
  return text;
}

}  // namespace

// ---- Recording

Number SekonicUsb::Run(std::string_view function, std::vector<std::string> arguments, const Job& job,
                       Number whenClosed) {
  ++count_[std::string(function)];
  const std::string call = std::string(function) + "(" + Joined(arguments) + ")";
  Written written;
  Number result = whenClosed;
  if (const UsbFault* fault = FaultNow(function, UsbFault::Kind::Answer)) {
    result = fault->value;
  } else if (open_ || function == "OMR_OpenDeviceUSB" || function == "OMR_GetLastError") {
    result = job(written);
  } else {
    Complain(call + " on a closed scanner");
  }
  calls_.push_back(call + " = " + std::to_string(result) +
                   (written.empty() ? "" : " [" + Joined(written) + "]"));
  return result;
}

Number SekonicUsb::Set(std::string_view function, std::initializer_list<Number> arguments, const Job& job) {
  return Run(function, Texts(arguments), job);
}

const UsbFault* SekonicUsb::FaultNow(std::string_view function, UsbFault::Kind kind) const {
  const auto counted = count_.find(function);
  const auto found = std::find_if(device_.faults.begin(), device_.faults.end(), [&](const UsbFault& fault) {
    return fault.kind == kind && fault.function == function && counted != count_.end() &&
           fault.number == counted->second;
  });
  return found == device_.faults.end() ? nullptr : &*found;
}

void SekonicUsb::NeedOneOf(std::string_view what, Number value, std::initializer_list<Number> allowed) {
  if (std::find(allowed.begin(), allowed.end(), value) == allowed.end()) {
    Complain(std::string(what) + " " + std::to_string(value) + " does not exist");
  }
}

// ---- The device and its settings

Number SekonicUsb::OpenDeviceUSB() {
  return Set("OMR_OpenDeviceUSB", {}, [&](Written&) {
    if (open_) Complain("OMR_OpenDeviceUSB() on an open scanner");
    const bool opened = !std::exchange(open_, true);
    lastError_ = 0;
    return opened ? kDone : kFailed;
  });
}

Number SekonicUsb::CloseDevice() {
  return Set("OMR_CloseDevice", {}, [&](Written&) {
    open_ = false;
    return kDone;
  });
}

Number SekonicUsb::GetLastError() {
  return Run("OMR_GetLastError", {}, [&](Written& written) {
    if (lastError_ != 0) written.push_back(HexCode(lastError_));
    return static_cast<Number>(lastError_);
  });
}

Number SekonicUsb::GetReadingMethod(Number& method, Number& parameter) {
  return Set("OMR_GetReadingMethod", {}, [&](Written& written) {
    method = device_.readingMethod;
    parameter = device_.readingParameter;
    written = Texts({method, parameter});
    return kDone;
  });
}

Number SekonicUsb::SetReadingMethod(Number method, Number parameter) {
  return Set("OMR_SetReadingMethod", {method, parameter}, [&](Written&) {
    NeedOneOf("reading method", method, {0, 1, 2, 3});
    device_.readingMethod = method;
    device_.readingParameter = parameter;
    return kDone;
  });
}

Number SekonicUsb::GetNumberOfColumnsToRead() {
  return Run(
      "OMR_GetNumberOfColumnsToRead", {}, [&](Written&) { return device_.columns; }, -1);
}

Number SekonicUsb::SetNumberOfColumnsToRead(Number columns) {
  return Set("OMR_SetNumberOfColumnsToRead", {columns}, [&](Written&) {
    device_.columns = columns;
    return kDone;
  });
}

Number SekonicUsb::SetBackSensorUnit(Number use) {
  return Set("OMR_SetBackSensorUnit", {use}, [&](Written&) {
    NeedOneOf("back sensor setting", use, {0, 1});
    backSensor_ = use == 1;
    return kDone;
  });
}

Number SekonicUsb::GetSheetFeedMode(Number& mode, Number& parameter) {
  return Set("OMR_GetSheetFeedMode", {}, [&](Written& written) {
    mode = device_.feedMode;
    parameter = device_.feedParameter;
    written = Texts({mode, parameter});
    return kDone;
  });
}

Number SekonicUsb::SetSheetFeedMode(Number mode, Number parameter) {
  return Set("OMR_SetSheetFeedMode", {mode, parameter}, [&](Written&) {
    device_.feedMode = mode;
    device_.feedParameter = parameter;
    return kDone;
  });
}

// ---- Barcodes

Number SekonicUsb::GetBarcodeReaderUnit() {
  return Run(
      "OMR_GetBarcodeReaderUnit", {}, [&](Written&) { return device_.barcodeUnit; }, -1);
}

Number SekonicUsb::SetBarcodeReaderUnit(Number use) {
  return Set("OMR_SetBarcodeReaderUnit", {use}, [&](Written&) {
    if (device_.barcodeUnit == -1) Complain("the scanner has no barcode unit to switch");
    if (device_.barcodeUnit != -1) device_.barcodeUnit = use;
    return device_.barcodeUnit == -1 ? kFailed : kDone;
  });
}

Number SekonicUsb::SetBarCodeArea(std::span<const Number, 4> area) {
  const auto job = [&](Written&) {
    NeedOneOf("barcode side", area[0], {0, 1, 2});
    if (area[2] < 0) Complain("a barcode area of negative length");
    barcodeArea_ = device_.barcodeUnit == 1;
    return barcodeArea_ ? kTaken : kRefused;
  };
  return Run("OMR_SetBarCodeArea", Texts({area[0], area[1], area[2], area[3]}), job, kRefused);
}

Number SekonicUsb::SetBarCodeReadType(Number type) {
  return Set("OMR_SetBarCodeReadType", {type}, [](Written&) { return kDone; });
}

Number SekonicUsb::SetBarCodeCheckDigit(std::uint8_t code, Number check) {
  return Set("OMR_SetBarCodeCheckDigit", {code, check}, [](Written&) { return kDone; });
}

Number SekonicUsb::GetBarcodeInfo(Number& count) {
  return Set("OMR_GetBarcodeInfo", {}, [&](Written& written) {
    if (device_.barcodeUnit == -1) return kFailed;
    const bool read = readable_ && barcodeArea_;
    count = read ? static_cast<Number>(device_.sheets[fed_ - 1].barcodes.size()) : 0;
    if (const auto* fault = FaultNow("OMR_GetBarcodeInfo", UsbFault::Kind::Report)) count = fault->value;
    written = Texts({count});
    return kDone;
  });
}

Number SekonicUsb::GetBarcodeData(Number index, Number& length, Number& value, std::span<char> text) {
  constexpr std::string_view kName = "OMR_GetBarcodeData";
  return Set(kName, {index}, [&](Written& written) {
    if (!readable_ || index < 0) return kFailed;
    const auto& barcodes = device_.sheets[fed_ - 1].barcodes;
    const auto place = static_cast<std::size_t>(index);
    const std::string barcode = place < barcodes.size() ? barcodes[place].substr(0, text.size() - 1) : "";
    std::ranges::copy(barcode, text.begin());
    text[barcode.size()] = '\0';
    length = static_cast<Number>(barcode.size());
    value = 0;
    if (FaultNow(kName, UsbFault::Kind::Unterminated) != nullptr) std::ranges::fill(text, 'x');
    if (FaultNow(kName, UsbFault::Kind::Overrun) != nullptr) {
      std::fill_n(text.data() + text.size(), kOverrunBytes, 'x');
    }
    if (const auto* fault = FaultNow(kName, UsbFault::Kind::Report)) length = fault->value;
    written = {std::to_string(length), Quoted(barcode)};
    return kDone;
  });
}

// ---- Sheets

Number SekonicUsb::FeedSheet() {
  return Set("OMR_FeedSheet", {}, [&](Written& written) {
    if (held_) LetGo(0);
    readable_ = false;
    lastError_ = 0;
    const auto number = static_cast<std::int32_t>(fed_) + 1;
    if (fed_ == device_.sheets.size()) {
      lastError_ = device_.emptyError;
    } else if (const auto error = device_.feedErrors.extract(number)) {
      lastError_ = error.mapped();
    }
    if (lastError_ == 0 || !NothingFed(lastError_)) {
      if (fed_ < device_.sheets.size()) ++fed_;
      held_ = lastError_ == 0 || StillReadable(lastError_);
      readable_ = held_;
      written = {"sheet " + std::to_string(number)};
    }
    return lastError_ == 0 ? kDone : kFailed;
  });
}

void SekonicUsb::WriteMarks(const SideArray& side, Number rows, std::span<std::uint8_t> marks) const {
  std::ranges::fill(marks, std::uint8_t{0});
  for (Number row = 1; row <= rows; ++row) {
    for (Number column = 1; column <= std::min(side.Columns(), device_.columns); ++column) {
      const auto at = static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(device_.columns) +
                      static_cast<std::size_t>(column - 1);
      if (at < marks.size()) marks[at] = static_cast<std::uint8_t>(side.At(row, column));
    }
  }
}

Number SekonicUsb::GetMarks(Number side, Number& rows, std::span<std::uint8_t> marks) {
  constexpr std::string_view kName = "OMR_GetMarks";
  const auto job = [&](Written& written) {
    NeedOneOf("side", side, {0, 1});
    if (rows != kMostRows) Complain("room for " + std::to_string(rows) + " rows instead of 200");
    if (side == 1 && !backSensor_) Complain("the back is asked for with the back sensor off");
    if (!readable_ || (side == 1 && !backSensor_)) return kRefused;
    const Sheet& sheet = device_.sheets[fed_ - 1];
    const SideArray& marked = side == 0 ? sheet.side1 : sheet.side2;
    rows = std::min(marked.Rows(), kMostRows);
    WriteMarks(marked, rows, marks);
    if (FaultNow(kName, UsbFault::Kind::Overrun) != nullptr) {
      std::fill_n(marks.data() + marks.size(), kOverrunBytes, std::uint8_t{255});
    }
    if (const auto* fault = FaultNow(kName, UsbFault::Kind::Report)) rows = fault->value;
    written = Texts({rows});
    return kTaken;
  };
  return Run(kName, Texts({side, rows}), job, kRefused);
}

void SekonicUsb::LetGo(Number stacker) {
  disposals_.push_back({static_cast<std::int32_t>(fed_), stacker, std::exchange(imprint_, {})});
  held_ = false;
}

Number SekonicUsb::EjectSheet(Number stacker) {
  return Set("OMR_EjectSheet", {stacker}, [&](Written&) {
    NeedOneOf("stacker code", stacker, {1, 2, 3, 4});
    if (held_) LetGo(stacker);
    return kDone;
  });
}

// ---- Imprint

Number SekonicUsb::SetPrintOrder(Number first, Number second, Number third) {
  const auto job = [&](Written&) {
    if (first != 1 || second != 2 || third != 3) Complain("a print order other than 1, 2, 3");
    return kTaken;
  };
  return Run("OMR_SetPrintOrder", Texts({first, second, third}), job, kRefused);
}

Number SekonicUsb::SetPrintPosition(Number position) {
  const auto job = [&](Written&) {
    if (position < 10 || position > 245) Complain("print position " + std::to_string(position));
    return kTaken;
  };
  return Run("OMR_SetPrintPosition", Texts({position}), job, kRefused);
}

Number SekonicUsb::SetPrintString(Number line, std::string_view text) {
  const auto job = [&](Written&) {
    NeedOneOf("print line", line, {1, 2, 3});
    if (text.size() > kLongestImprint)
      Complain("an imprint of " + std::to_string(text.size()) + " characters");
    if (imprint_.size() == 3) imprint_.clear();
    imprint_.emplace_back(text);
    return kTaken;
  };
  return Run("OMR_SetPrintString", {std::to_string(line), Quoted(text)}, job, kRefused);
}

}  // namespace tesk::simulator
