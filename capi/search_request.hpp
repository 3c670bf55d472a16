#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/storage/vfs/session_policy.hpp"
#include "kglob.h"

namespace kglob {

/// A pattern of a request.
struct RequestedPattern {
  std::u16string text;
  bool usesIRIs;  ///< the pattern or the root folder is an IRI
};

/// What a caller asked to search, as text.
struct SearchRequest {
  std::vector<RequestedPattern> patterns;
  std::u16string rootFolder;  ///< absolute
  std::size_t cacheBytes;
  bool includeDotFiles;
  foundation::storage::vfs::SessionPolicy policy;
  kglob_fact_level facts;
};

/// The request that the arguments of `kglob_open_patterns` describe; an empty pattern if there is none. Throws
/// `std::invalid_argument` for a null pattern and for options that this library doesn't know, and what the path library
/// and the storage layer throw for a root folder that can't be resolved.
SearchRequest makeRequest(char const* const* patterns, std::size_t count, kglob_options const* options);

}  // namespace kglob
