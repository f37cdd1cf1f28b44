// The eight classes that hosts create, as one table.
#pragma once

#include <span>

#include "automation/Com.h"

namespace tesk::automation {

struct CreatableClass {
  const CLSID* id;
  const wchar_t* name;         // "clsTeskReader"
  const wchar_t* description;  // for whoever looks through the registry
  // A new object with one reference, the caller's; throws RunTimeError.
  IUnknown* (*create)();
};

std::span<const CreatableClass> Classes();

// The class factory of a class; CLASS_E_CLASSNOTAVAILABLE for an unknown one.
HRESULT GetClassFactory(REFCLSID classId, REFIID id, void** factory);

}  // namespace tesk::automation
