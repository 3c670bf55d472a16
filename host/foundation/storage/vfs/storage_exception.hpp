#pragma once

#include <exception>
#include <string>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::vfs {

/// What kind of failure a storage error is; the numbers are part of the interface.
enum class ErrorCode : int {
  notFound = 1,          ///< nothing exists at the location, or one of its components is not a folder
  permissionDenied = 2,  ///< something may exist there, but the caller may not see or read it
  other = 3,             ///< anything else: a failing medium, a malformed response, a timeout
};

/// The root of every storage error: a code, the location concerned, and what the system or the store said. Every error
/// that the storage layer throws is one of these or derives from it.
class KORVAN_HOST_EXPORT Exception : public std::exception {
 public:
  /// `reason` is UTF-8, a few words, without the location. `systemError` is an `errno` value, where a system call
  /// failed.
  Exception(ErrorCode code, AbsoluteIRI location, std::string reason, int systemError = 0);
  ~Exception() override;

  /// The `ErrorCode` as a number.
  int getErrorCode() const noexcept { return static_cast<int>(code_); }

  /// The `errno` value of the system call that failed, or 0.
  int systemError() const noexcept { return systemError_; }

  /// The location concerned, as it was asked about.
  AbsoluteIRI const& getLocation() const noexcept { return location_; }

  /// What the system or the store said, as UTF-8, without the location.
  std::string const& reason() const noexcept { return reason_; }

  /// The location and the reason, as UTF-8. Valid as long as the exception.
  char const* what() const noexcept override { return what_.c_str(); }

 protected:
  /// An error about a text that names no location: the location is an IRI with the empty text, the code is `other`.
  Exception(std::u16string const& subject, std::string reason);

 private:
  ErrorCode code_;
  int systemError_ = 0;
  AbsoluteIRI location_;
  std::string reason_;
  std::string what_;
};

/// A text that begins as an IRI but isn't a valid one. Its code is `other`; its location is an IRI with the empty text.
class KORVAN_HOST_EXPORT InvalidIRIException : public Exception {
 public:
  /// `reason` says what is wrong with the text, in a few words of UTF-8.
  InvalidIRIException(std::u16string text, std::string reason);
  ~InvalidIRIException() override;

  /// The text, as the caller wrote it.
  std::u16string const& getInvalidIRIString() const noexcept { return text_; }

 private:
  std::u16string text_;
};

/// An IRI whose scheme no provider serves. Its code is `other`; its location is an IRI with the empty text.
class KORVAN_HOST_EXPORT UnsupportedIRISchemeException : public Exception {
 public:
  /// `reason` says why, in a few words of UTF-8.
  UnsupportedIRISchemeException(std::u16string scheme, std::string reason);
  ~UnsupportedIRISchemeException() override;

  /// The scheme, without "://".
  std::u16string const& getScheme() const noexcept { return scheme_; }

 private:
  std::u16string scheme_;
};

/// The code for an `errno` value: ENOENT and ENOTDIR are "not found", EACCES and EPERM "permission denied", everything
/// else is "other". The one place that decides it.
KORVAN_HOST_EXPORT ErrorCode errorCodeOfErrno(int error) noexcept;

/// The storage exception for a system call that failed with `error` at `location`, with the system's own message.
KORVAN_HOST_EXPORT Exception exceptionOfErrno(int error, AbsoluteIRI location);

}  // namespace foundation::storage::vfs
