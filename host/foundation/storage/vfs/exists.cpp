#include "foundation/storage/vfs/exists.hpp"

#include "foundation/storage/vfs/session_store.hpp"

namespace foundation::storage::vfs {

PathKind exists(AbsoluteIRI const& location, StorageSystemReference const& system) {
  std::shared_ptr<Provider> const provider = system.system().provider(location.scheme());
  if (ReadSession* const session = ReadSession::current()) return session->store().kind(*provider, location);
  return provider->kind(location);
}

}  // namespace foundation::storage::vfs
