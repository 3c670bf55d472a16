#pragma once

#include <string>
#include <string_view>

#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::s3 {

/// The bucket and the key that an IRI names, as bytes.
struct ObjectLocation {
  std::string bucket;       ///< may be a name that no bucket can have
  std::string key;          ///< without "/" at either end; empty for the bucket itself
  bool folderOnly = false;  ///< the IRI ends in "/", "." or "..", so it can't name an object

  /// The prefix of every key in that folder: the key and "/", or nothing for a bucket.
  std::string folderPrefix() const { return key.empty() ? std::string() : key + '/'; }

  /// Whether a store can have it: both parts are UTF-8; the bucket isn't empty, "." or ".."; the key has at most 1024
  /// bytes and no NUL.
  bool canExist() const;
};

/// The location that an IRI names. Empty and "." elements of its path are ignored, and ".." removes the element before
/// it, as in a path on a disk whose elements are all folders. Makes no request.
ObjectLocation objectLocationOf(vfs::AbsoluteIRI const& location);

/// The longest prefix of a key, or of the rest of one below a folder, that a path can name: up to its first element
/// that is empty, "." or ".." or contains NUL, with the "/" before that element. A final "/" doesn't start an element.
std::string_view nameablePrefix(std::string_view key);
}  // namespace foundation::storage::s3
