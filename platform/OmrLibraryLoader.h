// Where the library of the Sekonic USB readers comes from on this system.
#pragma once

#include <memory>

#include "engine/OmrLibrary.h"

namespace tesk::platform {

// Finds OMRAPI.DLL in the system folder, in the program's own folder or in that of the module that this code
// is part of, in this order, and nowhere else. A system or a 64-bit program for which the library does not exist
// finds none.
std::shared_ptr<OmrLibraryLoader> CreateOmrLibraryLoader();

// Whether the library exists for programs like this one at all.
bool SystemHasOmrLibrary();

}  // namespace tesk::platform
