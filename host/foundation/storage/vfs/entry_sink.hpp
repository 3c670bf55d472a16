#pragma once

#include <string_view>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/entry_facts.hpp"
#include "foundation/storage/vfs/entry_kind.hpp"

namespace foundation::storage::vfs {

class EntryTable;

/// Receives the entries of one folder from the provider that lists it. Valid for that call of `Provider::list` only,
/// and not for several threads at once.
class KORVAN_HOST_EXPORT EntrySink {
 public:
  /// Made by the storage layer, whose table must outlive it.
  EntrySink(EntryTable& table, bool wantsFacts) noexcept : table_(table), wantsFacts_(wantsFacts) {}

  /// Whether the session collects facts.
  bool wantsFacts() const noexcept { return wantsFacts_; }

  /// Adds an entry by the bytes of its name, which are copied. Entries may come in any order; of several with one name
  /// a folder is preferred. The names "", "." and ".." are ignored. Makes no request and no system call. Polls for an
  /// interrupt every few thousand entries, and throws `Quindarel::System::InterruptException` when one is pending;
  /// throws `std::length_error` for a name of 2^27 bytes or more and when all names exceed 2^32 bytes.
  void add(std::string_view name, EntryKind kind);

  /// The same, with facts. They take memory, so a provider adds them only if they are wanted and the listing held them.
  void add(std::string_view name, EntryFacts const& facts);

 private:
  EntryTable& table_;
  bool wantsFacts_;
};

}  // namespace foundation::storage::vfs
