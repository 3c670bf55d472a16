// What a session's policy hides beyond the entries that listings leave out.

#include <memory>
#include <utility>

#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {
namespace {

AbsoluteIRI folderAbove(AbsoluteIRI const& location) {
  AbsoluteIRI const above = location.getParent();
  return location.toString().ends_with(u'/') ? above.getParent() : above;
}

}  // namespace

// A start on another device or at another depth makes the folders that were read outdated.
void SessionCache::noteStart(Provider& provider, AbsoluteIRI const& folder) {
  std::uint64_t const device = visibility_.staysOnDevice() ? deviceOf(provider, folder) : Visibility::noDevice;
  bool const measuresOtherwise = device != visibility_.device() || depthOf(folder) != visibility_.startDepth();
  if (visibility_.closesFolders() && measuresOtherwise) forget();
  visibility_.setStart(folder, device);
  scan_.reset();
}

// Whether the folder was read for another start, and entered or not by that start's measure.
bool SessionCache::isOutdated(FolderSnapshot const& snapshot) const noexcept {
  if (!visibility_.closesFolders()) return false;
  return snapshot.isClosed != (visibility_.isTooDeep(snapshot.location) || visibility_.isElsewhere(snapshot.device));
}

// Whether the policy hides a location of which no listing says that.
bool SessionCache::hides(StorageSystem& system, AbsoluteIRI const& location) {
  if (!visibility_.isRestricted()) return false;
  if (visibility_.hides(location)) return true;
  if (!visibility_.staysOnDevice()) return false;
  AbsoluteIRI const above = folderAbove(location);
  if (!visibility_.isBelowStart(above)) return false;
  return visibility_.isElsewhere(deviceOf(*system.provider(location.scheme()), above));
}

// None if it can't be found out: what is asked about the folder next fails for the same reason.
std::uint64_t SessionCache::deviceOf(Provider& provider, AbsoluteIRI const& folder) {
  try {
    auto const known = identity(provider, folder);
    return known ? known->device : Visibility::noDevice;
  } catch (Exception const&) {
    return Visibility::noDevice;
  }
}

bool SessionCache::reportsRefusal(AbsoluteIRI const& location) const {
  return visibility_.reportsRefusals() && visibility_.isBelowStart(location);
}

// What exists at a location that may not be looked up. An entry of a listing exists, and has been reported itself.
// Otherwise the folder above is reported: it would refuse every other name too.
PathKind SessionCache::passOver(Entry entry, AbsoluteIRI const& location, Exception const& failure) {
  if (entry.snapshot != nullptr) return PathKind::isFile;
  failures_.report(
      Exception(ErrorCode::permissionDenied, folderAbove(location), failure.reason(), failure.systemError()));
  return PathKind::notFound;
}

}  // namespace foundation::storage::vfs
