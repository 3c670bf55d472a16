#pragma once

#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/folder.hpp"

namespace Quindarel::current_working_folder {

/// The process's current folder can't be told: it was deleted, or a folder above it can't be read. Its path is ".".
class KORVAN_HOST_EXPORT UnknownFolderException : public fl::filesystem::FsysExceptionBase {
 public:
  /// `error` is an `errno` value.
  explicit UnknownFolderException(int error);
  ~UnknownFolderException() override;
};

/// Tells the interpreter's current folder.
class KORVAN_HOST_EXPORT ICurrentWorkingFolder {
 public:
  /// The folder, taken afresh. The process's own costs one system call (`getcwd`) and throws `UnknownFolderException`.
  virtual foundation::storage::vfs::Folder get() const = 0;

 protected:
  ~ICurrentWorkingFolder() = default;
};

}  // namespace Quindarel::current_working_folder

/// The part of the interpreter that calls builtins, as far as they see it. Safe on every thread.
class KORVAN_HOST_EXPORT Kdispatcher {
 public:
  /// The one of this process; never null, never fails.
  static Kdispatcher* getDispatcher() noexcept;

  /// Who tells the current folder; never null. The process's current folder, unless the host keeps its own.
  Quindarel::current_working_folder::ICurrentWorkingFolder const* GetCurrentWorkingFolder() const noexcept;

  /// For a host that keeps a current folder of its own: it must outlive every call of a builtin. Null goes back to the
  /// process's.
  void SetCurrentWorkingFolder(Quindarel::current_working_folder::ICurrentWorkingFolder const* folder) noexcept;
};
