// The identifiers of the interface, and those that the compiler's libraries lack, defined once for whoever
// links this library.
#include <initguid.h>
//
#include <dispex.h>

#include "TeskReader99.h"
