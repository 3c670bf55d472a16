#include "fl/filesystem/operations.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "korvan/io/path.hpp"
#include "path/path_access.hpp"
#include "path/resolve_against_iri.hpp"

namespace korvan::io::internal {
namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;

upath absoluteLocal(upath const& path, upath const& base) {
  if (!path.empty()) return fl::filesystem::absolute(path, base);
  // The empty path is the base itself. It is resolved as ".", which is then removed again.
  return upath(fl::filesystem::detail::extract_parent_path(fl::filesystem::absolute(upath(u"."), base).native()));
}

}  // namespace

AbsoluteIRI resolveAgainstIRI(upath const& path, AbsoluteIRI const& base) {
  std::u16string const& expanded = fl::filesystem::detail::make_expanded_path(path.native(), path.flag());
  if (fl::filesystem::detail::is_absolute(expanded)) {
    return foundation::storage::vfs::toAbsoluteIRI(base.getScheme(), upath(expanded));
  }
  return {base, expanded};
}

bool isAbsolute(Path const& p) {
  return std::visit(Overloaded{[](upath const& path) { return fl::filesystem::detail::is_absolute(path.native()); },
                               [](AbsoluteIRI const& /*iri*/) { return true; }},
                    PathAccess::location(p));
}

Path absolute(Path const& p, Path const& base) {
  return std::visit(
      Overloaded{[&](upath const& path) {
                   return std::visit(
                       Overloaded{
                           [&](upath const& local) { return PathAccess::make(absoluteLocal(path, local)); },
                           [&](AbsoluteIRI const& iri) { return PathAccess::make(resolveAgainstIRI(path, iri)); }},
                       PathAccess::location(base));
                 },
                 [&](AbsoluteIRI const& /*iri*/) { return p; }},
      PathAccess::location(p));
}

Path canonical(Path const& p, Path const& base) {
  return std::visit(Overloaded{[&](upath const& path) {
                                 return std::visit(Overloaded{[&](upath const& local) {
                                                                return PathAccess::make(fl::filesystem::canonical(
                                                                    path.empty() ? upath(u".") : path, local));
                                                              },
                                                              [&](AbsoluteIRI const& iri) {
                                                                return PathAccess::make(
                                                                    resolveAgainstIRI(path, iri).getResolvedIRI());
                                                              }},
                                                   PathAccess::location(base));
                               },
                               [](AbsoluteIRI const& iri) { return PathAccess::make(iri.getResolvedIRI()); }},
                    PathAccess::location(p));
}

}  // namespace korvan::io::internal
