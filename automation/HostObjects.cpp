// Kept references, and the error object.
#include "automation/HostObjects.h"

#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::automation {
namespace {

class HostWindow : public HostObject {
 public:
  explicit HostWindow(std::intptr_t handle) : handle_(handle) {}
  std::intptr_t WindowHandle() const override { return handle_; }

 private:
  std::intptr_t handle_;
};

// The one of the process, which every thread may use.
ComPtr<IGlobalInterfaceTable> SharedInterfaces() {
  ComPtr<IGlobalInterfaceTable> table;
  CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER, IID_IGlobalInterfaceTable,
                   &table);
  return table;
}

}  // namespace

HostReference::~HostReference() {
  if (ProcessEnds()) object_.Detach();
}

std::intptr_t HostReference::WindowHandle() const {
  std::intptr_t handle = 0;
  Attempt([&] { handle = Int32Of(GetProperty(*object_.Get(), L"hWnd")); });
  return handle;
}

SharedReference::SharedReference(IDispatch* object) {
  const auto table = SharedInterfaces();
  if (!table || FAILED(table->RegisterInterfaceInGlobal(object, IID_IDispatch, &cookie_))) {
    throw RunTimeError(kErrorInternal, "The object cannot be called from other threads");
  }
}

SharedReference::~SharedReference() {
  if (ProcessEnds()) return;
  if (const auto table = SharedInterfaces()) table->RevokeInterfaceFromGlobal(cookie_);
}

ComPtr<IDispatch> SharedReference::Here() const {
  ComPtr<IDispatch> object;
  const auto table = SharedInterfaces();
  if (!table || FAILED(table->GetInterfaceFromGlobal(cookie_, IID_PPV_ARGS(&object)))) throw ObjectNotSet();
  return object;
}

std::shared_ptr<HostObject> WindowOwnerOf(const VARIANT& value) {
  if (LeftOut(value)) return nullptr;
  const Variant direct = Dereferenced(value);
  switch (direct.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return nullptr;
    case VT_DISPATCH:
    case VT_UNKNOWN: {
      if (direct.punkVal == nullptr) return nullptr;
      return std::make_shared<HostReference>(Converted(direct, VT_DISPATCH).pdispVal);
    }
    default:
      return std::make_shared<HostWindow>(Int32Of(direct));
  }
}

HostErrorObject::HostErrorObject(IDispatch* object) : object_(object) {
  for (const wchar_t* name : {L"LoadString", L"RaiseError", L"Silent"}) {
    if (!HasMember(*object, name)) throw TypeMismatch();
  }
}

std::string HostErrorObject::LoadString(const std::string& text) {
  std::string translated = text;
  Attempt([&] {
    const Variant key(text);
    translated = TextOf(CallMethod(*object_.Here().Get(), L"LoadString", {&key}));
  });
  return translated;
}

bool HostErrorObject::MsgBoxEx(const std::string& title, const std::string& text) {
  bool shown = false;
  Attempt([&] {
    const auto object = object_.Here();
    if (!HasMember(*object.Get(), L"MsgBoxEx")) return;
    const Variant titleValue(title);
    const Variant textValue(text);
    const Variant buttons(std::string("&OK"));
    CallMethod(*object.Get(), L"MsgBoxEx", {&titleValue, &textValue, &buttons});
    shown = true;
  });
  return shown;
}

void HostErrorObject::RaiseError(const ErrorReport& report) {
  const auto failure = Attempt([&] {
    const Variant line(report.line);
    const Variant number(report.number);
    const Variant source(report.source);
    const Variant message(report.message);
    const Variant title(report.title);
    CallMethod(*object_.Here().Get(), L"RaiseError", {&line, &number, &source, &message, &title});
  });
  if (failure) {
    OwnBox()->Show(report.title, "Error# " + NumberText(report.number) + ", Location: " + report.source +
                                     "|" + report.message);
  }
}

bool HostErrorObject::Silent() const {
  bool silent = false;
  Attempt([&] { silent = BooleanOf(GetProperty(*object_.Here().Get(), L"Silent")); });
  return silent;
}

void HostErrorObject::SetSilent(bool silent) {
  Attempt([&] { PutProperty(*object_.Here().Get(), L"Silent", Variant(silent)); });
}

}  // namespace tesk::automation
