// Where the parts of a listing begin.

#include <algorithm>
#include <cmath>
#include <iterator>

#include "foundation/storage/vfs/session/key_parts.hpp"

namespace foundation::storage::vfs {
namespace {

// The pages of a part, with a full window: each part costs about half a request more than its pages.
constexpr std::size_t longestPart = 4;

// So many names of folders show well enough where keys are.
constexpr std::size_t mostFolders = 4096;

}  // namespace

std::size_t KeyParts::lengthOfParts(Limits limits) noexcept {
  return std::clamp<std::size_t>(limits.inFlight / 2, 1, longestPart);
}

std::size_t KeyParts::indexAfter(std::vector<std::string> const& paths, std::string_view path) {
  return static_cast<std::size_t>(std::upper_bound(paths.begin(), paths.end(), path) - paths.begin());
}

void KeyParts::addFolders(std::vector<std::string> const& folders) {
  std::size_t const step = 1 + folders.size() / mostFolders;
  for (std::size_t i = 0; i < folders.size(); i += step) folders_.push_back(folders[i]);
  std::sort(folders_.begin(), folders_.end());
  folders_.erase(std::unique(folders_.begin(), folders_.end()), folders_.end());
  if (folders_.size() > mostFolders) {
    std::size_t index = 0;
    std::erase_if(folders_, [&](std::string const&) { return index++ % 2 != 0; });
  }
  isIdle_ = false;
}

// Begins another part where the keys up to the next one are likely to be many; the end of the parts if there is no such
// place, or if too many requests are, or may turn out to be, for what other parts have.
KeyParts::Parts::iterator KeyParts::split(Limits limits) {
  std::size_t const begun = static_cast<std::size_t>(
      std::count_if(parts_.begin(), parts_.end(), [](Part const& part) { return part.pages == 0; }));
  std::size_t const mostWasted = kept_ / 2 + std::min(kept_ / 2, limits.inFlight * fullPage_);
  if (limits.inFlight < 2 || wasted_ + begun * fullPage_ > mostWasted) return parts_.end();
  std::size_t const length = lengthOfParts(limits);
  for (auto part = parts_.begin(); part != parts_.end(); ++part) {
    if (part->isClosed || part->hasFailed) continue;
    auto const next = std::next(part);
    std::size_t const pages = part->pages < length ? length - part->pages : length;
    std::string begin = pointAfter(part, pages);
    if (begin <= part->position) continue;
    // The next part should be at least a page away.
    if (next != parts_.end()) {
      std::string const last = pointAfter(part, pages + 1);
      if (last.empty() || last >= next->begin || begin >= next->begin) continue;
    }
    return insert(next, begin, {});
  }
  return parts_.end();
}

// Where the keys about so many pages after the part's position begin; empty if nothing shows that.
std::string KeyParts::pointAfter(Parts::const_iterator part, std::size_t pages) const {
  auto known = part;
  while (known->last.empty() && known != parts_.begin()) --known;
  std::string const& from = part->position;
  std::string point = known->spacing.after(from, static_cast<double>(pages));
  if (listing_->isDelimited) point.resize(std::min(point.size(), point.find('/')));
  std::size_t const next = indexAfter(folders_, from);
  if (next == folders_.size()) return point;
  auto const inPage = static_cast<double>(indexAfter(folders_, known->last) - indexAfter(folders_, known->first));
  auto const passed = static_cast<double>(indexAfter(folders_, wanted_) - indexAfter(folders_, start_));
  double const foldersInPage = inPage >= 2 ? inPage : passed / static_cast<double>(std::max<std::size_t>(taken_, 1));
  auto const wanted = std::llround(static_cast<double>(pages) * foldersInPage);
  if (wanted < 1) return point.empty() ? folders_[next] : std::min(point, folders_[next]);
  std::size_t const index = next - 1 + static_cast<std::size_t>(wanted);
  return index < folders_.size() ? folders_[index] : std::string();
}

}  // namespace foundation::storage::vfs
