// The one exception of the library: a run-time error with the numbers that automation hosts know.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace tesk {

class RunTimeError : public std::exception {
 public:
  // number: see below; source: module and procedure joined by a point, empty where the routine that
  // reports the error names itself; description: one sentence for the operator; detail: further lines
  // joined with "|" that say what to try, may be empty.
  RunTimeError(std::int32_t number, std::string description, std::string source = {}, std::string detail = {})
      : number_(number),
        description_(std::move(description)),
        source_(std::move(source)),
        detail_(std::move(detail)) {}

  std::int32_t Number() const { return number_; }
  const std::string& Description() const { return description_; }
  const std::string& Source() const { return source_; }
  const std::string& Detail() const { return detail_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::int32_t number_;
  std::string description_;
  std::string source_;
  std::string detail_;
};

// Error numbers of the automation run-time.
inline constexpr std::int32_t kErrorTimeOut = 0;
inline constexpr std::int32_t kErrorInvalidCall = 5;
inline constexpr std::int32_t kErrorOverflow = 6;
inline constexpr std::int32_t kErrorOutOfMemory = 7;
inline constexpr std::int32_t kErrorSubscript = 9;
inline constexpr std::int32_t kErrorTypeMismatch = 13;
inline constexpr std::int32_t kErrorInternal = 51;
inline constexpr std::int32_t kErrorDeviceUnavailable = 68;
inline constexpr std::int32_t kErrorObjectNotSet = 91;
inline constexpr std::int32_t kErrorInvalidProperty = 380;
inline constexpr std::int32_t kErrorNotSupported = 445;
// Error numbers of serial controls.
inline constexpr std::int32_t kErrorPort = 8002;
inline constexpr std::int32_t kErrorPortInUse = 8005;
inline constexpr std::int32_t kErrorLineSettings = 8015;
inline constexpr std::int32_t kErrorPortNotOpen = 8012;
inline constexpr std::int32_t kErrorPortClosed = 8018;
inline constexpr std::int32_t kErrorPortOpen = 8000;
inline constexpr std::int32_t kErrorLineRead = 8020;
inline constexpr std::int32_t kErrorLineWrite = 8021;

inline RunTimeError InvalidCall() { return {kErrorInvalidCall, "Invalid procedure call or argument"}; }
inline RunTimeError Overflow() { return {kErrorOverflow, "Overflow"}; }
inline RunTimeError SubscriptOutOfRange() { return {kErrorSubscript, "Subscript out of range"}; }
inline RunTimeError TypeMismatch() { return {kErrorTypeMismatch, "Type mismatch"}; }
inline RunTimeError ObjectNotSet() { return {kErrorObjectNotSet, "Object variable not set"}; }

// What `pointer` refers to; throws error 91 for an empty reference.
template <class Pointer>
auto& Deref(const Pointer& pointer) {
  if (!pointer) throw ObjectNotSet();
  return *pointer;
}

}  // namespace tesk
