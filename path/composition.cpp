#include "korvan/io/path.hpp"
#include "path/path_access.hpp"

namespace korvan::io::internal {
namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;

// The path with the text appended, reusing the memory of `buffer`.
upath appended(upath const& path, std::u16string const& text, std::u16string buffer = {}) {
  if (path.native() == fl::filesystem::detail::extract_root_name(path.native())) {
    buffer.assign(path.native()).append(text);
    return upath(std::move(buffer));
  }
  buffer.reserve(path.native().size() + text.size() + 1);
  buffer.assign(path.native());
  if (!text.empty()) fl::filesystem::detail::concatenate_pathname(buffer, text, path.flag());
  return {std::move(buffer), path.flag()};
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

void PathAccess::assignJoined(Path& result, Path const& folder, std::u16string const& name) {
  auto const* const local = std::get_if<upath>(&folder.location_);
  auto* const reused = std::get_if<upath>(&result.location_);
  if (local != nullptr && reused != nullptr) {
    *reused = appended(*local, name, std::move(*reused).native());
  } else {
    result = folder / name;
  }
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
