#pragma once

#include <string>
#include <vector>

#include "support/tree.hpp"

namespace korvan::test {

/// What a search for the pattern below `root`, a folder of the tree, must give, in order and with duplicates: texts
/// relative to the root, as bytes. Written from the pattern language alone and slow; the pattern is relative. The root
/// itself, the empty text, is left out unless `withRoot`: it may match where it is written in the pattern.
std::vector<std::string> expectedMatches(Tree const& tree, std::string const& root, std::string const& pattern,
                                         bool includeDotFiles, bool withRoot = false);

/// Whether the name matches a segment in which "*" is any run of characters.
bool nameMatches(std::string_view name, std::string_view segment);

/// Bytes as an IRI's path writes them: what it can't hold as itself is percent-encoded.
std::string encodedForIRI(std::string_view bytes);

/// A relative pattern of up to five segments that meets the names of `Tree::random`.
std::string randomPattern(std::mt19937& random);

}  // namespace korvan::test
