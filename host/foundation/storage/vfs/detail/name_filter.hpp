#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// The filter of a listing: "*" is any run of characters, even none; every other character is itself; case matters. Names are the
/// bytes that an entry has on its medium. Takes time at most linear in name length times filter length, however many stars there
/// are. Immutable, so usable by several threads at once.
class KORVAN_HOST_EXPORT NameFilter {
 public:
  /// A filter with a surrogate without bytes matches nothing.
  explicit NameFilter(std::u16string const& filter);

  /// Whether the whole name matches.
  bool matches(std::string_view name) const;

  /// The bytes that each matching name begins with; empty when the filter begins with "*".
  std::string const& literalHead() const noexcept { return literalHead_; }

  /// Whether every name matches.
  bool matchesAll() const noexcept { return all_; }

 private:
  std::vector<std::string> pieces_;  // what lies between the stars, as bytes; the first and the last may be empty
  std::vector<std::u16string> textPieces_;  // the same as text, where comparing bytes isn't enough (see the source)
  std::string literalHead_;
  bool all_ = false;
  bool none_ = false;
};

}  // namespace foundation::storage::vfs
