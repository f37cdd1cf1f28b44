// The functions that the system calls.
#include "automation/Classes.h"
#include "automation/Module.h"
#include "automation/Registration.h"

using namespace tesk::automation;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_ATTACH) EnterProcess(instance);
  if (reason == DLL_PROCESS_DETACH && processEnds != nullptr) EndProcess();
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID id, void** factory) {
  if (factory == nullptr) return E_POINTER;
  *factory = nullptr;
  return GetClassFactory(classId, id, factory);
}

STDAPI DllCanUnloadNow() { return MayUnload() ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() { return Register(false); }

STDAPI DllUnregisterServer() { return Unregister(false); }

// regsvr32 /n /i:user registers for the user alone; with /u it takes that back and nothing else.
STDAPI DllInstall(BOOL install, LPCWSTR words) {
  const bool userOnly = words != nullptr && lstrcmpiW(words, L"user") == 0;
  return install ? Register(userOnly) : Unregister(userOnly);
}

// How many objects of this server live, for hosts' own tests.
extern "C" LONG WINAPI TeskReader99LivingObjects() { return LivingObjects(); }
