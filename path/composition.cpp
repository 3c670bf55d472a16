#include "korvan/io/path.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {
namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;

upath appended(upath const& path, std::u16string const& text) {
  if (path.native() == fl::filesystem::detail::extract_root_name(path.native())) return upath(path.native() + text);
  if (text.empty()) return path;
  std::u16string longer;
  longer.reserve(path.native().size() + text.size() + 1);
  longer = path.native();
  fl::filesystem::detail::concatenate_pathname(longer, text, path.flag());
  return {std::move(longer), path.flag()};
}

}  // namespace

Path& Path::append(std::u16string const& text) {
  std::visit(Overloaded{[&](upath& path) { path = appended(path, text); },
                        [&](AbsoluteIRI& iri) { iri = AbsoluteIRI(iri, text); }},
             location_);
  return *this;
}

Path operator/(Path const& path, std::u16string const& text) {
  return std::visit(Overloaded{[&](upath const& local) { return PathAccess::make(appended(local, text)); },
                               [&](AbsoluteIRI const& iri) { return PathAccess::make(AbsoluteIRI(iri, text)); }},
                    PathAccess::location(path));
}

Path Path::parent() const {
  return std::visit(
      Overloaded{[](upath const& path) {
                   return PathAccess::make(
                       upath(fl::filesystem::detail::extract_pathname_elements(path.native()).parent));
                 },
                 [](AbsoluteIRI const& iri) { return PathAccess::make(iri.hasParent() ? iri.getParent() : iri); }},
      location_);
}

std::u16string Path::name() const {
  return std::visit(Overloaded{[](upath const& path) {
                                 return fl::filesystem::detail::extract_pathname_elements(path.native()).name;
                               },
                               [](AbsoluteIRI const& iri) { return iri.getName(); }},
                    location_);
}

}  // namespace korvan::io::internal
