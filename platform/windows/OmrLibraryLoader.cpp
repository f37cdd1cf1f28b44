// The library of the Sekonic USB readers: a DLL of the scanner maker's, loaded by name at run time.
#include "platform/OmrLibraryLoader.h"

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "platform/windows/Text.h"
#include "platform/windows/VisualStyles.h"
#include "platform/windows/WindowsApi.h"

namespace tesk::platform {
namespace {

constexpr const wchar_t* kLibrary = L"OMRAPI.DLL";

// The maker has it for 32-bit programs only.
constexpr bool kCanBeLoaded = sizeof(void*) == 4;
constexpr const char* kObstacle =
    "OMRAPI.DLL works in 32-bit programs only, and {0} is a 64-bit program here. Please use a 32-bit {0}. Or "
    "put "
    "OMRAPI.DLL into Windows\\SysWOW64 and register the 32-bit TeskReader99.dll, in place of the 64-bit one "
    "where {0} "
    "cannot choose: it then runs as a program of its own.";

// ---- The library's functions. Every argument takes 32 bits.

template <class... Arguments>
using Function = std::int32_t(__stdcall*)(Arguments...);

using Number = std::int32_t;

struct Functions {
  Function<> OpenDeviceUSB;
  Function<> CloseDevice;
  Function<> GetLastError;
  Function<Number*, Number*> GetReadingMethod;
  Function<Number, Number> SetReadingMethod;
  Function<> GetNumberOfColumnsToRead;
  Function<Number> SetNumberOfColumnsToRead;
  Function<Number> SetBackSensorUnit;
  Function<Number*, Number*> GetSheetFeedMode;
  Function<Number, Number> SetSheetFeedMode;
  Function<> GetBarcodeReaderUnit;
  Function<Number> SetBarcodeReaderUnit;
  Function<OmrBarcodeArea*> SetBarCodeArea;
  Function<Number> SetBarCodeReadType;
  Function<std::uint8_t, Number> SetBarCodeCheckDigit;
  Function<> FeedSheet;
  Function<Number, Number*, std::uint8_t*> GetMarks;
  Function<Number*, Number*> GetBarcodeInfo;
  Function<Number, Number*, Number*, char*> GetBarcodeData;
  Function<Number> EjectSheet;
  Function<Number, Number, Number> SetPrintOrder;
  Function<Number> SetPrintPosition;
  Function<Number, const char*> SetPrintString;
};

struct Unloader {
  void operator()(HMODULE module) const { ::FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, Unloader>;

// A library exports a function under its plain name, or under one that tells the bytes of its arguments.
template <class... Arguments>
bool Find(HMODULE module, const std::string& name, Function<Arguments...>& function) {
  const std::string bytes = "@" + std::to_string(4 * sizeof...(Arguments));
  FARPROC found = nullptr;
  for (const std::string& spelling : {name, "_" + name + bytes, name + bytes}) {
    if (found == nullptr) found = ::GetProcAddress(module, spelling.c_str());
  }
  function = reinterpret_cast<Function<Arguments...>>(reinterpret_cast<void*>(found));
  return found != nullptr;
}

bool FindAll(HMODULE module, Functions& f) {
  const auto find = [module](const char* name, auto& function) { return Find(module, name, function); };
  return find("OMR_OpenDeviceUSB", f.OpenDeviceUSB) && find("OMR_CloseDevice", f.CloseDevice) &&
         find("OMR_GetLastError", f.GetLastError) && find("OMR_GetReadingMethod", f.GetReadingMethod) &&
         find("OMR_SetReadingMethod", f.SetReadingMethod) &&
         find("OMR_GetNumberOfColumnsToRead", f.GetNumberOfColumnsToRead) &&
         find("OMR_SetNumberOfColumnsToRead", f.SetNumberOfColumnsToRead) &&
         find("OMR_SetBackSensorUnit", f.SetBackSensorUnit) &&
         find("OMR_GetSheetFeedMode", f.GetSheetFeedMode) &&
         find("OMR_SetSheetFeedMode", f.SetSheetFeedMode) &&
         find("OMR_GetBarcodeReaderUnit", f.GetBarcodeReaderUnit) &&
         find("OMR_SetBarcodeReaderUnit", f.SetBarcodeReaderUnit) &&
         find("OMR_SetBarCodeArea", f.SetBarCodeArea) &&
         find("OMR_SetBarCodeReadType", f.SetBarCodeReadType) &&
         find("OMR_SetBarCodeCheckDigit", f.SetBarCodeCheckDigit) && find("OMR_FeedSheet", f.FeedSheet) &&
         find("OMR_GetMarks", f.GetMarks) && find("OMR_GetBarcodeInfo", f.GetBarcodeInfo) &&
         find("OMR_GetBarcodeData", f.GetBarcodeData) && find("OMR_EjectSheet", f.EjectSheet) &&
         find("OMR_SetPrintOrder", f.SetPrintOrder) && find("OMR_SetPrintPosition", f.SetPrintPosition) &&
         find("OMR_SetPrintString", f.SetPrintString);
}

class LoadedLibrary : public OmrLibrary {
 public:
  LoadedLibrary(Module module, const Functions& functions) : module_(std::move(module)), f_(functions) {}

  Number OMR_OpenDeviceUSB() override { return f_.OpenDeviceUSB(); }
  Number OMR_CloseDevice() override { return f_.CloseDevice(); }
  Number OMR_GetLastError() override { return f_.GetLastError(); }
  Number OMR_GetReadingMethod(Number& method, Number& parameter) override {
    return f_.GetReadingMethod(&method, &parameter);
  }
  Number OMR_SetReadingMethod(Number method, Number parameter) override {
    return f_.SetReadingMethod(method, parameter);
  }
  Number OMR_GetNumberOfColumnsToRead() override { return f_.GetNumberOfColumnsToRead(); }
  Number OMR_SetNumberOfColumnsToRead(Number columns) override {
    return f_.SetNumberOfColumnsToRead(columns);
  }
  Number OMR_SetBackSensorUnit(Number use) override { return f_.SetBackSensorUnit(use); }
  Number OMR_GetSheetFeedMode(Number& mode, Number& parameter) override {
    return f_.GetSheetFeedMode(&mode, &parameter);
  }
  Number OMR_SetSheetFeedMode(Number mode, Number parameter) override {
    return f_.SetSheetFeedMode(mode, parameter);
  }
  Number OMR_GetBarcodeReaderUnit() override { return f_.GetBarcodeReaderUnit(); }
  Number OMR_SetBarcodeReaderUnit(Number use) override { return f_.SetBarcodeReaderUnit(use); }
  Number OMR_SetBarCodeArea(const OmrBarcodeArea& area) override {
    OmrBarcodeArea own = area;  // the library may write to it
    return f_.SetBarCodeArea(&own);
  }
  Number OMR_SetBarCodeReadType(Number type) override { return f_.SetBarCodeReadType(type); }
  Number OMR_SetBarCodeCheckDigit(std::uint8_t code, Number check) override {
    return f_.SetBarCodeCheckDigit(code, check);
  }
  Number OMR_FeedSheet() override { return f_.FeedSheet(); }
  Number OMR_GetMarks(Number side, Number& rows, std::span<std::uint8_t> marks) override {
    return f_.GetMarks(side, &rows, marks.data());
  }
  Number OMR_GetBarcodeInfo(std::span<Number> information, Number& count) override {
    return f_.GetBarcodeInfo(information.data(), &count);
  }
  Number OMR_GetBarcodeData(Number index, Number& length, Number& value, std::span<char> text) override {
    return f_.GetBarcodeData(index, &length, &value, text.data());
  }
  Number OMR_EjectSheet(Number stacker) override { return f_.EjectSheet(stacker); }
  Number OMR_SetPrintOrder(Number first, Number second, Number third) override {
    return f_.SetPrintOrder(first, second, third);
  }
  Number OMR_SetPrintPosition(Number position) override { return f_.SetPrintPosition(position); }
  Number OMR_SetPrintString(Number line, const std::string& ansi) override {
    return f_.SetPrintString(line, ansi.c_str());
  }

  std::string ToAnsi(std::string_view utf8) const override { return Utf8ToAnsi(utf8); }
  std::string FromAnsi(std::string_view ansi) const override { return AnsiToUtf8(ansi); }

 private:
  Module module_;
  Functions f_;
};

// ---- Finding it

std::wstring SystemFolder() {
  std::wstring folder(::GetSystemDirectoryW(nullptr, 0), L'\0');
  folder.resize(::GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size())));
  return folder;
}

// The folder of a module, the program's where it is null; empty where it cannot be told.
std::wstring FolderOf(HMODULE module) {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      const auto end = path.find_last_of(L'\\', length);
      return path.substr(0, end == std::wstring::npos ? 0 : end);
    }
    path.resize(path.size() * 2);
  }
}

// What the library itself needs comes from its own folder and the system's, not from the current folder or
// the search path. Systems that do not know these flags take the older one, which puts its own folder first.
Module LoadFrom(const std::wstring& folder) {
  if (folder.empty()) return nullptr;
  const std::wstring path = folder + L"\\" + kLibrary;
  HMODULE module = ::LoadLibraryExW(path.c_str(), nullptr,
                                    LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (module == nullptr && ::GetLastError() == ERROR_INVALID_PARAMETER) {
    module = ::LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  }
  return Module(module);
}

class SystemLoader : public OmrLibraryLoader {
 public:
  std::shared_ptr<OmrLibrary> Load() override { return kCanBeLoaded ? LoadFromFolders() : nullptr; }
  std::string Obstacle() const override { return kCanBeLoaded ? "" : kObstacle; }

 private:
  static std::shared_ptr<OmrLibrary> LoadFromFolders() {
    // A library that lacks something it needs is not there; the system's own box about it is kept away.
    DWORD before = 0;
    ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before);
    std::shared_ptr<OmrLibrary> library;
    for (const std::wstring& folder : {SystemFolder(), FolderOf(nullptr), FolderOf(OwnModule())}) {
      if (!library) library = Complete(LoadFrom(folder));
    }
    ::SetThreadErrorMode(before, nullptr);
    return library;
  }

  static std::shared_ptr<OmrLibrary> Complete(Module module) {
    Functions functions{};
    if (!module || !FindAll(module.get(), functions)) return nullptr;
    return std::make_shared<LoadedLibrary>(std::move(module), functions);
  }
};

}  // namespace

std::shared_ptr<OmrLibraryLoader> CreateOmrLibraryLoader() { return std::make_shared<SystemLoader>(); }

bool SystemHasOmrLibrary() { return kCanBeLoaded; }

}  // namespace tesk::platform
