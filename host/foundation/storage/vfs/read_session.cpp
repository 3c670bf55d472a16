#include "foundation/storage/vfs/read_session.hpp"

#include "foundation/storage/vfs/session/session_cache.hpp"

namespace foundation::storage::vfs {
namespace {

thread_local ReadSession* innermost = nullptr;

}  // namespace

ReadSession::ReadSession(std::size_t memoryBound) : store_(std::make_unique<Store>(memoryBound)), outer_(innermost) {
  innermost = this;
}

ReadSession::~ReadSession() {
  innermost = outer_;
}

Activity const& ReadSession::activity() const noexcept {
  return store_->activity;
}

std::vector<Exception> const& ReadSession::failedListings() const noexcept {
  return store_->failedListings;
}

ReadSession* ReadSession::current() noexcept {
  return innermost;
}

void countRequest(std::uint64_t bytes) noexcept {
  if (innermost == nullptr) return;
  Activity& activity = innermost->store().activity;
  activity.requests.fetch_add(1, std::memory_order_relaxed);
  activity.bytes.fetch_add(bytes, std::memory_order_relaxed);
}

}  // namespace foundation::storage::vfs
