// Registering, and looking through the system's processes.
#include "tests/windows/both/Servers.h"

#include <algorithm>
#include <functional>

#include "platform/windows/Text.h"
//
#include <tlhelp32.h>

namespace tesk::test {
namespace {

int ForEachSurrogate(const std::function<void(DWORD)>& take) {
  const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W process = {};
  process.dwSize = sizeof process;
  int count = 0;
  for (BOOL more = Process32FirstW(processes, &process); more; more = Process32NextW(processes, &process)) {
    if (lstrcmpiW(process.szExeFile, L"dllhost.exe") != 0) continue;
    take(process.th32ProcessID);
    ++count;
  }
  CloseHandle(processes);
  return count;
}

}  // namespace

std::wstring SystemFolder(Kind kind) {
  wchar_t path[MAX_PATH];
  const UINT length =
      kind == Kind::k32 ? GetSystemWow64DirectoryW(path, MAX_PATH) : GetSystemDirectoryW(path, MAX_PATH);
  return std::wstring(path, length) + L"\\";
}

std::wstring ServerPath(Kind kind) {
  if (kind == Kind::k64) return ServerPath();
  std::wstring path = platform::Utf8ToWide("Z:" TESKREAD_WINDOWS_BUILD "/TeskReader99.dll");
  std::replace(path.begin(), path.end(), L'/', L'\\');
  return path;
}

bool RegisterServer(Kind kind, bool undo, bool user) {
  const std::wstring options =
      std::wstring(L"regsvr32.exe /s ") + (undo ? L"/u " : L"") + (user ? L"/n /i:user " : L"");
  return RunProgram(SystemFolder(kind) + options + L"\"" + ServerPath(kind) + L"\"").status == 0;
}

int Surrogates() {
  return ForEachSurrogate([](DWORD) {});
}

void EndSurrogates() {
  ForEachSurrogate([](DWORD id) {
    const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
    TerminateProcess(process, 0);
    WaitForSingleObject(process, 10'000);
    CloseHandle(process);
  });
}

}  // namespace tesk::test
