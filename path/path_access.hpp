#pragma once

#include <utility>

#include "path/path.hpp"

namespace korvan::io::internal {

/// Lets the library's own sources look into a path and make one without a copy; not installed.
struct PathAccess {
  static Path::Location const& location(Path const& path) noexcept { return path.location_; }
  static Path::Location& location(Path& path) noexcept { return path.location_; }

  template <class Alternative>
  static Path make(Alternative&& location) {
    Path path;
    path.location_ = std::forward<Alternative>(location);
    return path;
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
