#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/entry_facts.hpp"
#include "foundation/storage/vfs/entry_sink.hpp"
#include "foundation/storage/vfs/path_kind.hpp"

namespace foundation::storage::vfs {

/// Identifies a folder, however it was reached: on a disk the device and inode (POSIX st_dev, st_ino).
struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t node = 0;
  friend bool operator==(FolderIdentity const&, FolderIdentity const&) = default;
};

/// Asks for a page of the keys below a folder of a flat store: those whose path below the folder begins with the bytes
/// `prefix` and is greater than `after`.
struct SubtreeRequest {
  AbsoluteIRI folder;
  std::string prefix{};
  bool isDelimited = false;  ///< only the folder's own entries: a subfolder is one path, however much is below it
  bool withFacts = false;
  std::string after{};  ///< any bytes; empty for the beginning
  std::string page{};   ///< the `nextPage` of the page that ended there, or empty
};

/// One page of what is below a folder, in the byte order of the paths: at any depth, or the folder's own entries.
struct SubtreePage {
  /// Paths below the folder, elements joined by "/", as bytes. A path that ends in "/" only says that this folder
  /// exists.
  std::vector<std::string> paths;
  /// Whether this is the last page.
  bool last = true;
  /// What the next page begins after, if that isn't the last of `paths`: a page may end with keys that no path can
  /// name. Empty for the last of `paths`; never less than `SubtreeRequest::after`.
  std::string position;
  /// What the provider calls the next page; may be empty.
  std::string nextPage{};
  /// Whether the store lists in byte order. If not, the page is of no use.
  bool isOrdered = true;
  /// Whether the page shows that the folder exists, be it without a path below it.
  bool folderExists = false;
  /// Of each of `paths`, if they were asked for.
  std::vector<EntryFacts> facts{};
};

/// Serves the IRIs of one scheme: says what exists at a location and which entries a folder has. Think of it as remote:
/// each operation documents how many requests it makes, and the layer above makes none twice. That layer also does
/// everything that is the same for all providers: IRIs, filters, folders, link cycles, sessions and the order of
/// entries.
///
/// A provider must be usable from several threads at once, and may itself use the storage layer while it answers; such
/// calls bypass the session on whose behalf it was called. It polls `utIsInterruptPending` while it waits or reads, and
/// throws `Quindarel::System::InterruptException` when an interrupt is pending. Every other failure is an `Exception`
/// with the location that it was asked about; an incomplete answer is a failure, never a shorter list.
class KORVAN_HOST_EXPORT Provider {
 public:
  /// Whether the scheme's IRIs have an authority, the part between "://" and the path.
  enum class Authority {
    empty,  ///< no authority ("localhost" is taken for none, RFC 8089); all of a local path is the IRI's path
    /// An authority; a local path's first element is the authority (a bucket), the rest is the IRI's path. The IRI
    /// without an authority is the folder of all of them, if there is a way to list them.
    required,
  };

  virtual ~Provider();

  /// Which of the two applies to this scheme. No request.
  virtual Authority authority() const noexcept = 0;

  /// The most requests that are worth having in flight at once, where they wait for something else than a processor; 16
  /// by default. That of the searching thread is one of them: with 1, or 0, nothing is read ahead. No request.
  virtual std::size_t readsInFlight() const noexcept;

  /// What exists at the location; `notFound` if nothing does. At most two requests. This and the other operations throw
  /// an `Exception` with code `notFound` and the root's location where the whole authority (a bucket) is absent, which
  /// a session doesn't believe of a store that has answered before.
  virtual PathKind kind(AbsoluteIRI const& location) = 0;

  /// Adds to `entries` the entries of the folder whose names begin with the bytes `namePrefix`, in any order; it may
  /// add others too. One request per page. Throws when the location is not a folder (`notFound`) or can't be listed
  /// completely.
  virtual void list(AbsoluteIRI const& folder, std::string_view namePrefix, EntrySink& entries) = 0;

  /// The identity of a folder; nothing in storage without links, where a folder can be reached in one way only, which
  /// is the default. One request. Throws if the folder doesn't exist.
  virtual std::optional<FolderIdentity> identity(AbsoluteIRI const& folder);

  /// What storage says about the entry at the location, links not followed; nothing if there is none. At most two
  /// requests. By default only the kind, as `kind` finds it out: for storage without links.
  virtual std::optional<EntryFacts> facts(AbsoluteIRI const& location);

  /// Whether this is a store of flat keys: `subtree` is served, and `list` reads only what begins with its prefix. By
  /// default not. The folder of all authorities has no keys: `list` is asked for all of it, the others aren't called.
  virtual bool servesSubtrees() const noexcept;

  /// One page of keys: one request, for nothing outside the requested prefix. For a folder with nothing below it, and
  /// for a location where nothing exists, the page is empty and the last one. Throws `Exception` with code `other` if
  /// this isn't served.
  virtual SubtreePage subtree(SubtreeRequest const& request);
};

}  // namespace foundation::storage::vfs
