#include "foundation/storage/vfs/session/descent_order.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"

namespace foundation::storage::vfs {

EntryTable followedSubfolders(FolderReading const& reading) {
  EntryTable subfolders;
  for (std::size_t i = 0; i < reading.entries.size(); ++i) {
    std::string_view const name = reading.entries.name(i);
    bool const followed =
        reading.entries.kind(i) == PathKind::isFolder && !reading.entries.maybeLink(i) && name.front() != '.';
    if (followed) subfolders.add(name, EntryKind::folder);
  }
  return subfolders;
}

std::optional<AbsoluteIRI> DescentOrder::next() {
  for (auto rest = nextRest(); rest != rests_.end(); rest = nextRest()) {
    AbsoluteIRI location(rest->folder, core::text::fromBytes(rest->subfolders.name(rest->position)));
    if (aside_.empty() || aside_.count(KeyHash()(keyOf(location))) == 0) return location;
    pass(rest);
  }
  return std::nullopt;
}

DescentOrder::Place DescentOrder::take(AbsoluteIRI folder) {
  auto const rest = nextRest();
  Place const place = rests_.insert(rest, Rest{std::move(folder)});
  pass(rest);
  return place;
}

DescentOrder::Place DescentOrder::takeAside(AbsoluteIRI folder) {
  aside_.insert(KeyHash()(keyOf(folder)));
  return rests_.insert(rests_.begin(), Rest{std::move(folder)});
}

void DescentOrder::enter(Place place, EntryTable subfolders) noexcept {
  size_ += subfolders.size();
  place->subfolders = std::move(subfolders);
  if (place->subfolders.size() == 0) rests_.erase(place);
}

void DescentOrder::clear() noexcept {
  rests_.clear();
  size_ = 0;
}

// Each thread that reads has taken one place at most, so few are looked at.
std::list<DescentOrder::Rest>::iterator DescentOrder::nextRest() noexcept {
  return std::find_if(rests_.begin(), rests_.end(), [](Rest const& rest) { return rest.subfolders.size() != 0; });
}

void DescentOrder::pass(Place rest) noexcept {
  --size_;
  if (++rest->position == rest->subfolders.size()) rests_.erase(rest);
}

}  // namespace foundation::storage::vfs
