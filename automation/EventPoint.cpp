// Connections, and arguments that travel to every sink and back.
#include "automation/EventPoint.h"

#include <algorithm>
#include <tuple>

#include "automation/Com.h"
#include "automation/Wire.h"

namespace tesk::automation {
namespace {

// DISPIDs of the events.
enum Event : DISPID {
  kBeforeSheet = 1,
  kPreprocessSheet,
  kReadSheet,
  kAfterSheet,
  kBeforePrint,
  kAfterPrint,
  kTranslateData,
  kGetQuestionsOnPage,
};

void Free(SHORT) {}  // and VARIANT_BOOL
void Free(BSTR text) { SysFreeString(text); }
void Free(SAFEARRAY* array) { SafeArrayDestroy(array); }
void Free(IDispatch* object) {
  if (object != nullptr) object->Release();
}

template <class T>
constexpr VARTYPE kVariantType = VT_EMPTY;
template <>
constexpr VARTYPE kVariantType<bool> = VT_BOOL;
template <>
constexpr VARTYPE kVariantType<std::int16_t> = VT_I2;
template <>
constexpr VARTYPE kVariantType<std::string> = VT_BSTR;
template <>
constexpr VARTYPE kVariantType<SideArray> = VT_ARRAY | VT_I2;
template <>
constexpr VARTYPE kVariantType<BarcodeArray> = VT_ARRAY | VT_BSTR;
template <>
constexpr VARTYPE kVariantType<std::shared_ptr<HostObject>> = VT_DISPATCH;

template <class T>
bool Same(const T& a, const T& b) {
  return a == b;
}
bool Same(const std::shared_ptr<HostObject>& a, const std::shared_ptr<HostObject>& b) {
  const auto object = [](const auto& kept) {
    const auto* reference = dynamic_cast<const HostReference*>(kept.get());
    return reference != nullptr ? reference->Get() : nullptr;
  };
  return object(a) == object(b);
}

// One argument of an event. What a sink leaves in a reference is taken over by Take where the sink changed it:
// the value itself may have moved on meanwhile, or be one that does not come back from the border as it was.
template <class T>
class Argument {
 public:
  explicit Argument(T& value) : value_(value), wire_(Wire<T>::Out(value)) {
    Attempt([this] { sent_ = Wire<T>::In(wire_); });
  }
  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;
  ~Argument() { Free(wire_); }

  VARIANT AsVariant() {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BYREF | kVariantType<T>;
    variant.byref = &wire_;
    return variant;
  }
  void Take() {
    Attempt([this] {
      T left = Wire<T>::In(wire_);
      if (!Same(left, sent_)) value_ = std::move(left);
    });
  }

 private:
  T& value_;
  WireType<T> wire_;
  T sent_{};
};

// By value.
template <>
class Argument<const std::string> {
 public:
  explicit Argument(const std::string& value) : wire_(NewText(value)) {}
  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;
  ~Argument() { Free(wire_); }

  VARIANT AsVariant() const {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = wire_;
    return variant;
  }
  void Take() const {}

 private:
  BSTR wire_;
};

void HandOutConnection(const std::pair<DWORD, ComPtr<IDispatch>>& kept, CONNECTDATA& item) {
  item = {kept.second.Get(), kept.first};
  item.pUnk->AddRef();
}

using Connections =
    Enumerator<IEnumConnections, std::pair<DWORD, ComPtr<IDispatch>>, CONNECTDATA, HandOutConnection>;

constexpr HRESULT kGone[] = {
    RPC_E_DISCONNECTED,
    CO_E_OBJNOTCONNECTED,
    RPC_E_SERVER_DIED,
    RPC_E_SERVER_DIED_DNE,
    RPC_E_CLIENT_DIED,
    RPC_E_CONNECTION_TERMINATED,
    static_cast<HRESULT>(0x800706BA),  // RPC_S_SERVER_UNAVAILABLE
    static_cast<HRESULT>(0x800706BE),  // RPC_S_CALL_FAILED
    static_cast<HRESULT>(0x800706BF),  // RPC_S_CALL_FAILED_DNE
};

bool HasGone(HRESULT status) { return std::ranges::find(kGone, status) != std::end(kGone); }

// The host has a cell in edit mode, or a dialog open, and has not looked at the call.
bool IsBusy(HRESULT status) { return status == RPC_E_CALL_REJECTED || status == RPC_E_SERVERCALL_RETRYLATER; }

// Of a sink in another process or apartment such a status is the system's own; of any other it is only what the sink
// itself says of something of its own.
bool WasLost(HRESULT status) { return HasGone(status) || HRESULT_FACILITY(status) == FACILITY_RPC; }

bool IsElsewhere(IDispatch& sink) {
  ComPtr<IClientSecurity> proxy;
  return SUCCEEDED(sink.QueryInterface(IID_PPV_ARGS(&proxy)));
}

}  // namespace

// Taken out first: a sink that is released may come back to end its connection.
EventPoint::~EventPoint() { const auto released = std::exchange(connections_, {}); }

// ---- The connection point

STDMETHODIMP EventPoint::QueryInterface(REFIID id, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = id == IID_IUnknown || id == IID_IConnectionPoint ? static_cast<IConnectionPoint*>(this) : nullptr;
  if (*object == nullptr) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP EventPoint::GetConnectionInterface(IID* id) {
  if (id == nullptr) return E_POINTER;
  *id = DIID___clsTeskReader;
  return S_OK;
}

STDMETHODIMP EventPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
  if (container == nullptr) return E_POINTER;
  owner_.AddRef();
  *container = &owner_;
  return S_OK;
}

STDMETHODIMP EventPoint::Advise(IUnknown* sink, DWORD* cookie) {
  if (sink == nullptr || cookie == nullptr) return E_POINTER;
  *cookie = 0;
  ComPtr<IDispatch> events;
  if (FAILED(sink->QueryInterface(DIID___clsTeskReader, &events)) &&
      FAILED(sink->QueryInterface(IID_IDispatch, &events))) {
    return CONNECT_E_CANNOTCONNECT;
  }
  const auto error = Attempt([&] { connections_.emplace_back(++lastCookie_, events); });
  if (error) return E_OUTOFMEMORY;
  *cookie = lastCookie_;
  return S_OK;
}

STDMETHODIMP EventPoint::Unadvise(DWORD cookie) {
  const auto at = std::find_if(connections_.begin(), connections_.end(),
                               [cookie](const Connection& connection) { return connection.first == cookie; });
  if (at == connections_.end()) return CONNECT_E_NOCONNECTION;
  // Released last: the sink may hold the last reference to the engine.
  const Connection released = *at;
  connections_.erase(at);
  return S_OK;
}

STDMETHODIMP EventPoint::EnumConnections(IEnumConnections** connections) {
  if (connections == nullptr) return E_POINTER;
  *connections = nullptr;
  const auto error = Attempt([&] {
    auto* enumerator = new Connections(connections_);
    enumerator->AddRef();
    *connections = enumerator;
  });
  return error ? E_OUTOFMEMORY : S_OK;
}

// ---- Calling the sinks

bool EventPoint::Connected(DWORD cookie) const {
  return std::any_of(connections_.begin(), connections_.end(),
                     [cookie](const Connection& connection) { return connection.first == cookie; });
}

bool EventPoint::Call(const Connection& connection, DISPID id, std::vector<VARIANT>& reversed) {
  constexpr int kTries = 100;
  constexpr DWORD kBetweenTries = 50;  // milliseconds
  DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  const bool elsewhere = IsElsewhere(*connection.second.Get());
  HRESULT status = S_OK;
  for (int tries = kTries; tries > 0; --tries) {
    Variant ignored;
    status = connection.second->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                       &ignored, nullptr, nullptr);
    if (!elsewhere || !IsBusy(status)) break;
    Sleep(kBetweenTries);
  }
  if (HasGone(status)) Unadvise(connection.first);
  if (!elsewhere || !WasLost(status)) return true;
  // Others may still take the sheets of one who has gone; one who is there has missed something.
  if (whenLost_ && (connections_.empty() || !HasGone(status))) whenLost_();
  return false;
}

template <class... Values>
void EventPoint::Fire(DISPID id, Values&... values) {
  const auto before = connections_;
  for (const Connection& connection : before) {
    // A sink may have been detached by the one before it.
    if (!Connected(connection.first)) continue;
    if (beforeEach_) beforeEach_();
    std::tuple<Argument<Values>...> arguments(values...);
    std::apply(
        [&](auto&... argument) {
          std::vector<VARIANT> reversed = {argument.AsVariant()...};
          std::reverse(reversed.begin(), reversed.end());
          if (Call(connection, id, reversed)) (argument.Take(), ...);
        },
        arguments);
  }
}

void EventPoint::BeforeSheet(bool& bInitializePrinter) { Fire(kBeforeSheet, bInitializePrinter); }

void EventPoint::PreprocessSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                                 bool& bReject) {
  Fire(kPreprocessSheet, iSide1Array, iSide2Array, sBarcodeArray, bReject);
}

void EventPoint::ReadSheet(SideArray& iSide1Array, SideArray& iSide2Array, BarcodeArray& sBarcodeArray,
                           const std::string& sSide1FileName, const std::string& sSide2FileName,
                           const std::string& sSide1ItemCoordinates,
                           const std::string& sSide2ItemCoordinates) {
  Fire(kReadSheet, iSide1Array, iSide2Array, sBarcodeArray, sSide1FileName, sSide2FileName,
       sSide1ItemCoordinates, sSide2ItemCoordinates);
}

void EventPoint::AfterSheet(bool& bCancelScan) { Fire(kAfterSheet, bCancelScan); }

void EventPoint::BeforePrint(bool& bCancel) { Fire(kBeforePrint, bCancel); }

void EventPoint::AfterPrint() { Fire(kAfterPrint); }

void EventPoint::TranslateData(std::shared_ptr<HostObject>& oData, SideArray& iSide1Array,
                               SideArray& iSide2Array, BarcodeArray& sBarcodeArray, bool& bNeedsMoreData) {
  Fire(kTranslateData, oData, iSide1Array, iSide2Array, sBarcodeArray, bNeedsMoreData);
}

void EventPoint::GetQuestionsOnPage(std::int16_t& iPage, std::int16_t& iNumberQuestions) {
  Fire(kGetQuestionsOnPage, iPage, iNumberQuestions);
}

}  // namespace tesk::automation
