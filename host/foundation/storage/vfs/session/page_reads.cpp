// How pages of keys are read ahead.

#include <chrono>

#include "foundation/storage/vfs/session/read_ahead.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::vfs {
namespace {

using core::threads::MutexLock;
constexpr MutexLock::Spinning spinning;

// How soon the caller notices an interrupt while it waits for a page.
constexpr std::chrono::milliseconds pollInterval(40);

}  // namespace

SubtreePage ReadAhead::page(std::shared_ptr<Provider> const& provider, SubtreeRequest const& request, bool isCertain) {
  for (;;) {
    std::optional<PageRead> own;
    std::optional<SubtreePage> taken;
    {
      MutexLock lock(mutex_, spinning);
      Listing& listing = listings_[request.isDelimited ? 1 : 0];
      listing.parts.select(request);
      listing.provider = provider;
      switch (listing.parts.seek(request, isCertain)) {
        case KeyParts::State::ready:
          taken = listing.parts.take();
          if (!taken->last) window_.noteHit(limit_.of(*provider));
          if (!taken->last && isCertain) window_.noteHit(limit_.of(*provider));  // there is another page
          wakeWorkers();
          break;
        case KeyParts::State::coming:
          awaitsPage_ = true;
          callerWakes_.wait_for(lock.forWaiting(), pollInterval);
          awaitsPage_ = false;
          utThrowIfInterruptPending();
          break;
        case KeyParts::State::missing:
          own = PageRead{listing.parts.fetchWanted(), provider};
          wakeWorkers();
          break;
      }
    }
    if (taken) {
      startWorkers();
      return *std::move(taken);
    }
    if (!own) continue;
    own->make(measuresNext());
    own->lackedResources = false;  // not because of the workers alone
    {
      MutexLock const lock(mutex_, spinning);
      finish(*own);
    }
    if (own->failure) std::rethrow_exception(own->failure);
  }
}

void ReadAhead::addFolders(SubtreeRequest const& request, std::vector<std::string> const& folders) {
  MutexLock const lock(mutex_, spinning);
  Listing& listing = listings_[request.isDelimited ? 1 : 0];
  if (listing.parts.isFor(request)) listing.parts.addFolders(folders);
  wakeWorkers();
}

std::optional<PageRead> ReadAhead::takePage() noexcept {
  try {
    for (Listing& listing : listings_)
      if (auto fetch = listing.parts.fetchAhead(pageLimits())) return PageRead{*std::move(fetch), listing.provider};
  } catch (std::exception const&) {
    return std::nullopt;  // out of memory
  }
  return std::nullopt;
}

bool ReadAhead::mayFetchPages() const {
  for (Listing const& listing : listings_)
    if (listing.parts.mayFetchAhead(pageLimits())) return true;
  return false;
}

KeyParts::Limits ReadAhead::pageLimits() const {
  return {window_.size(), memoryBound_};
}

void ReadAhead::finish(PageRead& read) noexcept {
  KeyParts& parts = listings_[read.fetch.request.isDelimited ? 1 : 0].parts;
  if (read.measured) window_.noteRead(*read.measured);
  if (!read.failure) {
    try {
      parts.add(read.fetch, std::move(read.page));
    } catch (...) {
      read.failure = std::current_exception();
    }
  }
  if (read.failure) {
    parts.fail(read.fetch);
    noteFailure(read.lackedResources);
  }
  if (awaitsPage_) callerWakes_.notify_one();
}

}  // namespace foundation::storage::vfs
