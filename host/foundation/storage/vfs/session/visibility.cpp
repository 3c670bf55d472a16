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
      needsStart_(policy.oneFileSystem || policy.reportRefusals || policy.maximumDepth ||
                  !policy.excludedNames.empty()),
      maximumDepth_(policy.maximumDepth.value_or(unlimited)),
      excluded_(policy.excludedNames.begin(), policy.excludedNames.end()) {}

bool Visibility::hides(std::string_view name) const {
  return std::any_of(excluded_.begin(), excluded_.end(), [&](NameFilter const& each) { return each.matches(name); });
}

std::size_t Visibility::levelsBelow(AbsoluteIRI const& folder) const noexcept {
  if (maximumDepth_ == unlimited) return unlimited;
  std::size_t const deepest = startDepth() + maximumDepth_;
  return deepest - std::min(deepest, depthOf(folder));
}

bool Visibility::descendsFrom(AbsoluteIRI const& folder) const noexcept {
  std::size_t const levels = levelsBelow(folder);
  return levels > 1 || (levels == 1 && maximumDepth_ > 1);
}

std::optional<Visibility::HiddenPart> Visibility::hiddenPart(AbsoluteIRI const& folder, std::string_view path) const {
  std::size_t levels = levelsBelow(folder);
  if (excluded_.empty() && levels == unlimited) return std::nullopt;
  for (std::size_t begin = 0; begin < path.size(); --levels) {
    if (levels == 0) return HiddenPart{begin, begin};
    std::size_t const end = std::min(path.find('/', begin), path.size());
    std::size_t const next = std::min(end + 1, path.size());
    if (hides(path.substr(begin, end - begin))) return HiddenPart{begin, next};
    begin = next;
  }
  return std::nullopt;
}

std::optional<std::string> Visibility::pastHidden(AbsoluteIRI const& folder, std::string_view path) const {
  constexpr std::string_view greatestCharacter = "\xF4\x8F\xBF\xBF";  // U+10FFFF
  auto const hidden = hiddenPart(folder, path);
  if (!hidden || hidden->end == 0 || path[hidden->end - 1] != '/') return std::nullopt;
  std::string past(path.substr(0, hidden->end));
  past += greatestCharacter;
  return past > path ? std::optional(past) : std::nullopt;
}

void Visibility::setStart(AbsoluteIRI const& folder, std::uint64_t device) {
  start_ = folder;
  startDepth_.store(depthOf(folder), std::memory_order_relaxed);
  device_.store(device, std::memory_order_relaxed);
}

bool Visibility::isBelowStart(AbsoluteIRI const& location) const {
  if (!start_) return false;
  auto const below = writtenBelow(*start_, location);
  return below && !below->empty();
}

bool Visibility::hides(AbsoluteIRI const& location) const {
  auto const below = start_ ? writtenBelow(*start_, location) : std::nullopt;
  if (!below) return false;
  std::string path;
  iri_text::appendDecodedBytes(path, *below);
  return hiddenPart(*start_, path).has_value();
}

}  // namespace foundation::storage::vfs
