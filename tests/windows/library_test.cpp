// The type library in the server as hosts find it, and every property that it tells of.
#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "tests/windows/Host.h"

namespace tesk::test {
namespace {

std::string NameOf(ITypeInfo* info, MEMBERID id) {
  Variant name;
  name.vt = VT_BSTR;
  info->GetDocumentation(id, &name.bstrVal, nullptr, nullptr, nullptr);
  return automation::TextOf(name.bstrVal);
}

// A type as its numbers: "26 27 2" is a pointer to an array of 16-bit integers.
std::string TypeText(ITypeInfo* info, const TYPEDESC& type) {
  std::string text = " " + std::to_string(type.vt);
  if (type.vt == VT_PTR || type.vt == VT_SAFEARRAY) text += TypeText(info, *type.lptdesc);
  ComPtr<ITypeInfo> named;
  if (type.vt == VT_USERDEFINED && SUCCEEDED(info->GetRefTypeInfo(type.hreftype, &named))) {
    text += NameOf(named.Get(), MEMBERID_NIL);
  }
  return text;
}

void ForEachFunction(ITypeInfo* info, const std::function<void(const FUNCDESC&)>& take) {
  FUNCDESC* function = nullptr;
  for (UINT i = 0; SUCCEEDED(info->GetFuncDesc(i, &function)); ++i) {
    take(*function);
    info->ReleaseFuncDesc(function);
  }
}

// An interface as early-bound hosts call it, where it has two views.
ComPtr<ITypeInfo> EarlyView(ComPtr<ITypeInfo> info) {
  HREFTYPE early = 0;
  ComPtr<ITypeInfo> view;
  if (FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &early))) return info;
  return SUCCEEDED(info->GetRefTypeInfo(early, &view)) ? view : info;
}

std::string TypeLines(ITypeInfo* info) {
  TYPEATTR* type = nullptr;
  EXPECT_EQ(S_OK, info->GetTypeAttr(&type));
  wchar_t guid[40] = {};
  StringFromGUID2(type->guid, guid, 40);
  std::string text = NameOf(info, MEMBERID_NIL) + " " + platform::WideToUtf8(guid) + " " +
                     std::to_string(type->typekind) + " " + std::to_string(type->wTypeFlags) + "\n";
  info->ReleaseTypeAttr(type);
  ForEachFunction(info, [&](const FUNCDESC& function) {
    // The place in the table of functions, whose entries are as wide as the host's pointers.
    text += "  " + std::to_string(function.oVft / static_cast<SHORT>(sizeof(void*))) + " " +
            std::to_string(function.memid) + " " + std::to_string(function.invkind) + " " +
            NameOf(info, function.memid);
    for (SHORT i = 0; i < function.cParams; ++i) {
      const ELEMDESC& parameter = function.lprgelemdescParam[i];
      text += ", " + std::to_string(parameter.paramdesc.wParamFlags) + TypeText(info, parameter.tdesc);
    }
    text += "\n";
  });
  VARDESC* constant = nullptr;
  for (UINT i = 0; SUCCEEDED(info->GetVarDesc(i, &constant)); ++i) {
    text += "  " + NameOf(info, constant->memid) + " = " + automation::TextOf(*constant->lpvarValue) + "\n";
    info->ReleaseVarDesc(constant);
  }
  return text;
}

TEST(Library, TheBinaryInterfaceIsNeverChangedUnknowingly) {
  ComPtr<ITypeLib> library;
  ASSERT_EQ(S_OK, LoadRegTypeLib(LIBID_TeskReader99, 1, 0, LOCALE_NEUTRAL, &library));
  std::string text;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, library->GetTypeInfo(i, &info));
    text += TypeLines(EarlyView(info).Get());
  }
  EXPECT_EQ(std::string::npos, text.find(", 1 27")) << "Visual Basic takes arrays by reference alone";
  std::uint64_t sum = 14695981039346656037U;
  for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211U;
  // The text lies beside this program, to be compared with that of an older library after a wanted change.
  std::ofstream(platform::WideToUtf8(ProgramFolder() + L"TeskReader99.tlb.txt"), std::ios::binary) << text;
  EXPECT_EQ(502, std::count(text.begin(), text.end(), '\n'));
  EXPECT_EQ(14823040078381453077U, sum);
}

// Two values that a property of this type takes; none for arrays and objects.
std::vector<Variant> Samples(const TYPEDESC& type, bool ofControl) {
  std::vector<Variant> samples;
  const auto numbers = [&](std::int32_t first, std::int32_t second) {
    samples.emplace_back(first);
    samples.emplace_back(second);
  };
  if (type.vt == VT_BOOL) {
    samples.emplace_back(false);
    samples.emplace_back(true);
  } else if (type.vt == VT_BSTR) {
    samples.emplace_back(std::string("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x96\xA8"));
    samples.emplace_back(std::string());
  } else if (type.vt == VT_I2) {
    ofControl ? numbers(12, 3) : numbers(-32768, 32767);
  } else if (type.vt == VT_I4) {
    ofControl ? numbers(600'000, 60'000) : numbers(-2147483647, 2147483646);
  } else if (type.vt == VT_R4 || type.vt == VT_USERDEFINED) {
    numbers(1, 2);
  }
  return samples;
}

// Sets every writable property through one interface and reads it back through the other; yields how many.
int ExpectProperties(IUnknown* object, bool ofControl) {
  ComPtr<IDispatch> late;
  ComPtr<ITypeInfo> info;
  TYPEATTR* type = nullptr;
  ComPtr<IUnknown> early;
  EXPECT_EQ(S_OK, object->QueryInterface(IID_PPV_ARGS(&late)));
  EXPECT_EQ(S_OK, late->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info));
  info = EarlyView(info);
  EXPECT_EQ(S_OK, info->GetTypeAttr(&type));
  EXPECT_EQ(S_OK, object->QueryInterface(type->guid, &early));
  info->ReleaseTypeAttr(type);
  const auto invoke = [&](bool isLate, DISPID id, WORD flags, DISPPARAMS parameters, VARIANT* result) {
    return isLate ? late->Invoke(id, IID_NULL, 0, flags, &parameters, result, nullptr, nullptr)
                  : info->Invoke(early.Get(), id, flags, &parameters, result, nullptr, nullptr);
  };
  int count = 0;
  ForEachFunction(info.Get(), [&](const FUNCDESC& function) {
    const std::string name = NameOf(info.Get(), function.memid);
    if (function.invkind != INVOKE_PROPERTYPUT || function.cParams != 1) return;
    if (name == "PortOpen" || name == "Settings") return;  // takes a line that is there, and its settings
    const auto samples = Samples(function.lprgelemdescParam[0].tdesc, ofControl);
    count += samples.empty() ? 0 : 1;
    for (const Variant& sample : samples) {
      for (const bool isLate : {false, true}) {
        Variant value = automation::Dereferenced(sample);
        DISPID put = DISPID_PROPERTYPUT;
        Variant found;
        EXPECT_EQ(S_OK, invoke(isLate, function.memid, DISPATCH_PROPERTYPUT, {&value, &put, 1, 1}, nullptr))
            << name;
        EXPECT_EQ(S_OK, invoke(!isLate, function.memid, DISPATCH_PROPERTYGET, {}, &found)) << name;
        EXPECT_EQ(automation::TextOf(sample), automation::TextOf(found)) << name;
      }
    }
  });
  return count;
}

TEST(Properties, AreKeptAsGivenWhetherTheHostIsBoundEarlyOrLate) {
  int count = 0;
  for (const CLSID& id : {CLSID_clsTeskReader, CLSID_clsTeskReaderWindow, CLSID_clsTeskReaderBarcode,
                          CLSID_clsTeskReaderProfile, CLSID_clsTeskReaderProfiles}) {
    count += ExpectProperties(Create<IUnknown>(id).Get(), false);
  }
  const auto printer = Create<_clsTeskReaderPrinter>(CLSID_clsTeskReaderPrinter);
  printer->SetType(::teskReaderTypeScanningSystemsSR601);
  count += ExpectProperties(printer.Get(), false);
  ComPtr<IDispatch> form;
  const auto reader = NewReader();
  ASSERT_EQ(S_OK, reader->get_fComm(&form));
  automation::PutProperty(*automation::GetObjectProperty(*form.Get(), L"tmrScan").Get(), L"Interval",
                          Variant(std::int32_t{60'000}));
  for (const wchar_t* control : {L"mscComm", L"tmrScan"}) {
    count += ExpectProperties(automation::GetObjectProperty(*form.Get(), control).Get(), true);
  }
  EXPECT_EQ(133, count);
}

TEST(Properties, SizesKeepTheirLowerBound) {
  const auto reader = NewReader();
  for (const std::int32_t lower : {-2, 0, 1, 7}) {
    Variant sizes;
    sizes.parray = automation::NewArray(Int16Array({9, 3, 7}, lower));
    sizes.vt = VT_ARRAY | VT_I2;
    Variant found;
    EXPECT_EQ(S_OK, reader->put_Side1Rows(&sizes.parray));
    EXPECT_EQ(S_OK, reader->get_Side1Rows(&found.parray));
    found.vt = VT_ARRAY | VT_I2;
    EXPECT_EQ(Described(sizes), Described(found));
  }
}

TEST(Properties, AnObjectKeepsItsIdentityWhileItIsHeld) {
  const auto reader = NewReader();
  ComPtr<_clsTeskReaderWindows> first;
  ComPtr<_clsTeskReaderWindows> second;
  reader->get_Windows(&first);
  reader->get_Windows(&second);
  EXPECT_EQ(first.Get(), second.Get());
  const auto printer = Create<_clsTeskReaderPrinter>(CLSID_clsTeskReaderPrinter);
  printer->SetType(::teskReaderTypeScanningSystemsSR601);
  printer->put_Distance(99);
  ASSERT_EQ(S_OK, reader->putref_Printer(printer.Get()));
  ComPtr<_clsTeskReaderPrinter> asked;
  reader->get_Printer(&asked);
  EXPECT_EQ(printer.Get(), asked.Get());
  reader->put_ReaderType(::teskReaderTypeNCSOpScan2);
  SHORT distance = -1;
  printer->get_Distance(&distance);
  EXPECT_EQ(0, distance) << "the host's imprinter is the one that the reader re-types";
}

TEST(Properties, SavedByOneReaderAreLoadedByAnother) {
  const Variant key(std::string("Software\\TeskReader99 tests\\Lab"));
  const auto first = NewReader();
  const auto second = NewReader();
  VARIANT_BOOL saved = VARIANT_FALSE;
  VARIANT_BOOL loaded = VARIANT_FALSE;
  ASSERT_EQ(S_OK, first->LoadDefaults(::teskReaderTypeScantronScanMark5500, &saved));
  first->put_Port(7);
  EXPECT_EQ(S_OK, first->SaveSettings(::teskReaderRegistryKeyCurrentUser, key.bstrVal, &saved));
  EXPECT_EQ(S_OK, second->LoadSettings(::teskReaderRegistryKeyCurrentUser, key.bstrVal, &loaded));
  ::teskReaderType type = {};
  SHORT port = 0;
  second->get_ReaderType(&type);
  second->get_Port(&port);
  EXPECT_TRUE(saved && loaded);
  EXPECT_EQ(std::make_pair(::teskReaderTypeScantronScanMark5500, SHORT{7}), std::make_pair(type, port));
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\TeskReader99 tests"));
}

}  // namespace
}  // namespace tesk::test
