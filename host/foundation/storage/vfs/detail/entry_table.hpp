#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/entry_sink.hpp"
#include "foundation/storage/vfs/path_kind.hpp"

namespace foundation::storage::vfs {

/// The entries of one folder: names as bytes, with eight more bytes per entry. First filled, then sorted, then read;
/// after that only kinds that weren't known still change. Internal to the storage layer; providers fill it through an
/// `EntrySink`. Makes no system call. Not for several threads at once.
class KORVAN_HOST_EXPORT EntryTable {
 public:
  /// What `find` returns for a name that the table doesn't have.
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  /// Adds an entry: see `EntrySink::add`.
  void add(std::string_view name, EntryKind kind);

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
  std::string_view name(std::size_t index) const noexcept {
    Record const& record = records_[index];
    return {names_.data() + record.offset, record.flags >> flagBits};
  }

  /// The entry's kind; nothing if the listing didn't say it and no request has found it out.
  std::optional<PathKind> kind(std::size_t index) const noexcept {
    std::uint32_t const known = records_[index].flags & kindMask;
    if (known == 0) return std::nullopt;
    return static_cast<PathKind>(known - 1);
  }

  /// Records the kind that a request found.
  void setKind(std::size_t index, PathKind kind) noexcept;

  /// Whether the entry is, or may be, a link.
  bool maybeLink(std::size_t index) const noexcept { return (records_[index].flags & linkFlag) != 0; }

  /// The index of the entry with the name, or `npos`. The table must be sorted. A binary search.
  std::size_t find(std::string_view wanted) const noexcept;

  /// The memory held, in bytes.
  std::size_t memory() const noexcept { return names_.capacity() + records_.capacity() * sizeof(Record); }

 private:
  static constexpr unsigned flagBits = 4;
  static constexpr std::uint32_t kindMask = 3;  // a PathKind plus one, or 0 while it isn't known
  static constexpr std::uint32_t linkFlag = 4;

  struct Record {
    std::uint32_t offset;
    std::uint32_t flags;  // the name's length is in the bits above the flags
  };

  std::string names_;
  std::vector<Record> records_;
};

}  // namespace foundation::storage::vfs
