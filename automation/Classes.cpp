// Creating objects.
#include "automation/Classes.h"

#include <memory>

#include "assembly/assembly.h"
#include "automation/HelperObject.h"
#include "automation/Wire.h"
#include "platform/Platform.h"
#include "platform/windows/DialogBox.h"

namespace tesk::automation {
namespace {

template <class Native>
IUnknown* Create() {
  return Wrap(std::make_shared<Native>());
}

template <>
IUnknown* Create<tesk::clsTeskReader>() {
  return Wrap(CreateReader({.serial = platform::CreateSerialSystem(),
                            .loop = platform::CreateHostLoop(),
                            .clock = platform::CreateClock()}));
}

#define TESK_CLASS(Name, Description) \
  { &CLSID_##Name, L## #Name, Description, Create<tesk::Name> }

constexpr CreatableClass kClasses[] = {
    TESK_CLASS(clsTeskReader, L"TeskReader99 reader engine"),
    TESK_CLASS(clsTeskReaderWindows, L"TeskReader99 collection of read windows"),
    TESK_CLASS(clsTeskReaderWindow, L"TeskReader99 read window"),
    TESK_CLASS(clsTeskReaderBarcodes, L"TeskReader99 collection of barcode definitions"),
    TESK_CLASS(clsTeskReaderBarcode, L"TeskReader99 barcode definition"),
    TESK_CLASS(clsTeskReaderPrinter, L"TeskReader99 imprinter"),
    TESK_CLASS(clsTeskReaderProfile, L"TeskReader99 reader profile"),
    TESK_CLASS(clsTeskReaderProfiles, L"TeskReader99 collection of reader profiles"),
};

#undef TESK_CLASS

class Factory final : public HelperObject<IClassFactory> {
 public:
  explicit Factory(const CreatableClass& creatable) : creatable_(creatable) {}

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    ComPtr<IUnknown> created;
    const auto error = Attempt([&] { created = Adopt(creatable_.create()); });
    return error ? RaiseToHost(*error, IID_IClassFactory) : created->QueryInterface(id, object);
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    automation::LockServer(lock != FALSE);
    return S_OK;
  }

 private:
  const CreatableClass& creatable_;
};

// Hosts may ask for classes on several threads at once.
void InstallOwnBox() { [[maybe_unused]] static const bool installed = (SetMessageBox(OwnBox()), true); }

}  // namespace

std::shared_ptr<MessageBox> OwnBox() { return platform::CreateDialogBox(); }

std::span<const CreatableClass> Classes() { return kClasses; }

HRESULT GetClassFactory(REFCLSID classId, REFIID id, void** factory) {
  for (const CreatableClass& creatable : Classes()) {
    if (*creatable.id != classId) continue;
    ComPtr<IClassFactory> created;
    const auto error = Attempt([&] {
      InstallOwnBox();
      created = new Factory(creatable);
    });
    return error ? E_OUTOFMEMORY : created->QueryInterface(id, factory);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace tesk::automation
