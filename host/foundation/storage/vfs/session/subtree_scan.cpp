#include "foundation/storage/vfs/session/subtree_scan.hpp"

#include <algorithm>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {
namespace {

// Bounds the back-off to about a thousand lookups.
constexpr std::size_t maximumUnhelpfulPages = 10;

// U+10FFFF: no character sorts after it.
constexpr std::string_view greatestCharacter = "\xF4\x8F\xBF\xBF";

}  // namespace

SubtreeScan::SubtreeScan(AbsoluteIRI root, std::string prefix, Visibility const& visibility)
    : root_(std::move(root)), prefix_(std::move(prefix)), visibility_(visibility) {}

bool SubtreeScan::reaches(AbsoluteIRI const& location, std::string_view prefix) const {
  auto const below = writtenBelow(root_, location);
  if (!below) return false;
  if (below->empty()) return prefix == prefix_;
  return pathBelowRoot(location).starts_with(prefix_);
}

std::string SubtreeScan::pathBelowRoot(AbsoluteIRI const& folder) const {
  auto const below = writtenBelow(root_, folder);
  std::string path;
  if (below && !below->empty()) {
    iri_text::appendDecodedBytes(path, *below);
    path.push_back('/');
  }
  return path;
}

void SubtreeScan::advance(Provider& provider, AbsoluteIRI const& folder, AddToCache const& addToCache) {
  std::string const wanted = pathBelowRoot(folder);
  bool const inProgress = intact_ && !open_.empty() && position_.starts_with(wanted);
  intact_ = false;  // until this page has been processed
  if (!inProgress) beginAt(wanted);
  SubtreePage const page = pageFor(provider, folder);

  bool helped = false;
  AddToCache const note = [&](std::shared_ptr<FolderSnapshot> snapshot) {
    helped = helped || pathBelowRoot(snapshot->location) == wanted;
    addToCache(std::move(snapshot));
  };
  for (std::size_t i = 0; i < page.paths.size(); ++i) {
    add(page.paths[i], page.facts.empty() ? nullptr : &page.facts[i], note);
  }
  if (!page.position.empty())
    position_ = page.position;
  else if (!page.paths.empty())
    position_ = page.paths.back();
  skipHidden();
  if (page.last) {
    closeUntil({}, note);
    open_.clear();
  }
  unhelpfulPages_ = helped ? 0 : std::min(unhelpfulPages_ + 1, maximumUnhelpfulPages);
  lookupsToSkip_ = (std::size_t{1} << unhelpfulPages_) - 1;
  intact_ = true;
}

// A failure concerns the folder that the page was read for, not the whole root.
SubtreePage SubtreeScan::pageFor(Provider& provider, AbsoluteIRI const& folder) const {
  try {
    return provider.subtree(root_, prefix_, position_, visibility_.collectsFacts());
  } catch (Exception const& failure) {
    throw Exception(static_cast<ErrorCode>(failure.getErrorCode()), folder, failure.reason());
  }
}

bool SubtreeScan::isWorthAPage() {
  if (lookupsToSkip_ == 0) return true;
  --lookupsToSkip_;
  return false;
}

void SubtreeScan::beginAt(std::string const& path) {
  open_.clear();
  position_ = path;
  open({}, path.empty(), false);
  for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
    open(path.substr(0, end + 1), end + 1 == path.size(), false);
  }
}

void SubtreeScan::open(std::string path, bool complete, bool exists) {
  std::shared_ptr<FolderSnapshot> snapshot;
  if (complete) {
    std::string_view below = path;
    if (!below.empty()) below.remove_suffix(1);
    snapshot = std::make_shared<FolderSnapshot>(AbsoluteIRI(root_, core::text::fromBytes(below)),
                                                path.empty() ? prefix_ : std::string());
  }
  open_.push_back({std::move(path), std::move(snapshot), exists});
}

// Continues after everything that is in the same folder, if that is left out.
void SubtreeScan::skipHidden() {
  auto const hidden = visibility_.hiddenPart(root_, position_);
  if (!hidden || position_[hidden->end - 1] != '/') return;
  position_.resize(hidden->end);
  position_ += greatestCharacter;
}

// Of a hidden path, what is above the hidden part is shown: it is a folder.
void SubtreeScan::add(std::string_view path, EntryFacts const* facts, AddToCache const& addToCache) {
  closeUntil(path, addToCache);
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

void SubtreeScan::closeUntil(std::string_view path, AddToCache const& addToCache) {
  while (!open_.empty() && (path.empty() || !path.starts_with(open_.back().path))) {
    std::shared_ptr<FolderSnapshot> const snapshot = std::move(open_.back().snapshot);
    bool const isComplete = snapshot != nullptr && open_.back().exists;
    open_.pop_back();
    if (!isComplete) continue;
    snapshot->entries.sort();
    snapshot->entries.shrink();
    addToCache(snapshot);
  }
}

}  // namespace foundation::storage::vfs
