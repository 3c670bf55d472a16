#pragma once

#include <algorithm>
#include <cstddef>

#include "foundation/storage/vfs/provider.hpp"
#include "foundation/storage/vfs/session_policy.hpp"

namespace foundation::storage::vfs {

/// The most reads that a session has in flight at once, that of the searching thread included: what its policy says, or
/// else the provider. Internal to the session.
class ReadLimit {
 public:
  /// Each read in flight takes a thread.
  static constexpr std::size_t greatest = 64;

  explicit ReadLimit(SessionPolicy const& policy) noexcept : wanted_(std::min(policy.readsInFlight, greatest)) {}

  std::size_t of(Provider const& provider) const noexcept { return wanted_ != 0 ? wanted_ : provider.readsInFlight(); }

 private:
  std::size_t wanted_;
};

}  // namespace foundation::storage::vfs
