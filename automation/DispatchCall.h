// Late-bound calls to the server's own objects, as script hosts make them: arguments by reference in
// variants, arrays of variants, arguments left out or named.
#pragma once

#include "automation/Com.h"

namespace tesk::automation {

// IDispatch::Invoke for the dual interface `object` that `info` describes.
HRESULT InvokeMember(IDispatch* object, ITypeInfo* info, DISPID id, WORD flags, DISPPARAMS* given,
                     VARIANT* result, EXCEPINFO* exception, UINT* wrong);

}  // namespace tesk::automation
