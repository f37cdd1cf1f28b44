// The derived reader name, and the table of properties behind ProfileProperties.
#include "profiles/clsTeskReaderProfile.h"

#include <iterator>
#include <type_traits>

#include "base/RunTimeError.h"
#include "base/readerNames.h"

namespace tesk {
namespace {

// The alternative of ProfileValue that carries a property declared as Declared.
template <class Declared>
using Carried = std::conditional_t<std::is_enum_v<Declared>, std::int32_t, Declared>;

template <class Declared>
constexpr ProfileValueType kTypeOf = ProfileValueType::Int32;
template <>
constexpr ProfileValueType kTypeOf<bool> = ProfileValueType::Boolean;
template <>
constexpr ProfileValueType kTypeOf<std::int16_t> = ProfileValueType::Int16;
template <>
constexpr ProfileValueType kTypeOf<float> = ProfileValueType::Single;
template <>
constexpr ProfileValueType kTypeOf<std::string> = ProfileValueType::Text;

template <class Declared>
ProfileValue Carry(const Declared& value) {
  return static_cast<Carried<Declared>>(value);
}

template <class Declared>
Declared ValueIn(const ProfileValue& value) {
  const auto* carried = std::get_if<Carried<Declared>>(&value);
  if (carried == nullptr) throw TypeMismatch();
  return static_cast<Declared>(*carried);
}

#define TESK_GETTER(Name) [](const clsTeskReaderProfile& profile) { return Carry(profile.Name()); }
#define TESK_SETTER(Type, Name) \
  [](clsTeskReaderProfile& profile, const ProfileValue& value) { profile.Set##Name(ValueIn<Type>(value)); }
#define TESK_VALUE(Type, Name, Initial) {#Name, kTypeOf<Type>, TESK_GETTER(Name), TESK_SETTER(Type, Name)},
#define TESK_TEXT(Name) TESK_VALUE(std::string, Name, )
#define TESK_READ_ONLY(Name) {#Name, ProfileValueType::Text, TESK_GETTER(Name), nullptr},

constexpr ProfileProperty kProperties[] = {
#include "profiles/profileProperties.inc"
};

#undef TESK_GETTER
#undef TESK_SETTER

static_assert(std::size(kProperties) == 73);

}  // namespace

std::string clsTeskReaderProfile::ReaderName() const { return tesk::ReaderName(ReaderType()); }

std::span<const ProfileProperty> ProfileProperties() { return kProperties; }

}  // namespace tesk
