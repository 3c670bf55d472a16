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

/// Reads folders for one thread, the caller's. When those asked for have long been the ones that a descent reads, a
/// second thread reads further ones ahead, a bounded distance; where the caller would have to wait for it, the caller
/// reads ahead as well. The second thread only calls the provider and takes no signals. Internal to the session.
class DescentReader {
 public:
  /// A folder that was read, or could not be.
  struct Result {
    std::shared_ptr<FolderReading> reading;  ///< holds only the location where there is a failure
    std::exception_ptr failure;              ///< an `Exception` as the provider threw it, or null
  };
  using Receive = std::function<void(Result const&)>;

  /// `receive` is called in `read`, with folders that were read ahead and passed over since.
  explicit DescentReader(Receive receive) : receive_(std::move(receive)) {}
  ~DescentReader();
  DescentReader(DescentReader const&) = delete;
  DescentReader& operator=(DescentReader const&) = delete;

  /// Reads the folder, or takes what was read ahead. Throws as `Provider::list` does, and what `receive` throws.
  std::shared_ptr<FolderReading> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location);

 private:
  using Lock = std::unique_lock<std::mutex>;
  struct Found {
    Result result;
    EntryTable subfolders;
  };

  void awaitOther(Lock& lock, AbsoluteIRI const& location);
  std::optional<Result> takeAhead(AbsoluteIRI const& location);
  Result readNow(Lock& lock, AbsoluteIRI const& location);
  std::optional<DescentOrder::Place> takeNext();
  bool readAhead(Lock& lock, DescentOrder::Place place) noexcept;
  Found readUnlocked(Lock& lock, AbsoluteIRI const& location);
  static Found readOrFail(Provider& provider, AbsoluteIRI const& location);

  void start();
  void stop(Lock& lock) noexcept;
  void run() noexcept;
  void turnElsewhere(Lock& lock);
  void handOver();
  bool hasMuchRoom() const noexcept;
  void wakeOther() noexcept;
  void wakeCaller() noexcept;

  Receive const receive_;
  std::shared_ptr<Provider> provider_;
  std::size_t inOrder_ = 0;     // folders in a row that were the next in the order
  std::size_t outOfOrder_ = 0;  // folders in a row that were neither that nor read ahead
  bool mayStart_ = true;
  std::thread thread_;  // one that an interrupt or a lack of memory has ended stays until the descent turns elsewhere

  std::mutex mutex_;  // guards all that follows
  DescentOrder order_;
  std::unordered_map<std::u16string_view, Result, KeyHash, KeyEqual> ahead_;  // what was read and not yet asked for
  std::size_t memory_ = 0;                                                    // of these
  AbsoluteIRI const* otherReads_ = nullptr;                                   // what the second thread is reading
  bool stopping_ = false;
  bool otherSleeps_ = false;
  bool callerSleeps_ = false;
  std::condition_variable otherWakes_;
  std::condition_variable callerWakes_;
};

}  // namespace foundation::storage::vfs
