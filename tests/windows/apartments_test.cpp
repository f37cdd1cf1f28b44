// What the whole process shares, from several threads at once.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

using Names = std::vector<std::string>;
using Threads = std::set<DWORD>;

class Apartments : public Reading {};

// A report and its translations, by a type that has no profile.
void Report(_clsTeskReader* reader) {
  VARIANT_BOOL done = VARIANT_TRUE;
  EXPECT_EQ(S_OK, reader->LoadDefaults(::teskReaderTypeDatawinHemeraC, &done));
  EXPECT_EQ(VARIANT_FALSE, done);
}

TEST_F(Apartments, ClassesAreAskedForOnAllAtOnce) {
  const auto classObject = reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"TeskReader99.dll"), "DllGetClassObject")));
  ASSERT_TRUE(classObject);
  const auto ask = [&] {
    for (int i = 0; i < 600'000; ++i) {
      ComPtr<IClassFactory> factory;
      ASSERT_EQ(S_OK, classObject(CLSID_clsTeskReader, IID_PPV_ARGS(&factory)));
    }
    for (int i = 0; i < 20; ++i) {
      const auto other = NewReader();
      ComPtr<_clsTeskReaderProfiles> profiles;
      LONG count = 0;
      EXPECT_EQ(0, automation::Int32Of(automation::GetProperty(*other.Get(), L"Port")));
      ASSERT_EQ(S_OK, other->get_Profiles(&profiles));
      EXPECT_EQ(S_OK, profiles->get_Count(&count));
      EXPECT_EQ(46, count);
    }
  };
  RunInApartments({ask, ask, ask, ask});
}

TEST_F(Apartments, TheErrorObjectIsCalledInItsOwn) {
  const auto report = [] {
    const auto other = NewReader();
    for (int i = 0; i < 5; ++i) Report(other.Get());
  };
  RunInApartments({report, report});
  EXPECT_EQ(10U, errors->reports.size());
  EXPECT_EQ(Threads({GetCurrentThreadId()}), errors->calledOn);
}

TEST_F(Apartments, AnErrorObjectWhoseApartmentHasEndedIsDoneWithout) {
  const auto name = [](_clsTeskReader* itsReader) {
    Variant text;
    EXPECT_EQ(S_OK, itsReader->get_ReaderName(&text.bstrVal));
    text.vt = VT_BSTR;
    return automation::TextOf(text);
  };
  const ComPtr<ErrorObject> gone = new ErrorObject;
  gone->translations["None"] = "Keiner";
  DWORD itsThread = 0;
  RunInApartments({[&] {
    itsThread = GetCurrentThreadId();
    const auto other = NewReader();
    Install(other.Get(), gone.Get());
    EXPECT_EQ("Keiner", name(other.Get()));
  }});
  EXPECT_EQ("None", name(reader.Get()));
  // Without a screen the library's own box returns at once.
  Report(reader.Get());
  EXPECT_EQ(Threads({itsThread}), gone->calledOn);
  EXPECT_EQ(Names(), gone->reports);
  Install(reader.Get(), errors.Get());
}

// The system carries the calls over by what the type library says of them.
TEST_F(Apartments, AReaderIsCalledFromAnother) {
  ComPtr<IStream> carried;
  ASSERT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(__uuidof(_clsTeskReader), reader.Get(), &carried));
  RunInApartments({[&] {
    ComPtr<_clsTeskReader> proxy;
    ASSERT_EQ(S_OK, CoGetInterfaceAndReleaseStream(carried.Detach(), IID_PPV_ARGS(&proxy)));
    ASSERT_NE(reader.Get(), proxy.Get());
    EXPECT_TRUE(SetSizes(proxy.Get(), &_clsTeskReader::put_Side2Cols, 48));
    Variant sizes;
    EXPECT_EQ(S_OK, proxy->get_Side2Cols(&sizes.parray));
    sizes.vt = VT_ARRAY | VT_I2;
    EXPECT_EQ("1..1: 48", Described(sizes));
    LONG count = 5;
    VARIANT_BOOL read = VARIANT_TRUE;
    EXPECT_EQ(S_OK, proxy->ReadBatch(VARIANT_FALSE, -1, &count, &read));
    EXPECT_EQ(VARIANT_FALSE, read) << "no reader type, so nothing starts";
    EXPECT_EQ(5, count);
  }});
}

}  // namespace
}  // namespace tesk::test
