#include "glob/pattern_plan.hpp"

#include <algorithm>
#include <utility>

#include "foundation/storage/vfs/conversion.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {
namespace {

using foundation::storage::vfs::AbsoluteIRI;

constexpr char16_t wildcard = u'*';
constexpr char16_t nativeSeparator = fl::filesystem::upath_constant::PATHNAME_SEPARATOR[0];
constexpr char16_t iriSeparator = u'/';

template <class Visit>
void forEachElement(std::u16string_view text, char16_t separator, Visit visit) {
  for (;;) {
    std::size_t const end = text.find(separator);
    visit(text.substr(0, end));
    if (end == std::u16string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

bool hasWildcard(std::u16string_view text) noexcept {
  return text.find(wildcard) != std::u16string_view::npos;
}

SegmentClass classOf(std::u16string_view segment) noexcept {
  if (!hasWildcard(segment)) return SegmentClass::literal;
  return segment == u"**" ? SegmentClass::doubleStar : SegmentClass::wildcard;
}

// The path library splits the pattern before its first element with a wildcard, since what precedes it may contain a
// root; from there on, every separator ends an element.
PatternPlan::PatternPlan(Path const& pattern) {
  std::u16string_view const text = PathAccess::text(pattern);
  std::size_t const first = text.find(wildcard);
  auto const* const iri = std::get_if<AbsoluteIRI>(&PathAccess::location(pattern));
  if (iri != nullptr && first < text.size() - iri->encodedPath().size()) {
    // A "*" in the authority, such as a bucket's name, matches entries of the folder of all authorities. `Path::parent`
    // doesn't lead there, since it must not leave a root, and an authority is one: so the pattern is split here.
    start_ = Path(iri->getScheme() + u"://");
    add(foundation::storage::vfs::decodedElement(iri->authority()));
    if (std::u16string_view const path = iri->encodedPath(); !path.empty()) addEncoded(path.substr(1));
    return;
  }
  std::size_t const end = text.find(iri != nullptr ? iriSeparator : nativeSeparator, first);
  std::u16string written(text.substr(0, end));
  Path const head = iri != nullptr ? Path(written) : PathAccess::make(fl::filesystem::upath(std::move(written)));
  start_ = head.parent();
  add(head.name());
  if (end == std::u16string_view::npos) return;
  if (iri != nullptr) {
    addEncoded(text.substr(end + 1));
  } else {
    addNative(text.substr(end + 1));
  }
}

std::u16string_view PatternPlan::text(std::size_t segment) const noexcept {
  return std::u16string_view(text_).substr(segments_[segment].begin, segments_[segment].length);
}

void PatternPlan::add(std::u16string_view segment) {
  SegmentClass const segmentClass = classOf(segment);
  if (segmentClass == SegmentClass::doubleStar && ++doubleStars_ == 2) firstRevisited_ = segments_.size();
  segments_.push_back({text_.size(), segment.size(), segmentClass});
  text_ += segment;
}

void PatternPlan::addEncoded(std::u16string_view writtenSegments) {
  forEachElement(writtenSegments, iriSeparator,
                 [this](std::u16string_view written) { add(foundation::storage::vfs::decodedElement(written)); });
}

void PatternPlan::addNative(std::u16string_view segments) {
  forEachElement(segments, nativeSeparator, [this](std::u16string_view segment) { add(segment); });
}

}  // namespace korvan::io::internal
