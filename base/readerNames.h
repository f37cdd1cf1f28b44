// The names of the scanner models.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/enumerations.h"

namespace tesk {

struct ReaderTypeName {
  teskReaderType type;
  std::string_view enumerator;   // "teskReaderTypeScantron8000"
  std::string_view displayName;  // English; "None" for teskReaderTypeNone
};

// All members of teskReaderType in the order of their values.
std::span<const ReaderTypeName> ReaderTypeNames();

// Whether a type is a scanner's: every member but teskReaderTypeNone.
bool IsReader(teskReaderType type);

// The display name that hosts see: for teskReaderTypeNone the host's localised "None", for every other
// model the literal name, for a value that is no member an empty text.
std::string ReaderName(teskReaderType type);

}  // namespace tesk
