#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/session_policy.hpp"

namespace foundation::storage::vfs {

/// What a session shows of storage: its policy, applied to the start of the search in progress. Makes no request. The
/// functions before `awaitsStart` may be called by any thread, the others by the session's only. Internal to the storage
/// layer.
class Visibility {
 public:
  /// The device of a folder in storage without devices, and while none is known.
  static constexpr std::uint64_t noDevice = 0;

  explicit Visibility(SessionPolicy const& policy);

  bool followsLinks() const noexcept { return followsLinks_; }
  bool staysOnDevice() const noexcept { return staysOnDevice_; }
  bool reportsRefusals() const noexcept { return reportsRefusals_; }
  bool collectsFacts() const noexcept { return collectsFacts_; }
  bool hidesNames() const noexcept { return !excluded_.empty(); }

  /// Whether entries of that name are left out.
  bool hides(std::string_view name) const;

  /// The first element of a path that is left out: where it begins, and where it ends with the "/" after it, if any.
  struct HiddenPart {
    std::size_t begin;
    std::size_t end;
  };
  /// Nothing if the path is shown. The path is below the start, its elements joined by "/".
  std::optional<HiddenPart> hiddenPart(std::string_view path) const;

  /// Whether a folder on the device isn't entered.
  bool isElsewhere(std::uint64_t device) const noexcept {
    std::uint64_t const own = this->device();
    return own != noDevice && device != noDevice && device != own;
  }

  /// Whether the first folder that a search lists must be noted as its start.
  bool awaitsStart() const noexcept { return needsStart_ && !start_; }
  std::uint64_t device() const noexcept { return device_.load(std::memory_order_relaxed); }
  void setStart(AbsoluteIRI const& folder, std::uint64_t device);
  void forgetStart() noexcept { start_.reset(); }

  /// Whether something other than the listings must be asked what is hidden.
  bool isRestricted() const noexcept { return start_ && (staysOnDevice_ || !excluded_.empty()); }

  /// Whether the location is below the start.
  bool isBelowStart(AbsoluteIRI const& location) const;

  /// Whether the location is so far below the start that it isn't entered.
  bool isOnLastLevel(AbsoluteIRI const& location) const { return maxDepth_ != 0 && depth(location) >= maxDepth_; }

  bool isBelowLastLevel(AbsoluteIRI const& location) const { return maxDepth_ != 0 && depth(location) > maxDepth_; }

  /// Whether the location is below the start and in or at an entry that is left out.
  bool hides(AbsoluteIRI const& location) const;

 private:
  std::size_t depth(AbsoluteIRI const& location) const;

  bool const followsLinks_;
  bool const staysOnDevice_;
  bool const reportsRefusals_;
  bool const collectsFacts_;
  std::size_t const maxDepth_;  // 0: any
  bool const needsStart_;
  std::vector<NameFilter> excluded_;
  std::atomic<std::uint64_t> device_{noDevice};  // of the start
  std::optional<AbsoluteIRI> start_;
};

}  // namespace foundation::storage::vfs
