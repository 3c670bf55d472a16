#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// What a folder itself says about one of its entries.
enum class EntryKind : std::uint8_t {
  file,     ///< neither a folder nor a link
  folder,   ///< a folder
  link,     ///< a link: it counts as its target, whose kind only a further request can find out
  unknown,  ///< the folder doesn't say; the entry may be a link
};

class EntryTable;

/// Receives the entries of one folder from the provider that lists it. Valid for that call of `Provider::list` only,
/// and not for several threads at once.
class KORVAN_HOST_EXPORT EntrySink {
 public:
  /// Made by the storage layer, whose table must outlive it.
  explicit EntrySink(EntryTable& table) noexcept : table_(table) {}

  /// Adds an entry by the bytes of its name, which are copied. Entries may come in any order; of several with one name
  /// a folder is preferred. The names "", "." and ".." are ignored. Makes no request and no system call. Polls for an
  /// interrupt every few thousand entries, and throws `Quindarel::System::InterruptException` when one is pending;
  /// throws `std::length_error` for a name of 2^28 bytes or more and when all names exceed 2^32 bytes.
  void add(std::string_view name, EntryKind kind);

 private:
  EntryTable& table_;
};

}  // namespace foundation::storage::vfs
