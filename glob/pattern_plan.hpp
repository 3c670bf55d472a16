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

/// Whether the text contains a wildcard.
bool hasWildcard(std::u16string_view text) noexcept;

/// A pattern with a wildcard, split once: where the walk begins, and the segments from the first one with a wildcard
/// on. They are the elements that repeated calls of `Path::parent` and `Path::name` would return, but in time and
/// memory linear in the pattern's length; the authority of an IRI (a bucket) is a segment, too, if it has a wildcard.
/// Pure text.
class PatternPlan {
 public:
  /// The pattern's text must contain a wildcard.
  explicit PatternPlan(Path const& pattern);

  /// The literal part before the segments; the empty path if there is none. It isn't tested for existence: if it
  /// doesn't exist, nothing is found below it.
  Path const& start() const noexcept { return start_; }

  std::size_t size() const noexcept { return segments_.size(); }

  /// A segment as `Path::name` returns it: decoded if the pattern is an IRI; empty between two separators and after a
  /// final one. Valid as long as the plan.
  std::u16string_view text(std::size_t segment) const noexcept;
  SegmentClass segmentClass(std::size_t segment) const noexcept { return segments_[segment].segmentClass; }

  /// Whether the walk may reach the same path at this segment in several ways: with two "**" up to and including it,
  /// the same folders can be divided between them differently.
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
