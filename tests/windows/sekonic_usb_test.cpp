// The registered server and the maker's library of the Sekonic USB readers, with a simulated scanner in it.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "simulator/SekonicUsbScript.h"
#include "tests/windows/Host.h"

namespace tesk::test {
namespace {

using Lines = std::vector<std::string>;

std::wstring Backslashed(std::wstring path) {
  for (wchar_t& c : path) c = c == L'/' ? L'\\' : c;
  return path;
}

std::string TextOf(const std::wstring& path) {
  std::ifstream file(platform::WideToUtf8(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void Store(const std::wstring& path, const std::string& text) {
  std::ofstream(platform::WideToUtf8(path), std::ios::binary | std::ios::trunc) << text;
}

// The library beside this program, or where a test wants it, for as long as the test runs; its script and its
// record in the same folder.
class SekonicUsb : public testing::Test {
 protected:
  void SetUp() override {
    SetEnvironmentVariableW(L"OMRAPI_SCRIPT", nullptr);
    SetEnvironmentVariableW(L"OMRAPI_RECORD", nullptr);
    Install("whole");
    Script("");
  }
  void TearDown() override {
    for (const wchar_t* name : {L"OMRAPI.DLL", L"OMRAPI.script", L"OMRAPI.record"}) {
      DeleteFileW((folder + name).c_str());
    }
  }

  void Install(const char* variant) {
    const std::wstring from =
        Backslashed(platform::Utf8ToWide(std::string("Z:" TESKREAD_OMRAPI "/") + variant));
    ASSERT_TRUE(CopyFileW((from + L"\\OMRAPI.DLL").c_str(), (folder + L"OMRAPI.DLL").c_str(), FALSE));
  }
  void Script(const std::string& text) { Store(folder + L"OMRAPI.script", text); }
  Lines Record() {
    std::istringstream text(tesk::test::TextOf(folder + L"OMRAPI.record"));
    Lines lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
  }

  std::wstring folder = ProgramFolder();
};

std::wstring SystemFolder() {
  wchar_t path[MAX_PATH];
  const UINT length = GetSystemDirectoryW(path, MAX_PATH);
  return std::wstring(path, length) + L"\\";
}

constexpr const char* kTenSheets =
    "sheets 10 50 7 two-sided\nbarcode 4 4711\nno-barcodes 9\nbarcode-unit 0\n";

// What the library must be asked for the ten sheets.
Lines ExpectedCalls() {
  const auto sheets = simulator::ParseUsbDevice(kTenSheets).device.value().sheets;
  const Lines barcodeArea = {"OMR_SetBarCodeArea(0, 30, 12, 1) = 1", "OMR_SetBarCodeReadType(23) = 0",
                             "OMR_SetBarCodeCheckDigit(97, 0) = 0",  "OMR_SetBarCodeCheckDigit(98, 0) = 0",
                             "OMR_SetBarCodeCheckDigit(99, 0) = 0",  "OMR_GetNumberOfColumnsToRead() = 48"};
  Lines calls = {"OMR_OpenDeviceUSB() = 0",
                 "OMR_GetReadingMethod() = 0 [3, 0]",
                 "OMR_GetNumberOfColumnsToRead() = 48",
                 "OMR_SetBackSensorUnit(1) = 0",
                 "OMR_GetSheetFeedMode() = 0 [0, 0]",
                 "OMR_GetBarcodeReaderUnit() = 0",
                 "OMR_SetBarcodeReaderUnit(1) = 0"};
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    const auto& barcodes = sheets[i].barcodes;
    calls.insert(calls.end(), barcodeArea.begin(), barcodeArea.end());
    calls.push_back("OMR_FeedSheet() = 0 [sheet " + std::to_string(i + 1) + "]");
    calls.insert(calls.end(),
                 {"OMR_GetLastError() = 0", "OMR_GetMarks(0, 200) = 1 [50]", "OMR_GetMarks(1, 200) = 1 [50]",
                  "OMR_GetBarcodeInfo() = 0 [" + std::to_string(barcodes.size()) + "]"});
    for (std::size_t j = 0; j < barcodes.size(); ++j) {
      calls.push_back("OMR_GetBarcodeData(" + std::to_string(j) + ") = 0 [" +
                      std::to_string(barcodes[j].size()) + ", \"" + barcodes[j] + "\"]");
    }
    calls.push_back((i + 1) % 5 == 0 ? "OMR_EjectSheet(2) = 0" : "OMR_EjectSheet(3) = 0");
  }
  calls.push_back("OMR_CloseDevice() = 0");
  return calls;
}

TEST_F(SekonicUsb, AScriptReadsTenTwoSidedSheetsWithTheirBarcodes) {
  // The script host lies in the system's folder, the server in this program's.
  for (const std::wstring& where : {SystemFolder(), ProgramFolder()}) {
    TearDown();
    folder = where;
    Install("whole");
    Script(kTenSheets);
    const Ended ended = RunScript(L"read.vbs", "\"Sekonic SR3500 (USB)\" 0 48 True 10 barcode");
    EXPECT_NE(std::string::npos, ended.output.find("10: 50 50\r\ndone")) << ended.output;
    EXPECT_EQ(ExpectedCalls(), Record());
  }
}

// A reader of type SR3500 with an error object.
struct Host {
  Host() : errors(new ErrorObject), reader(NewReader()) {
    tesk::test::Install(reader.Get(), errors.Get());
    VARIANT_BOOL done = VARIANT_FALSE;
    EXPECT_EQ(S_OK, reader->LoadDefaults(static_cast<::teskReaderType>(33), &done));
  }
  ~Host() { tesk::test::Install(reader.Get(), nullptr); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  bool Call(HRESULT (STDMETHODCALLTYPE _clsTeskReader::*method)(VARIANT_BOOL*)) {
    VARIANT_BOOL done = VARIANT_FALSE;
    (reader.Get()->*method)(&done);
    return done == VARIANT_TRUE;
  }
  bool Start() { return Call(&_clsTeskReader::StartReader); }
  bool End() { return Call(&_clsTeskReader::EndReader); }
  bool Read() {
    VARIANT_BOOL done = VARIANT_FALSE;
    reader->ReadPage(VARIANT_FALSE, &done);
    return done == VARIANT_TRUE;
  }

  ComPtr<ErrorObject> errors;
  ComPtr<_clsTeskReader> reader;
};

TEST_F(SekonicUsb, ErrorsOfTheScannerAndLiesOfTheLibraryReachTheHostInTheirExactWords) {
  std::istringstream table(tesk::test::TextOf(SourceFolder() + L"..\\data\\sekonic_usb_errors.tsv"));
  std::string code;
  std::string number;
  std::string text;
  std::getline(table, code, '\t') && std::getline(table, number, '\t') && std::getline(table, text);
  const struct {
    std::string fault;
    std::string report;
    std::string shown;  // its beginning
  } cases[] = {
      {"feed 1 " + code, number + " Quillon Reader - basSekonicSR.ReturnErrorSR " + text, ""},
      {"report OMR_GetMarks 1 100000", "", "Read Error: The Sekonic library OMRAPI.DLL returned data"},
      {"overrun OMR_GetMarks 1", "", "Read Error: The Sekonic library OMRAPI.DLL returned data"},
      {"answer OMR_GetNumberOfColumnsToRead 2 4800", "",
       "Read Error: The Sekonic library OMRAPI.DLL returned"}};
  for (const auto& [fault, report, shown] : cases) {
    Script("sheets 1 30 1\n" + fault);
    Host host;
    EXPECT_TRUE(host.Start());
    EXPECT_FALSE(host.Read()) << fault;
    host.End();
    EXPECT_EQ(report.empty() ? Lines() : Lines{report}, host.errors->reports);
    const Lines told = shown.empty() ? Lines() : Lines{shown};
    for (std::string& text : host.errors->shown) text.resize(std::min(text.size(), shown.size()));
    EXPECT_EQ(told, host.errors->shown) << fault;
  }
}

TEST_F(SekonicUsb, ALibraryThatIsMissingOrHalfThereIsShownAsAMissingFile) {
  Install("half");
  for (const bool half : {true, false}) {
    if (!half) DeleteFileW((ProgramFolder() + L"OMRAPI.DLL").c_str());
    Host host;
    EXPECT_FALSE(host.Start());
    ASSERT_EQ(1U, host.errors->shown.size());
    EXPECT_EQ(0U,
              host.errors->shown[0].find("Sekonic File Missing: Please obtain the OMRAPI.DLL file from your "
                                         "Sekonic scanner installation CD-ROM, close Quillon and then"))
        << host.errors->shown[0];
  }
}

}  // namespace
}  // namespace tesk::test
