#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/entry_facts.hpp"
#include "foundation/storage/vfs/entry_kind.hpp"
#include "foundation/storage/vfs/path_kind.hpp"

namespace foundation::storage::vfs {

/// The entries of one folder: names as bytes, with eight more bytes per entry, and facts where they are added. First
/// filled, then sorted, then read; after that only kinds that weren't known still change. Internal to the storage layer;
/// providers fill it through an `EntrySink`. Makes no system call. Not for several threads at once.
class KORVAN_HOST_EXPORT EntryTable {
 public:
  /// What `find` returns for a name that the table doesn't have.
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  /// Adds an entry: see `EntrySink::add`.
  void add(std::string_view name, EntryKind kind) { append(name, kind); }

  /// Adds an entry of the facts' kind together with the facts.
  void add(std::string_view name, EntryFacts const& facts);

  /// Removes the entries whose names the condition is true of. Their memory remains in use.
  template <class Condition>
  void removeIf(Condition condition) {
    std::erase_if(records_, [&](Record const& record) { return condition(nameOf(record)); });
  }

  /// Sorts by the bytes of the names (code point order, where they are UTF-8) and removes duplicate names, preferring a
  /// folder. Polls for an interrupt as `add` does.
  void sort();

  /// Makes room for a folder of usual size, so that filling the table allocates only twice.
  void reserveUsual();

  /// Frees the memory that isn't used.
  void shrink();

  /// The number of entries.
  std::size_t size() const noexcept { return records_.size(); }

  /// The name as bytes. Valid until the table changes.
  std::string_view name(std::size_t index) const noexcept { return nameOf(records_[index]); }

  /// The entry's kind; nothing if the listing didn't say it and no request has found it out.
  std::optional<PathKind> kind(std::size_t index) const noexcept {
    std::uint32_t const known = records_[index].flags & kindMask;
    if (known == 0) return std::nullopt;
    return static_cast<PathKind>(known - 1);
  }

  /// Records the kind that a request found.
  void setKind(std::size_t index, PathKind kind) noexcept;

  /// What the entry is itself.
  EntryKind entryKind(std::size_t index) const noexcept {
    std::uint32_t const flags = records_[index].flags;
    if ((flags & linkFlag) != 0) return (flags & certainFlag) != 0 ? EntryKind::link : EntryKind::unknown;
    return kind(index) == PathKind::isFolder ? EntryKind::folder : EntryKind::file;
  }

  /// Records what a request found an entry of unknown kind to be.
  void setEntryKind(std::size_t index, EntryKind kind) noexcept;

  /// The facts that were added with the entry, if any.
  std::optional<EntryFacts> facts(std::size_t index) const;

  /// Whether the entry is, or may be, a link.
  bool maybeLink(std::size_t index) const noexcept { return (records_[index].flags & linkFlag) != 0; }

  /// The index of the entry with the name, or `npos`. The table must be sorted. A binary search.
  std::size_t find(std::string_view wanted) const noexcept;

  /// The memory held, in bytes.
  std::size_t memory() const noexcept { return names_.capacity() + records_.capacity() * sizeof(Record); }

 private:
  static constexpr unsigned flagBits = 5;
  static constexpr std::uint32_t kindMask = 3;  // a PathKind plus one, or 0 while it isn't known
  static constexpr std::uint32_t linkFlag = 4;
  static constexpr std::uint32_t certainFlag = 8;  // with linkFlag: it is a link
  static constexpr std::uint32_t factsFlag = 16;   // the name is followed by facts

  struct Record {
    std::uint32_t offset;
    std::uint32_t flags;  // the name's length is in the bits above the flags
  };

  std::string_view nameOf(Record const& record) const noexcept {
    return {names_.data() + record.offset, record.flags >> flagBits};
  }
  bool append(std::string_view name, EntryKind kind);

  std::string names_;  // and facts
  std::vector<Record> records_;
};

}  // namespace foundation::storage::vfs
