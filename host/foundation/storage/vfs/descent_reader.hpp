#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "foundation/storage/vfs/descent_order.hpp"
#include "foundation/storage/vfs/read_ahead.hpp"

namespace foundation::storage::vfs {

/// Reads folders for one thread. When those asked for have long been the ones that a descent reads, it reads further
/// ones ahead, so that the descent goes on while the system answers. Internal to the session.
class DescentReader {
 public:
  using Receive = std::function<void(ReadAhead::Result)>;

  /// Reads the folder, or takes what was read ahead. Throws as `Provider::list` does. When the descent turns elsewhere,
  /// whatever else was read ahead goes to `receive`, so that it needn't be read again.
  std::shared_ptr<FolderReading> read(std::shared_ptr<Provider> const& provider, AbsoluteIRI const& location,
                                      Receive const& receive);

 private:
  ReadAhead::Result endReadingAhead(AbsoluteIRI const& location, Receive const& receive);

  DescentOrder order_;          // unless ahead_ has it
  std::size_t inOrder_ = 0;     // folders in a row that were the next in it
  std::size_t outOfOrder_ = 0;  // folders in a row that were not
  bool mayReadAhead_ = true;
  std::unique_ptr<ReadAhead> ahead_;
};

}  // namespace foundation::storage::vfs
