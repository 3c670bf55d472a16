#include "foundation/storage/vfs/session/scanned_range.hpp"

#include <algorithm>
#include <utility>

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {

ScannedRange::ScannedRange(AbsoluteIRI root, std::string prefix, std::string folder, Visibility const& visibility)
    : root_(std::move(root)),
      prefix_(std::move(prefix)),
      visibility_(visibility),
      begin_(std::move(folder)),
      position_(begin_) {
  open({}, begin_.empty(), false);
  for (std::size_t end = begin_.find('/'); end != std::string::npos; end = begin_.find('/', end + 1))
    open(begin_.substr(0, end + 1), end + 1 == begin_.size(), false);
}

ScannedRange::Snapshots ScannedRange::append(SubtreePage const& page, std::string_view end) {
  Snapshots complete;
  auto const belongs = [&](std::string_view path) { return end.empty() || path < end; };
  std::string const before = position_;
  auto const last = std::find_if_not(page.paths.begin(), page.paths.end(), belongs);
  auto const count = static_cast<std::size_t>(last - page.paths.begin());
  for (std::size_t i = 0; i < count; ++i) add(page.paths[i], page.facts.empty() ? nullptr : &page.facts[i], complete);
  if (last != page.paths.begin()) position_ = *std::prev(last);
  if (last != page.paths.end() || !belongs(page.position)) {
    closeUntil(end, complete);
    isClosed_ = true;
  } else {
    if (!page.position.empty()) position_ = page.position;
    if (page.last) {
      while (!open_.empty()) close(complete);
    }
    nextPage_ = page.nextPage;
    isClosed_ = page.last || position_ == before;
    skipHidden();
  }
  return complete;
}

FolderSnapshot const* ScannedRange::unfinished(std::string_view folder) const noexcept {
  for (OpenFolder const& each : open_)
    if (each.path == folder) return each.snapshot.get();
  return nullptr;
}

std::shared_ptr<FolderSnapshot> ScannedRange::takeUnfinished(std::string_view folder) noexcept {
  for (OpenFolder& each : open_)
    if (each.path == folder) return std::move(each.snapshot);
  return nullptr;
}

void ScannedRange::open(std::string path, bool isRead, bool exists) {
  std::shared_ptr<FolderSnapshot> snapshot;
  if (isRead) {
    std::string_view below = path;
    if (!below.empty()) below.remove_suffix(1);
    snapshot = std::make_shared<FolderSnapshot>(AbsoluteIRI(root_, core::text::fromBytes(below)),
                                                path.empty() ? prefix_ : std::string());
  }
  open_.push_back({std::move(path), std::move(snapshot), exists});
}

// Of a hidden path, what is above the hidden part is shown: it is a folder.
void ScannedRange::add(std::string_view path, EntryFacts const* facts, Snapshots& complete) {
  closeUntil(path, complete);
  if (auto const hidden = visibility_.hiddenPart(root_, path)) path = path.substr(0, hidden->begin);
  open_.back().exists = true;
  for (std::size_t start = open_.back().path.size(); start < path.size();) {
    std::size_t const end = path.find('/', start);
    std::string_view const name = path.substr(start, end == std::string_view::npos ? end : end - start);
    bool const isFolder = end != std::string_view::npos;
    if (FolderSnapshot* const snapshot = open_.back().snapshot.get()) {
      if (isFolder) {
        snapshot->entries.add(name, EntryKind::folder);
      } else if (facts == nullptr) {
        snapshot->entries.add(name, EntryKind::file);
      } else {
        snapshot->entries.add(name, *facts);
      }
    }
    if (!isFolder) return;
    open(std::string(path.substr(0, end + 1)), true, true);
    start = end + 1;
  }
}

// Continues after everything that is in the same folder, if that is left out.
void ScannedRange::skipHidden() {
  auto past = visibility_.pastHidden(root_, position_);
  if (!past) return;
  position_ = *std::move(past);
  nextPage_.clear();
}

void ScannedRange::closeUntil(std::string_view path, Snapshots& complete) {
  while (!path.starts_with(open_.back().path)) close(complete);
}

void ScannedRange::close(Snapshots& complete) {
  std::shared_ptr<FolderSnapshot> const snapshot = std::move(open_.back().snapshot);
  bool const isComplete = snapshot != nullptr && open_.back().exists;
  open_.pop_back();
  if (!isComplete) return;
  snapshot->entries.sort();
  snapshot->entries.shrink();
  complete.push_back(snapshot);
}

}  // namespace foundation::storage::vfs
