// Writing and removing the server's entries.
#include "automation/Registration.h"

#include <array>
#include <string>
#include <vector>

#include "TeskReader99.h"
#include "automation/Classes.h"
#include "automation/Module.h"
#include "base/HostServices.h"

namespace tesk::automation {
namespace {

constexpr wchar_t kClassesKey[] = L"Software\\Classes\\";
constexpr wchar_t kLibraryName[] = L"TeskReader99";
constexpr wchar_t kLibraryVersion[] = L"1.0";

// A 32-bit and a 64-bit server stand side by side. Each has its own classes; names, type library and the
// descriptions of the interfaces belong to both, and stay until the last of the two goes.
constexpr bool kIs64 = sizeof(void*) == 8;
constexpr const wchar_t* kOwnSystem = kIs64 ? L"win64" : L"win32";
constexpr const wchar_t* kOtherSystem = kIs64 ? L"win32" : L"win64";

// Which of its two registries a 64-bit system is asked for; a 32-bit system has one and takes both for it.
constexpr REGSAM kOwnView = 0;
constexpr REGSAM kViews[] = {KEY_WOW64_32KEY, KEY_WOW64_64KEY};

// The process of its own that the system lends to hosts that cannot load the server, all classes in one.
constexpr wchar_t kSurrogateId[] = L"{3F827E45-A85F-4946-ACF8-EAEB39C21D7F}";

// The system's own proxies: of what the type library describes, and of interfaces that are called late bound.
constexpr wchar_t kLibraryProxy[] = L"{00020424-0000-0000-C000-000000000046}";
constexpr wchar_t kDispatchProxy[] = L"{00020420-0000-0000-C000-000000000046}";

// One entry below the key of the classes; an empty name is the key's own value.
struct Entry {
  std::wstring key;
  std::wstring name;
  std::wstring text;
  REGSAM view = kOwnView;
};
using Entries = std::vector<Entry>;

std::wstring GuidText(REFGUID guid) {
  std::array<wchar_t, 40> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::wstring ProgramName(const CreatableClass& creatable) {
  return std::wstring(kLibraryName) + L"." + creatable.name;
}

std::wstring ClassKey(const CreatableClass& creatable) { return L"CLSID\\" + GuidText(*creatable.id); }

std::wstring SurrogateKey() { return std::wstring(L"AppID\\") + kSurrogateId; }

std::wstring LibraryKey() { return L"TypeLib\\" + GuidText(LIBID_TeskReader99); }

std::wstring VersionKey() { return LibraryKey() + L"\\" + kLibraryVersion; }

std::wstring FileKey(const wchar_t* system) { return VersionKey() + L"\\0\\" + system; }

// ---- What is written

void AddClass(const CreatableClass& creatable, const std::wstring& path, Entries& entries) {
  const std::wstring key = ClassKey(creatable);
  const std::wstring program = ProgramName(creatable);
  entries.insert(entries.end(), {
                                    {program, L"", creatable.description},
                                    {program + L"\\CLSID", L"", GuidText(*creatable.id)},
                                    {key, L"", creatable.description},
                                    {key + L"\\InprocServer32", L"", path},
                                    {key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
                                    {key + L"\\ProgID", L"", program},
                                    {key + L"\\Programmable", L"", L""},
                                    {key + L"\\TypeLib", L"", GuidText(LIBID_TeskReader99)},
                                    {key + L"\\Version", L"", kLibraryVersion},
                                });
  // A 64-bit class without it is never run in a process of its own, where a 32-bit one was meant.
  if (!kIs64) entries.push_back({key, L"AppID", kSurrogateId});
}

struct Interface {
  std::wstring key;
  std::wstring name;
  bool isDual;
};

std::wstring TextOrNothing(BSTR text) {
  const std::wstring copy(text != nullptr ? text : L"");
  SysFreeString(text);
  return copy;
}

std::vector<Interface> Interfaces() {
  std::vector<Interface> interfaces;
  const auto library = TypeLibrary();
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    TYPEATTR* type = nullptr;
    BSTR name = nullptr;
    if (FAILED(library->GetTypeInfo(i, &info)) || FAILED(info->GetTypeAttr(&type))) continue;
    if (type->typekind == TKIND_DISPATCH) {
      info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
      interfaces.push_back({L"Interface\\" + GuidText(type->guid), TextOrNothing(name),
                            (type->wTypeFlags & TYPEFLAG_FDUAL) != 0});
    }
    info->ReleaseTypeAttr(type);
  }
  return interfaces;
}

// What the system needs to carry calls from one process to another, of whichever kind they are.
void AddInterfaces(Entries& entries) {
  for (const auto& [key, name, isDual] : Interfaces()) {
    for (const REGSAM view : kViews) {
      entries.push_back({key, L"", name, view});
      entries.push_back({key + L"\\ProxyStubClsid32", L"", isDual ? kLibraryProxy : kDispatchProxy, view});
      entries.push_back({key + L"\\TypeLib", L"", GuidText(LIBID_TeskReader99), view});
      entries.push_back({key + L"\\TypeLib", L"Version", kLibraryVersion, view});
    }
  }
}

void AddLibrary(const std::wstring& path, Entries& entries) {
  BSTR description = nullptr;
  TypeLibrary()->GetDocumentation(MEMBERID_NIL, nullptr, &description, nullptr, nullptr);
  entries.push_back({VersionKey(), L"", TextOrNothing(description)});
  entries.push_back({FileKey(kOwnSystem), L"", path});
  entries.push_back({VersionKey() + L"\\FLAGS", L"", L"0"});
  entries.push_back({VersionKey() + L"\\HELPDIR", L"", path.substr(0, path.find_last_of(L'\\') + 1)});
}

Entries AllEntries(const std::wstring& path) {
  Entries entries;
  for (const CreatableClass& creatable : Classes()) AddClass(creatable, path, entries);
  AddLibrary(path, entries);
  AddInterfaces(entries);
  if (!kIs64) {
    entries.push_back({SurrogateKey(), L"", kLibraryName});
    // Empty: the system's own program, of the same kind as the server.
    entries.push_back({SurrogateKey(), L"DllSurrogate", L""});
  }
  return entries;
}

LSTATUS Write(HKEY root, const Entry& entry) {
  HKEY key = nullptr;
  const std::wstring path = kClassesKey + entry.key;
  const LSTATUS opened =
      RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_WRITE | entry.view, nullptr, &key, nullptr);
  if (opened != ERROR_SUCCESS) return opened;
  const auto bytes = static_cast<DWORD>((entry.text.size() + 1) * sizeof(wchar_t));
  const LSTATUS written = RegSetValueExW(key, entry.name.c_str(), 0, REG_SZ,
                                         reinterpret_cast<const BYTE*>(entry.text.c_str()), bytes);
  RegCloseKey(key);
  return written;
}

LSTATUS WriteAll(HKEY root) {
  for (const Entry& entry : AllEntries(ModulePath())) {
    const LSTATUS status = Write(root, entry);
    if (status != ERROR_SUCCESS) return status;
  }
  return ERROR_SUCCESS;
}

// ---- What is removed

struct Key {
  std::wstring path;
  REGSAM view = kOwnView;
};
using Keys = std::vector<Key>;

bool IsThere(HKEY root, const std::wstring& key) {
  HKEY found = nullptr;
  if (RegOpenKeyExW(root, (kClassesKey + key).c_str(), 0, KEY_READ, &found) != ERROR_SUCCESS) return false;
  RegCloseKey(found);
  return true;
}

Keys OwnKeys() {
  Keys keys = {{FileKey(kOwnSystem)}};
  for (const CreatableClass& creatable : Classes()) keys.push_back({ClassKey(creatable)});
  if (!kIs64) keys.push_back({SurrogateKey()});
  return keys;
}

Keys SharedKeys() {
  Keys keys = {{VersionKey()}};
  for (const CreatableClass& creatable : Classes()) keys.push_back({ProgramName(creatable)});
  for (const Interface& one : Interfaces()) {
    for (const REGSAM view : kViews) keys.push_back({one.key, view});
  }
  return keys;
}

// With all that is below it; what is not there is removed already. The system's own function for this knows no
// view but the program's.
LSTATUS Remove(HKEY root, const Key& which) {
  HKEY key = nullptr;
  LSTATUS status = RegOpenKeyExW(root, which.path.c_str(), 0, KEY_READ | which.view, &key);
  if (status != ERROR_SUCCESS) return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
  std::array<wchar_t, 256> name{};
  while (status == ERROR_SUCCESS &&
         RegEnumKeyW(key, 0, name.data(), static_cast<DWORD>(name.size())) == ERROR_SUCCESS) {
    status = Remove(root, {which.path + L"\\" + name.data(), which.view});
  }
  RegCloseKey(key);
  return status == ERROR_SUCCESS ? RegDeleteKeyExW(root, which.path.c_str(), which.view, 0) : status;
}

// The first failure, or success.
LSTATUS Remove(HKEY root, const Keys& keys) {
  LSTATUS result = ERROR_SUCCESS;
  for (const Key& key : keys) {
    const LSTATUS status = Remove(root, Key{kClassesKey + key.path, key.view});
    if (result == ERROR_SUCCESS) result = status;
  }
  return result;
}

LSTATUS RemoveAll(HKEY root) {
  LSTATUS result = Remove(root, OwnKeys());
  if (IsThere(root, FileKey(kOtherSystem))) return result;
  const LSTATUS ofBoth = Remove(root, SharedKeys());
  // Stays where it holds another version of the library.
  RegDeleteKeyExW(root, (kClassesKey + LibraryKey()).c_str(), kOwnView, 0);
  return result == ERROR_SUCCESS ? ofBoth : result;
}

HRESULT RegisterIn(HKEY root) {
  const LSTATUS written = WriteAll(root);
  return written == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(written));
}

HRESULT RegisterWhereAllowed(bool userOnly) {
  HRESULT status = E_ACCESSDENIED;
  if (!userOnly) {
    status = RegisterIn(HKEY_LOCAL_MACHINE);
    if (status == E_ACCESSDENIED) RemoveAll(HKEY_LOCAL_MACHINE);
  }
  return status == E_ACCESSDENIED ? RegisterIn(HKEY_CURRENT_USER) : status;
}

}  // namespace

HRESULT Register(bool userOnly) {
  HRESULT status = E_FAIL;
  const auto error = Attempt([&] { status = RegisterWhereAllowed(userOnly); });
  return error ? SELFREG_E_CLASS : status;
}

HRESULT Unregister(bool userOnly) {
  HRESULT status = S_OK;
  const auto error = Attempt([&] {
    LSTATUS removed = RemoveAll(HKEY_CURRENT_USER);
    if (!userOnly) {
      const LSTATUS ofMachine = RemoveAll(HKEY_LOCAL_MACHINE);
      if (removed == ERROR_SUCCESS) removed = ofMachine;
    }
    if (removed != ERROR_SUCCESS) status = HRESULT_FROM_WIN32(static_cast<DWORD>(removed));
  });
  return error ? SELFREG_E_CLASS : status;
}

}  // namespace tesk::automation
