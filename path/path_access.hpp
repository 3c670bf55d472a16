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

  /// As `Path::string` without a trailing separator, without a copy. Valid until the path changes.
  static std::u16string const& text(Path const& path) {
    if (auto const* const local = std::get_if<fl::filesystem::upath>(&path.location_)) return local->native();
    return std::get<foundation::storage::vfs::AbsoluteIRI>(path.location_).toString();
  }

  /// Makes `result` what `folder / name` gives, in the memory that it has. Not the same path as `folder`.
  static void assignJoined(Path& result, Path const& folder, std::u16string const& name);

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
