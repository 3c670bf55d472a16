#include "foundation/storage/vfs/session/subtree_scan.hpp"

#include <algorithm>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {
namespace {

// Whatever came before, a page is tried again after a thousand questions.
constexpr std::size_t mostPagesInVain = 10;

std::u16string_view withoutFinalSeparator(std::u16string_view text) {
  if (!text.empty() && text.back() == u'/') text.remove_suffix(1);
  return text;
}

// The written form of what leads from `root` to `location`, without a "/" at either end; empty for the root itself.
// False when the location isn't below.
bool writtenBelow(AbsoluteIRI const& root, AbsoluteIRI const& location, std::u16string_view& below) {
  std::u16string_view const base = withoutFinalSeparator(root.toString());
  below = withoutFinalSeparator(location.toString());
  if (!below.starts_with(base)) return false;
  below.remove_prefix(base.size());
  if (below.empty()) return true;
  if (below.front() != u'/') return false;
  below.remove_prefix(1);
  return true;
}

}  // namespace

SubtreeScan::SubtreeScan(AbsoluteIRI root, std::string prefix) : root_(std::move(root)), prefix_(std::move(prefix)) {}

bool SubtreeScan::reaches(AbsoluteIRI const& location, std::string_view prefix) const {
  std::u16string_view below;
  if (!writtenBelow(root_, location, below)) return false;
  if (below.empty()) return prefix == prefix_;
  return pathBelowRoot(location).starts_with(prefix_);
}

std::string SubtreeScan::pathBelowRoot(AbsoluteIRI const& folder) const {
  std::u16string_view below;
  std::string path;
  if (writtenBelow(root_, folder, below) && !below.empty()) {
    iri_text::appendDecodedBytes(path, below);
    path.push_back('/');
  }
  return path;
}

void SubtreeScan::advance(Provider& provider, AbsoluteIRI const& folder, Receive const& receive) {
  std::string const wanted = pathBelowRoot(folder);
  bool const underWay = intact_ && !open_.empty() && position_.starts_with(wanted);
  intact_ = false;  // until this page has been gone through
  if (!underWay) beginAt(wanted);
  SubtreePage const page = pageFor(provider, folder);

  bool helped = false;
  Receive const note = [&](std::shared_ptr<FolderReading> reading) {
    helped = helped || pathBelowRoot(reading->location) == wanted;
    receive(std::move(reading));
  };
  for (std::string const& path : page.paths) add(path, note);
  if (!page.position.empty())
    position_ = page.position;
  else if (!page.paths.empty())
    position_ = page.paths.back();
  if (page.last) {
    closeUntil({}, note);
    open_.clear();
  }
  pagesInVain_ = helped ? 0 : std::min(pagesInVain_ + 1, mostPagesInVain);
  questionsToPass_ = (std::size_t{1} << pagesInVain_) - 1;
  intact_ = true;
}

// A failure is one of the folder that the page was read for, not of the whole root.
SubtreePage SubtreeScan::pageFor(Provider& provider, AbsoluteIRI const& folder) const {
  try {
    return provider.subtree(root_, prefix_, position_);
  } catch (Exception const& failure) {
    throw Exception(static_cast<ErrorCode>(failure.getErrorCode()), folder, failure.reason());
  }
}

bool SubtreeScan::worthAPage() {
  if (questionsToPass_ == 0) return true;
  --questionsToPass_;
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

void SubtreeScan::open(std::string path, bool whole, bool seen) {
  std::shared_ptr<FolderReading> reading;
  if (whole) {
    std::string_view below = path;
    if (!below.empty()) below.remove_suffix(1);
    reading = std::make_shared<FolderReading>(AbsoluteIRI(root_, core::text::fromBytes(below)),
                                              path.empty() ? prefix_ : std::string());
  }
  open_.push_back({std::move(path), std::move(reading), seen});
}

void SubtreeScan::add(std::string_view path, Receive const& receive) {
  closeUntil(path, receive);
  open_.back().seen = true;
  for (std::size_t start = open_.back().path.size(); start < path.size();) {
    std::size_t const end = path.find('/', start);
    std::string_view const name = path.substr(start, end == std::string_view::npos ? end : end - start);
    bool const isFolder = end != std::string_view::npos;
    if (FolderReading* const reading = open_.back().reading.get()) {
      reading->entries.add(name, isFolder ? EntryKind::folder : EntryKind::file);
    }
    if (!isFolder) return;
    open(std::string(path.substr(0, end + 1)), true, true);
    start = end + 1;
  }
}

void SubtreeScan::closeUntil(std::string_view path, Receive const& receive) {
  while (!open_.empty() && (path.empty() || !path.starts_with(open_.back().path))) {
    std::shared_ptr<FolderReading> const reading = std::move(open_.back().reading);
    bool const known = reading != nullptr && open_.back().seen;
    open_.pop_back();
    if (!known) continue;
    reading->entries.sort();
    reading->entries = reading->entries.takeCompact();
    receive(reading);
  }
}

}  // namespace foundation::storage::vfs
