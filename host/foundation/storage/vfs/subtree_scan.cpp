#include "foundation/storage/vfs/subtree_scan.hpp"

#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/iri_text.hpp"

namespace foundation::storage::vfs {
namespace {

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
  bool const underWay = !open_.empty() && position_.starts_with(wanted);
  if (!underWay) beginAt(wanted);
  std::vector<OpenFolder> held = std::exchange(open_, {});  // lost when the provider throws
  SubtreePage const page = provider.subtree(root_, prefix_, position_);
  open_ = std::move(held);

  lastPageHelped = false;
  Receive const note = [&](std::shared_ptr<FolderReading> reading) {
    lastPageHelped = lastPageHelped || pathBelowRoot(reading->location) == wanted;
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
