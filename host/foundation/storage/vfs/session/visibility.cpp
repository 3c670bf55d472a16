#include "foundation/storage/vfs/session/visibility.hpp"

#include <algorithm>

#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/detail/location_key.hpp"

namespace foundation::storage::vfs {

Visibility::Visibility(SessionPolicy const& policy)
    : followsLinks_(policy.followLinks),
      staysOnDevice_(policy.oneFileSystem),
      reportsRefusals_(policy.reportRefusals),
      collectsFacts_(policy.collectFacts),
      maxDepth_(policy.maxDepth),
      needsStart_(policy.oneFileSystem || maxDepth_ != 0 || policy.reportRefusals || !policy.excludedNames.empty()),
      excluded_(policy.excludedNames.begin(), policy.excludedNames.end()) {}

bool Visibility::hides(std::string_view name) const {
  return std::any_of(excluded_.begin(), excluded_.end(), [&](NameFilter const& each) { return each.matches(name); });
}

std::optional<Visibility::HiddenPart> Visibility::hiddenPart(std::string_view path) const {
  if (excluded_.empty()) return std::nullopt;
  for (std::size_t begin = 0; begin < path.size();) {
    std::size_t const end = std::min(path.find('/', begin), path.size());
    std::size_t const next = std::min(end + 1, path.size());
    if (hides(path.substr(begin, end - begin))) return HiddenPart{begin, next};
    begin = next;
  }
  return std::nullopt;
}

void Visibility::setStart(AbsoluteIRI const& folder, std::uint64_t device) {
  start_ = folder;
  device_.store(device, std::memory_order_relaxed);
}

bool Visibility::isBelowStart(AbsoluteIRI const& location) const {
  if (!start_) return false;
  auto const below = writtenBelow(*start_, location);
  return below && !below->empty();
}

// The number of levels below the start; 0 elsewhere.
std::size_t Visibility::depth(AbsoluteIRI const& location) const {
  auto const below = start_ ? writtenBelow(*start_, location) : std::nullopt;
  if (!below || below->empty()) return 0;
  return static_cast<std::size_t>(std::count(below->begin(), below->end(), u'/')) + 1;
}

bool Visibility::hides(AbsoluteIRI const& location) const {
  auto const below = start_ && !excluded_.empty() ? writtenBelow(*start_, location) : std::nullopt;
  if (!below) return false;
  std::string path;
  iri_text::appendDecodedBytes(path, *below);
  return hiddenPart(path).has_value();
}

}  // namespace foundation::storage::vfs
