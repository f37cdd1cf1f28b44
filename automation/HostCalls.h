// Members of a host's objects, called by name. Whatever a host answers is checked; every failure is a
// RunTimeError.
#pragma once

#include <initializer_list>
#include <string>

#include "automation/Module.h"
#include "automation/Values.h"

namespace tesk::automation {

inline constexpr std::int32_t kErrorNoSuchMember = 438;

bool HasMember(IDispatch& object, const wchar_t* name);

// The host's own error where it raised one, 438 where there is no such member, 13 where it refuses the
// arguments.
Variant CallMethod(IDispatch& object, const wchar_t* name, std::initializer_list<const VARIANT*> arguments);
Variant GetProperty(IDispatch& object, const wchar_t* name);
void PutProperty(IDispatch& object, const wchar_t* name, const VARIANT& value);

// A property that holds an object; error 13 where it holds none.
ComPtr<IDispatch> GetObjectProperty(IDispatch& object, const wchar_t* name);

}  // namespace tesk::automation
