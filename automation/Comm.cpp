// The communications form and its controls.
#include "automation/Comm.h"

namespace tesk::automation {

template <>
::_frmComm* NewWrapper(std::shared_ptr<frmComm> native) {
  return new CommObject(std::move(native));
}

template <>
::_mscComm* NewWrapper(std::shared_ptr<SerialControl> native) {
  return new SerialObject(std::move(native));
}

template <>
::_tmrScan* NewWrapper(std::shared_ptr<OneShotTimer> native) {
  return new TimerObject(std::move(native));
}

STDMETHODIMP CommObject::get_mscComm(IDispatch** value) {
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  return Do([&] { *value = Wrap(Library().mscComm()); });
}

STDMETHODIMP CommObject::get_tmrScan(IDispatch** value) {
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  return Do([&] { *value = Wrap(Library().tmrScan()); });
}

STDMETHODIMP SerialObject::get_Handshaking(::teskReaderFlowControl* value) {
  if (value == nullptr) return E_POINTER;
  return Do([&] { *value = static_cast<::teskReaderFlowControl>(Library().Handshaking()); });
}

STDMETHODIMP SerialObject::put_Handshaking(::teskReaderFlowControl value) {
  return Do([&] { Library().SetHandshaking(value); });
}

STDMETHODIMP SerialObject::get_Input(VARIANT* value) {
  if (value == nullptr) return E_POINTER;
  VariantInit(value);
  return Do([&] {
    Variant bytes = BytesVariant(Library().Input());
    std::swap<VARIANT>(*value, bytes);
  });
}

STDMETHODIMP SerialObject::put_Output(VARIANT value) {
  return Do([&] { Library().Output(BytesOf(value)); });
}

}  // namespace tesk::automation
