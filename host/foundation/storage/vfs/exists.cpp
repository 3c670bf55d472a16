#include "foundation/storage/vfs/exists.hpp"

#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {

PathKind exists(AbsoluteIRI const& location, StorageSystemReference const& system) {
  if (SessionCache* const cache = currentSessionCache()) return cache->kind(system.system(), location);
  return system.system().provider(location.scheme())->kind(location);
}

}  // namespace foundation::storage::vfs
