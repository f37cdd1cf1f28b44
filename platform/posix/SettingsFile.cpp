// The settings file: read whole, changed under a lock, replaced by renaming.
#include "platform/posix/SettingsFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "base/RunTimeError.h"
#include "base/conversions.h"
#include "platform/Platform.h"
#include "platform/posix/Descriptor.h"

namespace tesk::platform {
namespace {

constexpr std::size_t kLargestFile = 16 * 1024 * 1024;  // bytes; far more than settings ever take

RunTimeError Failure(const std::string& path, const char* what, int error) {
  return {error == ENOSPC || error == EDQUOT ? kErrorDiskFull : kErrorFileAccess,
          "The settings file \"" + path + "\" cannot be " + what + ": " + SystemReason(error) + ".",
          {},
          "Check the path, its permissions and the free space."};
}

Descriptor Open(const std::string& path, int flags, mode_t mode = 0) {
  return Descriptor(::open(path.c_str(), flags | O_CLOEXEC, mode));
}

std::string ReadAll(const std::string& path, const Descriptor& file) {
  std::string text;
  std::string block(64 * 1024, '\0');
  while (true) {
    const ssize_t count = ::read(file.Get(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Failure(path, "read", errno);
    if (count == 0) return text;
    text.append(block, 0, static_cast<std::size_t>(count));
    if (text.size() > kLargestFile) throw Failure(path, "read", EFBIG);
  }
}

void WriteAll(const std::string& path, const Descriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(file.Get(), text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Failure(path, "written", errno);
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

// Where a link points to, so that the file is replaced and not the link.
std::string Target(const std::string& path) {
  std::error_code none;
  const auto target = std::filesystem::canonical(path, none);
  return none ? path : target.string();
}

// Others hold the lock for moments; who holds it longer has stopped.
void Lock(const Descriptor& lock, const std::string& path) {
  using namespace std::chrono_literals;
  const auto deadline = std::chrono::steady_clock::now() + 5s;
  while (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    const bool held = errno == EWOULDBLOCK || errno == EINTR;
    if (!held || std::chrono::steady_clock::now() > deadline) throw Failure(path, "locked", errno);
    std::this_thread::sleep_for(5ms);
  }
}

std::string DefaultPath() {
  const char* configuration = std::getenv("XDG_CONFIG_HOME");
  if (configuration != nullptr && *configuration == '/') {
    return std::string(configuration) + "/teskreader99/settings.conf";
  }
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr && *home != '\0' ? home : "/") + "/.config/teskreader99/settings.conf";
}

std::string GroupOf(teskReaderRegistryKey root, const std::string& key) {
  const std::string path = CanonicalKey(key);
  return std::string(RootName(root)) + (path.empty() ? "" : "\\" + path);
}

}  // namespace

SettingsFile::SettingsFile(std::string path) : path_(std::move(path)) {}

SettingsText SettingsFile::Read() const {
  const Descriptor file = Open(path_, O_RDONLY | O_NONBLOCK);
  if (!file.Open() && errno == ENOENT) return {};
  if (!file.Open()) throw Failure(path_, "read", errno);
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) throw Failure(path_, "read", EINVAL);
  return SettingsText::Parse(ReadAll(path_, file), path_);
}

std::optional<std::string> SettingsFile::LoadValue(teskReaderRegistryKey root, const std::string& key,
                                                   const std::string& name) {
  const auto value = Read().Find(GroupOf(root, key), name);
  if (!value || value->size() > kLongestValue) return std::nullopt;
  return StoredText(kTypeText, *value);
}

bool SettingsFile::SaveValues(teskReaderRegistryKey root, const std::string& key,
                              const std::vector<StoredValue>& values) {
  const std::string group = GroupOf(root, key);
  return Change([&](SettingsText& settings) {
    for (const StoredValue& value : values) settings.Set(group, value.name, value.text);
    return true;
  });
}

bool SettingsFile::DeleteValues(teskReaderRegistryKey root, const std::string& key,
                                const std::vector<std::string>& names) {
  const std::string group = GroupOf(root, key);
  return Change([&](SettingsText& settings) {
    bool removed = false;
    for (const std::string& name : names) removed = settings.Remove(group, name) || removed;
    return removed;
  });
}

std::vector<std::string> SettingsFile::Keys(teskReaderRegistryKey root) const {
  const SettingsText settings = Read();
  const std::string below = std::string(RootName(root)) + "\\";
  std::vector<std::string> keys;
  for (const std::string& group : settings.Groups()) {
    if (LowerCase(group.substr(0, below.size())) != LowerCase(below)) continue;
    if (settings.Find(group, "ScannerType")) keys.push_back(group.substr(below.size()));
  }
  std::ranges::sort(keys);
  keys.erase(std::ranges::unique(keys).begin(), keys.end());
  return keys;
}

bool SettingsFile::Change(const std::function<bool(SettingsText&)>& change) {
  std::error_code none;
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), none);
  // A file of its own: the lock must outlive the replacing of the settings file.
  const std::string lockPath = path_ + ".lock";
  const Descriptor lock = Open(lockPath, O_RDWR | O_CREAT, 0600);
  if (!lock.Open()) throw Failure(lockPath, "opened", errno);
  Lock(lock, lockPath);
  SettingsText settings = Read();
  if (!change(settings)) return false;
  Replace(settings.Text());
  return true;
}

void SettingsFile::Replace(const std::string& text) const {
  const std::string target = Target(path_);
  const std::string fresh = target + ".new";
  {
    struct stat status {};
    const mode_t mode = ::stat(target.c_str(), &status) == 0 ? status.st_mode & 0777U : 0600;
    Descriptor file = Open(fresh, O_WRONLY | O_CREAT | O_TRUNC, mode);
    if (!file.Open()) throw Failure(fresh, "created", errno);
    if (const auto error = Attempt([&] {
          WriteAll(fresh, file, text);
          if (::fsync(file.Get()) != 0) throw Failure(fresh, "written", errno);
        })) {
      ::unlink(fresh.c_str());
      throw *error;
    }
  }
  if (::rename(fresh.c_str(), target.c_str()) != 0) throw Failure(target, "replaced", errno);
  const Descriptor folder =
      Open(std::filesystem::path(target).parent_path().string(), O_RDONLY | O_DIRECTORY);
  if (folder.Open()) ::fsync(folder.Get());
}

std::shared_ptr<SettingsStore> CreateSettingsStore() { return std::make_shared<SettingsFile>(DefaultPath()); }

std::vector<std::string> SettingsKeys(teskReaderRegistryKey root) {
  return SettingsFile(DefaultPath()).Keys(root);
}

}  // namespace tesk::platform
