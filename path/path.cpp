#include "korvan/io/path.hpp"

#include "foundation/storage/vfs/conversion.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {
namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;

std::u16string ensureTrailingSeparator(std::u16string text, char16_t separator) {
  if (!text.empty() && text.back() != separator) text.push_back(separator);
  return text;
}

}  // namespace

Path::Path() = default;

Path::Path(upath const& path) : location_(path) {}

Path::Path(AbsoluteIRI const& iri) : location_(iri) {}

Path::Path(std::u16string const& text)
    : location_(foundation::storage::vfs::hasIRIPrefix(text) ? Location(AbsoluteIRI(text)) : Location(upath(text))) {}

bool Path::empty() const {
  return std::visit(Overloaded{[](upath const& path) { return path.native().empty(); },
                               [](AbsoluteIRI const& /*iri*/) { return false; }},
                    location_);
}

std::u16string Path::string(bool trailingSeparator) const {
  auto const finish = [&](std::u16string const& text, char16_t separator) {
    return trailingSeparator ? ensureTrailingSeparator(text, separator) : text;
  };
  return std::visit(Overloaded{[&](upath const& path) {
                                 return finish(path.native(), fl::filesystem::upath_constant::PATHNAME_SEPARATOR[0]);
                               },
                               [&](AbsoluteIRI const& iri) { return finish(iri.toString(), u'/'); }},
                    location_);
}

std::u16string Path::generic(bool trailingSeparator) const {
  return std::visit(Overloaded{[&](upath const& path) {
                                 std::u16string text = fl::filesystem::detail::make_generic_form(path.native());
                                 constexpr char16_t separator =
                                     fl::filesystem::upath_constant::GENERIC_PATHNAME_SEPARATOR[0];
                                 return trailingSeparator ? ensureTrailingSeparator(std::move(text), separator) : text;
                               },
                               [&](AbsoluteIRI const& /*iri*/) { return string(trailingSeparator); }},
                    location_);
}

AbsoluteIRI Path::toIRI() const {
  return std::visit(Overloaded{[](upath const& path) { return foundation::storage::vfs::toAbsoluteIRI(u"file", path); },
                               [](AbsoluteIRI const& iri) { return iri; }},
                    location_);
}

Path::Location Path::location() const {
  return location_;
}

bool Path::operator==(Path const& other) const {
  if (location_.index() != other.location_.index()) return false;
  if (auto const* const iri = std::get_if<AbsoluteIRI>(&location_))
    return *iri == *std::get_if<AbsoluteIRI>(&other.location_);
  if (auto const* const path = std::get_if<upath>(&location_)) {
    return path->native() == std::get_if<upath>(&other.location_)->native();
  }
  return true;
}

bool Path::operator!=(Path const& other) const {
  auto const* const iri = std::get_if<AbsoluteIRI>(&location_);
  auto const* const otherIri = std::get_if<AbsoluteIRI>(&other.location_);
  return iri != nullptr && otherIri != nullptr ? *iri != *otherIri : !(*this == other);
}

}  // namespace korvan::io::internal
