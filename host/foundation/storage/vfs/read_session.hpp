#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/search_outline.hpp"
#include "foundation/storage/vfs/session_policy.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

class SessionCache;

/// What a session has read so far. Another thread may read it at any time, to show progress.
struct Activity {
  std::atomic<std::uint64_t> folders{0};   ///< folders listed
  std::atomic<std::uint64_t> entries{0};   ///< entries of those folders
  std::atomic<std::uint64_t> requests{0};  ///< requests to remote stores, repeated ones included
  std::atomic<std::uint64_t> bytes{0};     ///< bytes received from remote stores
};

/// One consistent view of storage: opened by the host around one builtin call, on the thread that makes the call. While
/// it is open, each folder is read at most once on that thread, and listings, kinds and existence below it are answered
/// from a cache, which is discarded when the session is closed. Without a session every lookup goes to the disk or
/// store. Sessions nest: the innermost one answers.
///
/// If a search announces what it is going to read, the session reads ahead: with a window of reads in flight that grows
/// while the search requests what was predicted, up to what the policy or else the provider says
/// (`SessionPolicy::readsInFlight`, `Provider::readsInFlight`) for reads that wait, and to the cores that are there for
/// reads that compute. Pages of a flat store's keys are read ahead too, in several parts of a listing side by side. A
/// search of a few folders starts no thread. The threads block all signals, do nothing but call the provider, and end
/// with the session, whose destructor interrupts the reads in flight.
class KORVAN_HOST_EXPORT ReadSession {
 public:
  /// The memory bound by default, in bytes.
  static constexpr std::size_t defaultMemoryBound = std::size_t{256} << 20;

  /// Opens a session on the calling thread, which must also close it. When the cache exceeds about `memoryBound` bytes
  /// it is emptied, and folders are read again. Without a policy the session shows everything.
  explicit ReadSession(std::size_t memoryBound = defaultMemoryBound, SessionPolicy const& policy = {});
  ~ReadSession();
  ReadSession(ReadSession const&) = delete;
  ReadSession& operator=(ReadSession const&) = delete;

  /// Says what a search on the calling thread, the session's, is about to request, so that the session can read it
  /// ahead for as long as the handle that this returns is held, or until the next call. A hint: no answer depends on
  /// it. Makes no request.
  [[nodiscard]] std::shared_ptr<void const> announce(SearchOutline const& outline);

  /// Begins a further search: the next folder that is listed is its start, to which the policy applies. Needed between
  /// searches of one session with a policy, and harmless otherwise. What was read remains known.
  void beginSearch() noexcept;

  /// What was read through this session so far. Valid as long as the session.
  Activity const& activity() const noexcept;

  /// The failures of listings, and of requests for the kind of a listed entry or the identity of a folder: each
  /// location once, in the order of the failures. A search skips these locations; if there are none, its result is
  /// complete. Absence isn't a failure, nor is a folder that is refused because it closes a link cycle. An existence
  /// test of a location in a folder that wasn't listed throws instead. The list only grows: in a session of several
  /// calls, the failures of one call begin at the size that the list had before it. A location that failed in an
  /// earlier call isn't repeated.
  std::vector<Exception> const& failedListings() const noexcept;

  /// What a user should know although the result is complete, such as why a store costs more requests than usual: each
  /// once, with the location and the reason. The list only grows.
  std::vector<Exception> const& notes() const noexcept;

  /// The calling thread's innermost session, or null.
  static ReadSession* current() noexcept;

 private:
  friend SessionCache* innermostSessionCache() noexcept;

  std::unique_ptr<SessionCache> cache_;
  ReadSession* outer_;
};

/// Counts one request of a remote provider, and the bytes of its answer, in the calling thread's session, if any.
KORVAN_HOST_EXPORT void countRequest(std::uint64_t bytes) noexcept;

}  // namespace foundation::storage::vfs
