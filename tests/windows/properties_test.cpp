// Every property early-bound through the generated header, and late-bound from a script of Wine's own
// script host.
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "platform/windows/Text.h"
#include "tests/windows/Host.h"

namespace tesk::test {
namespace {

// Sets a property and expects to read it back.
template <class Interface, class Value>
void SetAndReadBack(Interface* object, HRESULT (STDMETHODCALLTYPE Interface::*put)(Value),
                    HRESULT (STDMETHODCALLTYPE Interface::*get)(Value*), Value value, const char* name) {
  Value found = {};
  EXPECT_EQ(S_OK, (object->*put)(value)) << name;
  EXPECT_EQ(S_OK, (object->*get)(&found)) << name;
  EXPECT_EQ(value, found) << name;
}

template <class Interface>
void SetAndReadBack(Interface* object, HRESULT (STDMETHODCALLTYPE Interface::*put)(BSTR),
                    HRESULT (STDMETHODCALLTYPE Interface::*get)(BSTR*), const std::string& value,
                    const char* name) {
  const Variant text(value);
  Variant found;
  EXPECT_EQ(S_OK, (object->*put)(text.bstrVal)) << name;
  EXPECT_EQ(S_OK, (object->*get)(&found.bstrVal)) << name;
  found.vt = VT_BSTR;
  EXPECT_EQ(value, automation::TextOf(found.bstrVal)) << name;
}

#define TESK_CHECK(object, Interface, Name, ...)                                                           \
  for (auto value : {__VA_ARGS__}) {                                                                       \
    SetAndReadBack(                                                                                        \
        (object).Get(), &Interface::put_##Name, &Interface::get_##Name,                                    \
        static_cast<std::remove_cvref_t<decltype(Sample((object).Get(), &Interface::get_##Name))>>(value), \
        #Interface "." #Name);                                                                             \
  }

template <class Interface, class Value>
Value Sample(Interface*, HRESULT (STDMETHODCALLTYPE Interface::*)(Value*));
template <class Interface>
std::string Sample(Interface*, HRESULT (STDMETHODCALLTYPE Interface::*)(BSTR*));

constexpr const char* kTexts[] = {"N", "", "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x96\xA8"};

TEST(EarlyBound, EngineKeepsWhatItIsGiven) {
  const auto reader = NewReader();
  ASSERT_TRUE(reader);
#define R(Name, ...) TESK_CHECK(reader, _clsTeskReader, Name, __VA_ARGS__)
  R(ImagingEnabled, -1, 0);
  R(ReaderGrade, -1, 0);
  R(Duplex, -1, 0);
  R(DuplexForm, -1, 0);
  R(Barcode, -1, 0);
  R(Image, -1, 0);
  R(Feeder, -1, 0);
  R(Rejecter, -1, 0);
  R(Windowing, -1, 0);
  R(Continuous, -1, 0);
  R(CancelScan, 0, -1);
  R(BaudRate, 110, 256000);
  R(DataBits, 4, 8);
  R(FlowControl, 0, 3);
  R(StopBits, 1.5F, 2.0F);
  R(Port, -32768, 32767);
  R(SleepTime, -2147483647, 2147483647);
  R(TimeOut, 0, 600);
  R(ColorDepth, 1, 2, 0);
  R(Resolution, -32768, 32767);
  R(MarkCutOff, -1, 15);
  R(MarkDiscrimination, -1, 15);
  R(ErasureThreshold, -1, 15);
  R(RecognitionThreshold, -1, 15);
  R(RecognitionThresholdMax, -1, 15);
  R(RecognitionMode, 1, 2);
  R(ReaderType, 46, 0, 1000);
  R(Side1Image, kTexts[0], kTexts[1], kTexts[2]);
  R(Side2Image, kTexts[2]);
  R(Side1Coordinates, kTexts[2]);
  R(Side2Coordinates, kTexts[2]);
  R(Parity, kTexts[0], kTexts[1], kTexts[2]);
  R(HelpFile, kTexts[2], kTexts[1]);
#undef R
}

TEST(EarlyBound, ProfileKeepsWhatItIsGiven) {
  const auto profile = Create<_clsTeskReaderProfile>(CLSID_clsTeskReaderProfile);
  ASSERT_TRUE(profile);
  constexpr int kNumbers[] = {-1, 0};
#define TESK_VALUE(Type, Name, Initial) \
  TESK_CHECK(profile, _clsTeskReaderProfile, Name, kNumbers[0], kNumbers[1])
#define TESK_TEXT(Name) TESK_CHECK(profile, _clsTeskReaderProfile, Name, kTexts[2], kTexts[1])
#define TESK_READ_ONLY(Name)
#include "profiles/profileProperties.inc"
}

TEST(EarlyBound, PlainObjectsKeepWhatTheyAreGiven) {
  const auto window = Create<_clsTeskReaderWindow>(CLSID_clsTeskReaderWindow);
  ASSERT_TRUE(window);
#define W(Name) TESK_CHECK(window, _clsTeskReaderWindow, Name, -32768, 32767)
  W(StartRow);
  W(NumRows);
  W(RowGap);
  W(StartCol);
  W(NumCols);
  W(ColGap);
  W(Page);
  W(Orientation);
  W(NumItems);
  W(NumChoices);
#undef W
  const auto barcode = Create<_clsTeskReaderBarcode>(CLSID_clsTeskReaderBarcode);
  ASSERT_TRUE(barcode);
#define B(Name) TESK_CHECK(barcode, _clsTeskReaderBarcode, Name, -32768, 32767)
  B(Page);
  B(Field);
  B(Distance);
  B(Length);
  B(Symbology);
  B(Orientation);
#undef B
  const auto printer = Create<_clsTeskReaderPrinter>(CLSID_clsTeskReaderPrinter);
  ASSERT_TRUE(printer);
  printer->SetType(::teskReaderTypeScanningSystemsSR601);
#define P(Name, ...) TESK_CHECK(printer, _clsTeskReaderPrinter, Name, __VA_ARGS__)
  P(Enabled, 0, -1);
  P(Active, 0, -1);
  P(Buffer1, kTexts[2]);
  P(Buffer2, kTexts[2]);
  P(Buffer3, kTexts[2]);
  P(Distance, -32768, 32767);
#undef P
}

TEST(EarlyBound, SizesKeepTheirLowerBound) {
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

TEST(EarlyBound, AnObjectKeepsItsIdentityWhileItIsHeld) {
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

TEST(EarlyBound, SettingsSavedByOneReaderAreLoadedByAnother) {
  const Variant key(std::string("Software\\TeskReader99 tests\\Lab"));
  const auto first = NewReader();
  const auto second = NewReader();
  VARIANT_BOOL done = VARIANT_FALSE;
  ASSERT_EQ(S_OK, first->LoadDefaults(::teskReaderTypeScantronScanMark5500, &done));
  first->put_Port(7);
  EXPECT_EQ(S_OK, first->SaveSettings(::teskReaderRegistryKeyCurrentUser, key.bstrVal, &done));
  EXPECT_EQ(VARIANT_TRUE, done);
  EXPECT_EQ(S_OK, second->LoadSettings(::teskReaderRegistryKeyCurrentUser, key.bstrVal, &done));
  EXPECT_EQ(VARIANT_TRUE, done);
  ::teskReaderType type = {};
  SHORT port = 0;
  second->get_ReaderType(&type);
  second->get_Port(&port);
  EXPECT_EQ(::teskReaderTypeScantronScanMark5500, type);
  EXPECT_EQ(7, port);
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\TeskReader99 tests"));
}

// ---- From scripts

std::wstring ScriptPath(const wchar_t* name) { return SourceFolder() + L"scripts\\" + name; }

std::string ScriptText(const wchar_t* name) {
  std::ifstream file(platform::WideToUtf8(ScriptPath(name)), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void ExpectPassed(const Ended& ended) {
  EXPECT_EQ(0U, ended.status);
  EXPECT_NE(std::string::npos, ended.output.find("PASSED")) << ended.output;
}

TEST(LateBound, EveryPropertyIsSetAndReadBackFromAScript) {
  ExpectPassed(RunProgram(L"cscript //nologo " + ScriptPath(L"properties.vbs")));
}

TEST(LateBound, CollectionsArgumentsAndErrorsAreAsScriptsExpectThem) {
  ExpectPassed(RunProgram(L"cscript //nologo " + ScriptPath(L"objects.vbs")));
}

TEST(LateBound, JScriptSetsObjectsAndEnumerates) {
  ExpectPassed(RunProgram(L"cscript //nologo " + ScriptPath(L"objects.js")));
}

TEST(LateBound, ScriptsHandleEventsAndChangeTheirArguments) {
  ExpectPassed(RunProgram(L"\"" + ProgramFolder() + L"scripthost.exe\" " + ScriptPath(L"events.vbs")));
}

// The script is written by hand: a property that is new in the library must not be forgotten in it.
TEST(LateBound, NoWritablePropertyIsMissingFromTheScript) {
  ComPtr<ITypeLib> library;
  ASSERT_EQ(S_OK, LoadTypeLibEx(ServerPath().c_str(), REGKIND_NONE, &library));
  const std::string script = ScriptText(L"properties.vbs");
  int writable = 0;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, library->GetTypeInfo(i, &info));
    FUNCDESC* function = nullptr;
    for (UINT j = 0; SUCCEEDED(info->GetFuncDesc(j, &function)); ++j) {
      BSTR name = nullptr;
      info->GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr);
      const std::string text = automation::TextOf(name);
      SysFreeString(name);
      const bool put = function->invkind == INVOKE_PROPERTYPUT || function->invkind == INVOKE_PROPERTYPUTREF;
      info->ReleaseFuncDesc(function);
      // Both need an open port, which the reading tests have.
      if (!put || text == "Output" || text == "PortOpen") continue;
      ++writable;
      EXPECT_NE(std::string::npos, script.find("." + text + (text == "HelpID" ? "(0) = " : " = "))) << text;
    }
  }
  EXPECT_LT(140, writable);
}

}  // namespace
}  // namespace tesk::test
