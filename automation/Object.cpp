// The identities of the objects that hosts hold, and errors on their way to a host.
#include "automation/Object.h"

#include <mutex>
#include <unordered_map>

#include "platform/windows/Text.h"

namespace tesk::automation {
namespace {

// Hosts may have engines on several threads, each with its own.
struct Identities {
  std::mutex mutex;
  std::unordered_map<const void*, IUnknown*> wrappers;  // by what they wrap; not counted as references
};

Identities& TheIdentities() {
  static Identities identities;
  return identities;
}

}  // namespace

ComPtr<IUnknown> FindWrapper(const void* native) {
  Identities& all = TheIdentities();
  const std::lock_guard lock(all.mutex);
  const auto found = all.wrappers.find(native);
  return found != all.wrappers.end() ? found->second : nullptr;
}

void NoteWrapper(const void* native, IUnknown* wrapper) {
  Identities& all = TheIdentities();
  const std::lock_guard lock(all.mutex);
  all.wrappers[native] = wrapper;
}

void ForgetWrapper(const void* native) {
  Identities& all = TheIdentities();
  const std::lock_guard lock(all.mutex);
  all.wrappers.erase(native);
}

HRESULT RaiseToHost(const RunTimeError& error, REFIID raisedBy) {
  // Of the numbers of the automation run-time every host makes its own.
  const auto status = static_cast<HRESULT>(0x800A0000 + static_cast<DWORD>(error.Number() & 0xFFFF));
  Attempt([&] {
    ComPtr<ICreateErrorInfo> writer;
    ComPtr<IErrorInfo> info;
    if (FAILED(CreateErrorInfo(&writer)) || FAILED(writer.As(&info))) return;
    std::wstring source = L"TeskReader99";
    std::wstring description = platform::Utf8ToWide(error.Description());
    writer->SetGUID(raisedBy);
    writer->SetSource(source.data());
    writer->SetDescription(description.data());
    SetErrorInfo(0, info.Get());
  });
  return status;
}

}  // namespace tesk::automation
