// A library for tests with the maker's functions and a simulated scanner behind them. It does what the script
// OMRAPI_SCRIPT in the environment says (without it, OMRAPI.script beside the library), from the top each
// time the scanner is opened, and appends every call to OMRAPI_RECORD (without it, OMRAPI.record beside it).
#include <array>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "platform/windows/WindowsApi.h"
#include "simulator/SekonicUsbScript.h"

namespace {

using tesk::simulator::SekonicUsb;
using tesk::simulator::UsbDevice;
using Number = std::int32_t;

constexpr std::size_t kMarkBytes = 9600;
constexpr std::size_t kTextBytes = 256;

// The library has no handles: one scanner per process.
std::unique_ptr<SekonicUsb> scanner;
std::size_t recorded = 0;

std::string Beside(const char* name) {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCSTR>(&Beside), &module);
  std::array<char, MAX_PATH> path{};
  const std::string whole(path.data(), GetModuleFileNameA(module, path.data(), MAX_PATH));
  return whole.substr(0, whole.find_last_of('\\') + 1) + name;
}

// Asks the system, not the C run-time, which knows the environment only as it was when the program began.
std::string FileFor(const char* variable, const char* name) {
  std::array<char, 1024> path{};
  const DWORD length = GetEnvironmentVariableA(variable, path.data(), path.size());
  return length > 0 && length < path.size() ? std::string(path.data(), length) : Beside(name);
}

void Record(const std::string& line) {
  std::ofstream(FileFor("OMRAPI_RECORD", "OMRAPI.record"), std::ios::app | std::ios::binary) << line << '\n';
}

// The scanner that the script describes; one that cannot be opened where there is no script to follow.
std::unique_ptr<SekonicUsb> NewScanner() {
  std::ifstream file(FileFor("OMRAPI_SCRIPT", "OMRAPI.script"), std::ios::binary);
  const std::string script((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  auto parsed = tesk::simulator::ParseUsbDevice(script);
  if (!file.is_open()) parsed.error = "there is none";
  if (!parsed.error.empty()) {
    Record("script: " + parsed.error);
    parsed.device = UsbDevice{};
    parsed.device->faults = {{tesk::simulator::UsbFault::Kind::Answer, "OMR_OpenDeviceUSB", 1, 1}};
  }
  recorded = 0;
  return std::make_unique<SekonicUsb>(std::move(*parsed.device));
}

// Runs one call and records it.
template <class Call>
Number Do(Call call) {
  if (!scanner) scanner = NewScanner();
  const Number result = call(*scanner);
  for (; recorded < scanner->Calls().size(); ++recorded) Record(scanner->Calls()[recorded]);
  return result;
}

}  // namespace

extern "C" {

Number __stdcall OMR_OpenDeviceUSB() {
  if (!scanner || !scanner->IsOpen()) scanner = NewScanner();
  return Do([](SekonicUsb& s) { return s.OpenDeviceUSB(); });
}

Number __stdcall OMR_CloseDevice() {
  return Do([](SekonicUsb& s) { return s.CloseDevice(); });
}

Number __stdcall OMR_GetLastError() {
  return Do([](SekonicUsb& s) { return s.GetLastError(); });
}

Number __stdcall OMR_GetReadingMethod(Number* method, Number* parameter) {
  return Do([&](SekonicUsb& s) { return s.GetReadingMethod(*method, *parameter); });
}

Number __stdcall OMR_SetReadingMethod(Number method, Number parameter) {
  return Do([&](SekonicUsb& s) { return s.SetReadingMethod(method, parameter); });
}

Number __stdcall OMR_GetNumberOfColumnsToRead() {
  return Do([](SekonicUsb& s) { return s.GetNumberOfColumnsToRead(); });
}

Number __stdcall OMR_SetNumberOfColumnsToRead(Number columns) {
  return Do([&](SekonicUsb& s) { return s.SetNumberOfColumnsToRead(columns); });
}

Number __stdcall OMR_SetBackSensorUnit(Number use) {
  return Do([&](SekonicUsb& s) { return s.SetBackSensorUnit(use); });
}

Number __stdcall OMR_GetSheetFeedMode(Number* mode, Number* parameter) {
  return Do([&](SekonicUsb& s) { return s.GetSheetFeedMode(*mode, *parameter); });
}

Number __stdcall OMR_SetSheetFeedMode(Number mode, Number parameter) {
  return Do([&](SekonicUsb& s) { return s.SetSheetFeedMode(mode, parameter); });
}

Number __stdcall OMR_GetBarcodeReaderUnit() {
  return Do([](SekonicUsb& s) { return s.GetBarcodeReaderUnit(); });
}

Number __stdcall OMR_SetBarcodeReaderUnit(Number use) {
  return Do([&](SekonicUsb& s) { return s.SetBarcodeReaderUnit(use); });
}

Number __stdcall OMR_SetBarCodeArea(const Number* area) {
  return Do([&](SekonicUsb& s) { return s.SetBarCodeArea(std::span<const Number, 4>(area, 4)); });
}

Number __stdcall OMR_SetBarCodeReadType(Number type) {
  return Do([&](SekonicUsb& s) { return s.SetBarCodeReadType(type); });
}

Number __stdcall OMR_SetBarCodeCheckDigit(std::uint8_t code, Number check) {
  return Do([&](SekonicUsb& s) { return s.SetBarCodeCheckDigit(code, check); });
}

Number __stdcall OMR_FeedSheet() {
  return Do([](SekonicUsb& s) { return s.FeedSheet(); });
}

Number __stdcall OMR_GetMarks(Number side, Number* rows, std::uint8_t* marks) {
  return Do([&](SekonicUsb& s) { return s.GetMarks(side, *rows, std::span(marks, kMarkBytes)); });
}

Number __stdcall OMR_GetBarcodeInfo(Number* /*information*/, Number* count) {
  return Do([&](SekonicUsb& s) { return s.GetBarcodeInfo(*count); });
}

Number __stdcall OMR_GetBarcodeData(Number index, Number* length, Number* value, char* text) {
  return Do(
      [&](SekonicUsb& s) { return s.GetBarcodeData(index, *length, *value, std::span(text, kTextBytes)); });
}

Number __stdcall OMR_EjectSheet(Number stacker) {
  return Do([&](SekonicUsb& s) { return s.EjectSheet(stacker); });
}

Number __stdcall OMR_SetPrintOrder(Number first, Number second, Number third) {
  return Do([&](SekonicUsb& s) { return s.SetPrintOrder(first, second, third); });
}

Number __stdcall OMR_SetPrintPosition(Number position) {
  return Do([&](SekonicUsb& s) { return s.SetPrintPosition(position); });
}

Number __stdcall OMR_SetPrintString(Number line, const char* text) {
  return Do([&](SekonicUsb& s) { return s.SetPrintString(line, text); });
}

}  // extern "C"
