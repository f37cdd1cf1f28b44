// Texts and variants.
#include "automation/Values.h"

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "platform/windows/Text.h"

namespace tesk::automation {
namespace {

RunTimeError OutOfMemory() { return {kErrorOutOfMemory, "Out of memory"}; }

}  // namespace

std::string TextOf(BSTR text) {
  return text == nullptr ? std::string() : platform::WideToUtf8({text, SysStringLen(text)});
}

BSTR NewText(std::string_view text) {
  const std::wstring wide = platform::Utf8ToWide(text);
  BSTR result = SysAllocStringLen(wide.data(), Narrow<UINT>(wide.size()));
  if (result == nullptr) throw OutOfMemory();
  return result;
}

Variant Dereferenced(const VARIANT& value) {
  Variant result;
  if (FAILED(VariantCopyInd(&result, const_cast<VARIANT*>(&value)))) throw TypeMismatch();
  return result;
}

Variant Converted(const VARIANT& value, VARTYPE type) {
  Variant direct = Dereferenced(value);
  Variant result;
  const HRESULT status = VariantChangeTypeEx(&result, &direct, LOCALE_INVARIANT, VARIANT_ALPHABOOL, type);
  if (FAILED(status)) throw TypeMismatch();
  return result;
}

bool BooleanOf(const VARIANT& value) { return Converted(value, VT_BOOL).boolVal != VARIANT_FALSE; }

std::int32_t Int32Of(const VARIANT& value) { return Converted(value, VT_I4).lVal; }

std::string TextOf(const VARIANT& value) { return TextOf(Converted(value, VT_BSTR).bstrVal); }

bool LeftOut(const VARIANT& value) {
  const VARIANT* at = &value;
  while (at->vt == (VT_BYREF | VT_VARIANT) && at->pvarVal != nullptr) at = at->pvarVal;
  return at->vt == VT_ERROR && at->scode == DISP_E_PARAMNOTFOUND;
}

Index IndexOf(const VARIANT& value) {
  const Variant direct = Dereferenced(value);
  if (direct.vt == VT_BSTR) return TextOf(direct.bstrVal);
  return Converted(direct, VT_R8).dblVal;
}

std::optional<Index> PlaceOf(const VARIANT& value) {
  if (LeftOut(value)) return std::nullopt;
  return IndexOf(value);
}

}  // namespace tesk::automation
