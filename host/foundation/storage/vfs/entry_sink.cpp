#include "foundation/storage/vfs/entry_sink.hpp"

#include "foundation/storage/vfs/detail/entry_table.hpp"

namespace foundation::storage::vfs {

void EntrySink::add(std::string_view name, EntryKind kind) {
  table_.add(name, kind);
}

void EntrySink::add(std::string_view name, EntryFacts const& facts) {
  table_.add(name, facts);
}

}  // namespace foundation::storage::vfs
