#pragma once

#include <cstdint>
#include <string_view>

namespace kglob {

/// A condition on a size, written as fd has it: `+1k` at least 1,000 bytes, `-1ki` at most 1,024, `5b` exactly 5. The
/// units b, k, m, g and t are powers of 1000, those with an "i" of 1024; case doesn't matter, and without one the
/// number is in bytes.
class SizeBound {
 public:
  /// Throws `UsageError` for a text that isn't one.
  explicit SizeBound(std::string_view text);

  bool accepts(std::uint64_t bytes) const noexcept { return least_ <= bytes && bytes <= most_; }

 private:
  std::uint64_t least_ = 0;
  std::uint64_t most_ = UINT64_MAX;
};

}  // namespace kglob
