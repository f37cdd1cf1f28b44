// Calls that no well-behaved host makes: null pointers, foreign objects, odd arrays.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

constexpr HRESULT kTypeMismatch = static_cast<HRESULT>(0x800A000D);

class Misuse : public Reading {};

TEST_F(Misuse, NullPointersAreRefused) {
  VARIANT_BOOL done = VARIANT_TRUE;
  const HRESULT refused[] = {reader->get_Port(nullptr),
                             reader->get_Windows(nullptr),
                             reader->get_Parity(nullptr),
                             reader->get_Side1Array(nullptr),
                             reader->StartReader(nullptr),
                             reader->QueryInterface(IID_IUnknown, nullptr),
                             reader->put_Side1Rows(nullptr),
                             reader->SetError(nullptr, &done),
                             reader->GetIDsOfNames(IID_NULL, nullptr, 1, LOCALE_USER_DEFAULT, nullptr),
                             reader->Firmware(nullptr, &done)};
  EXPECT_EQ(std::vector<HRESULT>(std::size(refused), E_POINTER),
            std::vector<HRESULT>(std::begin(refused), std::end(refused)));
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(S_OK, reader->put_Side1Rows(&none)) << "a null array is an empty one";
  EXPECT_EQ(S_OK, reader->put_Parity(nullptr)) << "a null text is an empty one";
  EXPECT_EQ(S_OK, reader->ReadBatch(VARIANT_FALSE, 0, nullptr, &done));
}

TEST_F(Misuse, ForeignObjectsAreATypeMismatchAndNothingIsAssigned) {
  const ComPtr<HostDispatch> foreign = new HostDispatch;
  EXPECT_EQ(kTypeMismatch, reader->putref_Printer(reinterpret_cast<_clsTeskReaderPrinter*>(foreign.Get())));
  EXPECT_EQ(kTypeMismatch, reader->putref_fComm(foreign.Get()));
  ComPtr<_clsTeskReaderPrinter> printer;
  reader->get_Printer(&printer);
  EXPECT_TRUE(printer);
  ComPtr<_clsTeskReaderWindows> windows;
  reader->get_Windows(&windows);
  EXPECT_EQ(kTypeMismatch, reader->putref_Printer(reinterpret_cast<_clsTeskReaderPrinter*>(windows.Get())));
}

TEST_F(Misuse, AnErrorCarriesItsText) {
  ComPtr<IDispatch> form;
  reader->get_fComm(&form);
  const auto serial = automation::GetObjectProperty(*form.Get(), L"mscComm");
  ComPtr<_mscComm> control;
  ASSERT_EQ(S_OK, serial.As(&control));
  EXPECT_EQ(static_cast<HRESULT>(0x800A0000 + 8002), control->put_CommPort(17));
  ComPtr<IErrorInfo> info;
  ASSERT_EQ(S_OK, GetErrorInfo(0, &info));
  Variant description;
  info->GetDescription(&description.bstrVal);
  description.vt = VT_BSTR;
  EXPECT_EQ("Invalid port number", automation::TextOf(description));
}

TEST_F(Misuse, OddArraysAreRefusedAndNothingIsAssigned) {
  Variant good;
  good.parray = automation::NewArray(Int16Array({5, 6}));
  good.vt = VT_ARRAY | VT_I2;
  ASSERT_EQ(S_OK, reader->put_Side1Cols(&good.parray));
  SAFEARRAYBOUND square[] = {{2, 1}, {2, 1}};
  SAFEARRAYBOUND highest[] = {{2, 2147483647}};
  struct {
    const char* what;
    SAFEARRAY* array;
  } table[] = {
      {"two dimensions", SafeArrayCreate(VT_I2, 2, square)},
      {"texts", SafeArrayCreateVector(VT_BSTR, 1, 2)},
      {"32-bit numbers", SafeArrayCreateVector(VT_I4, 1, 2)},
      {"bounds beyond 32 bits", SafeArrayCreate(VT_I2, 1, highest)},
  };
  for (auto& row : table) {
    if (row.array == nullptr) continue;  // the system itself refuses to make it
    EXPECT_EQ(kTypeMismatch, reader->put_Side1Cols(&row.array)) << row.what;
    SafeArrayDestroy(row.array);
  }
  Variant found;
  reader->get_Side1Cols(&found.parray);
  found.vt = VT_ARRAY | VT_I2;
  EXPECT_EQ(Described(good), Described(found));
}

TEST_F(Misuse, AnErrorObjectThatFailsIsDoneWithout) {
  // Without a screen the library's own box returns at once.
  const ComPtr<ErrorObject> failing = new ErrorObject;
  for (const wchar_t* name : {L"LoadString", L"MsgBoxEx", L"RaiseError", L"Silent"}) {
    failing->On(name, [](auto&&...) { return DISP_E_EXCEPTION; });
  }
  Install(reader.Get(), failing.Get());
  Variant name;
  ASSERT_EQ(S_OK, reader->get_ReaderName(&name.bstrVal));
  name.vt = VT_BSTR;
  EXPECT_EQ("None", automation::TextOf(name));
  Install(reader.Get(), errors.Get());
}

TEST_F(Misuse, TheSetupDialogTakesAnOwnerInEveryForm) {
  const ComPtr<HostDispatch> window = new HostDispatch;
  Variant owners[] = {Variant(), Variant(std::int32_t{0}), Variant(window.Get()),
                      Variant(std::string("no window"))};
  const HRESULT expected[] = {S_OK, S_OK, S_OK, kTypeMismatch};
  for (std::size_t i = 0; i < std::size(owners); ++i) {
    VARIANT_BOOL confirmed = VARIANT_TRUE;
    EXPECT_EQ(expected[i], reader->ShowOptions(owners[i], &confirmed)) << i;
    EXPECT_EQ(VARIANT_FALSE, confirmed) << i;
  }
}

TEST_F(Misuse, AggregationIsRefused) {
  ComPtr<IUnknown> object;
  const ComPtr<HostDispatch> outer = new HostDispatch;
  EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(CLSID_clsTeskReader, static_cast<IDispatch*>(outer.Get()),
                                                    CLSCTX_INPROC_SERVER, IID_IUnknown, &object));
}

TEST_F(Misuse, ManyEnginesAndTheirPartsAllGo) {
  for (int i = 0; i < 50; ++i) {
    const auto other = NewReader();
    ComPtr<_clsTeskReaderProfiles> profiles;
    other->get_Profiles(&profiles);
    ComPtr<IUnknown> enumerator;
    ASSERT_EQ(S_OK, profiles->get__NewEnum(&enumerator));
    ComPtr<IEnumVARIANT> items;
    ASSERT_EQ(S_OK, enumerator.As(&items));
    std::vector<VARIANT> values(100);
    ULONG fetched = 0;
    EXPECT_EQ(S_FALSE, items->Next(100, values.data(), &fetched));
    EXPECT_EQ(46U, fetched);
    for (VARIANT& value : values) VariantClear(&value);
  }
}

TEST_F(Misuse, AClonedEnumeratorHoldsItsSinksToo) {
  ComPtr<IConnectionPointContainer> container;
  ComPtr<IConnectionPoint> point;
  ComPtr<IEnumConnections> connections;
  ComPtr<IEnumConnections> clone;
  ASSERT_EQ(S_OK, reader.As(&container));
  ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID___clsTeskReader, &point));
  ASSERT_EQ(S_OK, point->EnumConnections(&connections));
  ASSERT_EQ(S_OK, connections->Clone(&clone));
  const int before = HostDispatch::living;
  connections.Reset();
  sink->Disconnect();
  sink.Reset();
  ASSERT_EQ(before, HostDispatch::living);
  CONNECTDATA data = {};
  ULONG fetched = 0;
  ASSERT_EQ(S_OK, clone->Next(1, &data, &fetched));
  clone.Reset();
  EXPECT_EQ(before, HostDispatch::living);
  data.pUnk->Release();
  EXPECT_EQ(before - 1, HostDispatch::living);
}

}  // namespace
}  // namespace tesk::test
