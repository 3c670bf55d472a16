#pragma once

#include <string>
#include <vector>

#include "support/tree.hpp"

namespace korvan::test {

/// The matches of a relative pattern below `root`, a folder of the tree, as a search must return them: relative to
/// the root, as bytes, in order and with duplicates. Slow, and written from the pattern language alone. The root
/// itself, the empty text, is left out unless `withRoot`; it can match if the search's pattern spells it out.
std::vector<std::string> expectedMatches(Tree const& tree, std::string const& root, std::string const& pattern,
                                         bool includeDotFiles, bool withRoot = false);

/// Whether the name matches the segment, in which "*" is any run of characters.
bool nameMatches(std::string_view name, std::string_view segment);

/// Whether the pattern has an empty, "." or ".." segment, which a store of flat keys has no folder for.
bool hasDotOrEmptySegment(std::string const& pattern);

/// Bytes as they are written in the path of an IRI, percent-encoded where necessary.
std::string encodedForIRI(std::string_view bytes);

/// A relative pattern of up to five segments that is likely to match names of `Tree::random`.
std::string randomPattern(std::mt19937& random);

}  // namespace korvan::test
