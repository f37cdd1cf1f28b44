// Counts, and the type library from the server's own file.
#include "automation/Module.h"

#include <atomic>

#include "automation/Com.h"
#include "base/RunTimeError.h"

namespace tesk::automation {
namespace {

// What the process-wide entry points share.
struct Process {
  std::atomic<LONG> objects = 0;
  std::atomic<LONG> locks = 0;
  HINSTANCE instance = nullptr;
  bool ends = false;
};

Process process;

}  // namespace

LivingObject::LivingObject() { ++process.objects; }

LivingObject::~LivingObject() { --process.objects; }

LONG LivingObjects() { return process.objects; }

void LockServer(bool lock) { process.locks += lock ? 1 : -1; }

bool MayUnload() { return process.objects == 0 && process.locks == 0; }

void EnterProcess(HINSTANCE instance) { process.instance = instance; }

void EndProcess() { process.ends = true; }

bool ProcessEnds() { return process.ends; }

std::wstring ModulePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(process.instance, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

ComPtr<ITypeLib> TypeLibrary() {
  ComPtr<ITypeLib> library;
  if (FAILED(LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, &library))) {
    throw RunTimeError(kErrorInternal, "The type library of TeskReader99 cannot be loaded");
  }
  return library;
}

ComPtr<ITypeInfo> TypeInfoOf(REFGUID guid) {
  ComPtr<ITypeInfo> info;
  if (FAILED(TypeLibrary()->GetTypeInfoOfGuid(guid, &info))) {
    throw RunTimeError(kErrorInternal, "The type library of TeskReader99 lacks a description");
  }
  return info;
}

}  // namespace tesk::automation
