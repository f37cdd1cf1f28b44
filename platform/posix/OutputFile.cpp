// The file of whole records.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/Platform.h"
#include "platform/posix/Descriptor.h"

namespace tesk::platform {
namespace {

class PosixOutputFile : public OutputFile {
 public:
  explicit PosixOutputFile(std::string path)
      : path_(std::move(path)),
        file_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666)) {
    if (!file_.Open()) throw Failure("opened", errno);
    struct stat status {};
    regular_ = ::fstat(file_.Get(), &status) == 0 && S_ISREG(status.st_mode);
  }
  // Without a Close of the owner's there is nobody left to tell.
  ~PosixOutputFile() override {
    if (file_.Open()) ::fsync(file_.Get());
  }

  void Append(std::string_view record) override;
  void Close() override;

 private:
  // Cuts the file behind its last whole record. A system that refuses that has reported worse already.
  void TakeBack() {
    if (regular_ && ::ftruncate(file_.Get(), end_) != 0) regular_ = false;
  }
  RunTimeError Failure(const char* what, int error) const {
    return {error == ENOSPC || error == EDQUOT ? kErrorDiskFull : kErrorFileAccess,
            "The file \"" + path_ + "\" cannot be " + what + ": " + SystemReason(error) + ".",
            {},
            "Check the path, its permissions and the free space, or choose another file."};
  }

  std::string path_;
  Descriptor file_;
  bool regular_ = false;  // not a pipe or a terminal, which take back nothing
  off_t end_ = 0;         // bytes of whole records
};

// A write that was cut short (disk full) is continued, which either works or gives the reason.
void PosixOutputFile::Append(std::string_view record) {
  std::size_t written = 0;
  while (written < record.size()) {
    const ssize_t count = ::write(file_.Get(), record.data() + written, record.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const auto failure = Failure("written", errno);
      TakeBack();
      throw failure;
    }
    written += static_cast<std::size_t>(count);
  }
  end_ += static_cast<off_t>(record.size());
}

void PosixOutputFile::Close() {
  if (!file_.Open()) return;
  const int unsynced = regular_ && ::fsync(file_.Get()) != 0 ? errno : 0;
  const int unclosed = file_.Close();
  if (unsynced != 0 || unclosed != 0) throw Failure("written", unsynced != 0 ? unsynced : unclosed);
}

}  // namespace

std::unique_ptr<OutputFile> CreateOutputFile(const std::string& path) {
  return std::make_unique<PosixOutputFile>(path);
}

}  // namespace tesk::platform
