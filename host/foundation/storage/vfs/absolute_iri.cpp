#include "foundation/storage/vfs/absolute_iri.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include "foundation/core/text/ascii.hpp"
#include "foundation/storage/vfs/detail/iri_access.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {
namespace {

constexpr std::size_t schemeSeparatorLength = 3;  // "://"

// Where the path begins that follows a scheme of that length and an authority, which may be empty.
std::size_t pathStartOf(std::u16string_view text, std::size_t schemeLength) {
  return std::min(text.find(u'/', schemeLength + schemeSeparatorLength), text.size());
}

// The decoded elements of a path with "." and ".." resolved and without empty ones, which no provider takes for a
// folder; none for the root.
std::vector<std::u16string> resolvedElements(std::u16string_view encodedPath) {
  std::vector<std::u16string> elements;
  while (!encodedPath.empty()) {
    std::size_t const end = std::min(encodedPath.find(u'/'), encodedPath.size());
    std::u16string element = iri_text::decoded(encodedPath.substr(0, end));
    encodedPath.remove_prefix(std::min(end + 1, encodedPath.size()));
    if (element == u"..") {
      if (!elements.empty()) elements.pop_back();
    } else if (!element.empty() && element != u".") {
      elements.push_back(std::move(element));
    }
  }
  return elements;
}

}  // namespace

bool hasIRIPrefix(std::u16string const& text) noexcept {
  return iri_text::schemeLength(text) != 0;
}

AbsoluteIRI::AbsoluteIRI(std::u16string const& text) {
  assignParsed(text);
}

AbsoluteIRI::AbsoluteIRI(AbsoluteIRI const& base, std::u16string const& text) {
  if (hasIRIPrefix(text)) {
    assignParsed(text);
    return;
  }
  schemeLength_ = base.schemeLength_;
  pathStart_ = base.pathStart_;
  std::u16string_view below = text;
  bool const beginsWithAuthority = base.isFolderOfAuthorities();
  if (beginsWithAuthority) below.remove_prefix(iri_text::authorityStart(below));
  bool const fromRoot = below.starts_with(u'/');
  std::size_t const baseLength = fromRoot ? pathStart_ : base.text_.size();
  text_.reserve(baseLength + below.size() + 1);
  text_.append(base.text_, 0, baseLength);
  if (below.empty()) return;
  if (!fromRoot && (baseLength == pathStart_ || text_.back() != u'/')) text_.push_back(u'/');
  if (!iri_text::appendEncoded(text_, below)) throw InvalidIRIException(text, "it contains half of a surrogate pair");
  if (beginsWithAuthority) pathStart_ = static_cast<std::uint32_t>(pathStartOf(text_, schemeLength_));
}

AbsoluteIRI AbsoluteIRI::fromWrittenForm(std::u16string text, std::uint32_t schemeLength,
                                         std::uint32_t pathStart) noexcept {
  AbsoluteIRI iri;
  iri.text_ = std::move(text);
  iri.schemeLength_ = schemeLength;
  iri.pathStart_ = pathStart;
  return iri;
}

void AbsoluteIRI::assignParsed(std::u16string const& text) {
  std::size_t const schemeLength = iri_text::schemeLength(text);
  if (schemeLength == 0) throw InvalidIRIException(text, "it doesn't begin with a scheme and \"://\"");
  std::u16string_view const view = text;
  std::u16string const scheme = core::text::lowerCase(view.substr(0, schemeLength));
  Provider::Authority const use = StorageSystem::instance().provider(scheme)->authority();

  std::size_t const authorityStart = schemeLength + schemeSeparatorLength;
  std::size_t const pathStart = pathStartOf(view, schemeLength);
  std::u16string_view authority = view.substr(authorityStart, pathStart - authorityStart);
  if (use == Provider::Authority::empty) {
    if (core::text::lowerCase(authority) == u"localhost") authority = {};
    if (!authority.empty()) {
      throw InvalidIRIException(text, "IRIs of this scheme name no host: write three slashes before the path");
    }
  } else if (authority.empty()) {
    if (pathStart != view.size()) {
      throw InvalidIRIException(text, "an IRI of this scheme needs a name, such as a bucket's, after \"://\"");
    }
    *this = IRIAccess::folderOfAuthorities(scheme);
    return;
  }

  std::u16string written = scheme + u"://";
  char const* problem = iri_text::appendNormalized(written, authority);
  std::size_t const writtenPathStart = written.size();
  if (problem == nullptr) problem = iri_text::appendNormalized(written, view.substr(pathStart));
  if (problem != nullptr) throw InvalidIRIException(text, problem);
  *this = fromWrittenForm(std::move(written), static_cast<std::uint32_t>(schemeLength),
                          static_cast<std::uint32_t>(writtenPathStart));
}

std::u16string AbsoluteIRI::getScheme() const {
  return text_.substr(0, schemeLength_);
}

std::u16string_view AbsoluteIRI::authority() const noexcept {
  std::size_t const start = std::min<std::size_t>(schemeLength_ + schemeSeparatorLength, pathStart_);
  return std::u16string_view(text_).substr(start, pathStart_ - start);
}

std::u16string_view AbsoluteIRI::encodedPath() const noexcept {
  return std::u16string_view(text_).substr(pathStart_);
}

bool AbsoluteIRI::hasParent() const noexcept {
  return text_.size() > pathStart_ + std::size_t{1};
}

AbsoluteIRI AbsoluteIRI::getParent() const {
  if (!hasParent()) return *this;
  std::size_t const separator = iri_text::lastElement(encodedPath()) - 1;
  return fromWrittenForm(text_.substr(0, pathStart_ + std::max<std::size_t>(separator, 1)), schemeLength_, pathStart_);
}

std::u16string AbsoluteIRI::getName() const {
  std::u16string_view const path = encodedPath();
  return iri_text::decoded(path.substr(iri_text::lastElement(path)));
}

AbsoluteIRI AbsoluteIRI::getResolvedIRI() const {
  std::u16string text = text_.substr(0, pathStart_);
  for (std::u16string const& element : resolvedElements(encodedPath())) {
    text.push_back(u'/');
    iri_text::appendEncoded(text, element);
  }
  if (text.size() == pathStart_) text.push_back(u'/');
  return fromWrittenForm(std::move(text), schemeLength_, pathStart_);
}

std::u16string AbsoluteIRI::makePathRelativeTo(AbsoluteIRI const& base) const {
  if (text_.compare(0, pathStart_, base.text_, 0, base.pathStart_) != 0) {
    throw std::runtime_error("no relative path leads from one scheme or authority to another");
  }
  std::vector<std::u16string> const to = resolvedElements(encodedPath());
  std::vector<std::u16string> const from = resolvedElements(base.encodedPath());
  if (to == from) return u".";
  auto const [toRest, fromRest] = std::mismatch(to.begin(), to.end(), from.begin(), from.end());
  std::vector<std::u16string> steps(static_cast<std::size_t>(from.end() - fromRest), u"..");
  steps.insert(steps.end(), toRest, to.end());
  std::u16string path;
  for (std::u16string const& step : steps) {
    if (&step != &steps.front()) path.push_back(u'/');
    path += step;
  }
  return path;
}

}  // namespace foundation::storage::vfs
