#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/session/descent_order.hpp"

namespace foundation::storage::vfs {

/// Reads the folders that one thread, the caller's, requests, and while these come in the order of a descent, predicts
/// and reads further ones ahead, within a bounded window: on a helper thread, and on the caller's where it would have
/// to wait for the helper. The order has to be recognised, since the folder interface has no "descend": the storage
/// layer only sees one request for a folder after the other. The helper only calls the provider and blocks all signals.
/// Internal to the session.
class ReadAhead {
 public:
  /// A folder that was read, or could not be.
  struct Outcome {
    std::shared_ptr<FolderSnapshot> snapshot;  ///< after a failure only the location
    std::exception_ptr failure;                ///< an `Exception` as the provider threw it, or null
  };
  using AddToCache = std::function<void(Outcome const&)>;

  /// `addToCache` is called in `read`, with folders that were prefetched but not requested in the order predicted.
  /// Folders are read as `visibility` shows them, which must outlive this.
  ReadAhead(AddToCache addToCache, Visibility const& visibility)
      : addToCache_(std::move(addToCache)), visibility_(visibility) {}

  /// Waits for the listing that the helper is making.
  ~ReadAhead();
  ReadAhead(ReadAhead const&) = delete;
  ReadAhead& operator=(ReadAhead const&) = delete;

  /// Reads the folder, unless it was prefetched. Throws as `Provider::list` does, and what `addToCache` throws. A lack
  /// of descriptors or memory is thrown only where it is met without the helper.
  std::shared_ptr<FolderSnapshot> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location);

 private:
  using Lock = std::unique_lock<std::mutex>;
  struct Reading {
    Outcome outcome;
    EntryTable subfolders;
    bool lackedResources = false;  // descriptors or memory: a failure that says nothing about the folder
  };

  void awaitHelper(Lock& lock, AbsoluteIRI const& location);
  std::optional<Outcome> takePrefetched(AbsoluteIRI const& location);
  Outcome readRequested(Lock& lock, AbsoluteIRI const& location);
  std::optional<DescentOrder::Position> takePredicted();
  bool prefetch(Lock& lock, DescentOrder::Position position) noexcept;
  Reading readUnlocked(Lock& lock, AbsoluteIRI const& location);

  void startHelper();
  void stopHelper(Lock& lock) noexcept;
  void runHelper() noexcept;
  void abandonDescent(Lock& lock);
  void flushToCache();
  bool hasMuchRoom() const noexcept;
  void wakeHelper() noexcept;
  void wakeCaller() noexcept;

  AddToCache const addToCache_;
  Visibility const& visibility_;
  std::shared_ptr<Provider> provider_;
  std::size_t hits_ = 0;    // requests in a row that were predicted but not prefetched
  std::size_t misses_ = 0;  // requests in a row that were neither predicted nor prefetched
  bool mayStartHelper_ = true;
  // If an interrupt or a lack of memory ended it, it isn't replaced until the descent is abandoned.
  std::thread helper_;

  std::mutex mutex_;  // guards everything below
  DescentOrder order_;
  std::unordered_map<std::u16string_view, Outcome, KeyHash, KeyEqual> prefetched_;  // and not yet requested
  std::size_t prefetchedMemory_ = 0;
  AbsoluteIRI const* helperReads_ = nullptr;
  bool stopping_ = false;
  bool helperSleeps_ = false;
  bool callerSleeps_ = false;
  std::condition_variable helperWakes_;
  std::condition_variable callerWakes_;
};

}  // namespace foundation::storage::vfs
