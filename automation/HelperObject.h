// IUnknown of the server's objects that have one interface of their own: class factories, enumerators.
#pragma once

#include "automation/Module.h"

namespace tesk::automation {

// Begins without a reference; the last one given back ends it.
template <class Interface>
class HelperObject : public Interface, private LivingObject {
 public:
  virtual ~HelperObject() = default;

  STDMETHODIMP QueryInterface(REFIID id, void** object) final {
    if (object == nullptr) return E_POINTER;
    *object = id == IID_IUnknown || id == __uuidof(Interface) ? static_cast<Interface*>(this) : nullptr;
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() final { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  STDMETHODIMP_(ULONG) Release() final {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }

 private:
  LONG references_ = 0;
};

}  // namespace tesk::automation
