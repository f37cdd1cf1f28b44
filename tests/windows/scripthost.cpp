// A script host for tests: runs a VBScript or JScript file with the system's engine and offers it an object
// WScript with Echo, Sleep, Quit and CreateObject, whose second argument connects the object's events to the
// script's procedures of that prefix. It has no opinion: arguments travel as they come, references as
// variants, since the engines write through those alone.
#include <cstdio>
#include <deque>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "automation/Com.h"
//
#include <initguid.h>
//
#include <activscp.h>

namespace {

using tesk::automation::ComPtr;

// A reference-counted object of the host's that lives as long as the program.
template <class Interface>
class Standing : public Interface {
 public:
  explicit Standing(REFIID id) : id_(id) {}
  virtual ~Standing() = default;
  STDMETHODIMP QueryInterface(REFIID id, void** object) override {
    *object = id == IID_IUnknown || id == id_ ? static_cast<Interface*>(this) : nullptr;
    return *object != nullptr ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

 private:
  IID id_;
};

class Dispatched : public Standing<IDispatch> {
 public:
  using Standing::Standing;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
};

struct Script {
  ComPtr<IActiveScript> engine;
  bool failed = false;
  int status = 0;
};

Script script;

// Events of one object, to the procedures PREFIX + event name.
class Events final : public Dispatched {
 public:
  Events(IID id, ComPtr<ITypeInfo> info, std::wstring prefix)
      : Dispatched(IID_IDispatch), eventId_(id), info_(std::move(info)), prefix_(std::move(prefix)) {}

  STDMETHODIMP QueryInterface(REFIID id, void** object) override {
    if (id != eventId_) return Dispatched::QueryInterface(id, object);
    *object = static_cast<IDispatch*>(this);
    return S_OK;
  }

  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                      UINT*) override {
    ComPtr<IDispatch> procedures;
    DISPID procedure = DISPID_UNKNOWN;
    std::wstring name = prefix_ + NameOf(id);
    wchar_t* names = name.data();
    if (FAILED(script.engine->GetScriptDispatch(nullptr, &procedures)) ||
        FAILED(procedures->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &procedure))) {
      return DISP_E_MEMBERNOTFOUND;
    }
    std::vector<VARIANT> values(given->cArgs);
    std::vector<VARIANT> references(given->cArgs);
    for (UINT i = 0; i < given->cArgs; ++i) {
      VariantCopyInd(&values[i], &given->rgvarg[i]);
      references[i].vt = VT_BYREF | VT_VARIANT;
      references[i].pvarVal = &values[i];
    }
    DISPPARAMS passed = {references.data(), nullptr, given->cArgs, 0};
    const HRESULT status = procedures->Invoke(procedure, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                              &passed, nullptr, nullptr, nullptr);
    for (UINT i = 0; i < given->cArgs; ++i) {
      WriteBack(given->rgvarg[i], values[i]);
      VariantClear(&values[i]);
    }
    return status;
  }

 private:
  std::wstring NameOf(DISPID id) {
    BSTR name = nullptr;
    info_->GetDocumentation(id, &name, nullptr, nullptr, nullptr);
    std::wstring text = name != nullptr ? name : L"";
    SysFreeString(name);
    return text;
  }

  static void WriteBack(VARIANT& target, VARIANT& value) {
    if (target.vt == (VT_BYREF | VT_BOOL)) {
      if (SUCCEEDED(VariantChangeType(&value, &value, 0, VT_BOOL))) *target.pboolVal = value.boolVal;
    } else if (target.vt == (VT_BYREF | VT_I2)) {
      if (SUCCEEDED(VariantChangeType(&value, &value, 0, VT_I2))) *target.piVal = value.iVal;
    }
  }

  IID eventId_;
  ComPtr<ITypeInfo> info_;
  std::wstring prefix_;
};

void Connect(IDispatch* object, const std::wstring& prefix) {
  static std::deque<Events> all;
  ComPtr<IProvideClassInfo2> described;
  ComPtr<IConnectionPointContainer> container;
  ComPtr<IConnectionPoint> point;
  ComPtr<ITypeInfo> info;
  ComPtr<ITypeInfo> events;
  ComPtr<ITypeLib> library;
  UINT index = 0;
  IID id = {};
  DWORD cookie = 0;
  if (FAILED(object->QueryInterface(IID_IProvideClassInfo2, &described)) ||
      FAILED(described->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id)) ||
      FAILED(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info)) ||
      FAILED(info->GetContainingTypeLib(&library, &index)) ||
      FAILED(library->GetTypeInfoOfGuid(id, &events)) ||
      FAILED(object->QueryInterface(IID_IConnectionPointContainer, &container)) ||
      FAILED(container->FindConnectionPoint(id, &point))) {
    std::printf("the object has no events\n");
    script.failed = true;
    return;
  }
  point->Advise(static_cast<IDispatch*>(&all.emplace_back(id, events, prefix)), &cookie);
}

void Sleep(DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  while (GetTickCount64() < end) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    ::Sleep(1);
  }
}

class WScript final : public Dispatched {
 public:
  WScript() : Dispatched(IID_IDispatch) {}

  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
    const wchar_t* known[] = {L"Echo", L"Sleep", L"Quit", L"CreateObject"};
    for (DISPID id = 1; id <= 4; ++id) {
      if (lstrcmpiW(names[0], known[id - 1]) == 0) return ids[0] = id, S_OK;
    }
    return DISP_E_UNKNOWNNAME;
  }

  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT* result, EXCEPINFO*,
                      UINT*) override {
    if (given->cArgs == 0) return DISP_E_BADPARAMCOUNT;
    const VARTYPE type = id == 1 || id == 4 ? VT_BSTR : VT_I4;
    VARIANT first = {};
    if (FAILED(VariantChangeType(&first, &given->rgvarg[given->cArgs - 1], 0, type)))
      return DISP_E_TYPEMISMATCH;
    HRESULT status = S_OK;
    if (id == 1) std::printf("%ls\n", first.bstrVal);
    if (id == 2) Sleep(static_cast<DWORD>(first.lVal));
    if (id == 3) script.status = first.lVal;
    if (id == 4) status = CreateObject(first.bstrVal, *given, result);
    VariantClear(&first);
    return status;
  }

 private:
  static HRESULT CreateObject(const wchar_t* name, const DISPPARAMS& given, VARIANT* result) {
    CLSID id = {};
    ComPtr<IDispatch> object;
    HRESULT status = CLSIDFromProgID(name, &id);
    if (SUCCEEDED(status))
      status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
    if (FAILED(status)) return status;
    if (given.cArgs == 2 && given.rgvarg[0].vt == VT_BSTR) Connect(object.Get(), given.rgvarg[0].bstrVal);
    if (result != nullptr) {
      result->vt = VT_DISPATCH;
      result->pdispVal = object.Detach();
    }
    return S_OK;
  }
};

WScript wscript;

class Site final : public Standing<IActiveScriptSite> {
 public:
  Site() : Standing(IID_IActiveScriptSite) {}
  STDMETHODIMP GetLCID(LCID* locale) override { return *locale = LOCALE_USER_DEFAULT, S_OK; }
  STDMETHODIMP GetItemInfo(LPCOLESTR, DWORD wanted, IUnknown** item, ITypeInfo**) override {
    if ((wanted & SCRIPTINFO_IUNKNOWN) != 0) *item = &wscript;
    return S_OK;
  }
  STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
  STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
  STDMETHODIMP OnScriptError(IActiveScriptError* error) override {
    EXCEPINFO exception = {};
    DWORD context = 0;
    ULONG line = 0;
    LONG column = 0;
    error->GetExceptionInfo(&exception);
    error->GetSourcePosition(&context, &line, &column);
    std::printf("error %08lX in line %lu: %ls\n", static_cast<unsigned long>(exception.scode), line + 1,
                exception.bstrDescription != nullptr ? exception.bstrDescription : L"");
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    script.failed = true;
    return S_OK;
  }
  STDMETHODIMP OnEnterScript() override { return S_OK; }
  STDMETHODIMP OnLeaveScript() override { return S_OK; }
};

Site site;

HRESULT RunFile(const std::wstring& path) {
  std::ifstream file(path.c_str(), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  const std::wstring text(bytes.begin(), bytes.end());
  const bool isJScript = path.size() > 3 && path.substr(path.size() - 3) == L".js";
  CLSID id = {};
  ComPtr<IActiveScriptParse> parser;
  HRESULT status = CLSIDFromProgID(isJScript ? L"JScript" : L"VBScript", &id);
  if (SUCCEEDED(status)) {
    status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript,
                              reinterpret_cast<void**>(script.engine.GetAddressOf()));
  }
  if (FAILED(status)) return status;
  script.engine->SetScriptSite(&site);
  status = script.engine->QueryInterface(IID_IActiveScriptParse, &parser);
  if (FAILED(status) || FAILED(parser->InitNew())) return E_FAIL;
  script.engine->AddNamedItem(L"WScript", SCRIPTITEM_ISVISIBLE);
  script.engine->SetScriptState(SCRIPTSTATE_STARTED);
  status = parser->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, SCRIPTTEXT_ISVISIBLE,
                                   nullptr, nullptr);
  parser.Reset();
  script.engine->Close();
  script.engine.Reset();
  return status;
}

}  // namespace

int wmain(int count, wchar_t** words) {
  if (count != 2 || FAILED(CoInitialize(nullptr))) return 2;
  const HRESULT status = RunFile(words[1]);
  std::fflush(stdout);
  CoUninitialize();
  return FAILED(status) || script.failed ? 1 : script.status;
}
