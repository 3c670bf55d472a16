#pragma once

#include <string>
#include <vector>

#include "support/tree.hpp"

namespace korvan::test {

/// The keys of conformance_tree.txt, decoded: a final "/" stands for an empty folder. Read once.
std::vector<std::string> const& conformanceKeys();

/// The tree of those keys.
Tree conformanceTree();

}  // namespace korvan::test
