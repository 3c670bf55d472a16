#include "foundation/storage/vfs/session/search_states.hpp"

#include <algorithm>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"

namespace foundation::storage::vfs {

using Match = SearchOutline::Match;

SearchStates::SearchStates(SearchOutline const& outline, Visibility const& visibility) : start_(keyOf(outline.start)) {
  for (auto const& [match, text] : outline.segments) {
    Segment segment{match, outline.includeDotFiles || text.starts_with(u'.'), {}, {}};
    bool const hasName = match != Match::name || core::text::appendBytes(segment.name, text);
    // "." and ".." aren't entries, and a text without a byte form names nothing.
    if (!hasName || segment.name == "." || segment.name == ".." || segments_.size() == 64) break;
    if (!segment.name.empty() && (visibility.closesFolders() || visibility.hides(segment.name))) break;
    Set const bit = Set{1} << segments_.size();
    if (match == Match::filter) segment.filter.emplace(text);
    if (match == Match::descent) segment.matchesDotNames = outline.includeDotFiles;
    if (match != Match::name) listing_ |= bit;
    if (match == Match::descent) descents_ |= bit;
    segments_.push_back(std::move(segment));
  }
}

// The state of the segment, with those of the segments after it that match at the same folder.
SearchStates::Set SearchStates::from(std::size_t segment) const noexcept {
  Set states = 0;
  for (; segment < segments_.size(); ++segment) {
    states |= Set{1} << segment;
    bool const matchesHere = segments_[segment].match == Match::descent ||
                             (segments_[segment].match == Match::name && segments_[segment].name.empty());
    if (!matchesHere) break;
  }
  return states;
}

SearchStates::Set SearchStates::at(AbsoluteIRI const& folder) const {
  std::u16string_view below = keyOf(folder);
  if (!below.starts_with(start_)) return 0;
  below.remove_prefix(start_.size());
  Set states = from(0);
  for (std::string name; !below.empty() && states != 0; name.clear()) {
    if (below.front() != u'/') return 0;
    std::size_t const end = std::min(below.find(u'/', 1), below.size());
    iri_text::appendDecodedBytes(name, below.substr(1, end - 1));
    states = this->below(states, name);
    below.remove_prefix(end);
  }
  return states;
}

SearchStates::Set SearchStates::below(Set states, std::string_view name) const {
  bool const isDotName = name.starts_with('.');
  Set found = 0;
  for (std::size_t i = 0; i < segments_.size() && states >> i != 0; ++i) {
    Segment const& segment = segments_[i];
    if ((states >> i & 1) == 0) continue;
    if (segment.match == Match::name) {
      if (name == segment.name) found |= from(i + 1);
    } else if (!isDotName || segment.matchesDotNames) {
      if (segment.match == Match::descent) {
        found |= from(i);
      } else if (segment.filter->matches(name)) {
        found |= from(i + 1);
      }
    }
  }
  return found;
}

}  // namespace foundation::storage::vfs
