#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "korvan/io/path.hpp"

namespace korvan::io::internal {

/// How a segment is matched.
enum class SegmentClass : std::uint8_t {
  literal,     ///< no "*": an existence test
  wildcard,    ///< "*" in it: a filtered listing
  doubleStar,  ///< exactly "**": the folder itself and everything below it
};

SegmentClass classOf(std::u16string_view segment) noexcept;

/// Whether the text holds a wildcard.
bool hasWildcard(std::u16string_view text) noexcept;

/// A pattern with a wildcard, taken apart once: where the walk begins, and the segments from the first one with a wildcard on. The
/// same elements as `Path::parent` and `Path::name` give one after the other from the end, in time and memory linear in the
/// pattern's length. Pure text.
class PatternPlan {
 public:
  /// The pattern's text must hold a wildcard.
  explicit PatternPlan(Path const& pattern);

  /// The literal part before the segments; the empty path where there is none. It isn't tested for existence: what lies below
  /// one that doesn't exist is never found.
  Path const& start() const noexcept { return start_; }

  std::size_t size() const noexcept { return segments_.size(); }

  /// A segment as `Path::name` gives it: decoded where the pattern is an IRI; empty between two separators and after a final one.
  /// Valid as long as the plan.
  std::u16string_view text(std::size_t segment) const noexcept;
  SegmentClass segmentClass(std::size_t segment) const noexcept { return segments_[segment].segmentClass; }

  /// Whether the walk may come to the same path at this segment in several ways: two "**" up to and including it can share the
  /// folders between them out in different ways.
  bool revisits(std::size_t segment) const noexcept { return segment >= firstRevisited_; }

 private:
  struct Segment {
    std::size_t begin;
    std::size_t length;
    SegmentClass segmentClass;
  };

  void add(std::u16string_view segment);
  void addEncoded(std::u16string_view writtenSegments);
  void addNative(std::u16string_view segments);

  Path start_;
  std::u16string text_;
  std::vector<Segment> segments_;
  std::size_t doubleStars_ = 0;
  std::size_t firstRevisited_ = SIZE_MAX;
};

}  // namespace korvan::io::internal
