#pragma once

#include <utility>

#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// Gives the library's own sources access to a path's content without copying it; not installed.
struct PathAccess {
  static Path::Location const& location(Path const& path) noexcept { return path.location_; }
  static Path::Location& location(Path& path) noexcept { return path.location_; }

  template <class Alternative>
  static Path make(Alternative&& location) {
    return Path(std::in_place, std::forward<Alternative>(location));
  }

  /// As `Path::string(false)`, but without a copy. Valid until the path changes.
  static std::u16string const& text(Path const& path) {
    if (auto const* const local = std::get_if<fl::filesystem::upath>(&path.location_)) return local->native();
    return std::get<foundation::storage::vfs::AbsoluteIRI>(path.location_).toString();
  }

  /// Assigns `folder / name` to `result`, reusing its memory. The two paths must be different objects.
  static void assignJoined(Path& result, Path const& folder, std::u16string const& name);

  /// The text of a local path, to be changed in place, in native form; null for an IRI.
  static std::u16string* localText(Path& path) noexcept {
    auto* const local = std::get_if<fl::filesystem::upath>(&path.location_);
    return local == nullptr ? nullptr : &local->native();
  }

  /// As `Path::toIRI`, but moves the path's IRI, if it is one, instead of copying it.
  static foundation::storage::vfs::AbsoluteIRI toIRI(Path&& path) {
    if (auto* const iri = std::get_if<foundation::storage::vfs::AbsoluteIRI>(&path.location_)) return std::move(*iri);
    return path.toIRI();
  }
};

/// One overload for each kind of path, for `std::visit`.
template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace korvan::io::internal
