#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>

#include "foundation/storage/vfs/descent_order.hpp"
#include "foundation/storage/vfs/exception.hpp"
#include "foundation/storage/vfs/folder_reading.hpp"

namespace foundation::storage::vfs {

/// Reads folders on a thread of its own in the order of a descent, some way ahead of the one that descends. That thread
/// only calls the provider and takes no signals. Used by one other thread. Internal to the session.
class ReadAhead {
 public:
  /// A folder that was read, or could not be.
  struct Result {
    std::shared_ptr<FolderReading> reading;  ///< holds only the location where there is a failure
    std::unique_ptr<Exception const> failure;
    std::size_t memory = 0;
  };

  /// Begins to read what comes next in the order. Throws `std::system_error` when there can be no thread.
  ReadAhead(std::shared_ptr<Provider> provider, DescentOrder order);
  ~ReadAhead() { stop(); }
  ReadAhead(ReadAhead const&) = delete;
  ReadAhead& operator=(ReadAhead const&) = delete;

  /// The oldest result that wasn't taken, for which it waits; null when no more will come: at the end, after `stop`, or
  /// when an interrupt or a lack of memory ended the reading.
  Result const* front();
  Result take();

  /// Reads no more folders; waits for the one that is being read. Results are kept. Gives what of the order is left.
  DescentOrder& stop() noexcept;

 private:
  static constexpr std::uint32_t capacity = 256;
  static constexpr std::size_t memoryBound = std::size_t{4} << 20;
  // One that waits sleeps until there is this much for it to do, lest every folder cost a system call.
  static constexpr std::uint32_t worthWaking = 32;

  void run() noexcept;
  bool waitForRoom();
  Result read(AbsoluteIRI const& location);
  void put(Result result);

  std::shared_ptr<Provider> const provider_;
  DescentOrder order_;

  // A ring, filled by this class's thread and emptied by the other. Each side writes only its own line of counts.
  std::array<Result, capacity> results_;
  alignas(64) std::atomic<std::uint32_t> filled_{0};
  std::atomic<bool> ended_{false};
  alignas(64) std::atomic<std::uint32_t> taken_{0};
  std::atomic<bool> stopping_{false};
  alignas(64) std::atomic<std::size_t> memory_{0};  // of the results in the ring
  std::atomic<std::uint32_t> takerSleeps_{0};
  std::atomic<std::uint32_t> fillerSleeps_{0};
  std::thread thread_;
};

}  // namespace foundation::storage::vfs
