// The catalogue of scanner models: the profile of each as its makers describe it.
#pragma once

#include <cstdint>
#include <vector>

#include "base/enumerations.h"
#include "profiles/clsTeskReaderProfile.h"

namespace tesk {

// New profiles of the models of these makers, a sum of teskProfileType bits, in the order in which profiles are
// kept. That of teskReaderTypeNone comes first, whatever the makers.
std::vector<clsTeskReaderProfile> Catalogue(teskProfileType makers);

// A new profile of a model; a fresh one for a type that the catalogue does not have.
clsTeskReaderProfile ProfileOf(teskReaderType type);

// The top of a model's darkness scale, at least 1.
std::int16_t DarkestMark(teskReaderType type);

}  // namespace tesk
