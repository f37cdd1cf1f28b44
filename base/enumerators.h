// The members of the public enumerations, as hosts and operators write them. Knows the enumerations.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/enumerations.h"

namespace tesk {

struct Enumerator {
  std::string_view name;  // "teskReaderFlowControlNone"
  std::int32_t value;
};

// All members of an enumeration in the order of their values. Declared for those that have settings or options.
template <class Enumeration>
std::span<const Enumerator> EnumeratorsOf();

template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderType>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskBarcodeType>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskBarcodeOrientation>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskRecognitionType>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderBaudRate>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderDataBits>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderFlowControl>();
template <>
std::span<const Enumerator> EnumeratorsOf<teskReaderColorDepth>();

}  // namespace tesk
