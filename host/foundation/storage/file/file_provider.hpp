#pragma once

#include "foundation/storage/vfs/provider.hpp"

namespace foundation::storage::file {

/// Serves the scheme "file" (RFC 8089): the disks of this machine, by POSIX calls. A request is a system call. A path
/// too long for the system names nothing, as does one with U+0000 in it.
class FileProvider final : public vfs::Provider {
 public:
  Authority authority() const noexcept override { return Authority::empty; }

  /// One `stat`; a second call where that finds nothing, to tell a broken link from nothing.
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override;

  /// A path too long for the system is a failure here: a descent that comes so deep must not pass for whole.
  /// Reads the whole folder, whatever the prefix: `open`, one `getdents64` for each 64 KiB and one for the end,
  /// `close`.
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) override;

  /// One `stat`.
  std::optional<vfs::FolderIdentity> identity(vfs::AbsoluteIRI const& folder) override;
};

}  // namespace foundation::storage::file
