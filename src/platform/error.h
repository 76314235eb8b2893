// System errors as values.
//
// Every seam function that can fail returns its error on the line of the failing call. Code above
// the seam asks the named predicates below and never compares raw numbers.

#ifndef QUASTEL_PLATFORM_ERROR_H_
#define QUASTEL_PLATFORM_ERROR_H_

#include <cstdint>
#include <utility>

namespace quastel::platform {

// The system's own numbers; any other 32-bit number may occur as well.
enum class Error : std::uint32_t {
  kNone = 0,
  kInvalidFunction = 1,
  kFileNotFound = 2,
  kPathNotFound = 3,
  kAccessDenied = 5,
  kInvalidHandle = 6,
  kNotEnoughMemory = 8,
  kWriteProtect = 19,
  kNoMoreFiles = 18,
  kNotReady = 21,
  kCrc = 23,
  kSharingViolation = 32,
  kHandleEof = 38,
  kNotSupported = 50,
  kBadNetworkPath = 53,
  kFileExists = 80,
  kInvalidParameter = 87,
  kDiskFull = 112,
  kInsufficientBuffer = 122,
  kInvalidName = 123,
  kDirectoryNotEmpty = 145,
  kAlreadyExists = 183,
  kEnvironmentVariableNotFound = 203,
  kFilenameTooLong = 206,
  kDirectory = 267,
  kNoUnicodeTranslation = 1113,
};

constexpr bool IsFileNotFound(Error error) {
  return error == Error::kFileNotFound;
}

// What creating a folder answers when the folder is there already.
constexpr bool IsAlreadyThere(Error error) {
  return error == Error::kAlreadyExists || error == Error::kFileExists;
}

// A value, or the error that stands in its place.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)), error_(Error::kNone) {}  // NOLINT: a value converts
  Result(Error error) : value_(), error_(error) {}                     // NOLINT: so does an error

  bool ok() const { return error_ == Error::kNone; }
  Error error() const { return error_; }
  T& value() & { return value_; }
  const T& value() const& { return value_; }
  T&& value() && { return std::move(value_); }

 private:
  T value_;
  Error error_;
};

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_ERROR_H_
