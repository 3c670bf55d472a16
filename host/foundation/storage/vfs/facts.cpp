#include "foundation/storage/vfs/facts.hpp"

#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {

std::optional<EntryFacts> facts(AbsoluteIRI const& location, StorageSystemReference const& system) {
  auto const provider = system.system().provider(location.scheme());
  if (SessionCache* const cache = currentSessionCache()) return cache->facts(*provider, location);
  return provider->facts(location);
}

std::optional<EntryKind> entryKind(AbsoluteIRI const& location, StorageSystemReference const& system) {
  auto const provider = system.system().provider(location.scheme());
  if (SessionCache* const cache = currentSessionCache()) return cache->entryKind(*provider, location);
  auto const known = provider->facts(location);
  return known ? std::optional(known->kind) : std::nullopt;
}

}  // namespace foundation::storage::vfs
