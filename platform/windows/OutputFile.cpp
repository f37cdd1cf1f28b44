// The file of whole records.
#include <utility>

#include "base/conversions.h"
#include "platform/Platform.h"
#include "platform/windows/Handle.h"
#include "platform/windows/Text.h"

namespace tesk::platform {
namespace {

class WindowsOutputFile : public OutputFile {
 public:
  explicit WindowsOutputFile(std::string path)
      : path_(std::move(path)),
        file_(::CreateFileW(Utf8ToWide(path_).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (!file_.Open()) throw Failure("opened", ::GetLastError());
    regular_ = ::GetFileType(file_.Get()) == FILE_TYPE_DISK;
  }
  // Without a Close of the owner's there is nobody left to tell.
  ~WindowsOutputFile() override {
    if (file_.Open()) ::FlushFileBuffers(file_.Get());
  }

  void Append(std::string_view record) override;
  void Close() override;

 private:
  RunTimeError Failure(const char* what, DWORD error) const {
    const bool full = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL;
    return {full ? kErrorDiskFull : kErrorFileAccess,
            "The file \"" + path_ + "\" cannot be " + what + ": " + SystemReason(error) + ".",
            {},
            "Check the path, its permissions and the free space, or choose another file."};
  }
  // Cuts the file behind its last whole record.
  void TakeBack() {
    if (regular_ && ::SetFilePointerEx(file_.Get(), end_, nullptr, FILE_BEGIN)) ::SetEndOfFile(file_.Get());
  }

  std::string path_;
  Handle file_;
  bool regular_ = false;  // not a pipe or a console, which take back nothing
  LARGE_INTEGER end_{};   // bytes of whole records
};

void WindowsOutputFile::Append(std::string_view record) {
  const auto size = Narrow<DWORD>(record.size());
  DWORD written = 0;
  if (!::WriteFile(file_.Get(), record.data(), size, &written, nullptr) || written != size) {
    const DWORD error = ::GetLastError();
    TakeBack();
    throw Failure("written", error == ERROR_SUCCESS ? ERROR_DISK_FULL : error);
  }
  end_.QuadPart += size;
}

void WindowsOutputFile::Close() {
  if (!file_.Open()) return;
  const DWORD unflushed = regular_ && !::FlushFileBuffers(file_.Get()) ? ::GetLastError() : ERROR_SUCCESS;
  const DWORD unclosed = file_.Close() ? ERROR_SUCCESS : ::GetLastError();
  if (unflushed != ERROR_SUCCESS || unclosed != ERROR_SUCCESS) {
    throw Failure("written", unflushed != ERROR_SUCCESS ? unflushed : unclosed);
  }
}

}  // namespace

std::unique_ptr<OutputFile> CreateOutputFile(const std::string& path) {
  return std::make_unique<WindowsOutputFile>(path);
}

}  // namespace tesk::platform
