#pragma once

#include <string>
#include <vector>

#include "glob/glob.hpp"
#include "support/text.hpp"

namespace korvan::test {

using Strings = std::vector<std::string>;

/// The core search, with bytes in and out.
inline Strings search(std::string const& pattern, std::string const& root, bool includeDotFiles = false) {
  return toBytes(io::internal::glob(toText(pattern), toText(root), includeDotFiles));
}

}  // namespace korvan::test
