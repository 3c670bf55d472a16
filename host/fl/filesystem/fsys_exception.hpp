#pragma once

#include <exception>
#include <string>

#include "foundation/core/host_export.hpp"

namespace fl::filesystem {

/// The root of the local path library's errors: the path concerned and what the system said.
class KORVAN_HOST_EXPORT FsysExceptionBase : public std::exception {
 public:
  /// `error` is an `errno` value.
  FsysExceptionBase(std::u16string path, int error);
  ~FsysExceptionBase() override;

  /// The path text, as the operation was given it or as it made it absolute.
  std::u16string const& path() const noexcept { return path_; }
  /// What the system said, as an `errno` value.
  int error() const noexcept { return error_; }

  /// What the system said, as UTF-8, without the path.
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
