// How a session reads stores of flat keys.

#include <algorithm>

#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {

std::shared_ptr<FolderSnapshot> SessionCache::readFromStore(std::shared_ptr<Provider> const& provider,
                                                            AbsoluteIRI const& location, std::string_view prefix) {
  if (location.isFolderOfAuthorities()) return readFolder(*provider, location, prefix, &visibility_);
  SubtreeScan::Expectation const expected = !visibility_.descendsFrom(location) ? SubtreeScan::Expectation::thisFolder
                                            : announced_ && announced_->descendsFrom(location)
                                                ? SubtreeScan::Expectation::everythingBelow
                                                : SubtreeScan::Expectation::unknown;
  auto snapshot = scanFor(location, prefix).read(provider, location, prefix, expected, [this](auto const& other) {
    addScanned(other);
  });
  noteOrderOf(location);
  return snapshot;
}

// The provider's answer; a store that doesn't exist has no entries. Only so many names are looked up ahead as will be
// looked up individually anyway: all of them where no page is read for them, as in different buckets.
PathKind SessionCache::askStore(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location) {
  std::size_t mostAhead = 2 * limit_.of(*provider);
  if (scan_ && scan_->reaches(location.getParent(), {})) mostAhead = std::min(mostAhead, scan_->lookupsBeforeAPage());
  try {
    return stores_.ask(location, [&] { return lookUp(provider, location, mostAhead); });
  } catch (Exception const& failure) {
    if (failure.getErrorCode() != static_cast<int>(ErrorCode::notFound)) throw;
    return PathKind::notFound;
  }
}

SubtreeScan& SessionCache::scanFor(AbsoluteIRI const& location, std::string_view prefix) {
  if (!scan_ || !scan_->reaches(location, prefix))
    scan_.emplace(location, std::string(prefix), visibility_, memoryBound_, readAhead_, stores_);
  return *scan_;
}

void SessionCache::addScanned(std::shared_ptr<FolderSnapshot> snapshot) {
  if (find(keyOf(snapshot->location), snapshot->prefix) == nullptr) add(std::move(snapshot));
}

void SessionCache::noteOrderOf(AbsoluteIRI const& location) {
  if (!scan_->isUnordered()) return;
  AbsoluteIRI const store(location, u"/");
  for (Exception const& note : notes_)
    if (note.getLocation() == store) return;
  notes_.emplace_back(ErrorCode::other, store,
                      "the store does not list its keys in byte order, so each folder is listed alone");
}

}  // namespace foundation::storage::vfs
