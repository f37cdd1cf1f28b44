// Where the maker's library of the Sekonic USB readers is looked for, and which library is good enough.
#include <string>

#include <gtest/gtest.h>

#include "platform/OmrLibraryLoader.h"
#include "platform/windows/Text.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

std::wstring VariantFolder(const char* variant) {
  std::wstring folder = Utf8ToWide(std::string("Z:" TESKREAD_OMRAPI "/") + variant);
  for (wchar_t& c : folder) c = c == L'/' ? L'\\' : c;
  return folder;
}

std::wstring ProgramFolder() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\'));
}

std::wstring SystemFolder() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetSystemDirectoryW(path.data(), static_cast<UINT>(path.size())));
  return path;
}

// A library in a folder for as long as this lives.
class Installed {
 public:
  Installed(const char* variant, const std::wstring& folder) : path_(folder + L"\\OMRAPI.DLL") {
    EXPECT_TRUE(CopyFileW((VariantFolder(variant) + L"\\OMRAPI.DLL").c_str(), path_.c_str(), TRUE));
  }
  Installed(const Installed&) = delete;
  Installed& operator=(const Installed&) = delete;
  ~Installed() { EXPECT_TRUE(DeleteFileW(path_.c_str())) << "still loaded"; }

 private:
  std::wstring path_;
};

bool Loads() { return CreateOmrLibraryLoader()->Load() != nullptr; }

TEST(OmrLibraryOnWindows, IsTakenFromTheSystemsAndTheProgramsFolderAlone) {
  wchar_t before[MAX_PATH];
  GetCurrentDirectoryW(MAX_PATH, before);
  ASSERT_TRUE(SetCurrentDirectoryW(VariantFolder("whole").c_str()));
  const std::string path = Environment("PATH");
  SetEnvironmentVariableW(L"PATH", VariantFolder("whole").c_str());
  EXPECT_FALSE(Loads()) << "found in the current folder or on the search path";
  SetEnvironmentVariableW(L"PATH", Utf8ToWide(path).c_str());
  SetCurrentDirectoryW(before);
  for (const std::wstring& folder : {SystemFolder(), ProgramFolder()}) {
    const Installed installed("whole", folder);
    EXPECT_TRUE(Loads());
  }
  EXPECT_FALSE(Loads()) << "it was not released";
}

TEST(OmrLibraryOnWindows, IsThereOnlyWithAllItsFunctions) {
  {
    const Installed installed("half", ProgramFolder());
    EXPECT_FALSE(Loads());
  }
  const Installed half("half", SystemFolder());
  const Installed whole("whole", ProgramFolder());
  EXPECT_TRUE(Loads()) << "half a library hides a whole one";
}

TEST(OmrLibraryOnWindows, FunctionsArriveUnderEitherSpellingWithTheirArguments) {
  for (const char* variant : {"whole", "decorated"}) {
    const std::wstring script = ProgramFolder() + L"\\OMRAPI.test.script";
    const HANDLE file = CreateFileW(script.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    const std::string text = "reading-method 2 -7\nsheets 1 3 1\nno-barcodes 1\nbarcode 1 4711\n";
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    CloseHandle(file);
    SetEnvironmentVariableW(L"OMRAPI_SCRIPT", script.c_str());
    SetEnvironmentVariableW(L"OMRAPI_RECORD", L"NUL");
    const Installed installed(variant, ProgramFolder());
    {
      const auto library = CreateOmrLibraryLoader()->Load();
      ASSERT_NE(library, nullptr) << variant;
      std::int32_t method = 0;
      std::int32_t parameter = 0;
      EXPECT_EQ(library->OMR_OpenDeviceUSB(), 0);
      EXPECT_EQ(library->OMR_GetReadingMethod(method, parameter), 0);
      EXPECT_EQ(method, 2);
      EXPECT_EQ(parameter, -7);
      EXPECT_EQ(library->OMR_SetBarCodeArea({}), 1);
      EXPECT_EQ(library->OMR_SetBarCodeCheckDigit(97, 0), 0);
      EXPECT_EQ(library->OMR_FeedSheet(), 0);
      std::array<std::uint8_t, 9600> marks{};
      std::int32_t rows = 200;
      EXPECT_EQ(library->OMR_GetMarks(0, rows, marks), 1);
      EXPECT_EQ(rows, 3);
      std::array<char, 256> barcode{};
      std::int32_t length = 0;
      std::int32_t value = 0;
      EXPECT_EQ(library->OMR_GetBarcodeData(0, length, value, barcode), 0);
      EXPECT_STREQ(barcode.data(), "4711");
      EXPECT_EQ(library->OMR_SetPrintOrder(1, 2, 3), 1);
      EXPECT_EQ(library->OMR_SetPrintString(1, library->ToAnsi("\xC3\xA4")), 1);
      EXPECT_EQ(library->FromAnsi("\xE4"), "\xC3\xA4");
      EXPECT_EQ(library->OMR_CloseDevice(), 0);
    }
    DeleteFileW(script.c_str());
  }
}

}  // namespace
}  // namespace tesk::platform
