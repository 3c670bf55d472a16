#include "foundation/storage/vfs/provider.hpp"

#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

Provider::~Provider() = default;

std::optional<FolderIdentity> Provider::identity(AbsoluteIRI const& /*folder*/) {
  return std::nullopt;
}

std::size_t Provider::readsInFlight() const noexcept {
  return 16;
}

std::optional<EntryFacts> Provider::facts(AbsoluteIRI const& location) {
  PathKind const found = kind(location);
  if (found == PathKind::notFound) return std::nullopt;
  return EntryFacts{.kind = found == PathKind::isFolder ? EntryKind::folder : EntryKind::file};
}

bool Provider::servesSubtrees() const noexcept {
  return false;
}

SubtreePage Provider::subtree(SubtreeRequest const& request) {
  throw Exception(ErrorCode::other, request.folder, "this kind of storage has no flat listings");
}

}  // namespace foundation::storage::vfs
