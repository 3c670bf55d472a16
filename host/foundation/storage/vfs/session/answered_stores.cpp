#include "foundation/storage/vfs/session/answered_stores.hpp"

namespace foundation::storage::vfs {
namespace {

// The scheme and the authority as written.
std::u16string_view storeOf(AbsoluteIRI const& location) {
  return std::u16string_view(location.toString()).substr(0, location.toString().size() - location.encodedPath().size());
}

}  // namespace

void AnsweredStores::add(AbsoluteIRI const& location) {
  if (location.authority().empty()) return;
  if (stores_.find(storeOf(location)) == stores_.end()) stores_.emplace(storeOf(location));
}

void AnsweredStores::throwIfLost(AbsoluteIRI const& location, Exception const& failure) const {
  bool const isStoreAbsent =
      failure.getErrorCode() == static_cast<int>(ErrorCode::notFound) && !failure.getLocation().hasParent();
  if (!isStoreAbsent || stores_.find(storeOf(failure.getLocation())) == stores_.end()) return;
  throw Exception(ErrorCode::other, location, failure.reason() + "; it existed earlier in this search");
}

}  // namespace foundation::storage::vfs
