#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/session_policy.hpp"

namespace foundation::storage::vfs {

/// What a session shows of storage: its policy, applied to the start of the search in progress. Makes no request. The
/// functions before `awaitsStart` may be called by any thread, the others by the session's only. Internal to the
/// storage layer.
class KORVAN_HOST_EXPORT Visibility {
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

  /// What isn't found of a path: where it begins, and where what begins in the same way ends, with the "/" after it.
  struct HiddenPart {
    std::size_t begin;
    std::size_t end;
  };
  /// Nothing if the path is shown. It is the path below the folder, which is the start or below it; its elements are
  /// joined by "/".
  std::optional<HiddenPart> hiddenPart(AbsoluteIRI const& folder, std::string_view path) const;

  /// Whether folders may not be entered: those for which one of the next two functions is true.
  bool closesFolders() const noexcept { return staysOnDevice_ || maximumDepth_ != unlimited; }

  /// How many levels of entries are found below the folder, which is the start or below it.
  std::size_t levelsBelow(AbsoluteIRI const& folder) const noexcept;
  /// Whether something below the entries of the folder may be found, or next to them in other folders.
  bool descendsFrom(AbsoluteIRI const& folder) const noexcept;
  bool isTooDeep(AbsoluteIRI const& folder) const noexcept { return levelsBelow(folder) == 0; }

  /// Whether the device is another one than the start's.
  bool isElsewhere(std::uint64_t device) const noexcept {
    std::uint64_t const own = this->device();
    return own != noDevice && device != noDevice && device != own;
  }

  /// Whether the first folder that a search lists must be noted as its start.
  bool awaitsStart() const noexcept { return needsStart_ && !start_; }
  std::size_t startDepth() const noexcept { return startDepth_.load(std::memory_order_relaxed); }
  std::uint64_t device() const noexcept { return device_.load(std::memory_order_relaxed); }
  void setStart(AbsoluteIRI const& folder, std::uint64_t device);
  void forgetStart() noexcept { start_.reset(); }

  /// Whether something other than the listings must be asked what is hidden.
  bool isRestricted() const noexcept { return start_ && (closesFolders() || !excluded_.empty()); }

  /// Whether the location is below the start.
  bool isBelowStart(AbsoluteIRI const& location) const;

  /// Whether the location is below the start and left out or too deep.
  bool hides(AbsoluteIRI const& location) const;

 private:
  static constexpr std::size_t unlimited = static_cast<std::size_t>(-1);

  bool const followsLinks_;
  bool const staysOnDevice_;
  bool const reportsRefusals_;
  bool const collectsFacts_;
  bool const needsStart_;
  std::size_t const maximumDepth_;
  std::vector<NameFilter> excluded_;
  std::atomic<std::uint64_t> device_{noDevice};  // of the start
  std::atomic<std::size_t> startDepth_{0};       // how many separators its IRI has
  std::optional<AbsoluteIRI> start_;
};

}  // namespace foundation::storage::vfs
