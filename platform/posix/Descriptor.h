// An owned file descriptor and the system's reasons in words.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace tesk::platform {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Close(); }

  int Get() const { return number_; }
  bool Open() const { return number_ >= 0; }
  // 0, or the error that the system reported while closing; the descriptor is gone either way.
  int Close() {
    if (number_ < 0) return 0;
    return ::close(std::exchange(number_, -1)) == 0 ? 0 : errno;
  }

 private:
  int number_ = -1;
};

// "No such file or directory"; error: an errno value.
inline std::string SystemReason(int error) { return std::system_category().message(error); }

}  // namespace tesk::platform
