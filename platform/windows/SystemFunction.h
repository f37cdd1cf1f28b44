// Functions that newer versions of the system's user library have and older ones lack.
#pragma once

#include "platform/windows/WindowsApi.h"

namespace tesk::platform {

// Null where this system does not have it.
template <class Function>
Function* UserFunction(const char* name) {
  const FARPROC found = ::GetProcAddress(::GetModuleHandleW(L"user32.dll"), name);
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

}  // namespace tesk::platform
