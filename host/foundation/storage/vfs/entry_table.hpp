#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "export.hpp"
#include "foundation/storage/vfs/path_kind.hpp"

namespace foundation::storage::vfs {

/// What a folder tells of an entry without a look at the entry itself.
enum class EntryKind : std::uint8_t {
  file,
  folder,
  link,     ///< a link: it counts as what it leads to, which only a look can tell
  unknown,  ///< the folder doesn't tell; the entry may be a link as well
};

/// The entries of one folder: names as bytes, eight bytes an entry beyond the name. Filled by a provider, then sorted, then only read
/// (but for kinds that are found out later). No system calls.
class KORVAN_HOST_EXPORT EntryTable {
 public:
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  /// Adds an entry. The names "", "." and ".." are passed over. Polls for an interrupt every few thousand entries and then throws
  /// `Quindarel::System::InterruptException`. Throws `std::length_error` when a name has more than 2^28 bytes or all of them 2^32.
  void add(std::string_view name, EntryKind kind);

  /// Sorts by the bytes of the names (code point order, where they are UTF-8). Of entries with one name only one is kept: a folder
  /// rather than a link, unknown or a file. Polls for an interrupt as `add` does.
  void sort();

  std::size_t size() const noexcept { return records_.size(); }
  std::string_view name(std::size_t index) const noexcept;
  EntryKind kind(std::size_t index) const noexcept;

  /// Notes what a look at a link or an unknown entry found. A link stays known as one: see `reachedByLink`.
  void resolve(std::size_t index, PathKind kind) noexcept;

  /// What a look at the entry found, or the folder told; `known` is false while neither did.
  struct Resolution {
    bool known;
    PathKind kind;
  };
  Resolution resolution(std::size_t index) const noexcept;

  /// Whether the entry is, or may be, a link.
  bool reachedByLink(std::size_t index) const noexcept;

  /// The index of the entry with that name, or `npos`. `hint` is looked at first. The table must be sorted.
  std::size_t find(std::string_view name, std::size_t hint = 0) const noexcept;

  /// The memory held, in bytes.
  std::size_t memory() const noexcept;

  /// Gives back the memory that growing left over.
  void shrink();

 private:
  struct Record {
    std::uint32_t offset;
    std::uint32_t lengthAndFlags;
  };
  std::string names_;
  std::vector<Record> records_;
};

}  // namespace foundation::storage::vfs
