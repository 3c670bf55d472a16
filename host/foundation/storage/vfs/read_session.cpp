#include "foundation/storage/vfs/read_session.hpp"

#include <utility>

#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {
namespace {

thread_local ReadSession* innermost = nullptr;
thread_local Activity* otherActivity = nullptr;  // of the session that the thread works for without having opened it

}  // namespace

ReadSession::ReadSession(std::size_t memoryBound, SessionPolicy const& policy)
    : cache_(std::make_unique<SessionCache>(memoryBound, policy)), outer_(innermost) {
  innermost = this;
}

std::shared_ptr<void const> ReadSession::announce(SearchOutline const& outline) {
  return cache_->announce(outline);
}

ReadSession::~ReadSession() {
  innermost = outer_;
}

void ReadSession::beginSearch() noexcept {
  cache_->beginSearch();
}

Activity const& ReadSession::activity() const noexcept {
  return cache_->activity;
}

std::vector<Exception> const& ReadSession::failedListings() const noexcept {
  return cache_->failures().reported();
}

std::vector<Exception> const& ReadSession::notes() const noexcept {
  return cache_->notes();
}

ReadSession* ReadSession::current() noexcept {
  return innermost;
}

SessionCache* innermostSessionCache() noexcept {
  return innermost == nullptr ? nullptr : innermost->cache_.get();
}

SessionCache* currentSessionCache() noexcept {
  SessionCache* const cache = innermostSessionCache();
  return cache == nullptr || cache->isBusy() ? nullptr : cache;
}

ActivityScope::ActivityScope(Activity& activity) noexcept : previous_(std::exchange(otherActivity, &activity)) {}

ActivityScope::~ActivityScope() {
  otherActivity = previous_;
}

void countRequest(std::uint64_t bytes) noexcept {
  SessionCache* const cache = innermostSessionCache();
  Activity* const activity = cache == nullptr ? otherActivity : &cache->activity;
  if (activity == nullptr) return;
  activity->requests.fetch_add(1, std::memory_order_relaxed);
  activity->bytes.fetch_add(bytes, std::memory_order_relaxed);
}

}  // namespace foundation::storage::vfs
