#include "foundation/storage/vfs/descent_order.hpp"

#include <utility>

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {

void DescentOrder::enter(FolderReading const& reading) {
  EntryTable subfolders;
  for (std::size_t i = 0; i < reading.entries.size(); ++i) {
    std::string_view const name = reading.entries.name(i);
    bool const followed =
        reading.entries.kind(i) == PathKind::isFolder && !reading.entries.maybeLink(i) && name.front() != '.';
    if (followed) subfolders.add(name, EntryKind::folder);
  }
  if (subfolders.size() != 0) open_.push_back({reading.location, std::move(subfolders), 0});
}

std::optional<AbsoluteIRI> DescentOrder::next() const {
  if (open_.empty()) return std::nullopt;
  Rest const& rest = open_.back();
  return AbsoluteIRI(rest.folder, core::text::fromBytes(rest.subfolders.name(rest.position)));
}

void DescentOrder::pass() noexcept {
  if (++open_.back().position == open_.back().subfolders.size()) open_.pop_back();
}

}  // namespace foundation::storage::vfs
