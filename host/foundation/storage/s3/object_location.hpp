#pragma once

#include <string>
#include <string_view>

#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::s3 {

/// What an IRI names in the store.
struct Place {
  std::string bucket;       ///< as bytes; may be one that no store can have
  std::string key;          ///< without "/" at either end; empty for the bucket itself
  bool folderOnly = false;  ///< the IRI ends in "/", "." or "..": an object isn't meant

  /// What the keys of everything in that folder begin with: the key and "/", nothing for a bucket.
  std::string folderPrefix() const { return key.empty() ? std::string() : key + '/'; }

  /// Whether the store can have it: a bucket name that isn't empty, "." or "..", and a key of at most 1024 bytes
  /// without NUL.
  bool possible() const;
};

/// The place of an IRI: empty and "." elements of its path are passed over and ".." takes the one before away, as a
/// path on a disk does where each element is a folder. Pure text.
Place placeOf(vfs::AbsoluteIRI const& location);

/// The longest part at the beginning of a path below a folder that a path can name, cut before its first element that
/// is empty, "." or
/// "..", or that holds NUL; with the "/" before that element. The whole path where there is none; a final "/" is no
/// element.
std::string_view nameablePart(std::string_view path);

/// The longest part at the beginning of the bytes that is UTF-8. Keys are, and stores fail when they are asked for what
/// isn't.
std::string utf8Part(std::string_view bytes);

}  // namespace foundation::storage::s3
