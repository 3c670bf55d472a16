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

  /// Where a path leads to something hidden: it is shown up to `begin`, and every path with the same first `end` bytes
  /// is hidden too.
  struct HiddenPart {
    std::size_t begin;
    std::size_t end;
  };
  /// The hidden part of the path below the folder, which is the start or below it; nothing if there is none. The path's
  /// elements are joined by "/", and a hidden folder's "/" belongs to the first `end` bytes.
  std::optional<HiddenPart> hiddenPart(AbsoluteIRI const& folder, std::string_view path) const;

  /// The path after which a listing of the folder and all below it goes on, if `path` is in a hidden folder: greater than
  /// all that is in the same folder.
  std::optional<std::string> pastHidden(AbsoluteIRI const& folder, std::string_view path) const;

  /// Whether there may be folders that aren't entered: those that are too deep or elsewhere.
  bool closesFolders() const noexcept { return staysOnDevice_ || maximumDepth_ != unlimited; }

  /// How many levels of entries are shown below the folder, which is the start or below it.
  std::size_t levelsBelow(AbsoluteIRI const& folder) const noexcept;

  /// Whether more than the entries of the folder is shown: something below them, or in folders beside this one.
  bool descendsFrom(AbsoluteIRI const& folder) const noexcept;

  /// Whether no entries of the folder are shown.
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
