#include "foundation/storage/vfs/descent_order.hpp"

#include <functional>
#include <string_view>
#include <utility>

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {
namespace {

// The same however the location ends.
std::size_t hashOf(AbsoluteIRI const& folder) {
  std::u16string_view text = folder.toString();
  if (!text.empty() && text.back() == u'/') text.remove_suffix(1);
  return std::hash<std::u16string_view>()(text);
}

}  // namespace

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

void DescentOrder::avoid(AbsoluteIRI const& folder) {
  avoided_.insert(hashOf(folder));
}

std::optional<AbsoluteIRI> DescentOrder::next() {
  while (!open_.empty()) {
    Rest const& rest = open_.back();
    AbsoluteIRI location(rest.folder, core::text::fromBytes(rest.subfolders.name(rest.position)));
    if (avoided_.count(hashOf(location)) == 0) return location;
    pass();
  }
  return std::nullopt;
}

void DescentOrder::pass() noexcept {
  if (++open_.back().position == open_.back().subfolders.size()) open_.pop_back();
}

}  // namespace foundation::storage::vfs
