#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/detail/entry_table.hpp"
#include "foundation/storage/vfs/path_kind.hpp"

namespace foundation::storage::vfs {

/// Tells whether two folders are one, however they were reached: on a disk the device and inode (POSIX st_dev, st_ino).
struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t node = 0;
  friend bool operator==(FolderIdentity const&, FolderIdentity const&) = default;
};

/// One page of a flat listing: everything below a folder, at any depth, in the byte order of the texts.
struct SubtreePage {
  /// Paths below the folder, elements joined by "/", as bytes. A text that ends in "/" says that this folder exists,
  /// and no more.
  std::vector<std::string> paths;
  /// Whether nothing follows.
  bool last = true;
  /// What the next page begins after, where that is past the last path, as a store may hold keys that no path can name.
  /// Empty: the last path.
  std::string position;
};

/// Serves the IRIs of one scheme. Think of it as remote: each operation says how many requests it makes, the layer
/// above makes none twice. IRIs, filters, folders, link cycles, sessions and the order of entries are the layer's; a
/// provider only answers what stands where.
///
/// A provider must be usable from several threads at once. It polls `utIsInterruptPending` while it waits or reads, and
/// throws `Quindarel::System::InterruptException` when it is set. Every other failure is an `Exception` with the
/// location that it was asked about; an answer that is not whole is a failure, never a shorter list.
class KORVAN_HOST_EXPORT Provider {
 public:
  /// Whether the scheme's IRIs have an authority, what stands between "://" and the path.
  enum class Authority {
    empty,     ///< IRIs have none ("localhost" is taken for none, RFC 8089); all of a local path is their path
    required,  ///< IRIs have one; a local path's first element is the authority (a bucket), the rest the path
  };

  virtual ~Provider();

  /// Which of them holds for this scheme. No request.
  virtual Authority authority() const noexcept = 0;

  /// What stands at the location; `notFound` where nothing does. At most two requests.
  virtual PathKind kind(AbsoluteIRI const& location) = 0;

  /// Adds the entries of the folder whose names begin with the bytes `namePrefix`, in any order; it may add others too.
  /// Costs one request a page. Throws when the location is no folder (`notFound`) or can't be read whole.
  virtual void list(AbsoluteIRI const& folder, std::string_view namePrefix, EntryTable& entries) = 0;

  /// The identity of a folder where folders can be reached in more than one way; nothing where they can't, as in a
  /// store without links. One request. Throws when there is no folder.
  virtual std::optional<FolderIdentity> identity(AbsoluteIRI const& folder);

  /// Whether the store is one of flat keys: `subtree` is served, and `list` reads only what begins with its prefix.
  virtual bool servesSubtrees() const noexcept;

  /// The page of everything below the folder whose path below it begins with the bytes `prefix` and is greater than
  /// `after` (from the beginning where that is empty). One request. A folder with nothing below gives an empty last
  /// page; so does a location where nothing stands. Throws `Exception` with code `other` where it isn't served.
  virtual SubtreePage subtree(AbsoluteIRI const& folder, std::string_view prefix, std::string_view after);
};

}  // namespace foundation::storage::vfs
