#pragma once

#include <cstddef>
#include <string>

#include "kglob.h"

namespace kglob {

/// What a caller asked to search, as text.
struct SearchRequest {
  std::u16string pattern;
  std::u16string rootFolder;  ///< absolute
  std::size_t cacheBytes;
  bool includeDotFiles;
  bool usesIRIs;  ///< the pattern or the root folder is an IRI
};

/// The request that the arguments of `kglob_open` describe. Throws `std::invalid_argument` for a null pattern and for
/// options that this library doesn't know, and what the path library and the storage layer throw for a root folder that
/// can't be resolved.
SearchRequest makeRequest(char const* pattern, kglob_options const* options);

}  // namespace kglob
