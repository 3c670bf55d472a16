// What a session knows of the search in progress, and of what was read ahead for it.

#include <utility>

#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {

std::shared_ptr<void const> SessionCache::announce(SearchOutline const& outline) {
  auto announcement = readAhead_.announce(outline);
  announced_.emplace(outline, visibility_);
  announcement_ = announcement;
  ++search_;
  return announcement;
}

// Whether the search in progress begins at this root.
bool SessionCache::isSearchedFrom(AbsoluteIRI const& root) const {
  return !announcement_.expired() && announced_->at(root) != 0;
}

// Predicts what the search in progress reads below the folder, once for each search.
void SessionCache::enter(CachedFolder& folder, Provider const& provider) {
  if (std::exchange(folder.search, search_) == search_) return;
  readAhead_.enter(*folder.snapshot, provider.servesSubtrees());
}

// What was read ahead, and may be requested later or never.
void SessionCache::addUnrequested(Answer const& answer) {
  if (answer.failure) {
    try {
      std::rethrow_exception(answer.failure);
    } catch (Exception const& failure) {
      // The absence of a whole store is judged when it is met by a request.
      bool const isAbsence = failure.getErrorCode() == static_cast<int>(ErrorCode::notFound);
      if (answer.question == FailureLog::Question::entries || !isAbsence) {
        failures_.remember(answer.question, answer.location, failure);
      }
    }
  } else if (answer.question == FailureLog::Question::kind) {
    addKind(answer.location, answer.kind);
  } else if (!isOutdated(*answer.snapshot) && find(keyOf(answer.location), {}) == nullptr) {
    add(answer.snapshot).search = search_;
  }
}

std::unordered_set<std::size_t> SessionCache::knownFolders() const {
  std::unordered_set<std::size_t> known;
  for (auto const& folder : folders_) known.insert(KeyHash()(folder.first));
  failures_.forEach(FailureLog::Question::entries, [&](std::u16string_view key) { known.insert(KeyHash()(key)); });
  return known;
}

}  // namespace foundation::storage::vfs
