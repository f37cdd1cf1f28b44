// The wrappers of the plain objects.
#include "automation/Records.h"

namespace tesk::automation {

template <>
::_clsTeskReaderWindow* NewWrapper(std::shared_ptr<tesk::clsTeskReaderWindow> native) {
  return new WindowObject(std::move(native));
}

template <>
::_clsTeskReaderBarcode* NewWrapper(std::shared_ptr<tesk::clsTeskReaderBarcode> native) {
  return new BarcodeObject(std::move(native));
}

template <>
::_clsTeskReaderPrinter* NewWrapper(std::shared_ptr<tesk::clsTeskReaderPrinter> native) {
  return new PrinterObject(std::move(native));
}

template <>
::_clsTeskReaderProfile* NewWrapper(std::shared_ptr<tesk::clsTeskReaderProfile> native) {
  return new ProfileObject(std::move(native));
}

}  // namespace tesk::automation
