// Texts and variants.
#include "automation/Values.h"

#include <algorithm>
#include <cstddef>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "platform/windows/Text.h"

namespace tesk::automation {
namespace {

// Longer than any host's; one that refers to itself has no end.
constexpr int kLongestChain = 16;

// Bytes of a variable of a type, as far as values convert to it; 0 for other types.
std::size_t SizeOf(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY:
      return 8;
    default:
      return 0;
  }
}

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

const VARIANT& EndOf(const VARIANT& value) {
  const VARIANT* at = &value;
  for (int steps = 0; (at->vt & VT_BYREF) != 0; ++steps) {
    if (at->byref == nullptr || steps == kLongestChain) throw TypeMismatch();
    if (at->vt != (VT_BYREF | VT_VARIANT)) break;
    at = at->pvarVal;
  }
  return *at;
}

Variant Dereferenced(const VARIANT& value) {
  Variant result;
  if (FAILED(VariantCopyInd(&result, const_cast<VARIANT*>(&EndOf(value))))) throw TypeMismatch();
  return result;
}

Variant Converted(const VARIANT& value, VARTYPE type) {
  Variant direct = Dereferenced(value);
  Variant result;
  const HRESULT status = VariantChangeTypeEx(&result, &direct, LOCALE_INVARIANT, VARIANT_ALPHABOOL, type);
  if (FAILED(status)) throw TypeMismatch();
  return result;
}

void Store(const VARIANT& reference, const VARIANT& value) {
  auto& variable = const_cast<VARIANT&>(EndOf(reference));
  if ((variable.vt & VT_BYREF) == 0) {
    if (FAILED(VariantCopy(&variable, const_cast<VARIANT*>(&value)))) throw TypeMismatch();
    return;
  }
  const auto type = static_cast<VARTYPE>(variable.vt & ~VT_BYREF);
  Variant converted = Converted(value, type);
  if (type == VT_DECIMAL) {
    *variable.pdecVal = converted.decVal;
    return;
  }
  if (SizeOf(type) == 0) throw TypeMismatch();
  // Swapped: what stood there goes with the converted value.
  auto* data = reinterpret_cast<std::byte*>(&converted.llVal);
  std::swap_ranges(data, data + SizeOf(type), static_cast<std::byte*>(variable.byref));
}

bool BooleanOf(const VARIANT& value) { return Converted(value, VT_BOOL).boolVal != VARIANT_FALSE; }

std::int32_t Int32Of(const VARIANT& value) { return Converted(value, VT_I4).lVal; }

std::string TextOf(const VARIANT& value) { return TextOf(Converted(value, VT_BSTR).bstrVal); }

bool LeftOut(const VARIANT& value) {
  const VARIANT& end = EndOf(value);
  return end.vt == VT_ERROR && end.scode == DISP_E_PARAMNOTFOUND;
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
