#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/path_kind.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

template <class T>
class KORVAN_HOST_EXPORT FolderListing;
struct FolderSnapshot;
class NameFilter;

/// One entry of a listing, by name.
class KORVAN_HOST_EXPORT ListEntry {
 public:
  /// The entry's name, as text. Valid as long as the entry.
  std::u16string const& getName() const noexcept { return name_; }

  /// What the entry is, if the listing says so; never makes a request. Nothing for most links, and for folders that
  /// don't say what their entries are.
  std::optional<PathKind> getKind() const noexcept { return kind_; }

 private:
  template <class>
  friend class FolderListing;
  ListEntry(std::u16string name, std::optional<PathKind> kind) noexcept : name_(std::move(name)), kind_(kind) {}

  std::u16string name_;
  std::optional<PathKind> kind_;
};

/// A handle on a folder, local or remote. A value: copies share an immutable record of how the folder was reached, so
/// several threads may use them. Making a handle makes no request, except where one folder is opened from another.
class KORVAN_HOST_EXPORT Folder {
 public:
  /// The folder at the IRI, whether or not one exists there. Throws `UnsupportedIRISchemeException` when no provider
  /// serves the scheme.
  Folder(AbsoluteIRI location, StorageSystemReference system);

  /// The subfolder of that name. Throws `Exception` (code `other`) when it is one of the folders that led to it,
  /// reached again through a link, so that no descent follows a cycle. If a link was followed on the way, or no session
  /// can rule that out, it asks for the identities of these folders, one request each, and throws what that throws. In
  /// a session that doesn't follow links it throws `Exception` (code `notFound`) for a link; that costs one request if
  /// the folder above doesn't say what its entries are.
  Folder(Folder const& parent, std::u16string const& name);

  /// Where the folder is, as it was reached.
  AbsoluteIRI const& getLocation() const noexcept;

  /// The folder's name, decoded; empty for a root.
  std::u16string getName() const;

  /// Every entry whose name matches the filter: "*" is any run of characters, every other character matches itself.
  /// Lists the folder (one request per page), or answers from the thread's session. Throws `Exception` when the folder
  /// can't be listed completely.
  FolderListing<ListEntry> listAll(std::u16string filter) const;

  /// As `listAll`, but only folders and links to folders. One more request for each matching link, and for each
  /// matching entry whose kind the folder doesn't say; an entry for which that request fails is left out.
  FolderListing<Folder> listFolders(std::u16string filter) const;

 private:
  friend class EntryCursor;
  struct Node;
  explicit Folder(std::shared_ptr<Node const> node) noexcept;
  Folder(Folder const& parent, std::u16string const& name, std::optional<bool> maybeLink);

  std::shared_ptr<Node const> node_;
};

/// Moves over the entries that a listing found, in the byte order of their names (code point order), and makes nothing
/// for an entry but what is asked for: for searches, which look at each entry once. Begins before the first entry. A
/// value that shares what was read, as a `FolderListing`. No request, except where documented.
class KORVAN_HOST_EXPORT EntryCursor {
 public:
  /// Moves to the next entry; false if there is none. Undefined after that.
  bool next();

  /// How many entries of the folder come before this one, whether or not they match; all of them at the end. Undefined
  /// before the first call of `next`.
  std::size_t position() const noexcept { return index_; }

  /// What the entry is, if the listing says so: see `ListEntry::getKind`.
  std::optional<PathKind> getKind() const noexcept;

  /// Whether the entry's name begins with ".".
  bool isDotName() const noexcept;

  /// The entry's name, as text, or appended to a text.
  std::u16string getName() const;
  void appendName(std::u16string& text) const;

  /// The subfolder: as `Folder(parent, getName())`, for a descent. Knows from the listing whether the entry may be a
  /// link.
  Folder enter() const;

 private:
  template <class>
  friend class FolderListing;
  friend class Folder;
  EntryCursor(std::shared_ptr<FolderSnapshot const> snapshot, std::shared_ptr<NameFilter const> filter, Folder folder,
              bool foldersOnly) noexcept;

  bool matches() const;
  Folder listedFolder() const;  // without a check for link cycles

  std::shared_ptr<FolderSnapshot const> snapshot_;
  std::shared_ptr<NameFilter const> filter_;
  Folder folder_;
  std::size_t index_ = static_cast<std::size_t>(-1);
  std::size_t end_;
  bool foldersOnly_;
  bool matchesAll_;
};

/// The entries that a listing found, in the byte order of their names (code point order). A value that shares what was
/// read: it stays valid and unchanged when the folder, the session or the disk changes. Iterating makes no request. `T`
/// is `ListEntry` or `Folder`.
template <class T>
class KORVAN_HOST_EXPORT FolderListing {
 public:
  /// Moves forward only. The iterator holds its element, which it makes when it is first dereferenced: a reference is
  /// valid until that iterator moves or is destroyed.
  class KORVAN_HOST_EXPORT Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T const*;
    using reference = T const&;

    T const& operator*() const {
      if (!element_) make();
      return *element_;
    }
    T const* operator->() const { return &**this; }

    Iterator& operator++();
    bool operator==(Iterator const& other) const noexcept { return cursor_.index_ == other.cursor_.index_; }
    bool operator!=(Iterator const& other) const noexcept { return !(*this == other); }

   private:
    friend class FolderListing;
    explicit Iterator(EntryCursor cursor) noexcept : cursor_(std::move(cursor)) {}
    void make() const;

    EntryCursor cursor_;
    mutable std::optional<T> element_;
  };

  Iterator begin() const;
  Iterator end() const;

  /// A cursor before the first entry.
  EntryCursor cursor() const& { return start_; }
  EntryCursor cursor() && { return std::move(start_); }

 private:
  friend class Folder;
  explicit FolderListing(EntryCursor start) noexcept : start_(std::move(start)) {}

  EntryCursor start_;
};

}  // namespace foundation::storage::vfs
