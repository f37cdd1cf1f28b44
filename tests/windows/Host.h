// A host in the test program: objects that it hands to the server, event sinks, child programs, and the
// server's registration around all tests.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "TeskReader99.h"
#include "automation/Com.h"
#include "automation/HostCalls.h"
#include "automation/Values.h"

namespace tesk::test {

using automation::ComPtr;
using automation::Variant;

// An object of the host's with members by name. Handlers get the arguments in the order of the call.
class HostDispatch : public IDispatch {
 public:
  using Arguments = std::vector<VARIANT*>;
  using Handler = std::function<HRESULT(WORD flags, const Arguments& arguments, VARIANT* result)>;

  HostDispatch() { ++living; }
  virtual ~HostDispatch() { --living; }
  HostDispatch(const HostDispatch&) = delete;
  HostDispatch& operator=(const HostDispatch&) = delete;

  // id: 0 takes the next free one.
  void On(const std::wstring& name, Handler handler, DISPID id = 0);
  // A property that holds a value.
  void Holds(const std::wstring& name, VARIANT& value);

  STDMETHODIMP QueryInterface(REFIID id, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references_); }
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT*) override;

  bool elsewhere = false;         // seems to be a proxy of an object in another process
  IID answersTo = IID_IDispatch;  // an event sink also answers to its event interface
  std::set<DWORD> calledOn;       // the threads that members were called on
  static std::atomic<int> living;

 private:
  std::map<std::wstring, DISPID> ids_;
  std::map<DISPID, Handler> handlers_;
  std::atomic<LONG> references_ = 0;
};

// A sink of the engine's events: notes every name, then runs the handler of that event if there is one.
class EventSink : public HostDispatch {
 public:
  EventSink();
  void Connect(IUnknown* reader);
  void Disconnect();

  std::vector<std::string> names;
  std::map<std::string, std::function<void(const Arguments&)>> handlers;

 private:
  ComPtr<IConnectionPoint> point_;
  DWORD cookie_ = 0;
};

// What the library reports and shows while it lives. Without it messages would go to a box on the screen.
class ErrorObject : public HostDispatch {
 public:
  ErrorObject();
  std::vector<std::string> reports;  // "NUMBER SOURCE MESSAGE"
  std::vector<std::string> shown;    // "TITLE: TEXT"
  std::map<std::string, std::string> translations;
  Variant silent{false};
};

ComPtr<_clsTeskReader> NewReader();
bool SetSizes(_clsTeskReader* reader, HRESULT (STDMETHODCALLTYPE _clsTeskReader::*put)(SAFEARRAY**),
              std::int16_t size);
void Install(_clsTeskReader* reader, IDispatch* errorObject);
LONG LivingObjects();  // of the server

// Where objects are created.
inline DWORD serverContext = CLSCTX_INPROC_SERVER;

template <class Interface>
ComPtr<Interface> Create(REFCLSID id) {
  ComPtr<Interface> object;
  CoCreateInstance(id, nullptr, serverContext, __uuidof(Interface), &object);
  return object;
}

// The values of a 16-bit array of one or two dimensions as they lie, with its bounds: "1..2 1..3: 1 2 3".
std::string Described(const VARIANT& array);

struct Ended {
  DWORD status;
  std::string output;
};
Ended RunProgram(const std::wstring& command);
// A script of the folder scripts, by the system's script host, or by that of a folder (with a backslash at its end).
Ended RunScript(const std::wstring& name, const std::string& words, const std::wstring& folder = L"");

std::wstring ProgramFolder();    // of this program, with a backslash at its end
std::wstring ServerPath();       // of the DLL beside it
std::wstring SourceFolder();     // tests/windows, with a backslash at its end
bool RegisterServer(bool undo);  // by regsvr32

// Runs the thread's messages for a while.
void Pump(int milliseconds);

// Runs every body on a thread and in an apartment of its own, all at once; this thread takes calls meanwhile.
void RunInApartments(const std::vector<std::function<void()>>& bodies);

}  // namespace tesk::test
