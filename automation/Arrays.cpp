#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "automation/Values.h"
#include "base/RunTimeError.h"
#include "base/conversions.h"

namespace tesk::automation {
namespace {

constexpr std::int64_t kLargestExtent = std::numeric_limits<std::int16_t>::max();

SAFEARRAY* Create(VARTYPE type, std::span<SAFEARRAYBOUND> bounds) {
  SAFEARRAY* array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
  if (array == nullptr) throw RunTimeError(kErrorOutOfMemory, "Out of memory");
  return array;
}

SAFEARRAY* CreateList(VARTYPE type, std::size_t count, LONG lowerBound) {
  SAFEARRAYBOUND bounds[] = {{Narrow<ULONG>(count), lowerBound}};
  return Create(type, bounds);
}

// The elements of an array, held in place.
template <class Element>
class Elements {
 public:
  explicit Elements(SAFEARRAY* array) : array_(array) {
    if (FAILED(SafeArrayAccessData(array_, reinterpret_cast<void**>(&data_)))) throw TypeMismatch();
  }
  Elements(const Elements&) = delete;
  Elements& operator=(const Elements&) = delete;
  ~Elements() { SafeArrayUnaccessData(array_); }
  Element& operator[](std::size_t i) const { return data_[i]; }
  Element* Data() const { return data_; }

 private:
  SAFEARRAY* array_;
  Element* data_ = nullptr;
};

// One dimension, from 1 on.
struct Dimension {
  LONG lower = 1;
  std::int64_t count = 0;
  std::int64_t Upper() const { return lower + count - 1; }
};

// From the array's own description: the system's functions wrap around at the ends of 32 bits.
Dimension DimensionOf(SAFEARRAY* array, UINT number) {
  const SAFEARRAYBOUND& bound = array->rgsabound[SafeArrayGetDim(array) - number];
  return {bound.lLbound, bound.cElements};
}

void CheckRank(SAFEARRAY* array, UINT rank) {
  if (SafeArrayGetDim(array) != rank) throw TypeMismatch();
}

// Arrays of some hosts do not tell the type of their elements: numbers of the size that is expected are then
// taken for those.
VARTYPE TypeOf(SAFEARRAY* array, VARTYPE expected = VT_EMPTY, ULONG size = 0) {
  VARTYPE type = VT_EMPTY;
  if (SUCCEEDED(SafeArrayGetVartype(array, &type))) return type;
  if (array->cbElements != size) throw TypeMismatch();
  return expected;
}

// All elements in the order in which they lie.
std::vector<std::int16_t> ShortsOf(SAFEARRAY* array, std::size_t count) {
  std::vector<std::int16_t> values(count);
  const VARTYPE type = TypeOf(array, VT_I2, sizeof(std::int16_t));
  if (type == VT_I2) {
    const Elements<std::int16_t> elements(array);
    std::copy_n(elements.Data(), count, values.begin());
  } else if (type == VT_VARIANT) {
    const Elements<VARIANT> elements(array);
    for (std::size_t i = 0; i < count; ++i) values[i] = Converted(elements[i], VT_I2).iVal;
  } else {
    throw TypeMismatch();
  }
  return values;
}

std::string ByteList(SAFEARRAY* array) {
  CheckRank(array, 1);
  const auto count = static_cast<std::size_t>(DimensionOf(array, 1).count);
  std::string bytes(count, '\0');
  const VARTYPE type = TypeOf(array, VT_UI1, sizeof(char));
  if (type == VT_UI1) {
    const Elements<char> elements(array);
    std::copy_n(elements.Data(), count, bytes.begin());
  } else if (type == VT_VARIANT) {
    const Elements<VARIANT> elements(array);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(Converted(elements[i], VT_UI1).bVal);
  } else {
    throw TypeMismatch();
  }
  return bytes;
}

}  // namespace

std::string BytesOf(const VARIANT& value) {
  const Variant direct = Dereferenced(value);
  if (direct.vt == VT_EMPTY || direct.vt == VT_NULL) return {};
  if ((direct.vt & VT_ARRAY) != 0) return direct.parray == nullptr ? std::string() : ByteList(direct.parray);
  if (direct.vt != VT_BSTR) throw TypeMismatch();
  std::string bytes;
  for (UINT i = 0; i < SysStringLen(direct.bstrVal); ++i) {
    if (direct.bstrVal[i] > 0xFF) throw TypeMismatch();
    bytes += static_cast<char>(direct.bstrVal[i]);
  }
  return bytes;
}

Variant BytesVariant(std::string_view bytes) {
  Variant result;
  result.parray = CreateList(VT_UI1, bytes.size(), 0);
  result.vt = VT_ARRAY | VT_UI1;
  const Elements<char> elements(result.parray);
  std::copy(bytes.begin(), bytes.end(), elements.Data());
  return result;
}

// The first index of a safe array runs fastest, the rows of a side array lie one behind the other.
SAFEARRAY* NewArray(const SideArray& side) {
  SAFEARRAYBOUND bounds[] = {{Narrow<ULONG>(side.Rows()), 1}, {Narrow<ULONG>(side.Columns()), 1}};
  SAFEARRAY* array = Create(VT_I2, bounds);
  const Elements<std::int16_t> elements(array);
  std::size_t i = 0;
  for (std::int32_t column = 1; column <= side.Columns(); ++column) {
    for (std::int32_t row = 1; row <= side.Rows(); ++row) elements[i++] = side.At(row, column);
  }
  return array;
}

SAFEARRAY* NewArray(const Int16Array& sizes) {
  SAFEARRAY* array = CreateList(VT_I2, sizes.Elements().size(), sizes.LowerBound());
  const Elements<std::int16_t> elements(array);
  std::copy(sizes.Elements().begin(), sizes.Elements().end(), elements.Data());
  return array;
}

SAFEARRAY* NewArray(const BarcodeArray& texts) {
  SAFEARRAY* array = CreateList(VT_BSTR, texts.size(), 1);
  const Elements<BSTR> elements(array);
  for (std::size_t i = 0; i < texts.size(); ++i) elements[i] = NewText(texts[i]);
  return array;
}

SideArray SideArrayOf(SAFEARRAY* array) {
  if (array == nullptr) return {};
  CheckRank(array, 2);
  const Dimension rows = DimensionOf(array, 1);
  const Dimension columns = DimensionOf(array, 2);
  if (rows.Upper() > kLargestExtent || columns.Upper() > kLargestExtent) throw TypeMismatch();
  const auto values = ShortsOf(array, Narrow<std::size_t>(rows.count * columns.count));
  SideArray side(static_cast<std::int32_t>(rows.Upper()), static_cast<std::int32_t>(columns.Upper()));
  std::size_t i = 0;
  for (std::int64_t column = columns.lower; column <= columns.Upper(); ++column) {
    for (std::int64_t row = rows.lower; row <= rows.Upper(); ++row, ++i) {
      if (row < 1 || column < 1) continue;
      side.At(static_cast<std::int32_t>(row), static_cast<std::int32_t>(column)) = values[i];
    }
  }
  return side;
}

Int16Array Int16ArrayOf(SAFEARRAY* array) {
  if (array == nullptr) return {};
  CheckRank(array, 1);
  const Dimension sizes = DimensionOf(array, 1);
  if (sizes.Upper() > std::numeric_limits<std::int32_t>::max()) throw TypeMismatch();
  return Int16Array(ShortsOf(array, static_cast<std::size_t>(sizes.count)), sizes.lower);
}

BarcodeArray BarcodeArrayOf(SAFEARRAY* array) {
  if (array == nullptr) return {};
  CheckRank(array, 1);
  BarcodeArray texts(static_cast<std::size_t>(DimensionOf(array, 1).count));
  const VARTYPE type = TypeOf(array);
  if (type == VT_BSTR) {
    const Elements<BSTR> elements(array);
    for (std::size_t i = 0; i < texts.size(); ++i) texts[i] = TextOf(elements[i]);
  } else if (type == VT_VARIANT) {
    const Elements<VARIANT> elements(array);
    for (std::size_t i = 0; i < texts.size(); ++i) texts[i] = TextOf(elements[i]);
  } else {
    throw TypeMismatch();
  }
  return texts;
}

}  // namespace tesk::automation
