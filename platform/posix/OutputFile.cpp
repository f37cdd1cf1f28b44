// The file of whole records.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include "platform/Platform.h"
#include "platform/posix/Descriptor.h"

namespace tesk::platform {
namespace {

struct stat StatusOf(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) status = {};
  return status;
}

// What a place cannot be asked before it is written to: a disk that is full says so at the write alone.
enum class Kind { File, Stream, Device };

Kind KindOf(int descriptor) {
  const mode_t mode = StatusOf(descriptor).st_mode;
  if (S_ISREG(mode)) return Kind::File;
  return S_ISCHR(mode) && ::isatty(descriptor) == 0 ? Kind::Device : Kind::Stream;
}

class PosixOutputFile : public OutputFile {
 public:
  // failure: how a message begins that something could not be written.
  PosixOutputFile(std::string failure, std::string advice, Descriptor file)
      : failure_(std::move(failure)),
        advice_(std::move(advice)),
        file_(std::move(file)),
        kind_(KindOf(file_.Get())),
        end_(StatusOf(file_.Get()).st_size) {}
  // Without a Close of the owner's there is nobody left to tell.
  ~PosixOutputFile() override {
    if (file_.Open()) ::fsync(file_.Get());
  }

  void MadeAt(std::string path) { path_ = std::move(path); }
  void Empty();
  // False while another program writes. File systems without locks are let pass.
  bool Lock() const {
    return kind_ != Kind::File || ::flock(file_.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  }

  void Check() override;
  void Append(std::string_view record) override;
  void Keep(std::string_view record) override;
  void Settle(std::string_view record) override;
  void Close() override;
  void Discard() override;

 private:
  // Cuts the file at `end`. Somebody else's bytes behind our own stay. A system that refuses has reported worse
  // already.
  bool CutAt(off_t end, off_t ours) {
    if (kind_ != Kind::File || StatusOf(file_.Get()).st_size != ours) return false;
    return ::ftruncate(file_.Get(), end) == 0 && ::lseek(file_.Get(), end, SEEK_SET) == end;
  }
  RunTimeError Failure(int error) const {
    const std::string reason = error == EBADF       ? "it was closed"
                               : error == ETIMEDOUT ? "its reader has stopped reading"
                                                    : SystemReason(error);
    return {error == ENOSPC || error == EDQUOT ? kErrorDiskFull : kErrorFileAccess,
            failure_ + ": " + reason + (advice_.empty() ? "" : "."),
            {},
            advice_};
  }

  void AwaitRoom() const;

  std::string failure_;
  std::string advice_;
  std::string path_;  // of a file that was made for this object; else empty
  Descriptor file_;
  Kind kind_;
  off_t end_;         // of the whole records
  std::string kept_;  // the record that is not settled yet
};

void PosixOutputFile::Empty() {
  if (kind_ == Kind::File && ::ftruncate(file_.Get(), 0) != 0) throw Failure(errno);
  end_ = 0;
}

void PosixOutputFile::Check() {
  const int flags = ::fcntl(file_.Get(), F_GETFL);
  if (flags < 0 || (flags & O_ACCMODE) == O_RDONLY) throw Failure(EBADF);
  pollfd place{file_.Get(), POLLOUT, 0};
  if (kind_ != Kind::Stream || ::poll(&place, 1, 0) <= 0) return;
  if ((place.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) throw Failure(EPIPE);
}

// A reader may be slow, but must not keep a program from ending that was asked to.
void PosixOutputFile::AwaitRoom() const {
  constexpr int kTurn = 100;  // milliseconds
  constexpr int kMostTurns = 30;
  pollfd place{file_.Get(), POLLOUT, 0};
  for (int turns = 0; ::poll(&place, 1, kTurn) <= 0;) {
    if (Interrupted() && ++turns >= kMostTurns) throw Failure(ETIMEDOUT);
  }
}

// A write that was cut short (disk full) is continued, which either works or gives the reason.
void PosixOutputFile::Append(std::string_view record) {
  // A stream that has room takes so much without waiting.
  const std::size_t most = kind_ == Kind::Stream ? PIPE_BUF : record.size();
  std::size_t written = 0;
  // Who shares the place may have written behind the last record.
  if (kind_ == Kind::File) end_ = ::lseek(file_.Get(), 0, SEEK_END);
  while (written < record.size()) {
    if (kind_ == Kind::Stream) AwaitRoom();
    const ssize_t count =
        ::write(file_.Get(), record.data() + written, std::min(most, record.size() - written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const auto failure = Failure(errno);
      CutAt(end_, end_ + static_cast<off_t>(written));
      throw failure;
    }
    written += static_cast<std::size_t>(count);
  }
  end_ += static_cast<off_t>(record.size());
}

void PosixOutputFile::Keep(std::string_view record) {
  if (kind_ == Kind::Stream) return Check();
  Append(record);
  kept_ = record;
}

void PosixOutputFile::Settle(std::string_view record) {
  const std::string kept = std::exchange(kept_, {});
  if (kept == record) return;
  // What cannot be taken back stays as it was kept: twice would be worse.
  if (!kept.empty() && !CutAt(end_ - static_cast<off_t>(kept.size()), end_)) return;
  Append(record);
}

void PosixOutputFile::Close() {
  if (!file_.Open()) return;
  const int unsynced = kind_ == Kind::File && ::fsync(file_.Get()) != 0 ? errno : 0;
  const int unclosed = file_.Close();
  if (unsynced != 0 || unclosed != 0) throw Failure(unsynced != 0 ? unsynced : unclosed);
}

void PosixOutputFile::Discard() {
  const struct stat open = StatusOf(file_.Get());
  struct stat named {};
  if (path_.empty() || open.st_size != 0 || ::lstat(path_.c_str(), &named) != 0) return;
  if (open.st_ino == named.st_ino && open.st_dev == named.st_dev) ::unlink(path_.c_str());
}

constexpr const char* kAdvice = "Check the path, its permissions and the free space, or choose another file.";

RunTimeError OpenFailure(const std::string& path, int error) {
  const std::string file = "The file \"" + path + "\"";
  if (error == EEXIST) return {kErrorFileExists, file + " is there already.", {}, "Choose another name."};
  if (error == ENXIO) {
    return {kErrorFileAccess, "Nobody reads the pipe \"" + path + "\".", {}, "Start its reader first."};
  }
  if (error == EWOULDBLOCK) {
    return {kErrorFileInUse,
            file + " is being written by another program.",
            {},
            "Wait until it has ended, or choose another file."};
  }
  return {kErrorFileAccess, file + " cannot be opened: " + SystemReason(error) + ".", {}, kAdvice};
}

bool IsOther(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

struct Opened {
  Descriptor file;
  bool made = false;
};

// Opening a pipe waits for nobody; writing to it does.
Opened Open(const std::string& path, OpenMode mode) {
  constexpr int kAlways = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY;
  const auto open = [&](int more) { return Descriptor(::open(path.c_str(), kAlways | more, 0666)); };
  const bool other = IsOther(path);
  Opened opened{open(other ? O_NONBLOCK : O_CREAT | O_EXCL), !other};
  if (!opened.file.Open() && errno == EEXIST && mode != OpenMode::New) opened = {open(O_CREAT), false};
  if (!opened.file.Open()) throw OpenFailure(path, errno);
  const int descriptor = opened.file.Get();
  if (other) ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
  return opened;
}

}  // namespace

std::unique_ptr<OutputFile> OpenOutputFile(const std::string& path, OpenMode mode) {
  Opened opened = Open(path, mode);
  auto file = std::make_unique<PosixOutputFile>("The file \"" + path + "\" cannot be written", kAdvice,
                                                std::move(opened.file));
  if (!file->Lock()) throw OpenFailure(path, EWOULDBLOCK);
  if (opened.made) file->MadeAt(path);
  if (mode == OpenMode::Replace) file->Empty();
  return file;
}

std::unique_ptr<OutputFile> StandardOutput() {
  return std::make_unique<PosixOutputFile>("standard output takes nothing more", "",
                                           Descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)));
}

}  // namespace tesk::platform
