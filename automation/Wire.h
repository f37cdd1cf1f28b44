// How every type of the library stands on the automation interface, and the helpers that properties and
// methods are written with.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "automation/HostObjects.h"
#include "automation/Object.h"
#include "automation/Values.h"
#include "base/enumerations.h"
#include "engine/clsTeskReader.h"

namespace tesk::automation {

// ---- The classes

#define TESK_CREATABLE(Name, Events)                        \
  template <>                                               \
  struct Described<tesk::Name> {                            \
    using Interface = ::_##Name;                            \
    static const CLSID* ClassId() { return &CLSID_##Name; } \
    static const IID* EventsId() { return Events; }         \
  };

TESK_CREATABLE(clsTeskReader, &DIID___clsTeskReader)
TESK_CREATABLE(clsTeskReaderWindows, nullptr)
TESK_CREATABLE(clsTeskReaderWindow, nullptr)
TESK_CREATABLE(clsTeskReaderBarcodes, nullptr)
TESK_CREATABLE(clsTeskReaderBarcode, nullptr)
TESK_CREATABLE(clsTeskReaderPrinter, nullptr)
TESK_CREATABLE(clsTeskReaderProfile, nullptr)
TESK_CREATABLE(clsTeskReaderProfiles, nullptr)
#undef TESK_CREATABLE

#define TESK_HANDED_OUT(Native, Wire)                 \
  template <>                                         \
  struct Described<tesk::Native> {                    \
    using Interface = ::Wire;                         \
    static const CLSID* ClassId() { return nullptr; } \
    static const IID* EventsId() { return nullptr; }  \
  };

TESK_HANDED_OUT(frmComm, _frmComm)
TESK_HANDED_OUT(SerialControl, _mscComm)
TESK_HANDED_OUT(OneShotTimer, _tmrScan)
#undef TESK_HANDED_OUT

// A new wrapper, without a reference yet.
template <class Native>
typename Described<Native>::Interface* NewWrapper(std::shared_ptr<Native> native);

// The wrapper with one reference, the caller's: the one that stands for the object already, or a new one.
// Null for an empty pointer.
template <class Native>
typename Described<Native>::Interface* Wrap(std::shared_ptr<Native> native) {
  using Interface = typename Described<Native>::Interface;
  if (!native) return nullptr;
  ComPtr<Interface> wrapper;
  const ComPtr<IUnknown> standing = FindWrapper(native.get());
  if (!standing || FAILED(standing.As(&wrapper))) wrapper = NewWrapper(std::move(native));
  return wrapper.Detach();
}

// The object of the library behind a host's pointer, empty for null. Error 13 for an object that is not
// ours or of another class.
template <class Native>
std::shared_ptr<Native> Unwrap(IUnknown* object) {
  if (object == nullptr) return nullptr;
  ComPtr<IWrapper> wrapper;
  if (FAILED(object->QueryInterface(kWrapperId, &wrapper))) throw TypeMismatch();
  auto native = std::static_pointer_cast<Native>(wrapper->Wrapped(typeid(Native)));
  if (!native) throw TypeMismatch();
  return native;
}

// ---- The types: Type on the interface, Out for the caller to own, In checked

template <class T>
struct Wire;

template <class T, class Plain>
struct PlainWire {
  using Type = Plain;
  static Type Out(T value) { return static_cast<Type>(value); }
  static T In(Type value) { return static_cast<T>(value); }
};

template <>
struct Wire<bool> {
  using Type = VARIANT_BOOL;
  static Type Out(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }
  static bool In(Type value) { return value != VARIANT_FALSE; }
};

template <>
struct Wire<std::int16_t> : PlainWire<std::int16_t, SHORT> {};
template <>
struct Wire<std::int32_t> : PlainWire<std::int32_t, LONG> {};
template <>
struct Wire<float> : PlainWire<float, FLOAT> {};

#define TESK_ENUMERATION(Name) \
  template <>                  \
  struct Wire<tesk::Name> : PlainWire<tesk::Name, ::Name> {};

TESK_ENUMERATION(teskReaderType)
TESK_ENUMERATION(teskProfileType)
TESK_ENUMERATION(teskReaderHelpID)
TESK_ENUMERATION(teskBarcodeType)
TESK_ENUMERATION(teskBarcodeOrientation)
TESK_ENUMERATION(teskReaderRegistryKey)
TESK_ENUMERATION(teskRecognitionType)
TESK_ENUMERATION(teskReaderInterfaceType)
TESK_ENUMERATION(teskReaderBaudRate)
TESK_ENUMERATION(teskReaderDataBits)
TESK_ENUMERATION(teskReaderFlowControl)
TESK_ENUMERATION(teskReaderColorDepth)
#undef TESK_ENUMERATION

template <>
struct Wire<std::string> {
  using Type = BSTR;
  static Type Out(const std::string& value) { return NewText(value); }
  static std::string In(Type value) { return TextOf(value); }
};

template <>
struct Wire<SideArray> {
  using Type = SAFEARRAY*;
  static Type Out(const SideArray& value) { return NewArray(value); }
  static SideArray In(Type value) { return SideArrayOf(value); }
};

template <>
struct Wire<Int16Array> {
  using Type = SAFEARRAY*;
  static Type Out(const Int16Array& value) { return NewArray(value); }
  static Int16Array In(Type value) { return Int16ArrayOf(value); }
};

template <>
struct Wire<BarcodeArray> {
  using Type = SAFEARRAY*;
  static Type Out(const BarcodeArray& value) { return NewArray(value); }
  static BarcodeArray In(Type value) { return BarcodeArrayOf(value); }
};

template <class Native>
struct Wire<std::shared_ptr<Native>> {
  using Type = typename Described<Native>::Interface*;
  static Type Out(const std::shared_ptr<Native>& value) { return Wrap(value); }
  static std::shared_ptr<Native> In(Type value) { return Unwrap<Native>(value); }
};

// Objects that the engine only keeps go back to hosts as they came.
template <>
struct Wire<std::shared_ptr<HostObject>> {
  using Type = IDispatch*;
  static Type Out(const std::shared_ptr<HostObject>& value) {
    const auto* reference = dynamic_cast<const HostReference*>(value.get());
    IDispatch* object = reference != nullptr ? reference->Get() : nullptr;
    if (object != nullptr) object->AddRef();
    return object;
  }
  static std::shared_ptr<HostObject> In(Type value) {
    return value != nullptr ? std::make_shared<HostReference>(value) : nullptr;
  }
};

template <class T>
using WireType = typename Wire<T>::Type;

// ---- Members

// An object whose members are written with Give.
template <class Native>
class Members : public Object<Native> {
 protected:
  using Object<Native>::Object;

  // Hands the value that `body` returns out as a T.
  template <class T, class Body>
  HRESULT Give(WireType<T>* value, Body&& body) {
    if (value == nullptr) return E_POINTER;
    *value = {};
    return this->Do([&] { *value = Wire<T>::Out(body()); });
  }
};

// Properties of the wrapped object that do nothing of their own on the border.
#define TESK_GET(T, Name)                                                            \
  STDMETHODIMP get_##Name(WireType<T>* value) override {                             \
    return this->template Give<T>(value, [this] { return this->Library().Name(); }); \
  }
#define TESK_PUT_AS(Put, T, Name)                                            \
  STDMETHODIMP Put##_##Name(WireType<T> value) override {                    \
    return this->Do([&] { this->Library().Set##Name(Wire<T>::In(value)); }); \
  }
// Visual Basic hands arrays over by reference alone; the setter leaves the host's array as it is.
#define TESK_PUT_ARRAY(T, Name)                                               \
  STDMETHODIMP put_##Name(WireType<T>* value) override {                      \
    if (value == nullptr) return E_POINTER;                                   \
    return this->Do([&] { this->Library().Set##Name(Wire<T>::In(*value)); }); \
  }
#define TESK_PROPERTY(T, Name) TESK_GET(T, Name) TESK_PUT_AS(put, T, Name)
#define TESK_ARRAY_PROPERTY(T, Name) TESK_GET(T, Name) TESK_PUT_ARRAY(T, Name)
#define TESK_OBJECT_PROPERTY(T, Name) TESK_GET(T, Name) TESK_PUT_AS(putref, T, Name)

}  // namespace tesk::automation
