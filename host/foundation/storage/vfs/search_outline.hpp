#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::vfs {

/// What a search is going to ask of the storage layer: the folder where it begins, and the segments by which it
/// continues from each folder that it reaches to entries below it. See `ReadSession::announce`.
struct SearchOutline {
  /// How a segment continues.
  enum class Match : std::uint8_t {
    name,     ///< to the entry of that name, for whose existence it asks; an empty name is the folder itself
    filter,   ///< to the entries whose names match the text as a filter of `Folder::listAll`
    descent,  ///< to the folder itself and every folder below it at any depth
  };
  struct Segment {
    Match match;
    std::u16string text;  ///< decoded, without "/"; ignored for a descent
  };

  AbsoluteIRI start;
  std::vector<Segment> segments;
  /// Whether descents and filters match names that begin with "."; a filter that itself begins with "." always does.
  bool includeDotFiles = false;
};

}  // namespace foundation::storage::vfs
