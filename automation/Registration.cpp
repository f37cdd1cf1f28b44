// Writing and removing the server's entries.
#include "automation/Registration.h"

#include <array>
#include <string>
#include <vector>

#include "TeskReader99.h"
#include "automation/Classes.h"
#include "automation/Module.h"
#include "base/HostServices.h"

// The system's headers of this compiler lack them.
extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* file, OLECHAR* helpFolder);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID locale, SYSKIND system);
}

namespace tesk::automation {
namespace {

constexpr wchar_t kClassesKey[] = L"Software\\Classes\\";
constexpr wchar_t kLibraryName[] = L"TeskReader99";
constexpr wchar_t kLibraryVersion[] = L"1.0";
constexpr WORD kMajor = 1;
constexpr WORD kMinor = 0;

// One entry below the key of the classes; an empty name is the key's own value.
struct Entry {
  std::wstring key;
  std::wstring name;
  std::wstring text;
};

std::wstring GuidText(REFGUID guid) {
  std::array<wchar_t, 40> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::wstring ProgramName(const CreatableClass& creatable) {
  return std::wstring(kLibraryName) + L"." + creatable.name;
}

std::wstring ClassKey(const CreatableClass& creatable) { return L"CLSID\\" + GuidText(*creatable.id); }

std::vector<Entry> EntriesOf(const CreatableClass& creatable, const std::wstring& path) {
  const std::wstring key = ClassKey(creatable);
  const std::wstring program = ProgramName(creatable);
  return {
      {program, L"", creatable.description},
      {program + L"\\CLSID", L"", GuidText(*creatable.id)},
      {key, L"", creatable.description},
      {key + L"\\InprocServer32", L"", path},
      {key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
      {key + L"\\ProgID", L"", program},
      {key + L"\\Programmable", L"", L""},
      {key + L"\\TypeLib", L"", GuidText(LIBID_TeskReader99)},
      {key + L"\\Version", L"", kLibraryVersion},
  };
}

LSTATUS Write(HKEY root, const Entry& entry) {
  HKEY key = nullptr;
  const std::wstring path = kClassesKey + entry.key;
  const LSTATUS opened =
      RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
  if (opened != ERROR_SUCCESS) return opened;
  const auto bytes = static_cast<DWORD>((entry.text.size() + 1) * sizeof(wchar_t));
  const LSTATUS written = RegSetValueExW(key, entry.name.c_str(), 0, REG_SZ,
                                         reinterpret_cast<const BYTE*>(entry.text.c_str()), bytes);
  RegCloseKey(key);
  return written;
}

LSTATUS WriteAll(HKEY root, const std::wstring& path) {
  for (const CreatableClass& creatable : Classes()) {
    for (const Entry& entry : EntriesOf(creatable, path)) {
      const LSTATUS status = Write(root, entry);
      if (status != ERROR_SUCCESS) return status;
    }
  }
  return ERROR_SUCCESS;
}

// The first failure, or success; a key that is not there is none.
LSTATUS RemoveAll(HKEY root) {
  LSTATUS result = ERROR_SUCCESS;
  for (const CreatableClass& creatable : Classes()) {
    for (const std::wstring& key : {ClassKey(creatable), ProgramName(creatable)}) {
      const LSTATUS status = RegDeleteTreeW(root, (kClassesKey + key).c_str());
      if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND && result == ERROR_SUCCESS)
        result = status;
    }
  }
  return result;
}

HRESULT RegisterLibrary(const std::wstring& path, bool forUser) {
  const ComPtr<ITypeLib> library = TypeLibrary();
  auto* file = const_cast<wchar_t*>(path.c_str());
  return forUser ? RegisterTypeLibForUser(library.Get(), file, nullptr)
                 : RegisterTypeLib(library.Get(), file, nullptr);
}

bool Refused(HRESULT status) { return status == E_ACCESSDENIED || status == TYPE_E_REGISTRYACCESS; }

HRESULT RegisterIn(HKEY root, bool forUser) {
  const std::wstring path = ModulePath();
  const LSTATUS written = WriteAll(root, path);
  if (written != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(written));
  return RegisterLibrary(path, forUser);
}

HRESULT RegisterWhereAllowed(bool userOnly) {
  HRESULT status = E_ACCESSDENIED;
  if (!userOnly) {
    status = RegisterIn(HKEY_LOCAL_MACHINE, false);
    if (Refused(status)) RemoveAll(HKEY_LOCAL_MACHINE);
  }
  return Refused(status) ? RegisterIn(HKEY_CURRENT_USER, true) : status;
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
    UnRegisterTypeLibForUser(LIBID_TeskReader99, kMajor, kMinor, LOCALE_NEUTRAL, SYS_WIN32);
    LSTATUS removed = RemoveAll(HKEY_CURRENT_USER);
    if (!userOnly) {
      UnRegisterTypeLib(LIBID_TeskReader99, kMajor, kMinor, LOCALE_NEUTRAL, SYS_WIN32);
      const LSTATUS ofMachine = RemoveAll(HKEY_LOCAL_MACHINE);
      if (removed == ERROR_SUCCESS) removed = ofMachine;
    }
    if (removed != ERROR_SUCCESS) status = HRESULT_FROM_WIN32(static_cast<DWORD>(removed));
  });
  return error ? SELFREG_E_CLASS : status;
}

}  // namespace tesk::automation
