#include "automation/Lists.h"

namespace tesk::automation {

template <>
::_clsTeskReaderBarcodes* NewWrapper(std::shared_ptr<tesk::clsTeskReaderBarcodes> native) {
  return new BarcodesObject(std::move(native));
}

template <>
::_clsTeskReaderWindows* NewWrapper(std::shared_ptr<tesk::clsTeskReaderWindows> native) {
  return new WindowsObject(std::move(native));
}

template <>
::_clsTeskReaderProfiles* NewWrapper(std::shared_ptr<tesk::clsTeskReaderProfiles> native) {
  return new ProfilesObject(std::move(native));
}

STDMETHODIMP BarcodesObject::Add(::_clsTeskReaderBarcode* Item, VARIANT Before, VARIANT After) {
  return Do(
      [&] { Library().Add(Unwrap<tesk::clsTeskReaderBarcode>(Item), PlaceOf(Before), PlaceOf(After)); });
}

STDMETHODIMP WindowsObject::Add(::_clsTeskReaderWindow* Item, VARIANT Before, VARIANT After) {
  return Do([&] { Library().Add(Unwrap<tesk::clsTeskReaderWindow>(Item), PlaceOf(Before), PlaceOf(After)); });
}

STDMETHODIMP WindowsObject::Remove(LONG Position) {
  return Do([&] { Library().Remove(Position); });
}

STDMETHODIMP WindowsObject::get_Item(LONG Position, ::_clsTeskReaderWindow** value) {
  return Give<std::shared_ptr<tesk::clsTeskReaderWindow>>(value, [&] { return Library().Item(Position); });
}

STDMETHODIMP WindowsObject::Exists(LONG Position, VARIANT_BOOL* result) {
  return Give<bool>(result, [&] { return Library().Exists(Position); });
}

}  // namespace tesk::automation
