#include "foundation/storage/vfs/session/pending_reads.hpp"

#include <algorithm>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"

namespace foundation::storage::vfs {

std::optional<PendingReads::Group> PendingReads::Group::below(FolderSnapshot const& folder, SearchStates const& search,
                                                              SearchStates::Set states, bool lookupsOnly) {
  std::optional<Group> group;
  if (states == 0) return group;
  EntryTable const& entries = folder.entries;
  std::vector<Read> descended;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries.kind(i) != PathKind::isFolder || entries.maybeLink(i)) continue;
    SearchStates::Set const below = search.below(states, entries.name(i));
    if (below == 0 || (lookupsOnly && search.lists(below))) continue;
    if (!group) group.emplace(folder.location);
    std::vector<Read>& reads = group->reads_;
    std::size_t const before = reads.size();
    group->add(search, below, entries.name(i));
    // The search continues with the segments after a descent before it descends further.
    if ((below & ~states) != 0) continue;
    descended.insert(descended.end(), reads.begin() + static_cast<std::ptrdiff_t>(before), reads.end());
    reads.resize(before);
  }
  if (!group) return group;
  group->preceding_ = group->reads_.size();
  if (group->preceding_ == 0) {
    group->reads_ = std::move(descended);
  } else {
    group->reads_.insert(group->reads_.end(), descended.begin(), descended.end());
  }
  return group;
}

void PendingReads::Group::add(SearchStates const& search, SearchStates::Set states, std::string_view name) {
  Read read{static_cast<std::uint32_t>(names_.size()), static_cast<std::uint32_t>(name.size()), 0, false, states};
  if (search.lists(states)) {
    names_ += name;
    reads_.push_back(read);
    return;
  }
  search.forEachName(states, [&](std::string_view lookedUp, SearchStates::Set statesThere) {
    read.name = static_cast<std::uint32_t>(names_.size());
    read.states = statesThere;
    read.lookupLength = static_cast<std::uint32_t>(lookedUp.size() + 1);
    names_.append(name).append("/").append(lookedUp);
    reads_.push_back(read);
  });
}

PendingReads::Group::Read* PendingReads::Group::find(std::string_view path) {
  std::string_view const name = path.substr(0, path.find('/'));
  auto const middle = reads_.begin() + static_cast<std::ptrdiff_t>(preceding_);
  for (auto const& [first, last] : {std::pair(reads_.begin(), middle), std::pair(middle, reads_.end())}) {
    auto read = std::lower_bound(first, last, name, [&](Read const& a, std::string_view b) { return nameOf(a) < b; });
    for (; read != last && nameOf(*read) == name; ++read) {
      if (pathOf(*read) == path) return &*read;
    }
  }
  return nullptr;
}

std::optional<PendingReads::Taken> PendingReads::takeNext() {
  // Each thread that reads has at most one position open, so few groups are empty.
  auto const group = std::find_if(groups_.begin(), groups_.end(), [](Group const& known) { return !known.empty(); });
  if (group == groups_.end()) return std::nullopt;
  Group::Read& read = group->reads_[group->next_];
  AbsoluteIRI location(group->folder_, core::text::fromBytes(group->pathOf(read)));
  auto const position = groups_.emplace(group, location);
  Taken taken{read.question(), std::move(location), read.states, position};
  take(group, read);
  return taken;
}

std::optional<SearchStates::Set> PendingReads::takeRequested(Question question, AbsoluteIRI const& location) {
  std::u16string_view const key = keyOf(location);
  std::string path;
  for (auto group = groups_.begin(); group != groups_.end(); ++group) {
    std::u16string_view const above = keyOf(group->folder_);
    bool const isBelow =
        key.size() > above.size() && key[above.size()] == u'/' && KeyEqual()(key.substr(0, above.size()), above);
    if (group->empty() || !isBelow) continue;
    path.clear();
    iri_text::appendDecodedBytes(path, key.substr(above.size() + 1));
    Group::Read* const read = group->find(path);
    if (read == nullptr || read->isTaken || read->question() != question) continue;
    SearchStates::Set const states = read->states;
    auto const index = static_cast<std::size_t>(read - group->reads_.data());
    for (; group->next_ < index; ++group->next_) {
      if (!group->reads_[group->next_].isTaken) --size_;
    }
    take(group, *read);
    return states;
  }
  return std::nullopt;
}

void PendingReads::enterFirst(Group predicted) {
  if (predicted.empty()) return;
  size_ += predicted.reads_.size();
  groups_.push_front(std::move(predicted));
}

void PendingReads::take(Position group, Group::Read& read) noexcept {
  read.isTaken = true;
  --size_;
  while (group->next_ < group->reads_.size() && group->reads_[group->next_].isTaken) ++group->next_;
  if (group->next_ == group->reads_.size()) groups_.erase(group);
}

void PendingReads::enter(Position position, std::optional<Group> predicted) noexcept {
  if (predicted && !predicted->empty()) {
    *position = std::move(*predicted);
    size_ += position->reads_.size();
  } else {
    groups_.erase(position);
  }
}

void PendingReads::clear() noexcept {
  groups_.clear();
  size_ = 0;
}

}  // namespace foundation::storage::vfs
