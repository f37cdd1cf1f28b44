// The text of a type library: everything that hosts compile against.
#pragma once

#include <string>

#include "automation/Com.h"

namespace tesk::test {

std::string DumpOf(ITypeLib* library);

}  // namespace tesk::test
