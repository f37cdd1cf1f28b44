// The library's functions, handed on to the scanner.
#include "cli/simulated/SimulatedOmr.h"

#include <array>
#include <string>
#include <utility>

#include "base/conversions.h"
#include "profiles/models.h"

namespace tesk::cli {
namespace {

class Library : public OmrLibrary {
 public:
  explicit Library(std::shared_ptr<simulator::SekonicUsb> scanner) : scanner_(std::move(scanner)) {}

  using Number = std::int32_t;

  Number OMR_OpenDeviceUSB() override { return scanner_->OpenDeviceUSB(); }
  Number OMR_CloseDevice() override { return scanner_->CloseDevice(); }
  Number OMR_GetLastError() override { return scanner_->GetLastError(); }
  Number OMR_GetReadingMethod(Number& method, Number& parameter) override {
    return scanner_->GetReadingMethod(method, parameter);
  }
  Number OMR_SetReadingMethod(Number method, Number parameter) override {
    return scanner_->SetReadingMethod(method, parameter);
  }
  Number OMR_GetNumberOfColumnsToRead() override { return scanner_->GetNumberOfColumnsToRead(); }
  Number OMR_SetNumberOfColumnsToRead(Number columns) override {
    return scanner_->SetNumberOfColumnsToRead(columns);
  }
  Number OMR_SetBackSensorUnit(Number use) override { return scanner_->SetBackSensorUnit(use); }
  Number OMR_GetSheetFeedMode(Number& mode, Number& parameter) override {
    return scanner_->GetSheetFeedMode(mode, parameter);
  }
  Number OMR_SetSheetFeedMode(Number mode, Number parameter) override {
    return scanner_->SetSheetFeedMode(mode, parameter);
  }
  Number OMR_GetBarcodeReaderUnit() override { return scanner_->GetBarcodeReaderUnit(); }
  Number OMR_SetBarcodeReaderUnit(Number use) override { return scanner_->SetBarcodeReaderUnit(use); }
  Number OMR_SetBarCodeArea(const OmrBarcodeArea& area) override {
    return scanner_->SetBarCodeArea(std::array{area.side, area.start, area.length, area.orientation});
  }
  Number OMR_SetBarCodeReadType(Number type) override { return scanner_->SetBarCodeReadType(type); }
  Number OMR_SetBarCodeCheckDigit(std::uint8_t code, Number check) override {
    return scanner_->SetBarCodeCheckDigit(code, check);
  }
  Number OMR_FeedSheet() override { return scanner_->FeedSheet(); }
  Number OMR_GetMarks(Number side, Number& rows, std::span<std::uint8_t> marks) override {
    return scanner_->GetMarks(side, rows, marks);
  }
  Number OMR_GetBarcodeInfo(std::span<Number> /*information*/, Number& count) override {
    return scanner_->GetBarcodeInfo(count);
  }
  Number OMR_GetBarcodeData(Number index, Number& length, Number& value, std::span<char> text) override {
    return scanner_->GetBarcodeData(index, length, value, text);
  }
  Number OMR_EjectSheet(Number stacker) override { return scanner_->EjectSheet(stacker); }
  Number OMR_SetPrintOrder(Number first, Number second, Number third) override {
    return scanner_->SetPrintOrder(first, second, third);
  }
  Number OMR_SetPrintPosition(Number position) override { return scanner_->SetPrintPosition(position); }
  Number OMR_SetPrintString(Number line, const std::string& ansi) override {
    return scanner_->SetPrintString(line, ansi);
  }

  // The simulated system's code page is ISO 8859-1.
  std::string ToAnsi(std::string_view utf8) const override { return WireText(utf8); }
  std::string FromAnsi(std::string_view ansi) const override {
    std::string utf8;
    for (const char c : ansi) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte >= 0x80) utf8 += static_cast<char>(0xC0U | byte >> 6U);
      utf8 += static_cast<char>(byte >= 0x80 ? 0x80U | (byte & 0x3FU) : byte);
    }
    return utf8;
  }

 private:
  std::shared_ptr<simulator::SekonicUsb> scanner_;
};

}  // namespace

SimulatedOmr::SimulatedOmr(std::shared_ptr<simulator::SekonicUsb> scanner) : scanner_(std::move(scanner)) {}

std::shared_ptr<OmrLibrary> SimulatedOmr::Load() { return std::make_shared<Library>(scanner_); }

std::shared_ptr<OmrLibraryLoader> CreateSimulatedOmr(teskReaderType type,
                                                     std::vector<simulator::Sheet> stock) {
  if (!FamilyOf(type).byLibrary) return nullptr;
  simulator::UsbDevice device;
  device.sheets = std::move(stock);
  return std::make_shared<SimulatedOmr>(std::make_shared<simulator::SekonicUsb>(std::move(device)));
}

}  // namespace tesk::cli
