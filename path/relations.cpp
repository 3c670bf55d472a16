#include <stdexcept>

#include "fl/filesystem/operations.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "korvan/io/path.hpp"
#include "path/path_access.hpp"
#include "path/resolve_against_iri.hpp"

namespace korvan::io::internal {
namespace {

using fl::filesystem::upath;
using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::toAbsoluteIRI;

Path relativeIRI(AbsoluteIRI const& p, AbsoluteIRI const& base) {
  std::u16string text;
  try {
    text = p.makePathRelativeTo(base);
  } catch (std::runtime_error const&) {
    text.clear();  // there is no relative path between them
  }
  return Path(text);
}

}  // namespace

Path relative(Path const& p, Path const& base) {
  return std::visit(
      Overloaded{
          [](upath const& path, upath const& from) { return PathAccess::make(fl::filesystem::relative(path, from)); },
          [](upath const& path, AbsoluteIRI const& from) { return relativeIRI(resolveAgainstIRI(path, from), from); },
          [](AbsoluteIRI const& iri, upath const& from) { return relativeIRI(iri, toAbsoluteIRI(u"file", from)); },
          [](AbsoluteIRI const& iri, AbsoluteIRI const& from) { return relativeIRI(iri, from); }},
      PathAccess::location(p), PathAccess::location(base));
}

bool isSameFile(Path const& a, Path const& b) {
  return std::visit(
      Overloaded{[](upath const& first, upath const& second) { return fl::filesystem::equivalent(first, second); },
                 [&](upath const& /*first*/, AbsoluteIRI const& /*second*/) { return isSameFile(b, a); },
                 [](AbsoluteIRI const& first, upath const& second) {
                   return first.getResolvedIRI() == toAbsoluteIRI(u"file", second).getResolvedIRI();
                 },
                 [](AbsoluteIRI const& first, AbsoluteIRI const& second) {
                   return first.getResolvedIRI() == second.getResolvedIRI();
                 }},
      PathAccess::location(a), PathAccess::location(b));
}

}  // namespace korvan::io::internal
