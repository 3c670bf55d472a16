#include "foundation/storage/vfs/session/key_parts.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace foundation::storage::vfs {
namespace {

// The most pages that are ready or coming, for each request in flight: enough for all parts to be read to their ends.
constexpr std::size_t pagesForEach = 4;

// How many pages must be wanted in a row before others are expected to follow. Twice as many each time that this was
// wrong.
constexpr std::size_t shortestRun = 2;
constexpr std::size_t longestRun = 64;

std::size_t memoryOf(SubtreePage const& page) {
  std::size_t memory = sizeof page + page.facts.capacity() * sizeof(EntryFacts);
  for (std::string const& path : page.paths) memory += sizeof(std::string) + path.capacity();
  return memory;
}

// Leaves out what the part that begins there has too. Returns the first path that it has.
std::string trim(SubtreePage& page, std::string const& next) {
  auto const count =
      static_cast<std::size_t>(std::upper_bound(page.paths.begin(), page.paths.end(), next) - page.paths.begin());
  std::string rest = count < page.paths.size() ? std::move(page.paths[count]) : std::string();
  page.paths.resize(count);
  page.facts.resize(std::min(page.facts.size(), count));
  page.last = false;
  page.position.clear();
  page.nextPage.clear();
  return rest;
}

template <class Values>
void moveTo(Values& target, Values& values) {
  target.insert(target.end(), std::make_move_iterator(values.begin()), std::make_move_iterator(values.end()));
}

void append(SubtreePage& page, SubtreePage rest) {
  moveTo(page.paths, rest.paths);
  moveTo(page.facts, rest.facts);
  rest.paths = std::move(page.paths);
  rest.facts = std::move(page.facts);
  rest.folderExists = rest.folderExists || page.folderExists;
  page = std::move(rest);
}

}  // namespace

void KeyParts::select(SubtreeRequest const& request) {
  if (isFor(request)) return;
  listing_.reset();
  restart({});
  folders_.clear();
  hasJumped_ = false;
  runBefore_ = shortestRun;
  listing_.emplace(request);
}

void KeyParts::restart(std::string const& after) {
  parts_.clear();
  start_ = wanted_ = after;
  taken_ = kept_ = wasted_ = memory_ = 0;
  isIdle_ = false;
}

bool KeyParts::isFor(SubtreeRequest const& request) const {
  return listing_ && listing_->folder == request.folder && listing_->prefix == request.prefix &&
         listing_->isDelimited == request.isDelimited && listing_->withFacts == request.withFacts;
}

KeyParts::State KeyParts::seek(SubtreeRequest const& request, bool isCertain) {
  isCertain_ = isCertain;
  if (request.after != wanted_) {
    hasJumped_ = hasJumped_ || !parts_.empty();
    if (pagesAhead() != 0) runBefore_ = std::min(2 * runBefore_, longestRun);
    restart(request.after);
  }
  for (;;) {
    if (parts_.empty()) insert(parts_.end(), wanted_, request.page);
    Part& front = parts_.front();
    if (!front.ready.empty() && front.ready.front().isTrimmed) {
      Part const& next = *std::next(parts_.begin());
      if (next.ready.empty() && next.isBusy) return State::coming;
      if (!next.ready.empty() && !continues(front.ready.front(), next.ready.front())) {
        reopenFront();
        continue;
      }
      if (!front.ready.front().page.paths.empty()) return State::ready;
    } else if (!front.ready.empty()) {
      return State::ready;
    }
    if (!front.isClosed) {
      if (front.isBusy) return State::coming;
      if (front.hasFailed) {  // it may have begun in vain
        front.hasFailed = false;
        front.position = wanted_;
        front.nextPage = request.page;
      }
      return State::missing;
    }
    parts_.pop_front();
  }
}

// Whether the page that follows the trimmed one begins with what was left out of that. It doesn't if the store changes
// meanwhile, or lists in another order than that of bytes.
bool KeyParts::continues(Page const& trimmed, Page const& following) {
  SubtreePage const& page = following.page;
  std::string const& first = page.paths.empty() ? following.rest : page.paths.front();
  return trimmed.rest.empty() || !page.isOrdered || first == trimmed.rest;
}

// Forgets the parts after the first one, which is read on instead from where its last page was trimmed.
void KeyParts::reopenFront() {
  Part& front = parts_.front();
  Page& trimmed = front.ready.front();
  front.position = trimmed.page.paths.empty() ? trimmed.begin : trimmed.page.paths.back();
  front.nextPage.clear();
  front.isClosed = false;
  trimmed.isTrimmed = false;
  if (trimmed.page.paths.empty()) front.ready.pop_front();
  eraseAfter(parts_.begin());
}

void KeyParts::eraseAfter(Parts::iterator part) noexcept {
  for (auto next = std::next(part); next != parts_.end(); next = parts_.erase(next))
    for (Page const& page : next->ready) memory_ -= page.memory;
}

SubtreePage KeyParts::take() {
  isIdle_ = false;
  ++taken_;
  try {
    Page taken = takeFront();
    SubtreePage& page = taken.page;
    // The reader judges by a page whether it is worth to read on, so it gets full ones.
    if (auto const next = std::next(parts_.begin()); taken.isTrimmed && !next->ready.empty()) {
      parts_.pop_front();
      append(page, takeFront().page);
    }
    std::string reached = !page.position.empty() ? page.position : page.paths.empty() ? wanted_ : page.paths.back();
    if (auto past = pastHidden(reached)) reached = *std::move(past);
    wanted_ = std::move(reached);
    return std::move(taken.page);
  } catch (...) {
    parts_.clear();  // what was taken is lost, and fetched again
    memory_ = 0;
    throw;
  }
}

KeyParts::Page KeyParts::takeFront() {
  std::deque<Page>& ready = parts_.front().ready;
  Page taken = std::move(ready.front());
  memory_ -= taken.memory;
  ready.pop_front();
  return taken;
}

std::optional<std::string> KeyParts::pastHidden(std::string const& path) const {
  return listing_->isDelimited ? std::nullopt : visibility_.pastHidden(listing_->folder, path);
}

KeyParts::Fetch KeyParts::fetchWanted() {
  return fetch(parts_.front());
}

std::optional<KeyParts::Fetch> KeyParts::fetchAhead(Limits limits) {
  if (!mayFetchAhead(limits)) return std::nullopt;
  auto const isOpen = [&](Part const& part) {
    return !part.isBusy && !part.isClosed && !part.hasFailed && part.ready.size() < lengthOfParts(limits);
  };
  auto part = std::find_if(parts_.begin(), parts_.end(), isOpen);
  if (part == parts_.end()) part = split(limits);
  if (part != parts_.end()) return fetch(*part);
  isIdle_ = true;
  return std::nullopt;
}

bool KeyParts::mayFetchAhead(Limits limits) const {
  if (isIdle_ || parts_.empty() || (memory_ != 0 && memory_ >= limits.memory)) return false;
  return pagesAhead() < mostAhead(limits);
}

std::size_t KeyParts::pagesAhead() const noexcept {
  std::size_t ahead = 0;
  for (Part const& part : parts_) ahead += part.ready.size() + (part.isBusy ? 1 : 0);
  return ahead;
}

void KeyParts::add(Fetch const& fetch, SubtreePage page) {
  auto const part = find(fetch);
  if (part == parts_.end()) return;
  isIdle_ = false;
  part->isBusy = false;
  if (!page.isOrdered) {  // nothing more can be learned by pages
    eraseAfter(part);
    part->ready.push_back({std::move(page), 0, false, {}, {}});
    part->isClosed = true;
    return;
  }
  ++part->pages;
  part->nextPage = page.nextPage;
  if (!page.last) part->learnFrom(page.paths);
  std::string begin = part->position;
  if (!page.paths.empty()) part->position = std::max(part->position, page.paths.back());
  part->position = std::max(part->position, page.position);
  if (auto past = pastHidden(part->position)) {
    part->position = *std::move(past);
    part->nextPage.clear();
  }
  auto next = std::next(part);
  // A part that hasn't read anything yet isn't needed if this page goes beyond it, or if nothing is there.
  while (next != parts_.end() && next->pages == 0 && (page.last || (!next->isBusy && next->begin <= part->position)))
    next = parts_.erase(next);
  bool const reachesNext = next != parts_.end() && (page.last || part->position >= next->begin);
  bool const isClosed = page.last || reachesNext;
  fullPage_ = std::max(fullPage_, page.paths.size());
  std::string rest = reachesNext ? trim(page, next->begin) : std::string();
  std::size_t const kept = page.paths.size();
  std::size_t const memory = kept == 0 ? 0 : memoryOf(page);
  part->ready.push_back({std::move(page), memory, reachesNext, std::move(begin), std::move(rest)});
  part->isClosed = isClosed;
  wasted_ += reachesNext ? fullPage_ - kept : 0;
  kept_ += kept;
  memory_ += memory;
}

void KeyParts::Part::learnFrom(std::vector<std::string> const& paths) {
  if (paths.empty()) return;
  spacing = KeySpacing(paths);
  first = paths.front();
  last = paths.back();
}

void KeyParts::fail(Fetch const& fetch) noexcept {
  auto const part = find(fetch);
  if (part == parts_.end()) return;
  part->isBusy = false;
  part->hasFailed = true;
}

KeyParts::Parts::iterator KeyParts::insert(Parts::iterator next, std::string const& begin, std::string const& page) {
  return parts_.insert(next, Part{.id = ++lastId_, .begin = begin, .position = begin, .nextPage = page});
}

KeyParts::Parts::iterator KeyParts::find(Fetch const& fetch) noexcept {
  return std::find_if(parts_.begin(), parts_.end(), [&](Part const& part) { return part.id == fetch.part; });
}

KeyParts::Fetch KeyParts::fetch(Part& part) {
  Fetch result{part.id, *listing_};
  result.request.after = part.position;
  result.request.page = part.nextPage;
  part.isBusy = true;
  return result;
}

// A listing that may end at any time, or was continued somewhere else, is read only as far ahead as it was read in a
// row.
std::size_t KeyParts::mostAhead(Limits limits) const noexcept {
  std::size_t const most = pagesForEach * limits.inFlight;
  return isCertain_ && !hasJumped_ ? most : std::min(most, taken_ < runBefore_ ? 0 : taken_);
}

}  // namespace foundation::storage::vfs
