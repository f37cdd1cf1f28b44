// The server's entries in the registry, as one table: the classes, their programmatic names, the type library, its
// interfaces, and the process that the system lends to hosts of another kind. Servers of both kinds share a registry.
#pragma once

#include "automation/Com.h"

namespace tesk::automation {

// Registers for the machine; for the user alone where the machine's keys are refused, or from the start.
HRESULT Register(bool userOnly);

// Takes back whatever Register wrote for the user and, unless it is for the user alone, for the machine; what
// is not there is no error.
HRESULT Unregister(bool userOnly);

}  // namespace tesk::automation
