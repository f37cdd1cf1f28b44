// The engine's methods, and the properties that are more than a value.
#include "automation/Reader.h"

#include <utility>

#include "automation/BatchCount.h"
#include "automation/HostComm.h"

namespace tesk::automation {
namespace {

constexpr DISPID kReadBatch = 103;
constexpr DISPID kSheetCountPlace = 2;

void HandOutPoint(const ComPtr<IConnectionPoint>& kept, IConnectionPoint*& item) { kept.CopyTo(&item); }

using PointEnumerator =
    Enumerator<IEnumConnectionPoints, ComPtr<IConnectionPoint>, IConnectionPoint*, HandOutPoint>;

}  // namespace

ReaderObject::ReaderObject(std::shared_ptr<tesk::clsTeskReader> reader)
    : Members(std::move(reader)),
      // Sheets that nobody takes any more are not fed.
      events_(
          *this, [this] { Library().ResumeSheet(); }, [this] { Library().SetCancelScan(true); }) {
  Library().AddEvents(events_);
}

ReaderObject::~ReaderObject() { Library().RemoveEvents(events_); }

template <>
::_clsTeskReader* NewWrapper(std::shared_ptr<tesk::clsTeskReader> native) {
  return new ReaderObject(std::move(native));
}

void* ReaderObject::FurtherInterface(REFIID id) {
  return id == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this) : nullptr;
}

STDMETHODIMP ReaderObject::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                  VARIANT* result, EXCEPINFO* exception, UINT* wrong) {
  if (id != kReadBatch) {
    return Members::Invoke(id, iid, locale, flags, parameters, result, exception, wrong);
  }
  const ComPtr<IUnknown> kept(static_cast<Interface*>(this));
  batchCount_ = ArgumentAt(parameters, kSheetCountPlace);
  const HRESULT status = Members::Invoke(id, iid, locale, flags, parameters, result, exception, wrong);
  // Not taken by ReadBatch where the call went wrong before it.
  batchCount_ = nullptr;
  return status;
}

STDMETHODIMP ReaderObject::EnumConnectionPoints(IEnumConnectionPoints** points) {
  if (points == nullptr) return E_POINTER;
  *points = nullptr;
  return Do([&] {
    auto* enumerator = new PointEnumerator({ComPtr<IConnectionPoint>(&events_)});
    enumerator->AddRef();
    *points = enumerator;
  });
}

STDMETHODIMP ReaderObject::FindConnectionPoint(REFIID id, IConnectionPoint** point) {
  if (point == nullptr) return E_POINTER;
  *point = nullptr;
  if (id != DIID___clsTeskReader) return CONNECT_E_NOCONNECTION;
  events_.AddRef();
  *point = &events_;
  return S_OK;
}

// ---- Properties

STDMETHODIMP ReaderObject::get_fComm(IDispatch** value) {
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  return Do([&] {
    const auto form = Library().fComm();
    *value = form ? HostFormBehind(*form) : nullptr;
    if (*value != nullptr) {
      (*value)->AddRef();
    } else {
      *value = Wrap(form);
    }
  });
}

STDMETHODIMP ReaderObject::putref_fComm(IDispatch* value) {
  return Do([&] {
    // The form that it has already: taken anew it would lose its open port.
    const auto present = Library().fComm();
    if (present && value != nullptr && HostFormBehind(*present) == value) return;
    ComPtr<IWrapper> ours;
    const bool isOurs = value == nullptr || SUCCEEDED(value->QueryInterface(kWrapperId, &ours));
    Library().SetfComm(isOurs ? Unwrap<frmComm>(value) : FormOf(value));
  });
}

STDMETHODIMP ReaderObject::get_HelpID(::teskReaderHelpID eHelpIDType, LONG* value) {
  return Give<std::int32_t>(value,
                            [&] { return Library().HelpID(Wire<tesk::teskReaderHelpID>::In(eHelpIDType)); });
}

STDMETHODIMP ReaderObject::put_HelpID(::teskReaderHelpID eHelpIDType, LONG value) {
  return Do([&] { Library().SetHelpID(Wire<tesk::teskReaderHelpID>::In(eHelpIDType), value); });
}

// ---- Methods

STDMETHODIMP ReaderObject::StartReader(VARIANT_BOOL* result) {
  return Give<bool>(result, [&] { return Library().StartReader(); });
}

STDMETHODIMP ReaderObject::ReadPage(VARIANT_BOOL InitializePrinter, VARIANT_BOOL* result) {
  return Give<bool>(result, [&] { return Library().ReadPage(Wire<bool>::In(InitializePrinter)); });
}

STDMETHODIMP ReaderObject::ReadBatch(VARIANT_BOOL InitializePrinter, LONG lMaxSheets, LONG* lSheetCount,
                                     VARIANT_BOOL* result) {
  return Give<bool>(result, [&] {
    BatchCount count(lSheetCount, std::exchange(batchCount_, nullptr));
    return Library().ReadBatch(Wire<bool>::In(InitializePrinter), lMaxSheets, count);
  });
}

STDMETHODIMP ReaderObject::EndReader(VARIANT_BOOL* result) {
  return Give<bool>(result, [&] { return Library().EndReader(); });
}

STDMETHODIMP ReaderObject::RejectPage() {
  return Do([&] { Library().RejectPage(); });
}

STDMETHODIMP ReaderObject::EjectPage() {
  return Do([&] { Library().EjectPage(); });
}

STDMETHODIMP ReaderObject::LoadDefaults(::teskReaderType eReaderType, VARIANT_BOOL* result) {
  return Give<bool>(result,
                    [&] { return Library().LoadDefaults(Wire<tesk::teskReaderType>::In(eReaderType)); });
}

STDMETHODIMP ReaderObject::LoadSettings(::teskReaderRegistryKey lRegistryKey, BSTR sRegistrySubKey,
                                        VARIANT_BOOL* result) {
  return Give<bool>(result, [&] {
    return Library().LoadSettings(Wire<tesk::teskReaderRegistryKey>::In(lRegistryKey),
                                  TextOf(sRegistrySubKey));
  });
}

STDMETHODIMP ReaderObject::SaveSettings(::teskReaderRegistryKey lRegistryKey, BSTR sRegistrySubKey,
                                        VARIANT_BOOL* result) {
  return Give<bool>(result, [&] {
    return Library().SaveSettings(Wire<tesk::teskReaderRegistryKey>::In(lRegistryKey),
                                  TextOf(sRegistrySubKey));
  });
}

STDMETHODIMP ReaderObject::SetError(IDispatch** oErr, VARIANT_BOOL* result) {
  if (oErr == nullptr) return E_POINTER;
  return Give<bool>(result, [&] {
    return Library().SetError(*oErr != nullptr ? std::make_shared<HostErrorObject>(*oErr) : nullptr);
  });
}

STDMETHODIMP ReaderObject::ShowOptions(VARIANT fParent, VARIANT_BOOL* result) {
  return Give<bool>(result, [&] { return Library().ShowOptions(WindowOwnerOf(fParent)); });
}

STDMETHODIMP ReaderObject::Locate(SHORT iStartPort, VARIANT_BOOL* result) {
  return Give<bool>(result, [&] { return Library().Locate(iStartPort); });
}

STDMETHODIMP ReaderObject::Firmware(BSTR* sReturn, VARIANT_BOOL* result) {
  if (sReturn == nullptr) return E_POINTER;
  return Give<bool>(result, [&] {
    std::string text = TextOf(*sReturn);
    const bool known = Library().Firmware(text);
    BSTR changed = NewText(text);
    std::swap(*sReturn, changed);
    SysFreeString(changed);
    return known;
  });
}

}  // namespace tesk::automation
