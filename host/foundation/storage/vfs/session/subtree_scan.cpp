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

// A store may skip many deleted keys and return an empty page, but not endlessly.
constexpr std::size_t maximumEmptyPages = 100;

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
                         ReadAhead& reads, AnsweredStores& stores)
    : root_(std::move(root)),
      prefix_(std::move(prefix)),
      visibility_(visibility),
      memoryBound_(memoryBound),
      reads_(reads),
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

std::shared_ptr<FolderSnapshot> SubtreeScan::read(ProviderPointer const& provider, AbsoluteIRI const& folder,
                                                  std::string_view prefix, Expectation expected,
                                                  AddToCache const& addToCache) {
  std::string const wanted = pathBelowRoot(folder);
  Progress progress;
  while (expected != Expectation::thisFolder && !isUnordered_ && !progress.wanted) {
    auto const range = rangeFor(wanted, progress, expected);
    if (range == ranges_.end() || !isWorthAPage(*range, wanted, prefix, expected, progress)) break;
    readPage(provider, folder, wanted, range, expected, progress, addToCache);
  }
  return progress.wanted ? std::move(progress.wanted) : list(provider, folder, wanted, prefix);
}

void SubtreeScan::readForLookup(ProviderPointer const& provider, AbsoluteIRI const& folder,
                                AddToCache const& addToCache) {
  if (isUnordered_) return;
  if (lookupsToSkip_ != 0) {
    --lookupsToSkip_;
    return;
  }
  std::string const wanted = pathBelowRoot(folder);
  Progress progress;
  auto const range = rangeFor(wanted, progress, Expectation::unknown);
  if (range->canGrow()) readPage(provider, folder, wanted, range, Expectation::unknown, progress, addToCache);
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

void SubtreeScan::readPage(ProviderPointer const& provider, AbsoluteIRI const& folder, std::string_view wanted,
                           Ranges::iterator range, Expectation expected, Progress& progress,
                           AddToCache const& addToCache) {
  SubtreePage const page = nextPage(provider, folder, *range, expected);
  if (!page.isOrdered) {
    noteDisorder(folder);
    return;
  }
  ++pages_;
  ++progress.pages;
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

// What was read before may be incomplete then.
void SubtreeScan::noteDisorder(AbsoluteIRI const& folder) {
  isUnordered_ = true;
  ranges_.clear();
  if (pages_ > 0) throw Exception(ErrorCode::other, folder, "the store stopped listing its keys in byte order");
}

SubtreeRequest SubtreeScan::subtree() const {
  return {.folder = root_, .prefix = prefix_, .withFacts = visibility_.collectsFacts()};
}

// A failure concerns the folder that the page was read for, not the whole root.
SubtreePage SubtreeScan::nextPage(ProviderPointer const& provider, AbsoluteIRI const& folder, ScannedRange const& range,
                                  Expectation expected) {
  SubtreeRequest request = subtree();
  request.after = range.position();
  request.page = range.nextPage();
  try {
    return stores_.ask(folder,
                       [&] { return reads_.page(provider, request, expected == Expectation::everythingBelow); });
  } catch (Exception const& failure) {
    throw Exception(static_cast<ErrorCode>(failure.getErrorCode()), folder, failure.reason());
  }
}

// Lists the folder alone, from where a range has read it to.
std::shared_ptr<FolderSnapshot> SubtreeScan::list(ProviderPointer const& provider, AbsoluteIRI const& folder,
                                                  std::string_view wanted, std::string_view prefix) {
  std::shared_ptr<FolderSnapshot> snapshot;
  std::string after;
  for (ScannedRange& range : ranges_) {
    FolderSnapshot const* const begun = range.unfinished(wanted);
    if (begun == nullptr || begun->prefix != prefix || begun->entries.size() == 0) continue;
    snapshot = range.takeUnfinished(wanted);
    after = range.position().substr(wanted.size());
    break;
  }
  bool const isBegun = snapshot != nullptr;
  if (!isBegun) snapshot = std::make_shared<FolderSnapshot>(folder, std::string(prefix));
  bool const readsPages = !isUnordered_ && (isBegun || !visibility_.isTooDeep(folder));
  bool const isListed =
      readsPages && stores_.ask(folder, [&] { return listPages(provider, *snapshot, std::move(after)); });
  if (!isListed) snapshot = stores_.ask(folder, [&] { return readFolder(*provider, folder, prefix, &visibility_); });
  listings_ += 1 + snapshot->entries.size() / entriesPerRequest;
  std::vector<std::string> folders;
  for (std::size_t i = 0; i < snapshot->entries.size(); ++i) {
    if (snapshot->entries.kind(i) == PathKind::isFolder)
      folders.push_back(std::string(wanted).append(snapshot->entries.name(i)) + '/');
  }
  reads_.addFolders(subtree(), folders);
  return snapshot;
}

// Adds the folder's entries after that path, page by page. Returns whether the store lists them in byte order; if not,
// they must be listed otherwise.
bool SubtreeScan::listPages(ProviderPointer const& provider, FolderSnapshot& snapshot, std::string after) {
  bool const isBegun = !after.empty();
  SubtreeRequest request{.folder = snapshot.location,
                         .prefix = snapshot.prefix,
                         .isDelimited = true,
                         .withFacts = visibility_.collectsFacts(),
                         .after = std::move(after)};
  EntrySink sink(snapshot.entries, request.withFacts);
  bool exists = isBegun || !snapshot.prefix.empty();
  std::size_t emptyPages = 0;
  for (bool isLast = false; !isLast;) {
    SubtreePage page = reads_.page(provider, request, true);
    if (!page.isOrdered) return noteDisorder(snapshot.location), false;
    exists = exists || page.folderExists;
    isLast = page.last;
    emptyPages = page.paths.empty() ? emptyPages + 1 : 0;
    if (emptyPages > maximumEmptyPages)
      throw Exception(ErrorCode::other, snapshot.location, "the store sent too many empty pages in a row");
    for (std::size_t i = 0; i < page.paths.size(); ++i) {
      std::string_view name = page.paths[i];
      bool const isFolder = name.ends_with('/');
      if (isFolder) name.remove_suffix(1);
      if (isFolder || page.facts.empty())
        sink.add(name, isFolder ? EntryKind::folder : EntryKind::file);
      else
        sink.add(name, page.facts[i]);
    }
    if (!page.position.empty())
      request.after = std::move(page.position);
    else if (!page.paths.empty())
      request.after = page.paths.back();
    request.page = std::move(page.nextPage);
  }
  if (!exists) throw Exception(ErrorCode::notFound, snapshot.location, "no such folder");
  arrange(snapshot, &visibility_);
  return true;
}

}  // namespace foundation::storage::vfs
