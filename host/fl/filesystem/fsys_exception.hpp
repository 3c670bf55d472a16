#pragma once

#include <exception>
#include <string>

#include "foundation/core/host_export.hpp"

namespace fl::filesystem {

/// The base of the local path library's errors: the path concerned and the system's error.
class KORVAN_HOST_EXPORT FsysExceptionBase : public std::exception {
 public:
  /// `error` is an `errno` value.
  FsysExceptionBase(std::u16string path, int error);
  ~FsysExceptionBase() override;

  /// The path, as it was passed to the operation or as the operation made it absolute.
  std::u16string const& path() const noexcept { return path_; }
  /// The system's error, as an `errno` value.
  int error() const noexcept { return error_; }

  /// The system's message for that error, as UTF-8, without the path.
  std::string const& reason() const noexcept { return reason_; }

  /// The path and the reason, as UTF-8.
  char const* what() const noexcept override { return what_.c_str(); }

 private:
  std::u16string path_;
  int error_;
  std::string reason_;
  std::string what_;
};

}  // namespace fl::filesystem
