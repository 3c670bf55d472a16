#include "foundation/storage/vfs/entry_sink.hpp"

#include "foundation/storage/vfs/detail/entry_table.hpp"

namespace foundation::storage::vfs {

void EntrySink::add(std::string_view name, EntryKind kind) {
  table_.add(name, kind);
}

}  // namespace foundation::storage::vfs
