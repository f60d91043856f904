// Results of the protocol layers: a value or an error, never an exception.
// A drive that answers garbage is an ordinary event here, so every decoder
// and every exchange returns one of these instead of throwing.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace opal {

// What went wrong. status holds the drive's method status when the drive
// refused a call (kNoStatus when the failure is ours or the transport's).
struct Error {
  static constexpr int kNoStatus = -1;
  std::string message;
  int status = kNoStatus;
};

template <typename T>
class Result {
 public:
  Result(T value) : value_(std::move(value)) {}  // NOLINT: implicit on purpose
  Result(Error error) : error_(std::move(error)) {}  // NOLINT

  bool ok() const { return value_.has_value(); }
  explicit operator bool() const { return ok(); }
  const T& value() const& { return *value_; }
  T& value() & { return *value_; }
  T&& value() && { return std::move(*value_); }
  const T& operator*() const& { return *value_; }
  T& operator*() & { return *value_; }
  const T* operator->() const { return &*value_; }
  T* operator->() { return &*value_; }
  const Error& error() const { return error_; }

 private:
  std::optional<T> value_;
  Error error_;
};

// A result without a value: success, or an error.
struct Done {};
using Status = Result<Done>;
inline Status Ok() { return Done{}; }

inline Error Fail(std::string message, int status = Error::kNoStatus) {
  return Error{std::move(message), status};
}

}  // namespace opal
