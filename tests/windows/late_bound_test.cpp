// Late-bound calls: every way in which hosts pass arrays, variables, and arguments by name.
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/windows/Reading.h"

namespace tesk::test {
namespace {

VARIANT ReferenceTo(VARTYPE type, void* variable) {
  VARIANT reference;
  VariantInit(&reference);
  reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
  reference.byref = variable;
  return reference;
}

class LateCall : public Reading {
 protected:
  HRESULT Invoke(const wchar_t* name, WORD flags, DISPPARAMS parameters, VARIANT* result = nullptr) {
    DISPID id = DISPID_UNKNOWN;
    auto* writable = const_cast<wchar_t*>(name);
    EXPECT_EQ(S_OK, reader->GetIDsOfNames(IID_NULL, &writable, 1, LOCALE_USER_DEFAULT, &id));
    wrong = kNone;
    return reader->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, result, nullptr, &wrong);
  }
  HRESULT PutRows(VARIANT value) {
    DISPID put = DISPID_PROPERTYPUT;
    return Invoke(L"Side1Rows", DISPATCH_PROPERTYPUT, {&value, &put, 1, 1});
  }
  // A batch of one sheet that counts in the variable behind `counter`, which holds 4 before it.
  HRESULT ReadFifthSheet(VARIANT counter) {
    Variant reversed[] = {Variant(), Variant(std::int32_t{5}), Variant(false)};
    VARIANT arguments[] = {counter, reversed[1], reversed[2]};
    return Invoke(L"ReadBatch", DISPATCH_METHOD, {arguments, nullptr, 3, 0});
  }

  static constexpr UINT kNone = std::numeric_limits<UINT>::max();
  UINT wrong = kNone;  // the argument that the last call complained of
};

TEST_F(LateCall, ArraysAreTakenHoweverTheyArePassed) {
  Variant shorts;
  shorts.parray = automation::NewArray(Int16Array({9, 3, 7}));
  shorts.vt = VT_ARRAY | VT_I2;
  Variant variants;
  variants.parray = SafeArrayCreateVector(VT_VARIANT, 1, 3);
  variants.vt = VT_ARRAY | VT_VARIANT;
  for (LONG i = 1; i <= 3; ++i) {
    Variant element{std::int32_t{i == 1 ? 9 : i == 2 ? 3 : 7}};
    ASSERT_EQ(S_OK, SafeArrayPutElement(variants.parray, &i, &element));
  }
  // As hosts make them that know nothing of the type that stands before a description.
  std::int16_t elements[] = {9, 3, 7};
  SAFEARRAY untyped = {1, FADF_STATIC | FADF_FIXEDSIZE, sizeof(std::int16_t), 0, elements, {{3, 1}}};
  SAFEARRAY* untypedAt = &untyped;
  VARIANT untypedValue = ReferenceTo(VT_ARRAY | VT_I2, &untypedAt);
  VARIANT toShorts = ReferenceTo(VT_ARRAY | VT_I2, &shorts.parray);
  struct {
    const char* what;
    VARIANT value;
  } const table[] = {
      {"by value", shorts},
      {"by reference", toShorts},
      {"a variant by reference", ReferenceTo(VT_VARIANT, &shorts)},
      {"a variant by reference that holds a reference", ReferenceTo(VT_VARIANT, &toShorts)},
      {"of variants", variants},
      {"of variants, by reference", ReferenceTo(VT_ARRAY | VT_VARIANT, &variants.parray)},
      {"of variants, in a variant by reference", ReferenceTo(VT_VARIANT, &variants)},
      {"without its type", untypedValue},
      {"without its type, in a variant by reference", ReferenceTo(VT_VARIANT, &untypedValue)},
  };
  for (const auto& row : table) {
    Variant found;
    SAFEARRAY* none = nullptr;
    EXPECT_EQ(S_OK, reader->put_Side1Rows(&none));
    EXPECT_EQ(S_OK, PutRows(row.value)) << row.what;
    EXPECT_EQ(S_OK, reader->get_Side1Rows(&found.parray));
    found.vt = VT_ARRAY | VT_I2;
    EXPECT_EQ("1..3: 9 3 7", Described(found)) << row.what;
  }
  EXPECT_EQ(VT_ARRAY | VT_VARIANT, variants.vt) << "the host's array is left as it is";
}

// Whatever a variable's type, it shows the count while the batch runs and afterwards, also from behind a variant.
TEST_F(LateCall, ResultsReachVariablesOfEveryTypeThatHoldsThem) {
  ASSERT_TRUE(Start(kSheetsPort));
  ASSERT_TRUE(EndReader());
  EjectEverySheet();
  const VARTYPE types[] = {VT_UI1, VT_I2, VT_R8, VT_CY, VT_BSTR, VT_DECIMAL, VT_VARIANT};
  for (const VARTYPE type : types) {
    // A variant holds every type behind its own eight bytes, but a decimal, which it is.
    Variant variable(std::int32_t{4});
    if (type != VT_VARIANT) {
      ASSERT_EQ(S_OK, VariantChangeType(&variable, &variable, 0, type)) << type;
    }
    const bool whole = type == VT_VARIANT || type == VT_DECIMAL;
    VARIANT counter = ReferenceTo(type, whole ? static_cast<void*>(&variable) : &variable.llVal);
    int sheets = 0;
    sink->handlers["AfterSheet"] = [&](const HostDispatch::Arguments&) {
      ++sheets;
      EXPECT_EQ(5, automation::Int32Of(variable)) << type << " while the batch runs";
    };
    EXPECT_EQ(S_OK, ReadFifthSheet(counter)) << type;
    EXPECT_EQ(5, automation::Int32Of(variable)) << type;
    EXPECT_EQ(1, sheets) << type << " counts to the limit";
  }
}

TEST_F(LateCall, ObjectsAreTakenFromVariablesOfEitherType) {
  for (const VARTYPE type : {VT_UNKNOWN, VT_DISPATCH}) {
    IUnknown* object = static_cast<IDispatch*>(errors.Get());
    object->AddRef();
    VARIANT variable = ReferenceTo(type, &object);
    Variant installed;
    EXPECT_EQ(S_OK, Invoke(L"SetError", DISPATCH_METHOD, {&variable, nullptr, 1, 0}, &installed));
    EXPECT_TRUE(automation::BooleanOf(installed));
    EXPECT_EQ(static_cast<IDispatch*>(errors.Get()), object);
    object->Release();
  }
}

TEST_F(LateCall, AVariableThatCannotHoldTheResultFailsTheCall) {
  ASSERT_TRUE(Start(kSheetsPort));
  ASSERT_TRUE(EndReader());
  EjectEverySheet();
  BYTE full = 255;
  VARIANT sheets[] = {ReferenceTo(VT_UI1, &full), Variant(std::int32_t{256}), Variant(false)};
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Invoke(L"ReadBatch", DISPATCH_METHOD, {sheets, nullptr, 3, 0}));
  EXPECT_EQ(0U, wrong);
  EXPECT_EQ(255, full);

  VARIANT circle = ReferenceTo(VT_VARIANT, &circle);
  VARIANT nowhere = ReferenceTo(VT_VARIANT, nullptr);
  Variant text(std::string("four"));
  for (const VARIANT& counter :
       {ReferenceTo(VT_I4, nullptr), ReferenceTo(VT_I2, nullptr), ReferenceTo(VT_VARIANT, nullptr),
        ReferenceTo(VT_VARIANT, &nowhere), circle, ReferenceTo(VT_BSTR, &text.bstrVal)}) {
    sink->names.clear();
    EXPECT_EQ(DISP_E_TYPEMISMATCH, ReadFifthSheet(counter)) << counter.vt;
    EXPECT_EQ(0U, wrong);
    EXPECT_TRUE(sink->names.empty()) << "nothing may be read for a call that fails";
  }
  for (const VARTYPE type : {VT_BSTR, VT_I2}) {
    VARIANT firmware = ReferenceTo(type, nullptr);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Invoke(L"Firmware", DISPATCH_METHOD, {&firmware, nullptr, 1, 0}));
  }
  VARIANT object = ReferenceTo(VT_DISPATCH, nullptr);
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Invoke(L"SetError", DISPATCH_METHOD, {&object, nullptr, 1, 0}));
  VARIANT port = ReferenceTo(VT_I2, nullptr);
  DISPID put = DISPID_PROPERTYPUT;
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Invoke(L"Port", DISPATCH_PROPERTYPUT, {&port, &put, 1, 1}));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, PutRows(ReferenceTo(VT_ARRAY | VT_I2, nullptr)));
}

TEST_F(LateCall, CallsOfTheWrongShapeFailAndTellTheArgument) {
  Variant numbers[] = {Variant(std::int32_t{1}), Variant(std::int32_t{1})};
  DISPID unknown[] = {99};
  DISPID negative[] = {-1};
  DISPID put[] = {DISPID_PROPERTYPUT};
  DISPID twice[] = {1, 1};
  DISPID first[] = {0};
  const wchar_t* const start = L"StartReader";
  const wchar_t* const page = L"ReadPage";
  const wchar_t* const batch = L"ReadBatch";
  const struct {
    const char* what;
    const wchar_t* name;
    DISPPARAMS parameters;
    HRESULT status;
    UINT wrong;
    WORD flags = DISPATCH_METHOD;
  } table[] = {
      {"a method to set",
       start,
       {numbers, nullptr, 1, 0},
       DISP_E_MEMBERNOTFOUND,
       kNone,
       DISPATCH_PROPERTYPUT},
      {"too many", start, {numbers, nullptr, 1, 0}, DISP_E_BADPARAMCOUNT, kNone},
      {"too few", L"LoadDefaults", {}, DISP_E_PARAMNOTOPTIONAL, 0},
      {"more names than arguments", page, {numbers, unknown, 0, 1}, DISP_E_BADPARAMCOUNT, kNone},
      {"no arguments where some are told", page, {nullptr, nullptr, 1, 0}, E_INVALIDARG, kNone},
      {"no names where one is told", page, {numbers, nullptr, 1, 1}, E_INVALIDARG, kNone},
      {"an unknown name", batch, {numbers, unknown, 2, 1}, DISP_E_PARAMNOTFOUND, 0},
      {"a name below all", batch, {numbers, negative, 2, 1}, DISP_E_PARAMNOTFOUND, 0},
      {"a method's value to set", page, {numbers, put, 1, 1}, DISP_E_PARAMNOTFOUND, 0},
      {"a name twice", batch, {numbers, twice, 2, 2}, DISP_E_PARAMNOTFOUND, 0},
      {"a place and its name", batch, {numbers, first, 2, 1}, DISP_E_PARAMNOTFOUND, 0},
  };
  for (const auto& row : table) {
    EXPECT_EQ(row.status, Invoke(row.name, row.flags, row.parameters)) << row.what;
    EXPECT_EQ(row.wrong, wrong) << row.what;
  }
  EXPECT_TRUE(FAILED(reader->Invoke(102, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr)));
  DISPPARAMS none = {};
  EXPECT_TRUE(FAILED(reader->Invoke(9999, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr)));
}

TEST_F(LateCall, NamedArgumentsFindTheirPlace) {
  wchar_t method[] = L"ReadBatch";
  wchar_t argument[] = L"lSheetCount";
  wchar_t unknown[] = L"lSheets";
  wchar_t* names[] = {method, argument, unknown};
  DISPID ids[3] = {};
  EXPECT_EQ(DISP_E_UNKNOWNNAME, reader->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids));
  EXPECT_EQ(DISPID_UNKNOWN, ids[2]);
  ASSERT_EQ(S_OK, reader->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, ids));
  LONG count = 5;
  VARIANT reference = ReferenceTo(VT_I4, &count);
  Variant result;
  EXPECT_EQ(S_OK, Invoke(L"ReadBatch", DISPATCH_METHOD, {&reference, &ids[1], 1, 1}, &result));
  EXPECT_FALSE(automation::BooleanOf(result)) << "no reader type, so nothing starts";
  EXPECT_EQ(5, count);
}

}  // namespace
}  // namespace tesk::test
