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

// How many pages are read for a folder whose keys are mostly those of its subfolders, before it is listed alone: they
// delay the first match below the folder.
constexpr std::size_t maximumPagesAhead = 64;

// In a descent, listings of single folders are requests on top of the pages, which have all keys. Those of the topmost
// folders are worth it, as matches are then found early; after these, one for so many pages.
constexpr std::size_t freeListings = 2;
constexpr std::size_t pagesPerListing = 32;

constexpr std::size_t entriesPerRequest = 1000;

// Each range has a request behind it that others can rarely continue: a search that skips folders leaves many behind.
constexpr std::size_t maximumRanges = 16;

// Whether the range ends among keys that come before those of the folder although the search requests them later: the
// keys in "a-" and in "a.b" precede those in "a", since "/" sorts after "-" and ".".
bool isJustBefore(ScannedRange const& range, std::string_view folder) {
  if (!range.canGrow() || folder.empty()) return false;
  std::string_view const name = folder.substr(0, folder.size() - 1);
  std::string_view const position = range.position();
  return position.size() > name.size() && position.starts_with(name) && position[name.size()] < '/';
}

}  // namespace

SubtreeScan::SubtreeScan(AbsoluteIRI root, std::string prefix, Visibility const& visibility, std::size_t memoryBound,
                         AnsweredStores& stores)
    : root_(std::move(root)),
      prefix_(std::move(prefix)),
      visibility_(visibility),
      memoryBound_(memoryBound),
      stores_(stores) {}

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

std::shared_ptr<FolderSnapshot> SubtreeScan::read(Provider& provider, AbsoluteIRI const& folder,
                                                  std::string_view prefix, Expectation expected,
                                                  AddToCache const& addToCache) {
  std::string const wanted = pathBelowRoot(folder);
  Progress progress;
  while (expected != Expectation::thisFolder && !isUnordered_ && !progress.wanted) {
    auto const range = rangeFor(wanted, progress, expected);
    if (range == ranges_.end() || !isWorthAPage(*range, wanted, prefix, expected, progress)) break;
    readPage(provider, folder, wanted, range, progress, addToCache);
  }
  return progress.wanted ? std::move(progress.wanted) : list(provider, folder, wanted, prefix);
}

void SubtreeScan::readForLookup(Provider& provider, AbsoluteIRI const& folder, AddToCache const& addToCache) {
  if (isUnordered_) return;
  if (lookupsToSkip_ != 0) {
    --lookupsToSkip_;
    return;
  }
  std::string const wanted = pathBelowRoot(folder);
  Progress progress;
  auto const range = rangeFor(wanted, progress, Expectation::unknown);
  if (range->canGrow()) readPage(provider, folder, wanted, range, progress, addToCache);
  if (progress.wanted) addToCache(progress.wanted);
  unhelpfulPages_ = progress.wanted ? 0 : std::min(unhelpfulPages_ + 1, maximumUnhelpfulPages);
  lookupsToSkip_ = (std::size_t{1} << unhelpfulPages_) - 1;
}

// The range to grow for the folder, which becomes the first one: the range that has begun to read the folder, one that
// is about to, or a new one. None if the folder has been passed without being completed.
SubtreeScan::Ranges::iterator SubtreeScan::rangeFor(std::string const& wanted, Progress const& progress,
                                                    Expectation expected) {
  bool const mayApproach = progress.pages == 0 || (expected == Expectation::everythingBelow && mayReadAhead(progress));
  auto const isBegun = [&](ScannedRange const& range) { return range.unfinished(wanted) != nullptr; };
  auto const approaches = [&](ScannedRange const& range) { return mayApproach && isJustBefore(range, wanted); };
  auto const contains = [&](ScannedRange const& range) { return range.contains(wanted); };
  auto range = std::find_if(ranges_.begin(), ranges_.end(), isBegun);
  if (range == ranges_.end()) range = std::find_if(ranges_.begin(), ranges_.end(), approaches);
  if (range == ranges_.end()) {
    range = std::find_if(ranges_.begin(), ranges_.end(), contains);
    if (range != ranges_.end()) {
      if (progress.pages != 0) return ranges_.end();
      ranges_.erase(range);  // the folder was complete, and has been evicted since
    }
    if (ranges_.size() == maximumRanges) ranges_.pop_back();
    range = ranges_.emplace(ranges_.begin(), root_, prefix_, wanted, visibility_);
  }
  ranges_.splice(ranges_.begin(), ranges_, range);
  return range;
}

bool SubtreeScan::mayReadAhead(Progress const& progress) const noexcept {
  return progress.pages < maximumPagesAhead && progress.memory < memoryBound_ / 4;
}

// Whether the next page of the range is a better request for the folder than listing it alone.
bool SubtreeScan::isWorthAPage(ScannedRange const& range, std::string_view wanted, std::string_view prefix,
                               Expectation expected, Progress const& progress) const {
  if (!range.canGrow()) return false;
  FolderSnapshot const* const begun = range.unfinished(wanted);
  if (progress.pages == 0 || begun == nullptr || range.position() == wanted) return true;
  if (begun->prefix != prefix) return false;
  std::string_view const rest = std::string_view(range.position()).substr(wanted.size());
  if (rest.find('/') == std::string_view::npos) return true;  // the folder's own entries come next
  bool const isSkipped = rest.front() == '.' || rest.find("/.") != std::string_view::npos;
  if (expected != Expectation::everythingBelow || isSkipped || !mayReadAhead(progress)) return false;
  return listings_ >= freeListings + pages_ / pagesPerListing;
}

void SubtreeScan::readPage(Provider& provider, AbsoluteIRI const& folder, std::string_view wanted,
                           Ranges::iterator range, Progress& progress, AddToCache const& addToCache) {
  SubtreePage const page = nextPage(provider, folder, *range);
  ++pages_;
  ++progress.pages;
  if (!page.isOrdered) {
    isUnordered_ = true;
    ranges_.clear();
    if (pages_ > 1) throw Exception(ErrorCode::other, folder, "the store stopped listing its keys in byte order");
    return;
  }
  std::string_view end;
  for (ScannedRange const& other : ranges_)
    if (other.begin() > range->begin() && (end.empty() || other.begin() < end)) end = other.begin();
  Ranges growing;
  growing.splice(growing.begin(), ranges_, range);  // if the page can't be added, the range would have a gap
  auto const complete = range->append(page, end);
  ranges_.splice(ranges_.begin(), growing);
  for (auto const& snapshot : complete) {
    progress.memory += snapshot->entries.memory();
    if (pathBelowRoot(snapshot->location) == wanted)
      progress.wanted = snapshot;
    else
      addToCache(snapshot);
  }
}

// A failure concerns the folder that the page was read for, not the whole root.
SubtreePage SubtreeScan::nextPage(Provider& provider, AbsoluteIRI const& folder, ScannedRange const& range) {
  try {
    return stores_.ask(folder, [&] {
      return provider.subtree(root_, prefix_, range.position(), range.nextPage(), visibility_.collectsFacts());
    });
  } catch (Exception const& failure) {
    throw Exception(static_cast<ErrorCode>(failure.getErrorCode()), folder, failure.reason());
  }
}

// Lists the folder alone, from where a range has read it to.
std::shared_ptr<FolderSnapshot> SubtreeScan::list(Provider& provider, AbsoluteIRI const& folder,
                                                  std::string_view wanted, std::string_view prefix) {
  std::shared_ptr<FolderSnapshot> snapshot;
  for (ScannedRange& range : ranges_) {
    FolderSnapshot const* const begun = range.unfinished(wanted);
    if (begun == nullptr || begun->prefix != prefix || begun->entries.size() == 0) continue;
    snapshot = range.takeUnfinished(wanted);
    EntrySink sink(snapshot->entries, visibility_.collectsFacts());
    std::string_view const after = std::string_view(range.position()).substr(wanted.size());
    stores_.ask(folder, [&] { return provider.listRest(folder, prefix, after, sink), true; });
    snapshot->entries.removeIf([&](std::string_view name) { return visibility_.hides(name); });
    snapshot->entries.sort();
    snapshot->entries.shrink();
    break;
  }
  if (!snapshot) snapshot = stores_.ask(folder, [&] { return readFolder(provider, folder, prefix, &visibility_); });
  listings_ += 1 + snapshot->entries.size() / entriesPerRequest;
  return snapshot;
}

}  // namespace foundation::storage::vfs
