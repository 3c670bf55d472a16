#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// The filter of a listing: "*" matches any run of characters, even none; every other character matches itself; case
/// matters. Names are the bytes that the disk or store has. Takes time at most linear in name length times filter
/// length, however many stars there are. Immutable, so usable by several threads at once.
class KORVAN_HOST_EXPORT NameFilter {
 public:
  /// A filter that contains a surrogate without a byte form matches nothing.
  explicit NameFilter(std::u16string const& filter);

  /// Whether the whole name matches.
  bool matches(std::string_view name) const;

  /// The bytes that each matching name begins with; empty when the filter begins with "*".
  std::string const& literalHead() const noexcept { return literalHead_; }

  /// Whether every name matches.
  bool matchesAll() const noexcept { return all_; }

 private:
  // The parts between the stars, as bytes; the first and the last may be empty.
  std::vector<std::string> pieces_;
  // The same as text, for a filter with bytes that aren't UTF-8; otherwise empty. See hasEscapedBytes.
  std::vector<std::u16string> textPieces_;
  std::string literalHead_;
  bool all_ = false;
  bool none_ = false;
};

}  // namespace foundation::storage::vfs
