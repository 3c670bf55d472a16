#include "foundation/storage/vfs/session/answered_stores.hpp"

namespace foundation::storage::vfs {
namespace {

// The scheme and the authority as written.
std::u16string_view storeOf(AbsoluteIRI const& location) {
  return std::u16string_view(location.toString()).substr(0, location.toString().size() - location.encodedPath().size());
}

}  // namespace

void AnsweredStores::add(AbsoluteIRI const& location) {
  if (location.authority().empty() || exists_.find(storeOf(location)) != exists_.end()) return;
  exists_.emplace(storeOf(location), true);
}

void AnsweredStores::noteAbsence(AbsoluteIRI const& location, Exception const& failure) {
  AbsoluteIRI const& absent = failure.getLocation();
  bool const isStore = !absent.authority().empty() && !absent.hasParent();
  if (!isStore || failure.getErrorCode() != static_cast<int>(ErrorCode::notFound)) return;
  if (exists_.emplace(storeOf(absent), false).first->second)
    throw Exception(ErrorCode::other, location, failure.reason() + "; it existed earlier in this search");
}

void AnsweredStores::throwIfAbsent(AbsoluteIRI const& location) const {
  auto const found = exists_.find(storeOf(location));
  if (found != exists_.end() && !found->second)
    throw Exception(ErrorCode::notFound, AbsoluteIRI(location, u"/"), "it doesn't exist");
}

}  // namespace foundation::storage::vfs
