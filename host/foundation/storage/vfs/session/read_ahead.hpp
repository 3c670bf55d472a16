#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "foundation/core/threads/mutex.hpp"
#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/session/one_read.hpp"
#include "foundation/storage/vfs/session/pending_reads.hpp"
#include "foundation/storage/vfs/session/read_limit.hpp"
#include "foundation/storage/vfs/session/read_window.hpp"

namespace foundation::storage::vfs {

struct Activity;

/// Makes the reads that one thread, the caller's, requests, and if a search was announced, makes predicted ones before
/// they are requested, within a window: on threads of its own, and on the caller's where that would have to wait for
/// them. The threads only call the provider and block all signals. Internal to the session.
class ReadAhead {
 public:
  using Question = PendingReads::Question;

  /// What was read before, and is to be remembered. Used on the caller's thread.
  class Cache {
   public:
    /// Adds an answer that wasn't requested when it was predicted to be.
    virtual void addUnrequested(Answer const& answer) = 0;

    /// The hashes of the keys of all folders that needn't be read again.
    virtual std::unordered_set<std::size_t> knownFolders() const = 0;

   protected:
    ~Cache() = default;
  };

  /// Folders are read as `visibility` shows them. What the threads request is counted in `activity`. The answers that
  /// weren't requested hold about `memoryBound` bytes at most, or those of one folder; so do the pages that were fetched
  /// ahead of each of the two kinds of listings, flat and delimited.
  ReadAhead(Cache& cache, Visibility const& visibility, Activity& activity, ReadLimit limit, std::size_t memoryBound);

  /// Interrupts the reads in flight and waits for them.
  ~ReadAhead();
  ReadAhead(ReadAhead const&) = delete;
  ReadAhead& operator=(ReadAhead const&) = delete;

  /// Predicts this search, and no other, for as long as the handle that this returns is held.
  std::shared_ptr<void const> announce(SearchOutline const& outline);

  /// The search requests a folder that wasn't read by `request`, or that was read before the search was announced.
  /// With `lookupsOnly` it is predicted to look up names in its subfolders, but no listing.
  void enter(FolderSnapshot const& folder, bool lookupsOnly);

  /// The answer to a question of kind `entries` or `kind`, read now unless it was read ahead; at most `mostAhead`
  /// others are then read ahead. Throws what the provider and the cache throw. A lack of descriptors or memory is
  /// thrown only where it is met without other threads.
  Answer request(Question question, std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                 std::size_t mostAhead = SIZE_MAX);

  /// A page of a flat store's keys: fetched ahead, or requested now. Each has paths after `request.after`, but where it
  /// ends may depend on what was fetched ahead. If it is certain that all pages after it will be requested too, they are
  /// fetched side by side from now on, within the window. Throws what the provider throws.
  SubtreePage page(std::shared_ptr<Provider> const& provider, SubtreeRequest const& request, bool isCertain);

  /// The names of folders among the keys of the listing that the request is for: paths that end in "/". A hint where the
  /// listing can be divided; without effect if it isn't being read.
  void addFolders(SubtreeRequest const& request, std::vector<std::string> const& folders);

 private:
  // A listing of keys, and the provider that it is read from.
  struct Listing {
    KeyParts parts;
    std::shared_ptr<Provider> provider{};
  };
  // What a worker is doing: at most one of the two.
  struct Work {
    Read* read = nullptr;
    std::optional<PageRead> page{};

    explicit operator bool() const noexcept { return read != nullptr || page; }
  };
  using Reads = std::unordered_map<std::u16string_view, std::unique_ptr<Read>, KeyHash, KeyEqual>;

  Reads& reads(Question question) KORVAN_REQUIRES(mutex_) { return reads_[static_cast<std::size_t>(question)]; }
  bool hasRoom(std::size_t reads) const KORVAN_REQUIRES(mutex_);
  Read* takeNext() noexcept KORVAN_REQUIRES(mutex_);
  Work takeWork() noexcept KORVAN_REQUIRES(mutex_);
  std::optional<PageRead> takePage() noexcept KORVAN_REQUIRES(mutex_);
  bool mayFetchPages() const KORVAN_REQUIRES(mutex_);
  KeyParts::Limits pageLimits() const KORVAN_REQUIRES(mutex_);
  void finish(Work& work) noexcept KORVAN_REQUIRES(mutex_);
  void finish(Read& read) noexcept KORVAN_REQUIRES(mutex_);
  void finish(PageRead& read) noexcept KORVAN_REQUIRES(mutex_);
  void noteFailure(bool lackedResources) noexcept KORVAN_REQUIRES(mutex_);
  void predictBelow(FolderSnapshot const& folder, bool lookupsOnly) KORVAN_REQUIRES(mutex_);
  Answer takeAnswer(Read& read) KORVAN_REQUIRES(mutex_);
  std::vector<Answer> takeUnrequested() KORVAN_REQUIRES(mutex_);
  void await(Read const& read, core::threads::MutexLock& lock) KORVAN_REQUIRES(mutex_);
  void wakeWorkers() noexcept KORVAN_REQUIRES(mutex_);

  std::optional<Answer> awaitPrefetched(Question question, AbsoluteIRI const& location, std::size_t mostAhead);
  bool measuresNext() noexcept;
  Answer readRequested(Question question, std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location);
  void awaitWorkers();
  void startWorkers();
  void addUnrequested(std::vector<Answer> const& answers);
  void runWorker() noexcept;

  Cache& cache_;
  Visibility const& visibility_;
  Activity& activity_;
  ReadLimit const limit_;
  std::size_t const memoryBound_;
  std::vector<std::thread> workers_;
  std::size_t readsOfCaller_ = 0;
  std::atomic<bool> closing_{false};  // the interrupt flag of the workers

  core::threads::Mutex mutex_;
  std::shared_ptr<SearchStates const> search_ KORVAN_GUARDED_BY(mutex_);
  std::weak_ptr<void const> announcement_ KORVAN_GUARDED_BY(mutex_);  // of that search
  std::shared_ptr<Provider> provider_ KORVAN_GUARDED_BY(mutex_);      // of that search, from its first request on
  std::optional<std::unordered_set<std::size_t>> known_ KORVAN_GUARDED_BY(mutex_);  // before that search; hashes
  PendingReads pending_ KORVAN_GUARDED_BY(mutex_);
  ReadWindow window_ KORVAN_GUARDED_BY(mutex_);
  std::array<Reads, 2> reads_ KORVAN_GUARDED_BY(mutex_);       // by question: those in flight, or not yet requested
  std::array<Listing, 2> listings_ KORVAN_GUARDED_BY(mutex_);  // by whether they are delimited
  bool awaitsPage_ KORVAN_GUARDED_BY(mutex_) = false;          // whether the caller sleeps until a page comes
  std::size_t mostAhead_ KORVAN_GUARDED_BY(mutex_) = SIZE_MAX;
  std::size_t memory_ KORVAN_GUARDED_BY(mutex_) = 0;  // of answers not yet requested
  std::size_t inFlight_ KORVAN_GUARDED_BY(mutex_) = 0;
  std::size_t idleWorkers_ KORVAN_GUARDED_BY(mutex_) = 0;
  std::size_t wakeUps_ KORVAN_GUARDED_BY(mutex_) = 0;        // of workers that haven't run since
  std::size_t misses_ KORVAN_GUARDED_BY(mutex_) = 0;         // requests in a row that weren't predicted
  Read const* awaited_ KORVAN_GUARDED_BY(mutex_) = nullptr;  // by the caller, which sleeps
  std::condition_variable workersWake_;
  std::condition_variable callerWakes_;
};

}  // namespace foundation::storage::vfs
