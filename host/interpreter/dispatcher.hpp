#pragma once

#include "export.hpp"
#include "foundation/storage/vfs/folder.hpp"

namespace Quindarel::current_working_folder {

/// Tells the interpreter's current folder.
class KORVAN_HOST_EXPORT ICurrentWorkingFolder {
 public:
  virtual ~ICurrentWorkingFolder();

  /// The folder, taken afresh. The process's own costs one system call (`getcwd`), and throws
  /// `fl::filesystem::FsysExceptionBase` with the path "." when it can't be told (it was deleted, or a folder above it
  /// can't be searched).
  virtual foundation::storage::vfs::Folder get() const = 0;
};

}  // namespace Quindarel::current_working_folder

/// The part of the interpreter that calls builtins, as far as they see it.
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
