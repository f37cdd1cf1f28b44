// The host's side.
#include "tests/windows/Host.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "platform/windows/Text.h"

namespace tesk::test {

std::atomic<int> HostDispatch::living = 0;

void HostDispatch::On(const std::wstring& name, Handler handler, DISPID id) {
  const DISPID given = id != 0 ? id : static_cast<DISPID>(1000 + ids_.size());
  ids_[name] = given;
  handlers_[given] = std::move(handler);
}

void HostDispatch::Holds(const std::wstring& name, VARIANT& value) {
  On(name, [&value](WORD flags, const Arguments& arguments, VARIANT* result) {
    if ((flags & DISPATCH_PROPERTYPUT) != 0) return VariantCopy(&value, arguments.at(0));
    return VariantCopy(result, &value);
  });
}

STDMETHODIMP HostDispatch::QueryInterface(REFIID id, void** object) {
  const bool known = id == IID_IUnknown || id == IID_IDispatch || id == answersTo ||
                     (elsewhere && id == IID_IClientSecurity);
  *object = known ? static_cast<IDispatch*>(this) : nullptr;
  if (known) AddRef();
  return known ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) HostDispatch::Release() {
  const LONG left = --references_;
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

STDMETHODIMP HostDispatch::GetTypeInfoCount(UINT* count) {
  *count = 0;
  return S_OK;
}

STDMETHODIMP HostDispatch::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) {
  const auto found = ids_.find(names[0]);
  ids[0] = found != ids_.end() ? found->second : DISPID_UNKNOWN;
  return found != ids_.end() ? S_OK : DISP_E_UNKNOWNNAME;
}

STDMETHODIMP HostDispatch::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                  VARIANT* result, EXCEPINFO* exception, UINT*) {
  const auto found = handlers_.find(id);
  if (found == handlers_.end()) return DISP_E_MEMBERNOTFOUND;
  calledOn.insert(GetCurrentThreadId());
  Arguments arguments;
  for (UINT i = parameters->cArgs; i > 0; --i) arguments.push_back(&parameters->rgvarg[i - 1]);
  const ComPtr<IDispatch> kept(this);
  const Handler handler = found->second;
  const HRESULT status = handler(flags, arguments, result);
  if (status == DISP_E_EXCEPTION && exception != nullptr) {
    *exception = {};
    exception->scode = static_cast<SCODE>(0x800A0005);
    exception->bstrDescription = SysAllocString(L"the host's own error");
  }
  return status;
}

// ---- Events

EventSink::EventSink() {
  answersTo = DIID___clsTeskReader;
  const char* events[] = {"BeforeSheet", "PreprocessSheet", "ReadSheet",     "AfterSheet",
                          "BeforePrint", "AfterPrint",      "TranslateData", "GetQuestionsOnPage"};
  DISPID id = 1;
  for (const char* event : events) {
    On(
        platform::Utf8ToWide(event),
        [this, event](WORD, const Arguments& arguments, VARIANT*) {
          names.emplace_back(event);
          const auto handler = handlers.find(event);
          if (handler != handlers.end()) handler->second(arguments);
          return S_OK;
        },
        id++);
  }
}

void EventSink::Connect(IUnknown* reader) {
  ComPtr<IConnectionPointContainer> container;
  ASSERT_EQ(S_OK, reader->QueryInterface(IID_PPV_ARGS(&container)));
  ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID___clsTeskReader, &point_));
  ASSERT_EQ(S_OK, point_->Advise(static_cast<IDispatch*>(this), &cookie_));
}

void EventSink::Disconnect() {
  if (point_) point_->Unadvise(cookie_);
  point_.Reset();
}

// ---- The error object

ErrorObject::ErrorObject() {
  const auto text = [](VARIANT* value) { return automation::TextOf(*value); };
  On(L"LoadString", [this, text](WORD, const Arguments& arguments, VARIANT* result) {
    const std::string key = text(arguments.at(0));
    const auto found = translations.find(key);
    result->vt = VT_BSTR;
    result->bstrVal = automation::NewText(found != translations.end() ? found->second : key);
    return S_OK;
  });
  On(L"MsgBoxEx", [this, text](WORD, const Arguments& arguments, VARIANT*) {
    shown.push_back(text(arguments.at(0)) + ": " + text(arguments.at(1)));
    return S_OK;
  });
  On(L"RaiseError", [this, text](WORD, const Arguments& arguments, VARIANT*) {
    reports.push_back(text(arguments.at(1)) + " " + text(arguments.at(2)) + " " + text(arguments.at(3)));
    return S_OK;
  });
  Holds(L"Silent", silent);
}

ComPtr<_clsTeskReader> NewReader() { return Create<_clsTeskReader>(CLSID_clsTeskReader); }

bool SetSizes(_clsTeskReader* reader, HRESULT (STDMETHODCALLTYPE _clsTeskReader::*put)(SAFEARRAY**),
              std::int16_t size) {
  Variant sizes;
  sizes.parray = automation::NewArray(Int16Array({size}));
  sizes.vt = VT_ARRAY | VT_I2;
  return SUCCEEDED((reader->*put)(&sizes.parray));
}

void Install(_clsTeskReader* reader, IDispatch* errorObject) {
  VARIANT_BOOL installed = VARIANT_FALSE;
  ASSERT_EQ(S_OK, reader->SetError(&errorObject, &installed));
  ASSERT_EQ(errorObject != nullptr ? VARIANT_TRUE : VARIANT_FALSE, installed);
}

LONG LivingObjects() {
  const HMODULE server = GetModuleHandleW(L"TeskReader99.dll");
  if (server == nullptr) return 0;
  const auto count = reinterpret_cast<LONG(WINAPI*)()>(
      reinterpret_cast<void*>(GetProcAddress(server, "TeskReader99LivingObjects")));
  return count != nullptr ? count() : -1;
}

// ---- Arrays

std::string Described(const VARIANT& array) {
  const Variant direct = automation::Dereferenced(array);
  if (direct.vt != (VT_ARRAY | VT_I2)) return "no array";
  std::string text;
  std::size_t count = 1;
  for (UINT dimension = 1; dimension <= SafeArrayGetDim(direct.parray); ++dimension) {
    LONG lower = 0;
    LONG upper = 0;
    SafeArrayGetLBound(direct.parray, dimension, &lower);
    SafeArrayGetUBound(direct.parray, dimension, &upper);
    text += (dimension > 1 ? " " : "") + NumberText(static_cast<std::int32_t>(lower)) + ".." +
            NumberText(static_cast<std::int32_t>(upper));
    count *= static_cast<std::size_t>(upper - lower + 1);
  }
  text += ":";
  const auto* values = static_cast<const std::int16_t*>(direct.parray->pvData);
  for (std::size_t i = 0; i < count; ++i) text += " " + NumberText(std::int32_t{values[i]});
  return text;
}

// ---- Programs

// Its output goes to a file: a process that it leaves behind would keep a pipe open.
Ended RunProgram(const std::wstring& command) {
  const std::wstring path = ProgramFolder() + L"output-" + std::to_wstring(GetCurrentProcessId()) + L".txt";
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  const HANDLE output =
      CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  &inherited, CREATE_ALWAYS, 0, nullptr);
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = output;
  start.hStdError = output;
  PROCESS_INFORMATION process = {};
  std::wstring line = command;
  const BOOL started =
      CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
  CloseHandle(output);
  Ended ended = {MAXDWORD, "not started"};
  if (started) {
    WaitForSingleObject(process.hProcess, 60'000);
    GetExitCodeProcess(process.hProcess, &ended.status);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    std::ifstream file(platform::WideToUtf8(path), std::ios::binary);
    ended.output.assign(std::istreambuf_iterator<char>(file), {});
  }
  DeleteFileW(path.c_str());
  return ended;
}

Ended RunScript(const std::wstring& name, const std::string& words, const std::wstring& folder) {
  return RunProgram(folder + L"cscript //nologo \"" + SourceFolder() + L"scripts\\" + name + L"\" " +
                    platform::Utf8ToWide(words));
}

std::wstring ProgramFolder() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\') + 1);
}

std::wstring ServerPath() { return ProgramFolder() + L"TeskReader99.dll"; }

// The sources lie on the build machine, which is drive Z.
std::wstring SourceFolder() {
  std::wstring folder = platform::Utf8ToWide("Z:" TESKREAD_TEST_FOLDER "\\");
  std::replace(folder.begin(), folder.end(), L'/', L'\\');
  return folder;
}

bool RegisterServer(bool undo) {
  const std::wstring option = undo ? L"/u " : L"";
  return RunProgram(L"regsvr32 /s " + option + L"\"" + ServerPath() + L"\"").status == 0;
}

void Pump(int milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (std::chrono::steady_clock::now() < end) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    Sleep(1);
  }
}

void RunInApartments(const std::vector<std::function<void()>>& bodies) {
  std::atomic<std::size_t> ended = 0;
  std::atomic<std::size_t> ready = 0;
  std::vector<std::thread> threads;
  for (const auto& body : bodies) {
    threads.emplace_back([&] {
      EXPECT_EQ(S_OK, CoInitialize(nullptr));
      for (++ready; ready < bodies.size();) Sleep(0);
      body();
      CoUninitialize();
      ++ended;
    });
  }
  while (ended < bodies.size()) Pump(1);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace tesk::test
