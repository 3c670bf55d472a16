#pragma once

#include <utility>

#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// Lets the library's own sources look into a path and make one without a copy; not installed.
struct PathAccess {
  static Path::Location const& location(Path const& path) noexcept { return path.location_; }
  static Path::Location& location(Path& path) noexcept { return path.location_; }

  template <class Alternative>
  static Path make(Alternative&& location) {
    return Path(std::in_place, std::forward<Alternative>(location));
  }

  /// As `Path::string` without a trailing separator, without a copy of a local path's text.
  static std::u16string string(Path&& path) {
    if (auto* const local = std::get_if<fl::filesystem::upath>(&path.location_)) return std::move(*local).native();
    return path.string(false);
  }

  /// As `Path::generic` without a trailing separator, without a copy where generic and native form are one. Valid as
  /// long as the path and `buffer`, which the text may be put in.
  static std::u16string const& generic(Path const& path, std::u16string& buffer) {
    using namespace fl::filesystem::upath_constant;
    if constexpr (PATHNAME_SEPARATOR[0] == GENERIC_PATHNAME_SEPARATOR[0]) {
      if (auto const* const local = std::get_if<fl::filesystem::upath>(&path.location_)) return local->native();
    }
    return buffer = path.generic(false);
  }

  /// As `Path::toIRI`, without a copy of an IRI that the path holds.
  static foundation::storage::vfs::AbsoluteIRI toIRI(Path&& path) {
    if (auto* const iri = std::get_if<foundation::storage::vfs::AbsoluteIRI>(&path.location_)) return std::move(*iri);
    return path.toIRI();
  }
};

/// Chooses by the kind of a path in `std::visit`.
template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace korvan::io::internal
