#include "foundation/storage/vfs/exists.hpp"

#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

PathKind exists(AbsoluteIRI const& location, StorageSystemReference const& system) {
  if (SessionCache* const cache = currentSessionCache()) return cache->kind(system.system(), location);
  try {
    return system.system().provider(location.scheme())->kind(location);
  } catch (Exception const& failure) {
    if (failure.getErrorCode() != static_cast<int>(ErrorCode::notFound)) throw;
    return PathKind::notFound;
  }
}

}  // namespace foundation::storage::vfs
