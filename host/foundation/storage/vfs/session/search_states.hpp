#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/detail/name_filter.hpp"
#include "foundation/storage/vfs/search_outline.hpp"
#include "foundation/storage/vfs/session/visibility.hpp"

namespace foundation::storage::vfs {

/// The segments of a search as a state machine that says what the search reads where. Its states at a folder are the
/// segments that the search matches there. A search of more than 64 segments counts as ending after these: what it
/// reads beyond isn't predicted. Pure text; immutable. Internal to the session.
class KORVAN_HOST_EXPORT SearchStates {
 public:
  using Set = std::uint64_t;

  /// A search that looks up a name that `visibility` hides, or may hide where it is looked up, counts as ending before.
  SearchStates(SearchOutline const& outline, Visibility const& visibility);

  /// The states at a folder, as its path below the start implies; none if the search doesn't reach it.
  Set at(AbsoluteIRI const& folder) const;

  /// The states at the entry of that name of a folder with these states, if the entry is a folder.
  Set below(Set states, std::string_view name) const;

  /// Whether the search is going to list the folder and the folders below it at any depth.
  bool descendsFrom(AbsoluteIRI const& folder) const { return (at(folder) & descents_) != 0; }

  /// Whether a folder with these states is listed. In one that isn't, only the entries that `names` gives are looked up.
  bool lists(Set states) const noexcept { return (states & listing_) != 0; }

  /// Calls `visit` with each name that is looked up in a folder with these states, and with the states there.
  template <class Visit>
  void forEachName(Set states, Visit visit) const {
    for (std::size_t i = 0; i < segments_.size(); ++i) {
      bool const isLookedUp = (states >> i & 1) != 0 && segments_[i].match == SearchOutline::Match::name;
      if (isLookedUp && !segments_[i].name.empty()) visit(std::string_view(segments_[i].name), from(i + 1));
    }
  }

 private:
  struct Segment {
    SearchOutline::Match match;
    bool matchesDotNames;
    std::string name;
    std::optional<NameFilter> filter;
  };
  Set from(std::size_t segment) const noexcept;

  std::u16string start_;
  std::vector<Segment> segments_;
  Set listing_ = 0;
  Set descents_ = 0;
};

}  // namespace foundation::storage::vfs
