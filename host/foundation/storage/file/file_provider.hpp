#pragma once

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/provider.hpp"

namespace foundation::storage::file {

/// Serves the scheme "file" (RFC 8089): the disks of this machine, by POSIX calls. A request is a system call. A path
/// with U+0000 names nothing. Links are followed even where a path has more of them than the system follows;
/// link_resolution.hpp says what that costs.
class KORVAN_HOST_EXPORT FileProvider final : public vfs::Provider {
 public:
  Authority authority() const noexcept override { return Authority::empty; }

  /// 32, for network file systems and cold disks.
  std::size_t readsInFlight() const noexcept override { return 32; }

  /// One `stat`; where that finds nothing also an `lstat`, since a broken link exists. A path that is too long for the
  /// system names nothing.
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override;

  /// Lists the whole folder, whatever the prefix: `open`, one `getdents64` for each 16 KiB of entries and one for the
  /// end, `close`. A path that is too long for the system is a failure, so that a descent to such a depth is reported
  /// as incomplete.
  void list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) override;

  /// One `stat`.
  std::optional<vfs::FolderIdentity> identity(vfs::AbsoluteIRI const& folder) override;

  /// One `lstat`. The size is that of the content, also of a folder or link (POSIX st_size).
  std::optional<vfs::EntryFacts> facts(vfs::AbsoluteIRI const& location) override;
};

}  // namespace foundation::storage::file
