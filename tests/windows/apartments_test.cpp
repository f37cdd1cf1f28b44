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
      ComPtr<_clsTeskReaderProfiles> profiles;
      LONG count = 0;
      ASSERT_EQ(S_OK, NewReader()->get_Profiles(&profiles));
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

}  // namespace
}  // namespace tesk::test
