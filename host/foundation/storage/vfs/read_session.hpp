#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

/// What was read, so far. Read by another thread at any time, to show progress.
struct Activity {
  std::atomic<std::uint64_t> folders{0};   ///< folders listed
  std::atomic<std::uint64_t> entries{0};   ///< entries that those listings held
  std::atomic<std::uint64_t> requests{0};  ///< requests to remote stores, repeated ones included
  std::atomic<std::uint64_t> bytes{0};     ///< bytes that remote stores answered
};

/// One consistent look at storage: opened by the host around one builtin call, on the thread that makes the call. While
/// it is open each folder is read at most once on that thread, and listings, kinds and existence below it are answered
/// from that reading. Where a search descends through dozens of local folders, the session reads those that come next
/// ahead of it, on one thread of its own and, rather than wait for that, on the calling one. Its own takes no signals,
/// uses nothing but the provider, and ends with the session at the latest, which waits for the listing under way. Past
/// its memory bound it forgets and reads again. Closed, everything is forgotten. Without a session every question goes
/// to the disk or store. Sessions nest: the innermost is the one in force.
class KORVAN_HOST_EXPORT ReadSession {
 public:
  /// In bytes.
  static constexpr std::size_t defaultMemoryBound = std::size_t{256} << 20;

  /// Opens a session on the calling thread, which must also close it. `memoryBound`: how many bytes of readings it
  /// keeps, about.
  explicit ReadSession(std::size_t memoryBound = defaultMemoryBound);
  ~ReadSession();
  ReadSession(ReadSession const&) = delete;
  ReadSession& operator=(ReadSession const&) = delete;

  /// What was read through this session so far; lives as long as it.
  Activity const& activity() const noexcept;

  /// The listings that failed, each folder once, in the order in which they did. A folder that isn't there and one
  /// refused because it closes a link cycle are no failures.
  std::vector<Exception> const& failedListings() const noexcept;

  /// The calling thread's innermost session, or null.
  static ReadSession* current() noexcept;

  /// What the session remembers; for the storage layer itself.
  class Store;
  Store& store() noexcept { return *store_; }

 private:
  std::unique_ptr<Store> store_;
  ReadSession* outer_;
};

/// Counts one request of a remote provider and the bytes of its answer in the calling thread's session, where there is
/// one.
KORVAN_HOST_EXPORT void countRequest(std::uint64_t bytes) noexcept;

}  // namespace foundation::storage::vfs
