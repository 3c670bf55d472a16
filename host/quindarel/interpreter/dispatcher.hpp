#pragma once

#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/folder.hpp"

namespace Quindarel::current_working_folder {

/// The process's current folder can't be determined: it was deleted, or a folder above it can't be read.
/// `path()` is ".".
class KORVAN_HOST_EXPORT UnknownFolderException : public fl::filesystem::FsysExceptionBase {
 public:
  /// `error` is an `errno` value.
  explicit UnknownFolderException(int error);
  ~UnknownFolderException() override;
};

/// Provides the interpreter's current folder.
class KORVAN_HOST_EXPORT ICurrentWorkingFolder {
 public:
  /// The folder, determined anew by each call. For the process's current folder that costs one system call
  /// (`getcwd`), and a failure throws `UnknownFolderException`.
  virtual foundation::storage::vfs::Folder get() const = 0;

 protected:
  ~ICurrentWorkingFolder() = default;
};

}  // namespace Quindarel::current_working_folder

/// The part of the interpreter that calls builtins, as far as they use it. Thread-safe.
class KORVAN_HOST_EXPORT Kdispatcher {
 public:
  /// The dispatcher of this process; never null, never fails.
  static Kdispatcher* getDispatcher() noexcept;

  /// The provider of the current folder; never null. By default it returns the process's current folder.
  Quindarel::current_working_folder::ICurrentWorkingFolder const* GetCurrentWorkingFolder() const noexcept;

  /// For a host with its own current folder. `folder` must outlive every later call of a builtin; null
  /// restores the default.
  void SetCurrentWorkingFolder(Quindarel::current_working_folder::ICurrentWorkingFolder const* folder) noexcept;
};
