// What every object of the server shares: a wrapper around one object of the library with its identity, its
// dual interface, its type description and its errors.
#pragma once

#include <memory>
#include <typeinfo>

#include "TeskReader99.h"
#include "automation/Com.h"
#include "automation/DispatchCall.h"
#include "automation/Module.h"
#include "base/HostServices.h"

namespace tesk::automation {

// The interface by which the server knows its own objects again; nobody else has it.
inline constexpr IID kWrapperId = {
    0x00921bc4, 0x2084, 0x4c59, {0x80, 0x12, 0x94, 0x1f, 0xf7, 0xe9, 0xc9, 0x29}};

class IWrapper : public IUnknown {
 public:
  // The wrapped object where it is of this type, else empty.
  virtual std::shared_ptr<void> Wrapped(const std::type_info& type) = 0;
};

// The wrapper that stands for an object of the library while somebody holds it; null where there is none.
ComPtr<IUnknown> FindWrapper(const void* native);
void NoteWrapper(const void* native, IUnknown* wrapper);
void ForgetWrapper(const void* native);

// The status of an error, with its text left for the host.
HRESULT RaiseToHost(const RunTimeError& error, REFIID raisedBy);

// The interface of a library class, and its automation class where hosts can create it.
template <class Native>
struct Described;

template <class Native>
class Object : public Described<Native>::Interface,
               public ISupportErrorInfo,
               public IProvideClassInfo2,
               public IWrapper,
               private LivingObject {
 public:
  using Interface = typename Described<Native>::Interface;

  explicit Object(std::shared_ptr<Native> native) : native_(std::move(native)) {
    NoteWrapper(native_.get(), static_cast<Interface*>(this));
  }
  virtual ~Object() { ForgetWrapper(native_.get()); }

  // ---- IUnknown

  STDMETHODIMP QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = InterfaceOf(id);
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
      // What is released by the destructor may take and give back references once more.
      references_ = kDying;
      delete this;
    }
    return static_cast<ULONG>(left);
  }

  // ---- IDispatch

  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    return Do([&] { Description().CopyTo(info); });
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    if (names == nullptr || ids == nullptr) return E_POINTER;
    HRESULT status = S_OK;
    const HRESULT done = Do([&] { status = DispGetIDsOfNames(Description().Get(), names, count, ids); });
    return FAILED(done) ? done : status;
  }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* wrong) override {
    HRESULT status = S_OK;
    const HRESULT done = Do([&] {
      status = InvokeMember(static_cast<Interface*>(this), Description().Get(), id, flags, parameters, result,
                            exception, wrong);
    });
    return FAILED(done) ? done : status;
  }

  // ---- ISupportErrorInfo, IProvideClassInfo2, IWrapper

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID id) override {
    return id == __uuidof(Interface) ? S_OK : S_FALSE;
  }
  STDMETHODIMP GetClassInfo(ITypeInfo** info) override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    return Do([&] { TypeInfoOf(*Described<Native>::ClassId()).CopyTo(info); });
  }
  STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override {
    if (guid == nullptr) return E_POINTER;
    *guid = GUID_NULL;
    const IID* events = Described<Native>::EventsId();
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID || events == nullptr) return E_INVALIDARG;
    *guid = *events;
    return S_OK;
  }
  std::shared_ptr<void> Wrapped(const std::type_info& type) override {
    return type == typeid(Native) ? std::static_pointer_cast<void>(native_) : nullptr;
  }

 protected:
  Native& Library() const { return *native_; }

  // An interface that only this class has; no reference is taken.
  virtual void* FurtherInterface(REFIID) { return nullptr; }

  // Runs a call. The object lives until it has ended, whatever the host releases meanwhile.
  template <class Body>
  HRESULT Do(Body&& body) {
    const ComPtr<IUnknown> kept(static_cast<Interface*>(this));
    const auto error = Attempt(body);
    return error ? RaiseToHost(*error, __uuidof(Interface)) : S_OK;
  }

 private:
  static constexpr LONG kDying = 1 << 24;

  void* InterfaceOf(REFIID id) {
    if (id == IID_IUnknown || id == IID_IDispatch || id == __uuidof(Interface)) {
      return static_cast<Interface*>(this);
    }
    if (id == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
    if (id == kWrapperId) return static_cast<IWrapper*>(this);
    const bool classInfo = id == IID_IProvideClassInfo || id == IID_IProvideClassInfo2;
    if (classInfo && Described<Native>::ClassId() != nullptr) return static_cast<IProvideClassInfo2*>(this);
    return FurtherInterface(id);
  }

  const ComPtr<ITypeInfo>& Description() {
    if (!info_) info_ = TypeInfoOf(__uuidof(Interface));
    return info_;
  }

  std::shared_ptr<Native> native_;
  ComPtr<ITypeInfo> info_;
  LONG references_ = 0;
};

}  // namespace tesk::automation
