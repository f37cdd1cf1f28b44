// An owned handle of the system.
#pragma once

#include <utility>

#include "platform/windows/WindowsApi.h"

namespace tesk::platform {

class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() { Close(); }

  HANDLE Get() const { return handle_; }
  bool Open() const { return handle_ != INVALID_HANDLE_VALUE && handle_ != nullptr; }
  bool Close() { return !Open() || ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) != 0; }

 private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

}  // namespace tesk::platform
