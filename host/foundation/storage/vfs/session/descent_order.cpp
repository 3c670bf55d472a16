#include "foundation/storage/vfs/session/descent_order.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"

namespace foundation::storage::vfs {

EntryTable descendedSubfolders(FolderSnapshot const& snapshot) {
  EntryTable subfolders;
  for (std::size_t i = 0; i < snapshot.entries.size(); ++i) {
    std::string_view const name = snapshot.entries.name(i);
    bool const isDescended =
        snapshot.entries.kind(i) == PathKind::isFolder && !snapshot.entries.maybeLink(i) && name.front() != '.';
    if (isDescended) subfolders.add(name, EntryKind::folder);
  }
  return subfolders;
}

std::optional<AbsoluteIRI> DescentOrder::next() {
  for (auto pending = firstPending(); pending != pending_.end(); pending = firstPending()) {
    AbsoluteIRI location(pending->folder, core::text::fromBytes(pending->subfolders.name(pending->next)));
    if (takenOutOfOrder_.empty() || takenOutOfOrder_.count(KeyHash()(keyOf(location))) == 0) return location;
    advance(pending);
  }
  return std::nullopt;
}

DescentOrder::Position DescentOrder::take(AbsoluteIRI folder) {
  auto const parent = firstPending();
  Position const position = pending_.insert(parent, Pending{std::move(folder)});
  advance(parent);
  return position;
}

DescentOrder::Position DescentOrder::takeOutOfOrder(AbsoluteIRI folder) {
  takenOutOfOrder_.insert(KeyHash()(keyOf(folder)));
  return pending_.insert(pending_.begin(), Pending{std::move(folder)});
}

void DescentOrder::enter(Position position, EntryTable subfolders) noexcept {
  size_ += subfolders.size();
  position->subfolders = std::move(subfolders);
  if (position->subfolders.size() == 0) pending_.erase(position);
}

void DescentOrder::clear() noexcept {
  pending_.clear();
  size_ = 0;
}

// Each thread that reads has at most one position open, so few are checked.
std::list<DescentOrder::Pending>::iterator DescentOrder::firstPending() noexcept {
  return std::find_if(pending_.begin(), pending_.end(),
                      [](Pending const& pending) { return pending.subfolders.size() != 0; });
}

void DescentOrder::advance(Position position) noexcept {
  --size_;
  if (++position->next == position->subfolders.size()) pending_.erase(position);
}

}  // namespace foundation::storage::vfs
