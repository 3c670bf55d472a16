#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

#include "export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {

class EntryTable;
class NameFilter;
class Folder;

/// One entry of a listing, by name.
class KORVAN_HOST_EXPORT ListEntry {
 public:
  /// The entry's name, as text. Valid as long as the entry.
  std::u16string const& getName() const noexcept { return name_; }

 private:
  template <class>
  friend class FolderListing;
  std::u16string name_;
};

/// What a listing gives: entries in the byte order of their names (code point order). A value that shares what was read; it stays valid
/// when the folder, the session or the disk changes. `T` is `ListEntry` or `Folder`.
template <class T>
class KORVAN_HOST_EXPORT FolderListing {
 public:
  /// A forward iterator in one pass at a time: the element is held by the iterator and valid until it is moved on.
  class KORVAN_HOST_EXPORT Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T const*;
    using reference = T const&;

    T const& operator*() const noexcept;
    T const* operator->() const noexcept { return &**this; }
    Iterator& operator++();
    bool operator==(Iterator const& other) const noexcept { return index_ == other.index_; }
    bool operator!=(Iterator const& other) const noexcept { return index_ != other.index_; }
  };

  /// May look at links, one request each, when `T` is `Folder`; such a failure is thrown as `Exception`.
  Iterator begin() const;
  Iterator end() const;
};

/// A handle on a folder, local or remote. Making one makes no request, but for one that is opened from another: see there. A value;
/// copies share the memory of how they were reached.
class KORVAN_HOST_EXPORT Folder {
 public:
  /// The folder at the IRI, whether or not one stands there.
  Folder(AbsoluteIRI const& location, StorageSystemReference system);

  /// The sub-folder of that name. It remembers the folders that led to it. Throws `Exception` when it is one of them, reached again
  /// through a link: a descent would never end. Asks for identities only where a link was passed: at most one request for each folder
  /// of the chain that was not asked before.
  Folder(Folder const& parent, std::u16string const& name);

  AbsoluteIRI const& getLocation() const noexcept;

  /// The folder's name, decoded; empty for a root.
  std::u16string getName() const;

  /// Every entry whose name matches the filter: "*" is any run of characters, every other character stands for itself. Reads the folder
  /// (one request a page), or answers from the thread's session. Throws `Exception` when it can't be read whole.
  FolderListing<ListEntry> listAll(std::u16string filter) const;

  /// As `listAll`, sub-folders only: folders and links to folders.
  FolderListing<Folder> listFolders(std::u16string filter) const;
};

}  // namespace foundation::storage::vfs
