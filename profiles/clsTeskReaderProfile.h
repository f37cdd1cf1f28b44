// What one scanner model can do and what it starts with, and the table of these properties for those who
// list or dispatch them by name.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "base/enumerations.h"

namespace tesk {

// A plain record; any value is stored as given. Most capabilities are triples: X is the value proposed for
// the model, XEnabled says that the user may change it, XVisible that it applies to the model at all.
// Thresholds are in the model's own darkness units, SleepTime in milliseconds, TimeOut in seconds,
// Resolution in dots per inch; Parity is one letter ("N", "E", "O").
//
// DataBits and StopBits start at 0 and stay so for models without a serial line: no members of their
// enumerations, kept because hosts read them.
class clsTeskReaderProfile {
  // Every property X is a pair X() and SetX(value); ReaderName is the display name of ReaderType.
#define TESK_VALUE(Type, Name, Initial)           \
 public:                                          \
  Type Name() const { return Name##_; }           \
  void Set##Name(Type value) { Name##_ = value; } \
                                                  \
 private:                                         \
  Type Name##_ = Initial;
#define TESK_TEXT(Name)                                         \
 public:                                                        \
  const std::string& Name() const { return Name##_; }           \
  void Set##Name(const std::string& value) { Name##_ = value; } \
                                                                \
 private:                                                       \
  std::string Name##_;
#define TESK_READ_ONLY(Name) \
 public:                     \
  std::string Name() const;
#include "profiles/profileProperties.inc"

 public:
  // Back to the values of a fresh profile; hosts find it last on the interface.
  void Class_Initialize() { *this = clsTeskReaderProfile(); }
};

// The value of any property; an enumeration is its 32-bit number. The alternatives stand in the order of
// ProfileValueType.
using ProfileValue = std::variant<bool, std::int16_t, std::int32_t, float, std::string>;

enum class ProfileValueType { Boolean, Int16, Int32, Single, Text };

struct ProfileProperty {
  std::string_view name;
  ProfileValueType type;
  ProfileValue (*get)(const clsTeskReaderProfile& profile);
  // Empty for a read-only property. Error 13 for a value of another type.
  void (*set)(clsTeskReaderProfile& profile, const ProfileValue& value);
};

// All 73 properties in slot order.
std::span<const ProfileProperty> ProfileProperties();

}  // namespace tesk
