#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/path_kind.hpp"

namespace foundation::storage::vfs {

/// What a folder tells of an entry without a look at the entry itself.
enum class EntryKind : std::uint8_t {
  file,     ///< neither a folder nor a link
  folder,   ///< a folder itself
  link,     ///< a link: it counts as what it leads to, which only a look can tell
  unknown,  ///< the folder doesn't tell; the entry may be a link as well
};

/// The entries of one folder: names as bytes, eight bytes an entry beyond the name. Filled by a provider, then sorted,
/// then only read (but for kinds that are found out later). Makes no system call. Not for several threads at once.
class KORVAN_HOST_EXPORT EntryTable {
 public:
  /// No index.
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  /// Takes every entry away and keeps the memory.
  void clear() noexcept {
    names_.clear();
    records_.clear();
  }

  /// Adds an entry. The names "", "." and ".." are passed over. Polls for an interrupt every few thousand entries and
  /// then throws `Quindarel::System::InterruptException`. Throws `std::length_error` past 2^28 bytes in one name or
  /// 2^32 in all.
  void add(std::string_view name, EntryKind kind);

  /// Sorts by the bytes of the names (code point order, where they are UTF-8). Of entries with one name one is kept, a
  /// folder if any of them is. Polls for an interrupt as `add` does.
  void sort();

  /// The number of entries.
  std::size_t size() const noexcept { return records_.size(); }
  /// The name as bytes. Valid until the table changes.
  std::string_view name(std::size_t index) const noexcept {
    Record const& record = records_[index];
    return {names_.data() + record.offset, record.flags >> flagBits};
  }

  /// What stands there, where the folder told it or a look at the entry has found it.
  std::optional<PathKind> kind(std::size_t index) const noexcept {
    std::uint32_t const known = records_[index].flags & kindMask;
    if (known == 0) return std::nullopt;
    return static_cast<PathKind>(known - 1);
  }

  /// Notes what a look at the entry found.
  void setKind(std::size_t index, PathKind kind) noexcept;

  /// Whether the entry is, or may be, a link.
  bool maybeLink(std::size_t index) const noexcept { return (records_[index].flags & linkFlag) != 0; }

  /// The index of the entry with the name, or `npos`. The table must be sorted.
  std::size_t find(std::string_view wanted) const noexcept;

  /// The memory held, in bytes.
  std::size_t memory() const noexcept { return names_.capacity() + records_.capacity() * sizeof(Record); }

  /// The table without what growing left over. This one is empty afterwards, and keeps its memory for the next folder
  /// unless that is much.
  EntryTable takeCompact();

 private:
  static constexpr unsigned flagBits = 4;
  static constexpr std::uint32_t kindMask = 3;  // a PathKind plus one, or 0 while it isn't known
  static constexpr std::uint32_t linkFlag = 4;

  struct Record {
    std::uint32_t offset;
    std::uint32_t flags;  // the name's length, above flagBits of flags
  };

  std::string names_;
  std::vector<Record> records_;
};

}  // namespace foundation::storage::vfs
