#include "foundation/storage/vfs/read_session.hpp"

#include "foundation/storage/vfs/session/current_session.hpp"
#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {
namespace {

thread_local ReadSession* innermost = nullptr;

}  // namespace

ReadSession::ReadSession(std::size_t memoryBound, SessionPolicy const& policy)
    : cache_(std::make_unique<SessionCache>(memoryBound, policy)), outer_(innermost) {
  innermost = this;
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

void countRequest(std::uint64_t bytes) noexcept {
  SessionCache* const cache = innermostSessionCache();
  if (cache == nullptr) return;
  cache->activity.requests.fetch_add(1, std::memory_order_relaxed);
  cache->activity.bytes.fetch_add(bytes, std::memory_order_relaxed);
}

}  // namespace foundation::storage::vfs
