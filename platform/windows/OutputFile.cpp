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
  // failure: how a message begins that something could not be written.
  WindowsOutputFile(std::string failure, std::string advice, Handle file)
      : failure_(std::move(failure)),
        advice_(std::move(advice)),
        file_(std::move(file)),
        regular_(file_.Open() && ::GetFileType(file_.Get()) == FILE_TYPE_DISK) {}
  // Without a Close of the owner's there is nobody left to tell.
  ~WindowsOutputFile() override {
    if (file_.Open()) ::FlushFileBuffers(file_.Get());
  }

  void MadeAt(std::string path) { path_ = std::move(path); }

  void Check() override {
    if (!file_.Open()) throw Failure(ERROR_INVALID_HANDLE);
  }
  void Append(std::string_view record) override;
  void Keep(std::string_view record) override;
  void Settle(std::string_view record) override;
  void Close() override;
  void Discard() override;

 private:
  RunTimeError Failure(DWORD error) const {
    const bool full = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL;
    return {full ? kErrorDiskFull : kErrorFileAccess,
            failure_ + ": " + SystemReason(error) + (advice_.empty() ? "" : "."),
            {},
            advice_};
  }
  bool CutAt(std::int64_t end) {
    LARGE_INTEGER place{};
    place.QuadPart = end;
    return regular_ && ::SetFilePointerEx(file_.Get(), place, nullptr, FILE_BEGIN) &&
           ::SetEndOfFile(file_.Get());
  }
  std::int64_t SeekEnd() {
    LARGE_INTEGER end{};
    return ::SetFilePointerEx(file_.Get(), LARGE_INTEGER{}, &end, FILE_END) ? end.QuadPart : 0;
  }

  std::string failure_;
  std::string advice_;
  std::string path_;  // of a file that was made for this object; else empty
  Handle file_;
  bool regular_;          // not a pipe or a console, which take back nothing
  std::int64_t end_ = 0;  // of the whole records
  std::string kept_;      // the record that is not settled yet
};

void WindowsOutputFile::Append(std::string_view record) {
  Check();
  if (regular_) end_ = SeekEnd();
  const auto size = Narrow<DWORD>(record.size());
  DWORD written = 0;
  if (!::WriteFile(file_.Get(), record.data(), size, &written, nullptr) || written != size) {
    const DWORD error = ::GetLastError();
    CutAt(end_);
    throw Failure(error == ERROR_SUCCESS ? ERROR_DISK_FULL : error);
  }
  end_ += size;
}

void WindowsOutputFile::Keep(std::string_view record) {
  Check();
  if (!regular_) return;
  Append(record);
  kept_ = record;
}

void WindowsOutputFile::Settle(std::string_view record) {
  const std::string kept = std::exchange(kept_, {});
  if (kept == record) return;
  // What cannot be taken back stays as it was kept: twice would be worse.
  if (!kept.empty() && !CutAt(end_ - static_cast<std::int64_t>(kept.size()))) return;
  Append(record);
}

void WindowsOutputFile::Close() {
  if (!file_.Open()) return;
  const DWORD unflushed = regular_ && !::FlushFileBuffers(file_.Get()) ? ::GetLastError() : ERROR_SUCCESS;
  const DWORD unclosed = file_.Close() ? ERROR_SUCCESS : ::GetLastError();
  if (unflushed != ERROR_SUCCESS || unclosed != ERROR_SUCCESS) {
    throw Failure(unflushed != ERROR_SUCCESS ? unflushed : unclosed);
  }
}

void WindowsOutputFile::Discard() {
  LARGE_INTEGER size{};
  if (path_.empty() || !file_.Open() || !::GetFileSizeEx(file_.Get(), &size) || size.QuadPart != 0) return;
  file_.Close();
  ::DeleteFileW(Utf8ToWide(path_).c_str());
}

constexpr const char* kAdvice = "Check the path, its permissions and the free space, or choose another file.";

RunTimeError OpenFailure(const std::string& path, DWORD error) {
  const std::string file = "The file \"" + path + "\"";
  if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS) {
    return {kErrorFileExists, file + " is there already.", {}, "Choose another name."};
  }
  if (error == ERROR_SHARING_VIOLATION) {
    return {kErrorFileInUse,
            file + " is being written by another program.",
            {},
            "Wait until it has ended, or choose another file."};
  }
  return {kErrorFileAccess, file + " cannot be opened: " + SystemReason(error) + ".", {}, kAdvice};
}

constexpr DWORD Disposition(OpenMode mode) {
  if (mode == OpenMode::New) return CREATE_NEW;
  return mode == OpenMode::Append ? OPEN_ALWAYS : CREATE_ALWAYS;
}

}  // namespace

std::unique_ptr<OutputFile> OpenOutputFile(const std::string& path, OpenMode mode) {
  ::SetLastError(ERROR_SUCCESS);
  // Nobody else may write meanwhile.
  Handle handle(::CreateFileW(Utf8ToWide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                              Disposition(mode), FILE_ATTRIBUTE_NORMAL, nullptr));
  const DWORD error = ::GetLastError();
  if (!handle.Open()) throw OpenFailure(path, error);
  auto file = std::make_unique<WindowsOutputFile>("The file \"" + path + "\" cannot be written", kAdvice,
                                                  std::move(handle));
  if (error != ERROR_ALREADY_EXISTS) file->MadeAt(path);
  return file;
}

std::unique_ptr<OutputFile> StandardOutput() {
  HANDLE own = INVALID_HANDLE_VALUE;
  ::DuplicateHandle(::GetCurrentProcess(), ::GetStdHandle(STD_OUTPUT_HANDLE), ::GetCurrentProcess(), &own, 0,
                    FALSE, DUPLICATE_SAME_ACCESS);
  return std::make_unique<WindowsOutputFile>("standard output takes nothing more", "", Handle(own));
}

}  // namespace tesk::platform
