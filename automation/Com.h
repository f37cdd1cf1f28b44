// The system's automation headers. Every unit here takes them from this file, never from the system.
#pragma once

#include "platform/windows/WindowsApi.h"
//
#include <dispex.h>
#include <oaidl.h>
#include <ocidl.h>
#include <ole2.h>
#include <oleauto.h>
#include <olectl.h>
#include <wrl/client.h>

namespace tesk::automation {

using Microsoft::WRL::ComPtr;

// Takes over a reference that is the caller's already. ComPtr's own Attach adds one with this compiler.
template <class Interface>
ComPtr<Interface> Adopt(Interface* owned) {
  ComPtr<Interface> result;
  *result.GetAddressOf() = owned;
  return result;
}

}  // namespace tesk::automation
