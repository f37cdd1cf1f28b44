// The server as a whole: how many of its objects live, whether it may be unloaded, and its type library,
// which lies in its own resources.
#pragma once

#include <string>

#include "automation/Com.h"

namespace tesk::automation {

// An object of the server, or a reference that it keeps to an object of a host's. The server stays loaded
// while there is one.
class LivingObject {
 public:
  LivingObject(const LivingObject&) = delete;
  LivingObject& operator=(const LivingObject&) = delete;

 protected:
  LivingObject();
  ~LivingObject();
};

LONG LivingObjects();
void LockServer(bool lock);
bool MayUnload();

void EnterProcess(HINSTANCE instance);
void EndProcess();
// True once the process is ending: nobody else's code can be called any more.
bool ProcessEnds();

std::wstring ModulePath();

// Both throw RunTimeError where the system cannot load the library or it lacks the description.
ComPtr<ITypeLib> TypeLibrary();
ComPtr<ITypeInfo> TypeInfoOf(REFGUID guid);  // of an interface or a class

}  // namespace tesk::automation
