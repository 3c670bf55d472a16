#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <optional>
#include <string_view>

#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::vfs {

/// The key of a folder in caches: the written form of its location without a final "/", as "a" and "a/" are the same
/// folder. Valid as long as the location.
inline std::u16string_view keyOf(AbsoluteIRI const& location) noexcept {
  std::u16string_view key = location.toString();
  if (!location.encodedPath().empty() && key.back() == u'/') key.remove_suffix(1);
  return key;
}

/// How deep the location is in its storage: a number that each element adds 1 to.
inline std::size_t depthOf(AbsoluteIRI const& location) noexcept {
  std::u16string_view const key = keyOf(location);
  return static_cast<std::size_t>(std::count(key.begin(), key.end(), u'/'));
}

/// The written form of what leads from `root` to `location`, without a "/" at either end: empty for the root itself,
/// nothing for a location that isn't below it. Valid as long as the location.
inline std::optional<std::u16string_view> writtenBelow(AbsoluteIRI const& root, AbsoluteIRI const& location) noexcept {
  auto const withoutFinalSeparator = [](std::u16string_view text) {
    if (text.ends_with(u'/')) text.remove_suffix(1);
    return text;
  };
  std::u16string_view const base = withoutFinalSeparator(root.toString());
  std::u16string_view below = withoutFinalSeparator(location.toString());
  if (!below.starts_with(base)) return std::nullopt;
  below.remove_prefix(base.size());
  if (below.empty()) return below;
  if (below.front() != u'/') return std::nullopt;
  below.remove_prefix(1);
  return below;
}

/// Compares as memory, since the standard library compares UTF-16 unit by unit.
struct KeyEqual {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const noexcept {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
  }
};

/// Hashes the whole key, since many folders have the same beginning and the same end. It isn't `noexcept`: libstdc++
/// then stores the hashes in its tables instead of computing them again for each neighbour in a bucket.
struct KeyHash {
  using is_transparent = void;
  std::size_t operator()(std::u16string_view key) const { return std::hash<std::u16string_view>()(key); }
};

}  // namespace foundation::storage::vfs
