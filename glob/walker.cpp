#include "glob/walker.hpp"

#include <utility>

#include "foundation/storage/vfs/read_session.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "glob/existence.hpp"
#include "glob/listing.hpp"
#include "path/path_access.hpp"
#include "quindarel/interrupt/interrupt_poll.hpp"

namespace korvan::io::internal {
namespace {

namespace vfs = foundation::storage::vfs;
using fl::filesystem::upath;

bool literalMatches(Path const& pattern, Path const& root, bool foldersOnly) {
  bool const noName = pattern.name().empty();
  if (noName && pattern.parent().empty() && !foldersOnly) return false;
  PathKind const kind = pathKind(pattern, root);
  return noName || foldersOnly ? kind == PathKind::isFolder : exists(kind);
}

vfs::SearchOutline::Match matchOf(SegmentClass segment) {
  switch (segment) {
    case SegmentClass::literal:
      return vfs::SearchOutline::Match::name;
    case SegmentClass::wildcard:
      return vfs::SearchOutline::Match::filter;
    case SegmentClass::doubleStar:
      break;
  }
  return vfs::SearchOutline::Match::descent;
}

}  // namespace

Walker::Walker(Path const& pattern, Path const& root, bool foldersOnly, bool includeDotFiles)
    : root_(root),
      foldersOnly_(foldersOnly),
      includeDotFiles_(includeDotFiles),
      storage_(Quindarel::KorvanStorageSystem::GetStorageSystemReference()),
      pattern_(pattern) {}

Walker::Walker(vfs::Folder const& folder, bool foldersOnly, bool includeDotFiles)
    : Walker(Path(std::u16string(u"**")), Path(), foldersOnly, includeDotFiles) {
  plan_.emplace(pattern_);
  hasBegun_ = true;
  push(0, true).folder = folder;
  announce(folder.getLocation());
}

Path const* Walker::next() {
  try {
    if (!hasBegun_) begin();
    while (!hasMatch_ && depth_ != 0) step();
  } catch (...) {
    depth_ = 0;
    hasMatch_ = false;
    throw;
  }
  return std::exchange(hasMatch_, false) ? &match_ : nullptr;
}

void Walker::begin() {
  hasBegun_ = true;
  if (!hasWildcard(PathAccess::text(pattern_))) {
    match_ = pattern_;
    hasMatch_ = literalMatches(pattern_, root_, foldersOnly_);
    return;
  }
  plan_.emplace(pattern_);
  for (std::size_t i = 0; i < plan_->size(); ++i) utThrowIfInterruptPending();
  // Made absolute once, so that the process's current folder isn't looked up for every folder.
  if (!isAbsolute(plan_->start())) root_ = absolute(root_, Path());
  match_ = plan_->start();
  if (vfs::ReadSession::current() != nullptr) announce(PathAccess::toIRI(absolute(match_, root_)));
  enter(0);
}

// Says to the storage layer what the walk is going to read.
void Walker::announce(vfs::AbsoluteIRI const& start) {
  vfs::ReadSession* const session = vfs::ReadSession::current();
  bool const isOneListing = plan_->size() == 1 && plan_->segmentClass(0) == SegmentClass::wildcard;
  if (session == nullptr || isOneListing) return;
  vfs::SearchOutline outline{start, {}, includeDotFiles_};
  for (std::size_t i = 0; i < plan_->size(); ++i) {
    outline.segments.push_back({matchOf(plan_->segmentClass(i)), std::u16string(plan_->text(i))});
  }
  announcement_ = session->announce(outline);
}

// Advances by one entry of the topmost frame, which produces at most one match.
void Walker::step() {
  Frame& frame = frames_[depth_ - 1];
  if (!frame.isOpen) open(frame);
  if (!std::exchange(frame.hasStarted, true)) frame.matchesBefore = matches_;
  if (frame.entries.next()) {
    visit(frame);
  } else {
    close();
  }
}

// Matches the segments from this one on, starting at the path in `match_`, up to the first that lists a folder.
void Walker::enter(std::size_t segment) {
  bool isFolder = false;  // whether an empty segment has found a folder here, so that those after it needn't test again
  for (; segment < plan_->size(); ++segment) {
    switch (plan_->segmentClass(segment)) {
      case SegmentClass::literal:
        if (isFolder && plan_->text(segment).empty()) break;
        if (!matchesLiteral(segment)) return;
        isFolder = plan_->text(segment).empty();
        match_.append(std::u16string(plan_->text(segment)));
        break;
      case SegmentClass::wildcard:
        push(segment, false);
        return;
      case SegmentClass::doubleStar:
        open(push(segment, true));
        // "**" also matches no folder at all.
        if (pathKind(absolute(match_, root_), Path()) != PathKind::isFolder) return;
        break;
    }
  }
  ++matches_;
  hasMatch_ = true;
}

bool Walker::matchesLiteral(std::size_t segment) const {
  std::u16string_view const text = plan_->text(segment);
  PathKind const kind = pathKind(PathAccess::make(upath(std::u16string(text))), absolute(match_, root_));
  return text.empty() ? kind == PathKind::isFolder : exists(kind);
}

// Adds a frame for the folder at the path in `match_`.
Walker::Frame& Walker::push(std::size_t segment, bool isDescent) {
  if (depth_ == frames_.size()) frames_.emplace_back();
  Frame& frame = frames_[depth_++];
  frame.segment = segment;
  frame.at = match_;
  frame.nameStart = std::u16string::npos;
  frame.isDescent = isDescent;
  frame.isBelow = false;
  frame.isOpen = false;
  frame.hasStarted = false;
  frame.hasVisited = false;
  frame.metCycle = false;
  frame.isAbsent = false;
  if (!isDescent && depth_ > 1) {
    // A descent that has just entered the same folder has a handle on it. Its path is the start of `match_`, if not all.
    Frame const& under = frames_[depth_ - 2];
    if (PathAccess::text(under.at).size() == PathAccess::text(match_).size()) frame.folder = under.folder;
  }
  return frame;
}

// Opens the topmost frame.
void Walker::open(Frame& frame) {
  frame.isOpen = true;
  bool const isDeadEnd =
      plan_->revisits(frame.segment) && deadEnds_.contains(frame.segment, PathAccess::text(frame.at));
  if (frame.isBelow && !openBelow(frame)) frame.metCycle = !frame.isAbsent && !isDeadEnd;
  if (isDeadEnd || (frame.isBelow && !frame.folder)) return;
  if (!frame.folder) {
    frame.folder.emplace(PathAccess::toIRI(absolute(frame.at, root_)), storage_);
  }
  list(frame);
}

// Whether the subfolder, the last entry visited by the frame below on the stack, could be opened. The storage layer
// refuses one that closes a cycle of links; it may also say that a descent finds no folder there.
bool Walker::openBelow(Frame& frame) {
  Frame const& above = frames_[depth_ - 2];
  try {
    frame.folder = above.entries.enter();
    return true;
  } catch (vfs::Exception const& failure) {
    frame.isAbsent = failure.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound);
    return false;
  }
}

void Walker::list(Frame& frame) {
  std::u16string const filter(frame.isDescent ? std::u16string_view(u"*") : plan_->text(frame.segment));
  frame.entries = MatchingEntries(*frame.folder, filter, foldersOnlyAt(frame.segment), includeDotFiles_);
}

// A descent is refused a folder that it has already passed through. A descent that begins at a folder has passed through
// no other, so it reaches everything that any descent can reach below that folder, and may remember it as a dead end.
void Walker::close() {
  Frame& frame = frames_[--depth_];
  // Passing over a few entries again is faster than looking up whether they lead to no match.
  bool const wasLong = frame.hasVisited || frame.entries.position() > 64;
  frame.folder.reset();
  frame.entries = MatchingEntries();
  if (frame.metCycle && frame.isBelow) {
    frames_[depth_ - 1].metCycle = true;
  } else if (frame.matchesBefore == matches_ && plan_->revisits(frame.segment) && !frame.isAbsent && wasLong) {
    deadEnds_.add(frame.segment, PathAccess::text(frame.at));
  }
}

// Makes `match_` the path of the frame's entry. Of the paths of local siblings only the name differs.
void Walker::moveTo(Frame& frame) {
  std::u16string* const text = PathAccess::localText(match_);
  if (text != nullptr && frame.nameStart != std::u16string::npos) {
    text->resize(frame.nameStart);
    frame.entries.appendName(*text);
    return;
  }
  std::u16string const name = frame.entries.name();
  PathAccess::assignJoined(match_, frame.at, name);
  frame.nameStart = PathAccess::text(match_).size() - name.size();
}

// The entry matches the frame's segment. The segments after it are matched there first; then, in a descent, what is
// below the entry.
void Walker::visit(Frame& frame) {
  ListedKind const kind = frame.entries.kind();
  frame.hasVisited = true;
  moveTo(frame);
  std::size_t const segment = frame.segment;
  bool const isLast = segment + 1 == plan_->size();
  if (isLast) ++matches_;
  hasMatch_ = isLast;
  if (frame.isDescent && isFolder(frame, kind)) {
    Frame& below = push(segment, true);
    below.isBelow = true;
    // Listed before the segments after this one are matched in it: the storage layer answers them from the listing.
    if (!isLast) open(below);
    if (below.isAbsent && !onlyFoldersFollow(segment + 1)) return;
  }
  if (!isLast) enter(segment + 1);
}

// Whether the pattern from this segment on is no more than a final separator, which the entry reached so far matches if
// it is a folder, without anything being looked up in it.
bool Walker::onlyFoldersFollow(std::size_t segment) const noexcept {
  return segment + 1 == plan_->size() && plan_->text(segment).empty();
}

// Whether the entry visited last is a folder: according to the listing, or else to an existence test.
bool Walker::isFolder(Frame const& frame, ListedKind listed) const {
  if (listed != ListedKind::unknown) return listed == ListedKind::folder;
  try {
    Path const entry = PathAccess::make(upath(frame.entries.name()));
    return pathKind(entry, Path(frame.folder->getLocation())) == PathKind::isFolder;
  } catch (vfs::Exception const&) {
    return false;  // the entry remains a match; what is below it is unknown
  }
}

}  // namespace korvan::io::internal
