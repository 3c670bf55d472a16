#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "foundation/storage/vfs/descent_order.hpp"
#include "foundation/storage/vfs/exception.hpp"
#include "foundation/storage/vfs/folder_reading.hpp"
#include "foundation/storage/vfs/location_key.hpp"

namespace foundation::storage::vfs {

/// Reads folders for one thread. When those asked for have long been the ones that a descent reads, a second thread
/// reads further ones ahead, a bounded distance; where the first would have to wait for it, it reads ahead as well. The
/// second thread only calls the provider and takes no signals. Internal to the session.
class DescentReader {
 public:
  /// A folder that was read, or could not be.
  struct Result {
    std::shared_ptr<FolderReading> reading;  ///< holds only the location where there is a failure
    std::unique_ptr<Exception const> failure;
  };
  using Receive = std::function<void(Result)>;

  DescentReader() = default;
  ~DescentReader() { stop(); }
  DescentReader(DescentReader const&) = delete;
  DescentReader& operator=(DescentReader const&) = delete;

  /// Reads the folder, or takes what was read ahead. Throws as `Provider::list` does. When the descent has turned
  /// elsewhere, all that was read ahead goes to `receive`, so that it needn't be read again.
  std::shared_ptr<FolderReading> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                      Receive const& receive);

 private:
  using Lock = std::unique_lock<std::mutex>;

  void awaitOther(Lock& lock, AbsoluteIRI const& location);
  std::optional<Result> takeAhead(AbsoluteIRI const& location);
  Result readNow(Lock& lock, AbsoluteIRI const& location, Receive const& receive);
  Result readTaken(Lock& lock, DescentOrder::Place place);
  std::optional<DescentOrder::Place> takeNext();
  void keep(Result result);

  void start();
  void stop() noexcept;
  void handOver(Receive const& receive);
  void run() noexcept;
  void wakeOther();
  void wakeCaller();

  std::shared_ptr<Provider> provider_;
  std::size_t inOrder_ = 0;     // folders in a row that were the next in the order
  std::size_t outOfOrder_ = 0;  // folders in a row that were neither that nor read ahead
  bool mayStart_ = true;
  std::thread thread_;

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
