// Values on their way over the automation border: texts, variants and safe arrays, each checked on its way
// in. Everything here throws RunTimeError and nothing else.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "automation/Com.h"
#include "base/ObjectList.h"
#include "base/SideArray.h"
#include "engine/Seams.h"

namespace tesk::automation {

// A null text is an empty one.
std::string TextOf(BSTR text);
BSTR NewText(std::string_view text);  // the caller's

// A variant that is cleared at its end.
class Variant : public VARIANT {
 public:
  Variant() { VariantInit(this); }
  explicit Variant(bool value) : Variant() {
    vt = VT_BOOL;
    boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  }
  explicit Variant(std::int32_t value) : Variant() {
    vt = VT_I4;
    lVal = value;
  }
  explicit Variant(const std::string& text) : Variant() {
    bstrVal = NewText(text);
    vt = VT_BSTR;
  }
  explicit Variant(IDispatch* object) : Variant() {
    vt = VT_DISPATCH;
    pdispVal = object;
    if (object != nullptr) object->AddRef();
  }
  Variant(Variant&& other) noexcept : VARIANT(other) { VariantInit(&other); }
  Variant& operator=(Variant&& other) noexcept {
    std::swap<VARIANT>(*this, other);
    return *this;
  }
  ~Variant() { VariantClear(this); }
};

// Where references to variants end: at a value, or at a reference to a variable that is no variant. Error 13
// where they lead nowhere or in a circle.
const VARIANT& EndOf(const VARIANT& value);
// The value itself, whatever references lead to it; error 13 as above.
Variant Dereferenced(const VARIANT& value);
// Error 13 where the value does not convert; no locale has a say.
Variant Converted(const VARIANT& value, VARTYPE type);

// Puts a value into the variable that `reference` leads to, as a value of that variable's type. Error 13 where
// the variable cannot hold it, which then keeps its own.
void Store(const VARIANT& reference, const VARIANT& value);

bool BooleanOf(const VARIANT& value);
std::int32_t Int32Of(const VARIANT& value);
std::string TextOf(const VARIANT& value);

// True for an argument that was left out, and for one that says so.
bool LeftOut(const VARIANT& value);
// A text is a key, everything else must be a number.
Index IndexOf(const VARIANT& value);
std::optional<Index> PlaceOf(const VARIANT& value);

// Bytes as an array of bytes (or of variants that are bytes), or as a text of one byte per character; an
// empty variant holds none.
std::string BytesOf(const VARIANT& value);
Variant BytesVariant(std::string_view bytes);

// Arrays of the engine as safe arrays, the caller's: both indices of a side array from 1, a list of sizes
// with its own lower bound, barcode texts from 1. An empty one has no elements.
SAFEARRAY* NewArray(const SideArray& side);
SAFEARRAY* NewArray(const Int16Array& sizes);
SAFEARRAY* NewArray(const BarcodeArray& texts);

// And back. Null is an empty array. Error 13 for another rank or element type, for an element that does not
// convert, and for extents beyond 32767; elements below index 1 of a side array do not count.
SideArray SideArrayOf(SAFEARRAY* array);
Int16Array Int16ArrayOf(SAFEARRAY* array);
BarcodeArray BarcodeArrayOf(SAFEARRAY* array);

}  // namespace tesk::automation
